// Sessions with LightWave's object files.
#include "tests/object/object_bytes.h"
#include "tests/temporary_directory.h"

#include "host/render/scene/render_scene.h"
#include "host/session/session.h"

#include <gtest/gtest.h>

namespace velm::host::test {
namespace {

const std::string kSquare = pointsChunk(kSixPoints) + polygonsChunk("FACE", kSquareAndTriangle);
const std::string kPlain = objectFile(layerChunk(0, 0, "") + kSquare);
const std::string kHalfHidden = objectFile(layerChunk(0, 0, "") + kSquare + layerChunk(1, 1, "Wheels") + kSquare);

struct ObjectFileSession : testing::Test {
    SceneDescription open(const std::string &bytes) {
        writeText(directory / "a.lwo", bytes);
        return openDescription(directory / "a.lwo", {});
    }
    const TemporaryDirectory directory;
};

TEST_F(ObjectFileSession, WarnsOfWhatIsLeftOut) {
    const SceneDescription scene = open(kHalfHidden);
    Warnings warnings(Warnings::Policy::goOn);
    const Session session(scene, warnings);
    EXPECT_EQ(session.renderScene().triangleCount(), 3U);
    ASSERT_EQ(warnings.all().size(), 1U);
    EXPECT_EQ(warnings.all()[0].text(),
              (directory / "a.lwo") + ": a layer is hidden and not drawn (layer 1 \"Wheels\")");
    EXPECT_EQ(warnings.summary(), "1 warning: hidden layers");
    Warnings strict(Warnings::Policy::strict);
    EXPECT_EQ(errorOf([&] { Session(scene, strict); }), warnings.all()[0].text());
}

TEST_F(ObjectFileSession, WarnsOfWhatIsLeftOutOfSurfaces) {
    const std::string shader = subChunk("BLOK", subChunk("SHDR", cString("\x80")) + subChunk("FUNC", cString("Edge")));
    const SceneDescription scene = open(objectFile(
        tagsChunk({"Skin"}) + layerChunk(0, 0, "") + kSquare + polygonTagsChunk("SURF", {{0, 0}, {1, 0}}) +
        chunk("SURF", cString("Skin") + cString("") + subChunk("COLR", reals({1, 1, 1}) + words({5})) + shader)));
    Warnings warnings(Warnings::Policy::goOn);
    const Session session(scene, warnings);
    EXPECT_EQ(warnings.summary(), "2 warnings: envelopes of surfaces; shaders");
    ASSERT_EQ(warnings.all().size(), 2U);
    EXPECT_EQ(warnings.all()[1].text(), (directory / "a.lwo") + ": a shader is left out (surface \"Skin\", \"Edge\")");
    Warnings strict(Warnings::Policy::strict);
    EXPECT_EQ(errorOf([&] { Session(scene, strict); }), warnings.all()[0].text());
}

TEST_F(ObjectFileSession, StaysAsItIsWhenAStrictChangeIsRefused) {
    const SceneDescription scene = open(kPlain);
    Warnings strict(Warnings::Policy::strict);
    Session session(scene, strict);
    const std::string other = directory / "b.lwo";
    writeText(other, kHalfHidden);
    const auto addOther = [&](SceneDescription &changed) {
        changed.objects.push_back(changed.objects[0]);
        changed.objects[1].name = "Other";
        changed.objects[1].shape = MeshFile{other};
    };
    EXPECT_NE(errorOf([&] { session.change(addOther); }).find("b.lwo: a layer is hidden"), std::string::npos);
    EXPECT_EQ(session.scene().objects.size(), 1U);
    EXPECT_EQ(session.renderScene().triangleCount(), 3U);
}

TEST_F(ObjectFileSession, OpensOldObjects) {
    const std::string surface = subChunk("COLR", std::string("\xff\0\0\0", 4)) + subChunk("FLAG", words({0x104}));
    const SceneDescription scene =
        open(oldObjectFile(chunk("SRFS", cString("Red")) + pointsChunk(kSixPoints) +
                           chunk("POLS", words({3, 0, 1, 2, 1})) + chunk("SURF", cString("Red") + surface)));
    ASSERT_EQ(scene.surfaces.size(), 1U);
    EXPECT_EQ(scene.surfaces[0].name, "Red");
    EXPECT_TRUE(scene.surfaces[0].doubleSided);
    EXPECT_EQ(scene.surfaces[0].smoothingAngle, 89.5);
    EXPECT_EQ(std::get<Double3>(scene.surfaces[0].settings.at(0).value), (Double3{1, 0, 0}));
    Warnings warnings(Warnings::Policy::strict);
    EXPECT_EQ(Session(scene, warnings).renderScene().triangleCount(), 1U);
}

// One polygon has a surface that the file does not describe, the other one has none.
TEST_F(ObjectFileSession, MakesSurfacesThatTheFileDoesNotDescribe) {
    const SceneDescription scene = open(objectFile(tagsChunk({"Lost"}) + kSquare + polygonTagsChunk("SURF", {{0, 0}})));
    ASSERT_EQ(scene.surfaces.size(), 2U);
    EXPECT_EQ(scene.surfaces[0].name, "Lost");
    EXPECT_EQ(scene.surfaces[1].name, "Default");
    EXPECT_EQ(scene.surfaces[1].smoothingAngle, 0);
    EXPECT_NEAR(std::get<Double3>(scene.surfaces[1].settings.at(0).value)[1], 0.784, 0.001);
    Warnings warnings(Warnings::Policy::strict);
    Session session(scene, warnings);
    const std::string text = session.write(directory.path().string());
    EXPECT_EQ(text.find("Lost"), std::string::npos) << "reading the object again makes it again: " << text;
}

} // namespace
} // namespace velm::host::test

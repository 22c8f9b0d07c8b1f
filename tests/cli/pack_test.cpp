// The commands "velm pack" and "velm unpack", which copy networks from scenes into object files and back.
#include "host/files/object_file.h"
#include "host/image/file_pixels.h"
#include "host/image/image.h"
#include "host/io/files.h"

#include "tests/cli/command.h"
#include "tests/files/test_files.h"
#include "tests/object/object_bytes.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

using test::TemporaryDirectory;
using test::velm;

constexpr const char *kCube = "/usr/share/assimp/models/LWS/simple_cube.lwo";
constexpr const char *kGradient = "/usr/share/assimp/models/LWO/LWO2/sphere_with_gradient.lwo";

class PackTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(std::filesystem::exists(kCube))
            << "the package assimp-testmodels is not installed; ./run test does that";
    }
    std::string pack(const std::string &scene, const std::string &object, const std::string &name) const {
        const test::Outcome outcome = velm({"pack", scene, object, "-o", directory_ / name});
        EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
        return directory_ / name;
    }
    std::string unpack(const std::string &object, const std::string &name) const {
        const test::Outcome outcome = velm({"unpack", object});
        EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
        return directory_.write(name, outcome.out);
    }

    const TemporaryDirectory directory_;
};

TEST_F(PackTest, ExamplesReadBackFromAnObject) {
    for (const std::string name : {"shared", "group", "decay", "frames", "softshadow"}) {
        const std::string example = VELM_SOURCE_DIR "/examples/" + name + ".json";
        const std::string first = pack(example, kCube, "first.lwo"), text = unpack(first, "first.json");
#ifndef __SANITIZE_ADDRESS__ // under which modules are never unloaded, so that the numbers of stores go on
        EXPECT_EQ(readFile(text).find("\"data\""), std::string::npos) << readFile(text);
#endif
        const std::string second = pack(text, kCube, "second.lwo"), third = pack(text, first, "third.lwo");
        EXPECT_EQ(readFile(second), readFile(first)) << name;
        EXPECT_EQ(readFile(third), readFile(first)) << name;
        EXPECT_EQ(readFile(unpack(second, "second.json")), readFile(text)) << name;
        // The rest of the object file is unchanged.
        const std::string cube = readFile(kCube);
        EXPECT_EQ(readFile(first).substr(8, cube.size() - 8), cube.substr(8)) << name;
    }
}

TEST_F(PackTest, RealObjectsReadBackToTheByte) {
    const std::string models = "/usr/share/assimp/models/LWO/LWO2/";
    for (const std::string name : {"sphere_with_gradient", "hierarchy_smoothed", "transparency",
                                   "shader_test/CellShader", "boxuv", "MappingModes/earth_planar_x"}) {
        const std::string path = models + name + ".lwo", bytes = readFile(path), text = unpack(path, "object.json");
        EXPECT_EQ(readFile(pack(text, path, "again.lwo")), bytes) << path << readFile(text);
    }
}

TEST_F(PackTest, TexturesOfAnObjectCanBecomeItsNetwork) {
    const std::string object = "/usr/share/assimp/models/LWO/LWO2/MappingModes/earth_spherical_y.lwo";
    const test::Outcome outcome = velm({"unpack", object, "--textures"});
    ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_NE(outcome.out.find("\"Projection\": \"Spherical\""), std::string::npos) << outcome.out;
    const std::string packed = pack(directory_.write("earth.json", outcome.out), object, "earth.lwo");
    EXPECT_NE(readFile(packed).find("Image Projection"), std::string::npos);
    // Both objects show the same.
    const auto picture = [&](const std::string &file, const char *name) {
        const test::Outcome rendered = velm({"render", file, "-o", directory_ / name, "--size", "16x12", "--quiet"});
        EXPECT_EQ(rendered.status, kExitDone) << rendered.err;
        return readFilePixels(directory_ / name);
    };
    constexpr float kSinglePrecision = 1e-5F; // of the numbers that the packed nodes hold
    const FilePixels one = picture(packed, "packed.exr"), other = picture(object, "object.exr");
    ASSERT_EQ(one.values.size(), other.values.size());
    for (std::size_t i = 0; i < one.values.size(); ++i)
        ASSERT_NEAR(one.values[i], other.values[i], kSinglePrecision) << i;
}

// A scene whose network makes the cube's surface emit a colour. `rest` is appended to the scene's text.
std::string glow(const std::string &rest) {
    return R"({"surfaces": {"Default": {"settings": {"Luminosity": 1, "Diffuse": 0}, "nodes": {
        "Paint": {"server": "Constant Color", "settings": {"Color": [0.25, 0.5, 1]}},
        "Quarter": {"server": "Constant Scalar", "settings": {"Scalar": 0.25}}, "Root": {"server": "Velm Sqrt"}},
        "connections": ["Paint.Color -> Default.Color", "Quarter.Scalar -> Root.In",
                        "Root.Out -> Default.Luminosity"]}})" +
           rest + '}';
}
// A view of the cube's centre, which is at height 1, since the cube stands on the ground.
constexpr const char *kView = R"(, "render": {"width": 8, "height": 8},
    "cameras": {"Main": {"position": [0, 1, -5], "fieldOfView": 10}})";

// Renders a scene and returns the pixel in the middle, in linear light. Stores the warnings in `warnings`, unless null.
std::array<float, 3> rendered(const TemporaryDirectory &directory, const std::string &scene, std::string *warnings) {
    const std::string file = directory.write("scene.json", scene), picture = directory / "picture.exr";
    const test::Outcome outcome = velm({"render", file, "-o", picture, "--quiet"});
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    if (warnings) *warnings = outcome.err;
    std::array<float, 3> colour{};
    pixel(readImage(picture, "result").get(), 4, 4, colour.data());
    return colour;
}

TEST_F(PackTest, UnpackWarnsOfAColourWithSeparateKeysUnlessItPrintsItsNode) {
    using namespace test;
    const auto line = [](std::size_t number, float end) {
        return chunk("ENVL", words({number}) + subChunk("KEY ", reals({0, 0})) + subChunk("KEY ", reals({end, 1})));
    };
    const std::string object = directory_.write(
        "lamp.lwo",
        objectFile(line(1, 1) + line(2, 2) +
                   chunk("SURF", cString("Lamp") + cString("") + subChunk("COLR", reals({1, 1, 1}) + words({1})))));
    const Outcome plain = velm({"unpack", object}), textures = velm({"unpack", object, "--textures"});
    EXPECT_EQ(plain.status, kExitDone);
    EXPECT_NE(plain.err.find("the value COLR of the surface \"Lamp\" has an envelope"), std::string::npos) << plain.err;
    EXPECT_EQ(textures.err, "");
    EXPECT_NE(textures.out.find("Color Envelope.Color -> Lamp.Color"), std::string::npos) << textures.out;
}

TEST_F(PackTest, AnObjectIsRenderedWithItsOwnNetworks) {
    const std::string cube = pack(directory_.write("glow.json", glow("")), kCube, "glow.lwo");
    const std::array<float, 3> expected{0.125F, 0.25F, 0.5F};
    const std::string view = std::string("{") + (kView + 2);
    EXPECT_EQ(rendered(directory_, view + R"(, "objects": {"Cube": {"mesh": {"file": "glow.lwo"}}}})", nullptr),
              expected);
    EXPECT_EQ(rendered(directory_, view + R"(, "surfaces": {"from": "glow.lwo"},
                                   "objects": {"Box": {"box": {}, "position": [0, 1, 0], "surface": "Default"}}})",
                       nullptr),
              expected);
    // The packed scene itself renders the same.
    EXPECT_EQ(rendered(directory_,
                       glow(std::string(kView) +
                            R"(, "objects": {"Box": {"box": {}, "position": [0, 1, 0], "surface": "Default"}})"),
                       nullptr),
              expected);
}

TEST_F(PackTest, AMissingNodeIsReportedAndIsAnErrorWhenStrict) {
    const std::string scene = std::string("{") + (kView + 2) + R"(, "surfaces": {
        "Skin": {"settings": {"Luminosity": 1, "Diffuse": 0}, "nodes": {"Rain": {"server": "Weather", "kind": "W"}},
                 "connections": ["Rain.Drops -> Skin.Color"]}},
        "objects": {"Box": {"box": {}, "position": [0, 1, 0], "surface": "Skin"}}})";
    std::string warnings;
    EXPECT_EQ(rendered(directory_, scene, &warnings), (std::array<float, 3>{1, 0, 1}));
    EXPECT_NE(warnings.find("surface \"Skin\", node \"Rain\": there is no node \"Weather\" here"), std::string::npos)
        << warnings;
    const test::Outcome strict = velm({"render", directory_ / "scene.json", "-o", directory_ / "no.exr", "--strict"});
    EXPECT_EQ(strict.status, kExitInput);
    EXPECT_FALSE(std::filesystem::exists(directory_ / "no.exr"));
    const test::Outcome unpacked = velm({"unpack", kGradient, "--strict"});
    EXPECT_EQ(unpacked.status, kExitInput);
    EXPECT_EQ(unpacked.out, "");
    EXPECT_NE(unpacked.err.find("Gradient (1)"), std::string::npos) << unpacked.err;
}

TEST_F(PackTest, ErrorsSayWhatIsWrongWithAFile) {
    const test::Outcome none = velm({"unpack", directory_ / "none.lwo"});
    EXPECT_EQ(none.status, kExitInput);
    const test::Outcome old = velm({"unpack", "/usr/share/assimp/models/LWO/LWOB/ConcavePolygon.lwo"});
    EXPECT_EQ(old.status, kExitInput);
    EXPECT_NE(old.err.find("only LWO2 is read"), std::string::npos) << old.err;
    const std::string scene =
        directory_.write("bad.json", R"({"surfaces": {"A": {"nodes": {"B": {"server": "Nothing"}}}}})");
    EXPECT_EQ(velm({"pack", scene, kCube, "-o", directory_ / "bad.lwo"}).status, kExitInput);
    EXPECT_FALSE(std::filesystem::exists(directory_ / "bad.lwo"));
    const std::string good = directory_.write("good.json", glow(""));
    EXPECT_EQ(velm({"pack", good, kCube, "-o", directory_ / "no/such/directory.lwo"}).status, kExitMachine);
}

TEST_F(PackTest, NeitherReplacesItsInputByAnotherKindOfFile) {
    const std::string object = directory_ / "cube.lwo", scene = directory_.write("a.json", "{\"surfaces\": {}}");
    std::filesystem::copy_file(kCube, object);
    const std::string before = readFile(object);
    EXPECT_EQ(velm({"unpack", object, "-o", directory_ / "./cube.lwo"}).status, kExitUsage);
    EXPECT_EQ(readFile(object), before);
    const test::Outcome packed = velm({"pack", scene, object, "-o", scene});
    EXPECT_EQ(packed.status, kExitUsage);
    EXPECT_EQ(packed.out, "");
    EXPECT_EQ(packed.err, "velm: cannot write \"" + scene + "\": it is read, as \"" + scene + "\" (see velm --help)\n");
    EXPECT_EQ(readFile(scene), "{\"surfaces\": {}}");
    EXPECT_EQ(velm({"pack", scene, object, "-o", object}).status, kExitDone)
        << "an object may be replaced by its new version";
    EXPECT_EQ(readFile(object), before);
}

TEST_F(PackTest, NeitherReplacesAnImage) {
    const std::string picture = directory_.write("wall.jpg", "a picture");
    const std::string scene =
        directory_.write("a.json", R"({"surfaces": {}, "images": {"Wall": {"file": "wall.jpg"}}})");
    const std::string object = directory_.write("small.lwo", test::smallObject());
    for (const auto &words : {std::vector{std::string("pack"), scene, object}, {"unpack", object}}) {
        std::vector<std::string> all = words;
        all.insert(all.end(), {"-o", picture});
        const test::Outcome outcome = velm(all);
        EXPECT_EQ(outcome.status, kExitUsage);
        EXPECT_NE(outcome.err.find("wall.jpg\": it is read, as"), std::string::npos) << outcome.err;
        EXPECT_EQ(readFile(picture), "a picture");
    }
}

} // namespace
} // namespace velm::host

// The textures of object files in scenes.
#include "tests/object/object_bytes.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include "host/files/network_outline.h"
#include "host/scene/convert/object_surfaces.h"
#include "host/scene/convert/write_surfaces.h"

#include <cmath>
#include <filesystem>
#include <numbers>

namespace velm::host::test {
namespace {

// A network of the root alone, as LightWave writes it for surfaces without nodes.
const std::string kRootAlone = networkBlock(nodeBlocks("Surface", "Surface", ""), "");

std::string imageBlock(std::size_t clip, const std::string &header = "") {
    return subChunk("BLOK", subChunk("IMAP", cString("\x80") + subChunk("CHAN", "COLR") +
                                                 subChunk("OPAC", words({0}) + reals({1}) + words({0})) + header) +
                                subChunk("PROJ", words({2})) + subChunk("AXIS", words({1})) +
                                subChunk("IMAG", words({clip})));
}
std::string clip(std::size_t number, const std::string &file, const std::string &rest = "") {
    return chunk("CLIP", big(number, 4) + subChunk("STIL", cString(file)) + rest);
}
std::string surface(const std::string &name, const std::string &subChunks) {
    return chunk("SURF", cString(name) + cString("") + subChunk("COLR", reals({1, 0.5F, 0}) + words({0})) + subChunks);
}

TEST(ObjectTextures, AreReadWhereTheNetworkHasNoNodes) {
    const std::string weather = networkBlock(nodeBlocks("Surface", "Root", "") + nodeBlocks("Weather", "Rain", ""),
                                             connectionBlocks("Rain", "Drops", "Root", "Color") +
                                                 connectionBlocks("Rain", "Drops", "Rain", "Diffuse"));
    const ObjectFile object(objectFile(clip(3, "C:maps/earth.jpg") + surface("Plain", "") +
                                       surface("Alone", imageBlock(3) + kRootAlone) + surface("Bare", imageBlock(3)) +
                                       surface("Nodes", imageBlock(3) + weather) + surface("Lost", imageBlock(4)) +
                                       surface("Dyed", subChunk("VCOL", reals({1})))),
                            "a.lwo");
    EXPECT_EQ(outlineOf(*object.network(1)).nodes, 0U);
    EXPECT_EQ(outlineOf(*object.network(3)).nodes, 1U);
    EXPECT_EQ(outlineOf(*object.network(3)).rootInputs, (std::vector<std::string>{"Color"}));
    EXPECT_EQ(outlineOf("NODS").nodes, 0U);
    const ObjectSurfaces found = surfacesOf(object);
    std::vector<std::size_t> nodes;
    for (const SurfaceDescription &each : found.surfaces) nodes.push_back(each.network.nodes.size());
    EXPECT_EQ(nodes, (std::vector<std::size_t>{0, 2, 2, 0, 0, 0}));
    EXPECT_EQ(found.losses.count(Loss::layersBesideNodes), 0U) << "the node feeds the colour";
    EXPECT_EQ(found.losses.count(Loss::otherImage), 1U);
    EXPECT_EQ(found.losses.count(Loss::vertexColours), 1U);
}

TEST(ObjectTextures, VertexColoursAreReadWhereNoNodeFeedsTheColour) {
    const std::string none = words({0}), name = cString("Paint"),
                      tint = subChunk("VCOL", reals({0.5F}) + none + "RGB " + name);
    const auto network = [](const char *input) {
        return networkBlock(nodeBlocks("Surface", "Root", "") + nodeBlocks("Weather", "Rain", ""),
                            connectionBlocks("Rain", "Drops", "Root", input));
    };
    const ObjectFile object(objectFile(surface("Plain", tint) + surface("Colour", tint + network("Color")) +
                                       surface("Other", tint + network("Diffuse")) +
                                       surface("Nameless", subChunk("VCOL", reals({1}) + none + "RGB " + cString("")))),
                            "a.lwo");
    ASSERT_TRUE(object.values(0).tint);
    EXPECT_EQ(object.values(0).tint->intensity, 0.5F);
    EXPECT_EQ(object.values(0).tint->map, "Paint");
    EXPECT_FALSE(object.values(3).tint);
    const ObjectSurfaces found = surfacesOf(object);
    EXPECT_EQ(found.surfaces[0].network.nodes.size(), 2U);
    ASSERT_EQ(found.losses.count(Loss::vertexColours), 2U);
    EXPECT_EQ(found.losses.texts()[0].message,
              "the vertex colours of 2 surfaces are not shown (the first: surface \"Other\")");
}

std::string sequenceClip(std::size_t number, std::size_t digitsAndFlags, const std::vector<std::size_t> &numbers,
                         const std::string &prefix, const std::string &suffix) {
    return chunk("CLIP", big(number, 4) + subChunk("ISEQ", words({digitsAndFlags}) + words(numbers) + cString(prefix) +
                                                               cString(suffix)));
}

TEST(ObjectTextures, ShowSequencesOfImages) {
    constexpr std::size_t kMinusTwo = 0xfffe;
    const std::string clips =
        sequenceClip(1, 0x0401, {kMinusTwo, 0, 1, 24}, "C:maps/fire_", ".png") +
        sequenceClip(2, 0x0000, {0, 0, 9, kMinusTwo}, "smoke", "") +
        sequenceClip(3, 0x0300, {0, 0, 1, 2}, "take#", ".png") +
        chunk("CLIP", big(4, 4) + subChunk("ANIM", cString("a.mov") + cString("Movie") + words({0}))) +
        chunk("CLIP", big(5, 4) + subChunk("STCC", words({0, 7}) + cString("sea.iff")));
    const ObjectFile object(
        objectFile(clips + surface("A", imageBlock(1)) + surface("B", imageBlock(3)) + surface("C", imageBlock(4))),
        "a.lwo");
    ASSERT_EQ(object.images().size(), 3U);
    EXPECT_EQ(object.images()[0].file, "C:maps/fire_####.png");
    EXPECT_EQ(object.images()[0].sequence, (ImageSequence{.first = 1, .last = 24, .offset = -2, .loop = true}));
    EXPECT_EQ(object.images()[1].file, "smoke#");
    EXPECT_EQ(object.images()[1].sequence, (ImageSequence{.first = -2, .last = 9}));
    EXPECT_EQ(object.images()[2].file, "sea.iff");
    EXPECT_EQ(object.images()[2].sequence, std::nullopt);
    const ObjectSurfaces found = surfacesOf(object);
    EXPECT_EQ(found.surfaces[0].network.nodes.size(), 2U);
    EXPECT_EQ(found.losses.count(Loss::otherImage), 2U) << "a pattern cannot have a # before the number";
}

TEST(ObjectTextures, HaveTheFiltersOfTheirImages) {
    using Filters = std::vector<ImageFilter>;
    using Filter = ImageFilter::Kind;
    const std::string none = words({0}), negative = subChunk("NEGA", words({1}));
    const std::pair<std::string, Filters> kRows[] = {
        {subChunk("BRIT", reals({0}) + none) + subChunk("GAMM", reals({1}) + none), {}},
        {subChunk("NEGA", words({0})) + subChunk("FLAG", "abcd"), {}},
        {subChunk("BRIT", reals({0.1F}) + none) + subChunk("CONT", reals({-0.5F}) + none),
         {{.kind = Filter::brightness, .amount = 0.1}, {.kind = Filter::contrast, .amount = -0.5}}},
        {subChunk("SATR", reals({0.5F}) + none) + subChunk("HUE ", reals({0.25F})),
         {{.kind = Filter::saturation, .amount = 0.5}, {.kind = Filter::hue, .amount = 0.25}}},
        {negative + subChunk("GAMM", reals({2.2F}) + none) + negative,
         {{.kind = Filter::negative}, {.kind = Filter::gamma, .amount = 2.2}, {.kind = Filter::negative}}}};
    for (const auto &[filters, expected] : kRows) {
        const ObjectFile object(objectFile(clip(1, "a.png", filters) + surface("A", imageBlock(1))), "a.lwo");
        EXPECT_EQ(imagesOf(object, {}).at(0).filters, expected) << filters;
        const Losses losses = surfacesOf(object).losses;
        EXPECT_EQ(losses.count(Loss::imageFilter) + losses.count(Loss::filterEnvelope), 0U) << filters;
    }
}

TEST(ObjectTextures, LackPlugInsAndEnvelopesOfTheirImages) {
    const ObjectFile object(
        objectFile(
            clip(1, "a.png", subChunk("IFLT", cString("Blur"))) +
            clip(2, "b.png", subChunk("HUE ", reals({0}) + words({2})) + subChunk("BRIT", reals({1}) + words({3}))) +
            surface("A", imageBlock(1)) + surface("B", imageBlock(2))),
        "a.lwo");
    const Losses losses = surfacesOf(object).losses;
    EXPECT_EQ(losses.count(Loss::imageFilter), 1U);
    EXPECT_EQ(losses.count(Loss::filterEnvelope), 1U);
    EXPECT_EQ(object.images()[1].filters.size(), 1U);
}

std::string instanceClip(std::size_t number, std::size_t original, const std::string &rest = "") {
    return chunk("CLIP", big(number, 4) + subChunk("XREF", big(original, 4) + cString("an instance")) + rest);
}

// Instances have the file of the original, but not its filters.
TEST(ObjectTextures, ShowInstancesOfImages) {
    const std::string negative = subChunk("NEGA", words({1}));
    const ObjectFile object(
        objectFile(instanceClip(1, 2) + clip(2, "maps/a.png", negative) + instanceClip(3, 1, negative) +
                   sequenceClip(4, 0x0100, {0, 0, 1, 2}, "b", ".png") + instanceClip(5, 4, negative) +
                   instanceClip(6, 7) + instanceClip(7, 6) + instanceClip(8, 99) + clip(9, "other/a.png") +
                   surface("A", imageBlock(1)) + surface("B", imageBlock(3)) + surface("C", imageBlock(9)) +
                   surface("D", imageBlock(6))),
        "a.lwo");
    std::vector<std::string> names;
    for (const ImageDescription &image : imagesOf(object, {})) names.push_back(image.name);
    EXPECT_EQ(names, (std::vector<std::string>{"a.png", "a.png (2)", "b#.png", "b#.png (2)", "a.png (3)"}));
    const std::vector<ImageDescription> images = imagesOf(object, {});
    EXPECT_EQ(images[0].filters.size(), 0U);
    EXPECT_EQ(images[1].filters.size(), 1U);
    EXPECT_EQ(images[3].sequence, images[2].sequence);
    const ObjectSurfaces found = surfacesOf(object);
    const auto imageIn = [&](std::size_t i) {
        for (const SettingDescription &setting : found.surfaces[i].network.nodes.at(0).settings)
            if (setting.label == "Image") return std::get<std::string>(setting.value);
        return std::string();
    };
    EXPECT_EQ(imageIn(0), "a.png");
    EXPECT_EQ(imageIn(1), "a.png (2)");
    EXPECT_EQ(imageIn(2), "a.png (3)");
    EXPECT_EQ(found.losses.count(Loss::otherImage), 1U) << "instances of each other";
}

// A scene with an object "a.lwo" beside a red image.
class TexturedScene : public ::testing::Test {
  protected:
    TexturedScene() {
        directory_.write("red.hdr", redHdr("-Y 1 +X 1"));
        writeObject("a.lwo", "C:maps/red.hdr");
    }
    void writeObject(const std::string &name, const std::string &image) const {
        directory_.write(name, triangleObject("Globe", clip(1, image) + surface("Globe", imageBlock(1) + kRootAlone)));
    }
    SceneDescription readObjects(const std::string &objects) const {
        return readSceneText(R"({"cameras": {"C": {}}, "objects": {)" + objects + "}}", directory_ / "scene.json", {});
    }
    static SurfaceValues valuesOf(const SceneSurfaces &surfaces, const std::string &name, double x) {
        ShadingSample sample{};
        sample.objectPosition[0] = x;
        sample.objectPosition[2] = -1;
        return surfaces.surface(name)->evaluate(&sample);
    }

    TemporaryDirectory directory_;
};

TEST_F(TexturedScene, ShowsTheImage) {
    const SceneDescription scene = readObjects(R"("A": {"mesh": {"file": "a.lwo"}})");
    const SceneSurfaces built(scene, serverList());
    const SurfaceValues values = valuesOf(built, "Globe", 0);
    EXPECT_GT(values.colour[0], 0.9);
    EXPECT_EQ(values.colour[1], 0);
    EXPECT_EQ(values.diffuse, 1);
}

TEST_F(TexturedScene, ShowsTheFileOfTheFrame) {
    directory_.write("fire2.hdr", redHdr("-Y 1 +X 1"));
    directory_.write("a.lwo", triangleObject("Globe", sequenceClip(1, 0x0100, {0, 0, 1, 2}, "C:maps/fire", ".hdr") +
                                                          surface("Globe", imageBlock(1) + kRootAlone)));
    const SceneDescription scene = readObjects(R"("A": {"mesh": {"file": "a.lwo"}})");
    ASSERT_EQ(scene.images.size(), 1U);
    EXPECT_EQ(scene.images[0].file, directory_ / "fire#.hdr");
    Warnings warnings(Warnings::Policy::goOn);
    SceneSurfaces built(scene, serverList(), &warnings);
    EXPECT_TRUE(warnings.all().empty()) << "no frame is shown yet";
    built.showFrame(2, warnings);
    EXPECT_TRUE(warnings.all().empty());
    EXPECT_EQ(valuesOf(built, "Globe", 0).colour[1], 0);
    built.showFrame(1, warnings);
    EXPECT_EQ(valuesOf(built, "Globe", 0).colour[1], 0.5) << "the surface's own colour";
    ASSERT_EQ(warnings.all().size(), 1U);
    EXPECT_NE(warnings.all()[0].text().find("frame 1: " + directory_ / "fire1.hdr"), std::string::npos)
        << warnings.all()[0].text();
    Warnings strict(Warnings::Policy::strict);
    built.showFrame(2, strict);
    EXPECT_THROW(built.showFrame(1, strict), InputError);
}

// The file is red; the second object shows its negative, and so does a surface of the third one.
TEST_F(TexturedScene, ShowsImagesThroughTheirFilters) {
    const std::string negative = subChunk("NEGA", words({1}));
    directory_.write("b.lwo", triangleObject("Cyan", clip(1, "red.hdr", negative) + surface("Cyan", imageBlock(1))));
    directory_.write("c.lwo", triangleObject("Both", clip(1, "red.hdr", negative) + clip(2, "red.hdr") +
                                                         surface("Both", imageBlock(2))));
    const SceneDescription scene = readObjects(R"("A": {"mesh": {"file": "a.lwo"}}, "B": {"mesh": {"file": "b.lwo"}},
                                                  "C": {"mesh": {"file": "c.lwo"}})");
    std::vector<std::string> names;
    for (const ImageDescription &image : scene.images) names.push_back(image.name);
    EXPECT_EQ(names, (std::vector<std::string>{"red.hdr", "red.hdr (2)", "red.hdr (2) (2)"}));
    const SceneSurfaces built(scene, serverList());
    EXPECT_GT(valuesOf(built, "Globe", 0).colour[0], 0.9);
    EXPECT_EQ(valuesOf(built, "Globe", 0).colour[1], 0);
    EXPECT_LT(valuesOf(built, "Cyan", 0).colour[0], 0.1);
    EXPECT_EQ(valuesOf(built, "Cyan", 0).colour[1], 1);
    EXPECT_GT(valuesOf(built, "Both", 0).colour[0], 0.9);
}

TEST_F(TexturedScene, ShowsTheSurfacesColourWhereTheImageIsMissing) {
    std::filesystem::remove(directory_ / "red.hdr");
    const SceneDescription scene = readObjects(R"("A": {"mesh": {"file": "a.lwo"}})");
    Warnings warnings(Warnings::Policy::goOn);
    const SceneSurfaces built(scene, serverList(), &warnings);
    EXPECT_EQ(valuesOf(built, "Globe", 0).colour[1], 0.5);
    EXPECT_FALSE(warnings.all().empty());
}

TEST_F(TexturedScene, ASurfaceKeepsItsTexturesUnderAnotherName) {
    const SceneDescription scene = readSceneText(R"({"cameras": {"C": {}}, "surfaces": {"Globe": {}},
        "objects": {"A": {"mesh": {"file": "a.lwo"}}}})",
                                                 directory_ / "scene.json", {});
    const SceneSurfaces built(scene, serverList());
    EXPECT_EQ(valuesOf(built, "Globe (a.lwo)", 0).colour[1], 0);
}

TEST_F(TexturedScene, ImagesOfOneNameFromTwoObjectsStayApart) {
    directory_.write("b/red.hdr", redHdr("-Y 1 +X 1"));
    writeObject("b/b.lwo", "red.hdr");
    const SceneDescription scene =
        readObjects(R"("A": {"mesh": {"file": "a.lwo"}}, "B": {"mesh": {"file": "b/b.lwo"}})");
    ASSERT_EQ(scene.images.size(), 2U);
    EXPECT_EQ(scene.images[0].name, "red.hdr");
    EXPECT_EQ(scene.images[1].name, "red.hdr (2)");
    EXPECT_EQ(scene.images[1].file, directory_ / "b/red.hdr");
    EXPECT_EQ(scene.surfaces[1].network.nodes[0].settings[0].value, SettingValue(std::string("red.hdr (2)")));
    EXPECT_NO_THROW(SceneSurfaces(scene, serverList()));
    // The scene may describe them itself, under the same names.
    const SceneDescription own = readSceneText(R"json({"cameras": {"C": {}},
        "images": {"red.hdr": {"file": "red.hdr"}, "red.hdr (2)": {"file": "b/red.hdr"}},
        "objects": {"A": {"mesh": {"file": "a.lwo"}}, "B": {"mesh": {"file": "b/b.lwo"}}}})json",
                                               directory_ / "scene.json", {});
    EXPECT_EQ(own.images.size(), 2U);
    EXPECT_EQ(own.surfaces[1].network.nodes[0].settings[0].value, SettingValue(std::string("red.hdr (2)")));
}

TEST_F(TexturedScene, AnImageThatTheSceneDescribesReplacesTheObjects) {
    directory_.write("b/red.hdr", redHdr("-Y 1 +X 1"));
    const SceneDescription scene = readSceneText(R"({"cameras": {"C": {}}, "images": {"red.hdr": {"file": "b/red.hdr"}},
        "objects": {"A": {"mesh": {"file": "a.lwo"}}}})",
                                                 directory_ / "scene.json", {});
    ASSERT_EQ(scene.images.size(), 1U);
    EXPECT_EQ(scene.surfaces[0].network.nodes[0].settings[0].value, SettingValue(std::string("red.hdr")));
}

TEST_F(TexturedScene, BumpsTiltTheNormal) {
    const std::string turbulence =
        subChunk("BLOK", subChunk("PROC", cString("\x80") + subChunk("CHAN", "BUMP")) + subChunk("VALU", reals({1})) +
                             subChunk("FUNC", cString("Turbulence")));
    directory_.write("a.lwo", triangleObject("Globe", surface("Globe", turbulence + subChunk("BUMP", reals({5})))));
    const SceneDescription scene = readObjects(R"("A": {"mesh": {"file": "a.lwo"}})");
    const SceneSurfaces built(scene, serverList());
    ShadingSample sample{};
    for (std::size_t i = 0; i < 3; ++i) {
        sample.objectPosition[i] = 0.3;
        sample.worldToObject[4 * i] = 1;
    }
    sample.shadingNormal[1] = 1;
    sample.spotSize = 0.01;
    const SurfaceValues values = built.surface("Globe")->evaluate(&sample);
    EXPECT_LT(values.normal[1], 0.999);
    EXPECT_NEAR(std::hypot(values.normal[0], values.normal[1], values.normal[2]), 1, 1e-12);
}

TEST_F(TexturedScene, TexturesOfOldObjectsAreShown) {
    const std::string texture = subChunk("CTEX", cString("Spherical Image Map")) + subChunk("TFLG", words({2})) +
                                subChunk("TIMG", cString("C:\\maps\\red.hdr"));
    directory_.write("old.lwo",
                     oldObjectFile(chunk("SRFS", cString("Globe")) + pointsChunk(kSixPoints) +
                                   chunk("POLS", words({3, 0, 1, 2, 1})) +
                                   chunk("SURF", cString("Globe") + subChunk("COLR", big(0xffffff00, 4)) + texture)));
    const SceneDescription scene = readObjects(R"("A": {"mesh": {"file": "old.lwo"}})");
    ASSERT_EQ(scene.images.size(), 1U);
    EXPECT_EQ(scene.images[0].file, directory_ / "red.hdr");
    const SceneSurfaces built(scene, serverList());
    EXPECT_EQ(valuesOf(built, "Globe", 0).colour[1], 0);
}

TEST_F(TexturedScene, NotesWhatIsLeftOutOnceForEachFile) {
    const std::string shader = subChunk("BLOK", subChunk("SHDR", cString("\x80")) + subChunk("FUNC", cString("Edge")));
    directory_.write("a.lwo", triangleObject("A", surface("A", shader) + surface("B", shader)));
    const SceneDescription scene = readObjects(R"("A": {"mesh": {"file": "a.lwo"}}, "B": {"mesh": {"file": "a.lwo"}})");
    ASSERT_EQ(scene.notes.size(), 1U);
    EXPECT_EQ(scene.notes[0].file, directory_ / "a.lwo");
    EXPECT_EQ(scene.notes[0].message, "2 shaders are left out (the first: surface \"A\", \"Edge\")");
}

TEST_F(TexturedScene, TexturesAreUnpackedOnDemandAndPackedBesideTheOldOnes) {
    const std::string bytes =
        triangleObject("Globe", clip(1, directory_ / "red.hdr") + surface("Globe", imageBlock(1) + kRootAlone));
    const ObjectFile object(bytes, directory_ / "a.lwo");
    Warnings warnings(Warnings::Policy::strict);
    const auto unpacked = [&](UnpackTextures textures) {
        UnpackedSurfaces found = unpackSurfaces(object, {}, serverList(), warnings, textures);
        while (completeUnpacked(found, serverList())) {
        }
        return writeSurfaces(found.images, found.surfaces);
    };
    EXPECT_EQ(unpacked(UnpackTextures::no).find("Image Projection"), std::string::npos);
    const std::string text = unpacked(UnpackTextures::yes);
    EXPECT_NE(text.find("Image Projection"), std::string::npos) << text;
    const SceneDescription scene = readSurfaces(directory_.write("scene.json", text), {});
    ObjectFile packed(bytes, "a.lwo");
    {
        const SceneSurfaces built(scene, serverList());
        packSurfaces(packed, scene, built, DefaultSettings(serverList()));
    }
    const std::string written = packed.write();
    EXPECT_NE(written.find(imageBlock(1)), std::string::npos) << "the layer itself";
    // Now the nodes show the image, and the layer counts no more.
    directory_.write("a.lwo", written);
    const SceneDescription again = readObjects(R"("A": {"mesh": {"file": "a.lwo"}})");
    EXPECT_TRUE(again.surfaces[0].network.nodes.empty());
    EXPECT_TRUE(again.notes.empty());
    const SceneSurfaces built(again, serverList());
    EXPECT_EQ(valuesOf(built, "Globe", 0).colour[1], 0);
}

// ---- Real objects ----

// The colour of a surface of a globe at a place: degrees to the east of the direction -Z, and to the north.
Double3 colourAt(const Surface &surface, double east, double north) {
    constexpr double kDegree = std::numbers::pi / 180;
    const double level = std::cos(north * kDegree);
    ShadingSample sample{};
    sample.objectPosition[0] = level * std::sin(east * kDegree);
    sample.objectPosition[1] = std::sin(north * kDegree);
    sample.objectPosition[2] = -level * std::cos(east * kDegree);
    const SurfaceValues values = surface.evaluate(&sample);
    return {values.colour[0], values.colour[1], values.colour[2]};
}

// With the prime meridian in the middle of the image, where the ocean is blue and the deserts are not.
TEST(RealTextures, TheEarthIsNotMirrored) {
    const std::string file = "/usr/share/assimp/models/LWO/LWO2/MappingModes/earth_spherical_y.lwo";
    ASSERT_TRUE(std::filesystem::exists(file)) << "the package assimp-testmodels is not installed";
    const SceneDescription scene = readSceneText(
        R"({"cameras": {"C": {}}, "objects": {"Earth": {"mesh": {"file": ")" + file + R"("}}}})", "scene.json", {});
    EXPECT_TRUE(scene.notes.empty());
    const SceneSurfaces built(scene, serverList());
    const Surface &earth = *built.surface("Default");
    const auto isSea = [&](double east, double north) {
        const Double3 colour = colourAt(earth, east, north);
        return colour[2] > colour[0];
    };
    EXPECT_TRUE(isSea(-40, 20)) << "the Atlantic";
    EXPECT_FALSE(isSea(45, 22)) << "Arabia";
    EXPECT_FALSE(isSea(10, 22)) << "the Sahara";
    EXPECT_TRUE(isSea(0, -22)) << "the Atlantic";
    EXPECT_FALSE(isSea(133, -25)) << "Australia";
    EXPECT_TRUE(isSea(-133, -25)) << "the Pacific";
}

} // namespace
} // namespace velm::host::test

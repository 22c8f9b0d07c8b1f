// Images of a scene that are missing or damaged: a warning at every use, and everything that uses them does without.
#include "host/scene/build/scene_surfaces.h"

#include "host/image/image.h"
#include "host/load/module.h"
#include "host/panel/settings.h"
#include "host/services/backdrop.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

// "Sky" is on line 3, a dome with it on line 4, the backdrop on line 5, nodes that choose it on lines 8 and 9.
std::string sceneWith(const std::string &images) {
    return "{\"cameras\": {\"Main\": {}},\n\"images\": {\n" + images + R"(},
"lights": {"Dome": {"kind": "dome", "image": "Sky"}},
"backdrop": {"kind": "image", "image": "Sky"},
"surfaces": {"My clay": {"nodes": {
    "Picture": {"server": "Image", "settings": {
        "Image": "Sky"}},
    "Other": {"server": "Image", "settings": {"Image": "Sky", "Background Color": [0.25, 0.5, 1]}}
}, "connections": ["Other.Color -> My clay.Color"]}}})";
}

struct Built {
    std::vector<std::string> warnings;
    std::string summary, error, clay;
    double backdrop = -1;
    std::vector<std::string> images;
};

Built build(const test::TemporaryDirectory &directory, const std::string &images,
            Warnings::Policy policy = Warnings::Policy::goOn) {
    Built result;
    Warnings collected(policy, [&](const Warning &warning) { result.warnings.push_back(warning.text()); });
    try {
        const SceneDescription scene =
            readSceneText(sceneWith(images), directory / "scene.json", {.directories = {"/nowhere/at all"}});
        SceneSurfaces built(scene, serverList(), &collected);
        result.images = ImageList::instance().names();
        built.init(kInitRender);
        built.newTime(0, 0);
        ShadingSample sample{};
        const SurfaceValues values = built.surface("My clay")->evaluate(&sample);
        for (const double component : values.colour) result.clay += std::to_string(component).substr(0, 4) + " ";
        built.cleanup();
        double seen[3];
        Backdrop(scene.backdrop).evaluate(std::array<double, 3>{0, 1, 1}.data(), seen);
        result.backdrop = seen[0] + seen[1] + seen[2];
    } catch (const InputError &error) {
        result.error = error.what();
    }
    result.summary = collected.summary();
    return result;
}

void expectDoneWithout(const Built &result, const test::TemporaryDirectory &directory, const std::string &file,
                       const std::string &firstWarning) {
    EXPECT_EQ(result.error, "");
    const std::string scene = directory / "scene.json", absent = "the image \"Sky\" (" + file + ") is absent; ";
    EXPECT_EQ(
        result.warnings,
        (std::vector<std::string>{
            scene + ":3: images.Sky.file: " + firstWarning,
            scene + ":5: backdrop.image: " + absent + "the backdrop stays black",
            scene + ":4: lights.Dome.image: " + absent + "the dome stays dark",
            scene + ":8: surfaces.\"My clay\".nodes.Picture.settings.Image: " + absent + "the node goes without it",
            scene + ":9: surfaces.\"My clay\".nodes.Other.settings.Image: " + absent + "the node goes without it",
        }));
    EXPECT_EQ(result.summary, "1 warning: no image \"Sky\" (" + file + ")");
    EXPECT_EQ(result.clay, "0.25 0.50 1.00 "); // the background of the node
    EXPECT_EQ(result.backdrop, 0);
}

TEST(AbsentImages, MissingFilesGiveWarnings) {
    const test::TemporaryDirectory directory;
    const Built result = build(directory, "\"Sky\": {\"file\": \"sky.exr\", \"source\": \"the shop\"}");
    expectDoneWithout(result, directory, "sky.exr",
                      "there is no file \"sky.exr\"; looked in " + directory.path().string() +
                          ", /nowhere/at all; it comes from the shop");
    EXPECT_TRUE(result.images.empty());
}

TEST(AbsentImages, DamagedFilesGiveWarnings) {
    const test::TemporaryDirectory directory;
    const std::string file = directory.write("sky.hdr", test::redHdr("-Y 0 +X 0"));
    const Built result = build(directory, "\"Sky\": {\"file\": \"sky.hdr\"}");
    ASSERT_FALSE(result.warnings.empty()) << result.error;
    const std::string start = (directory / "scene.json") + ":3: images.Sky.file: ";
    ASSERT_TRUE(result.warnings[0].starts_with(start + file + ": cannot read the image")) << result.warnings[0];
    expectDoneWithout(result, directory, file, result.warnings[0].substr(start.size()));
}

TEST(AbsentImages, LeaveTheOtherImagesLoaded) {
    const test::TemporaryDirectory directory;
    directory.write("a.hdr", test::redHdr("-Y 1 +X 1"));
    const Built result = build(directory, "\"Sky\": {\"file\": \"sky.exr\"},"
                                          "\"First\": {\"file\": \"a.hdr\"}, \"Second\": {\"file\": \"a.hdr\"}");
    EXPECT_EQ(result.warnings.size(), 5u);
    EXPECT_EQ(result.images, (std::vector<std::string>{"First", "Second"}));
}

TEST(AbsentImages, AreErrorsWhenStrict) {
    const test::TemporaryDirectory directory;
    const Built result = build(directory, "\"Sky\": {\"file\": \"sky.exr\"}", Warnings::Policy::strict);
    EXPECT_EQ(result.error, (directory / "scene.json") +
                                ":3: images.Sky.file: there is no file \"sky.exr\"; looked in " +
                                directory.path().string() + ", /nowhere/at all");
    EXPECT_TRUE(result.warnings.empty());
    EXPECT_EQ(ImageList::instance().first(), nullptr);
}

TEST(AbsentImages, DoNotExcuseAMisspeltName) {
    const test::TemporaryDirectory directory;
    // The nodes ask for "Sky", but the absent image has another name.
    const Built result = build(directory, "\"Skye\": {\"file\": \"sky.exr\"}");
    EXPECT_NE(result.error.find("there is no image \"Sky\", did you mean \"Skye\"?"), std::string::npos)
        << result.error;
}

// In a network inside a node of the module, and for a popup of the module.
TEST(AbsentImages, GiveWarningsInsideNetworksToo) {
    const Module module = Module::open(VELM_MODULE_FILE);
    serverList().add(module.servers(), module.path());
    const SceneDescription scene = test::read(R"({"cameras": {"Main": {}}, "images": {"Sky": {"file": "sky.exr"}},
        "surfaces": {"Clay": {"nodes": {"Group": {"server": "Velm Group Node", "network": {"nodes": {
            "Shine": {"server": "Velm Gaussian Reflections", "settings": {"Image": "Sky"}}}}}}}}})");
    std::vector<std::string> paths, shown;
    Warnings warnings(Warnings::Policy::goOn, [&](const Warning &warning) { paths.push_back(warning.path); });
    {
        const SceneSurfaces built(scene, serverList(), &warnings);
        HostNode &group = built.surface("Clay")->network().node("Group");
        const SettingValue chosen = readSetting(*panelOf(group.nestedNetworks.front()->node("Shine")), "Image");
        EXPECT_EQ(std::get<std::string>(chosen), "(none)");
    }
    EXPECT_EQ(paths, (std::vector<std::string>{"images.Sky.file",
                                               "surfaces.Clay.nodes.Group.network.nodes.Shine.settings.Image"}));
    serverList().remove(module.path());
}

} // namespace
} // namespace velm::host

// The form of LightWave's scene files, and what they say of the scene as a whole.
#include "tests/lws/scene_text.h"

#include "host/io/files.h"

#include <filesystem>

namespace velm::host::test {
namespace {

TEST(LwsScene, SettingsOfTheWholeScene) {
    const lws::Scene scene = readLws(5, "FirstFrame 3\nLastFrame 90\nFrameStep 2\nFramesPerSecond 25\n"
                                        "AmbientColor 1 0.5 0\nAmbientIntensity 0.05\nSolidBackdrop 1\n"
                                        "BackdropColor 0.1 0.2 0.3\nZenithColor 0 0 1\nSkySqueezeAmount 3\n"
                                        "RayTraceEffects 6\nRayRecursionLimit 4\nAntialiasing 2\nEnableShadowMaps 0\n");
    EXPECT_EQ(scene.version, 5);
    EXPECT_EQ(scene.firstFrame, 3);
    EXPECT_EQ(scene.lastFrame, 90);
    EXPECT_EQ(scene.frameStep, 2);
    EXPECT_EQ(scene.framesPerSecond, 25);
    EXPECT_EQ(scene.ambientColour, (Double3{1, 0.5, 0}));
    EXPECT_EQ(scene.ambientIntensity, 0.05);
    EXPECT_TRUE(scene.solidBackdrop);
    EXPECT_EQ(scene.backdrop, (Double3{0.1, 0.2, 0.3}));
    EXPECT_EQ(scene.zenith, (Double3{0, 0, 1}));
    EXPECT_EQ(scene.skySqueeze, 3);
    EXPECT_FALSE(scene.tracesShadows);
    EXPECT_TRUE(scene.tracesReflections);
    EXPECT_FALSE(scene.hasShadowMaps);
    EXPECT_EQ(scene.recursionLimit, 4);
    EXPECT_EQ(scene.antialiasingSamples, 9);
}

TEST(LwsScene, FogHasOldAndNewNames) {
    const lws::Scene scene = readLws(5, "FogType 2\nFogMinDistance 1\nFogMaxDistance 20\nFogMinAmount 0.1\n"
                                        "FogMaxAmount 0.9\nFogColor 1 0.5 0\nBackdropFog 1\n");
    const lws::Scene old = readLws(1, "FogType 2\nFogMinDist 1\nFogMaxDist 20\nFogMinAmt 0.1\nFogMaxAmt 0.9\n"
                                      "FogColor 255 127.5 0\nBackdropFog 1\n");
    for (const lws::Scene *each : {&scene, &old}) {
        EXPECT_EQ(each->fogType, 2);
        EXPECT_EQ(each->fogMinDistance, 1);
        EXPECT_EQ(each->fogMaxDistance, 20);
        EXPECT_EQ(each->fogMinAmount, 0.1);
        EXPECT_EQ(each->fogMaxAmount, 0.9);
        EXPECT_EQ(each->fogColour, (Double3{1, 0.5, 0}));
        EXPECT_TRUE(each->fogHasBackdropColour);
        EXPECT_EQ(lossesOf(*each), std::vector<std::string>{});
    }
}

TEST(LwsScene, WhatIsLeftOutIsCountedWithItsFirstLine) {
    const lws::Scene scene = readLws(
        5, "RenderRangeType 1\nEnableRadiosity 1\nEnableCaustics 1\nEnableCaustics 0\nBGImage sky.png\nFGImage (none)\n"
           "Plugin PixelFilterHandler 1 Bloom\nEndPlugin\nPlugin ImageFilterHandler 1 Vignette\nEndPlugin\n"
           "Plugin EnvironmentHandler 1 SkyTracer\nEndPlugin\nPlugin MasterHandler 1 Notes\nEndPlugin\n"
           "AmbientIntensity (envelope)\n" +
               envelope("Key 0.5 0 3\nKey 1 1 3\n"));
    EXPECT_EQ(scene.ambientIntensity, 0.5) << "the first key";
    EXPECT_EQ(
        lossesOf(scene),
        (std::vector<std::string>{
            "17: a value that has keys stays as it is at its first key", "4: radiosity is not rendered",
            "5: caustics are not rendered", "7: a background or foreground image is left out",
            "13: a plug-in for the environment or a volume is left out", "9: 2 image and pixel filters are left out",
            "3: a range of frames of another form is ignored: the frames from FirstFrame to LastFrame are "
            "rendered"}));
}

TEST(LwsScene, LineEndsCommentsAndUnknownPartsDoNotMatter) {
    const std::string text = "// LABEL=Scene\n\n  LastFrame   7  \nNewKeyword { 1 2\nNewBlock\n{ Inner\n  LastFrame 8\n"
                             "  { Deeper\n  }\n}\nPlugin MasterHandler 1 Any\nLastFrame 9\n}\n{ Open\nEndPlugin\n"
                             "FrameStep 5";
    std::string carriage;
    for (const char letter : text) carriage += letter == '\n' ? "\r\n" : std::string(1, letter);
    for (const std::string &each : {text, carriage}) {
        const lws::Scene scene = readLws(5, each);
        EXPECT_EQ(scene.lastFrame, 7);
        EXPECT_EQ(scene.frameStep, 5);
        EXPECT_EQ(lossesOf(scene), std::vector<std::string>{});
    }
}

TEST(LwsScene, LinesThatCannotBeReadAreIgnored) {
    const lws::Scene scene = readLws(5, "LastFrame many\nFramesPerSecond 0\nAmbientColor 1 1\nFirstFrame 1e99\n");
    EXPECT_EQ(scene.lastFrame, 60);
    EXPECT_EQ(scene.framesPerSecond, 30);
    EXPECT_EQ(lossesOf(scene), std::vector<std::string>{"3: 4 lines are ignored: their arguments are not those that "
                                                        "their keywords have"});
}

TEST(LwsScene, NumbersTooSmallForADoubleAreZero) {
    for (const char *tiny : {"1e-400", "-1.5E-400"})
        EXPECT_EQ(readLws(5, "AmbientIntensity " + std::string(tiny) + "\n").ambientIntensity, 0) << tiny;
    for (const char *damaged : {"1e-", "e-5", "1e-5-", "1e400", "+"}) {
        const lws::Scene scene = readLws(5, "AmbientIntensity " + std::string(damaged) + "\n");
        EXPECT_EQ(scene.ambientIntensity, 0.25) << damaged;
        EXPECT_EQ(scene.losses.count(lws::Loss::unreadLine), 1U) << damaged;
    }
}

TEST(LwsScene, TheFormMustBeWhole) {
    const auto errorOfFile = [](const std::string &text) {
        try {
            lws::readScene(text, "a.lws");
            return std::string();
        } catch (const InputError &error) {
            return std::string(error.what());
        }
    };
    EXPECT_EQ(errorOfFile(""), "a.lws:1: this is no LightWave scene: its first line is not LWSC");
    EXPECT_EQ(errorOfFile("LWSC\n"), "a.lws:2: the version is missing");
    EXPECT_EQ(errorOfFile("LWSC\nfive\n"), "a.lws:2: expected the version, a whole number from 1");
    EXPECT_EQ(errorOfFile("LWSC\n5\n}\n"), "a.lws:3: a \"}\" closes nothing");
    EXPECT_EQ(errorOfFile("LWSC\n5\n{ A\n{ B\n}\n"), "a.lws:3: the block \"{ A\" is not closed");
    EXPECT_EQ(errorOfFile("LWSC\n5\nPlugin A 1 B\n"), "a.lws:3: there is no EndPlugin for this Plugin");
    EXPECT_EQ(errorOfFile("LWSC\n5\nLoadObjectLayer cube.lwo\n"), "a.lws:3: expected the number of a layer, from 1");
    EXPECT_EQ(errorOfFile("LWSC\n5\nLoadObjectLayer 1 10000000\n"), "a.lws:3: expected the name of an object file");
}

TEST(LwsScene, TheNumberOfItemsIsLimited) {
    std::string lights;
    for (std::size_t i = 0; i < lws::kMostItems; ++i) lights += "AddLight\n";
    EXPECT_EQ(readLws(3, lights).lights.size(), lws::kMostItems);
    EXPECT_EQ(errorOf(3, lights + "AddCamera\n"), "a.lws:65539: a scene may have at most 65536 items");
}

TEST(LwsScene, EveryBeginningOfASceneIsReadOrRefused) {
    const std::string text = "LWSC\n5\nLoadObjectLayer 1 10000000 a.lwo\nObjectMotion\nChannel 0\n" +
                             envelope("Key 1 0 0 0 0 0 0 0 0\nKey 2 1 5 -1 2 3 4 0 0\n") +
                             "AddLight 20000000\nLightColor 1 1 1\nPlugin LightHandler 1 SpotLight\nEndPlugin\n";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        try {
            lws::readScene(text.substr(0, length), "a.lws");
        } catch (const InputError &error) {
            EXPECT_TRUE(std::string(error.what()).starts_with("a.lws:")) << length << ": " << error.what();
        }
    }
}

TEST(LwsScene, FilesOfOtherProgramsAreReadWithoutALoss) {
    std::size_t count = 0;
    for (const auto &entry : std::filesystem::directory_iterator("/usr/share/assimp/models/LWS")) {
        if (entry.path().extension() != ".lws") continue;
        const lws::Scene scene = lws::readScene(readFile(entry.path().string()), entry.path().string());
        EXPECT_EQ(lossesOf(scene), std::vector<std::string>{}) << entry.path();
        ASSERT_EQ(scene.objects.size(), 1u) << entry.path();
        ASSERT_EQ(scene.lights.size(), 1u) << entry.path();
        ASSERT_EQ(scene.cameras.size(), 1u) << entry.path();
        EXPECT_EQ(scene.objects[0].path, "simple_cube.lwo") << entry.path();
        EXPECT_TRUE(scene.objects[0].motion[0].isAnimated() || scene.objects[0].motion[1].isAnimated()) << entry.path();
        EXPECT_NEAR(scene.lights[0].motion[3].constant, 45, 1e-4) << entry.path();
        EXPECT_NEAR(scene.lights[0].motion[4].constant, 35, 1e-4) << entry.path();
        EXPECT_EQ(scene.cameras[0].width, 640) << entry.path();
        EXPECT_EQ(scene.lights[0].colour[2].constant, 1) << entry.path();
        ++count;
    }
    EXPECT_EQ(count, 14u);
}

} // namespace
} // namespace velm::host::test

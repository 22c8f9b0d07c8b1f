// LightWave scenes, converted to scene descriptions.
#include "host/scene/lws_scene.h"

#include "host/scene/format/write_scene.h"
#include "host/scene/lws_items.h"
#include "host/scene/read_scene.h"

#include "module/host.h"
#include "tests/object/object_bytes.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velm::host {
namespace {

using test::TemporaryDirectory;

constexpr double kTolerance = 1e-9;

std::string layer(std::size_t number, std::size_t flags, const std::vector<float> &pivot, bool hasPolygons = true) {
    using namespace test;
    std::string head =
        chunk("LAYR", words({number, flags}) + reals(pivot) + cString("Layer " + std::to_string(number)));
    if (!hasPolygons) return head;
    return head + pointsChunk({0, 0, 0, 1, 0, 0, 0, 1, 0}) + polygonsChunk("FACE", {{0, 1, 2}});
}

class LwsSceneTest : public testing::Test {
  protected:
    SceneDescription read(const std::string &text, int version = 5) {
        warnings_.clear();
        const std::string file = directory_.write("shot.lws", "LWSC\n" + std::to_string(version) + "\n" + text);
        return readLwsScene(file, {}, warnings_);
    }
    std::string refusalOf(const std::string &text) {
        try {
            read(text);
            return {};
        } catch (const InputError &error) {
            return error.what();
        }
    }

    TemporaryDirectory directory_;
    std::vector<Warning> warnings_;
    const std::string cube_ = directory_.write("cube.lwo", test::objectFile(layer(0, 0, {1, 2, 3})));
    const std::string car_ = directory_.write(
        "car.lwo", test::objectFile(layer(0, 0, {0, 0, 0}) + layer(1, 1, {4, 5, 6}) + layer(4, 0, {0, 0, 0}, false)));
};

const std::string kKeys = "{ Envelope\n  2\n  Key 1 0 3\n  Key 2 1 3\n  Behaviors 1 2\n}\n";

TEST_F(LwsSceneTest, ObjectsAreLayersWithTheirPivots) {
    const SceneDescription scene =
        read("LoadObjectLayer 1 10000000 cube.lwo\nLoadObjectLayer 1 10000001 car.lwo\n"
             "LoadObjectLayer 2 10000002 car.lwo\nUnseenByRays 1\nUnseenByCamera 1\nShadowOptions 5\n"
             "LoadObjectLayer 2 10000003 car.lwo\nPivotPosition 7 8 9\nObjectDissolve 2\nLoadObjectLayer 5 10000004 "
             "car.lwo\n");
    ASSERT_EQ(scene.objects.size(), 4u);
    const auto mesh = [&scene](std::size_t i) { return std::get<MeshFile>(scene.objects[i].shape); };
    EXPECT_EQ(mesh(0), (MeshFile{.file = cube_, .layer = std::nullopt})) << "the only layer";
    EXPECT_EQ(mesh(1), (MeshFile{.file = car_, .layer = 0}));
    EXPECT_EQ(mesh(2), (MeshFile{.file = car_, .layer = 1})) << "although it is hidden";
    EXPECT_EQ(scene.objects[0].pivot, (Double3{1, 2, 3}));
    EXPECT_EQ(scene.objects[2].pivot, (Double3{4, 5, 6}));
    EXPECT_EQ(scene.objects[3].pivot, (Double3{7, 8, 9}));
    EXPECT_FALSE(scene.objects[2].seenByRays || scene.objects[2].seenByCamera || scene.objects[2].castsShadows);
    EXPECT_EQ(scene.objects[3].dissolve, 1) << "not above 1";
    EXPECT_EQ(scene.objects[0].location, (SourceLocation{.file = (directory_ / "shot.lws"), .line = 3}));
    ASSERT_EQ(scene.nulls.size(), 1u) << "a layer without polygons";
    EXPECT_EQ(scene.nulls[0].name, "car:5");
    EXPECT_FALSE(scene.objects[0].surfaces.empty()) << "the object's own";
}

TEST_F(LwsSceneTest, LevelsOfSubdivisionHaveAtLeastTheSegments) {
    const auto level = [this](const std::string &line) {
        return std::get<MeshFile>(read("LoadObjectLayer 1 10000000 cube.lwo\n" + line).objects.at(0).shape).subdivision;
    };
    EXPECT_EQ(level(""), 2);
    const std::pair<int, int> kLevels[] = {{-1, 0}, {0, 0}, {1, 0}, {2, 1}, {3, 2}, {4, 2}, {5, 3}, {100000, 8}};
    for (const auto &[segments, expected] : kLevels)
        EXPECT_EQ(level("SubPatchLevel 3 " + std::to_string(segments) + "\n"), expected) << segments;
}

TEST_F(LwsSceneTest, TheNumberOfALayerMayBeThatOfTheFile) {
    directory_.write("odd.lwo", test::objectFile(layer(3, 0, {0, 0, 0}) + layer(7, 0, {0, 0, 0})));
    const auto layerOf = [this](int number) {
        const SceneDescription scene = read("LoadObjectLayer " + std::to_string(number) + " 10000000 odd.lwo\n");
        return std::get<MeshFile>(scene.objects.at(0).shape).layer;
    };
    EXPECT_EQ(layerOf(4), 3);
    EXPECT_EQ(layerOf(7), 7);
    EXPECT_EQ(refusalOf("LoadObjectLayer 2 10000000 odd.lwo\n"),
              (directory_ / "shot.lws") + ":3: " + (directory_ / "odd.lwo") +
                  ": the object has no layer 2; its layers are 4, 8");
}

TEST_F(LwsSceneTest, MissingAndDamagedObjectsAreErrors) {
    EXPECT_EQ(refusalOf("AddNullObject 10000000 A\nLoadObjectLayer 1 10000001 Objects/house.lwo\n"),
              (directory_ / "shot.lws") +
                  ":4: there is no file \"Objects/house.lwo\"; looked for \"Objects/house.lwo\", "
                  "\"house.lwo\" in " +
                  directory_.path().string());
    directory_.write("bad.lwo", "FORM");
    EXPECT_TRUE(refusalOf("LoadObjectLayer 1 10000000 bad.lwo\n")
                    .starts_with((directory_ / "shot.lws") + ":3: " + (directory_ / "bad.lwo") + ": "));
}

TEST_F(LwsSceneTest, NamesAreUniqueAndParentsFollow) {
    const SceneDescription scene =
        read("LoadObjectLayer 1 10000000 cube.lwo\nLoadObjectLayer 1 10000001 cube.lwo\nParentItem 10000000\n"
             "AddNullObject 10000002 cube\nParentItem 10000001\nAddLight 20000000\nParentItem 10000002\n"
             "AddCamera 30000000\nCameraName a->b\nTargetItem 10000001\nHController 1\n");
    EXPECT_EQ(scene.objects.at(0).name, "cube");
    EXPECT_EQ(scene.objects.at(1).name, "cube (2)");
    EXPECT_EQ(scene.objects[1].parent, "cube");
    EXPECT_EQ(scene.nulls.at(0).name, "cube (3)");
    EXPECT_EQ(scene.nulls[0].parent, "cube (2)");
    EXPECT_EQ(scene.lights.at(0).parent, "cube (3)");
    EXPECT_EQ(scene.cameras.at(0).name, "a-b") << "\"->\" is for connections";
    EXPECT_TRUE(scene.cameras[0].hasTarget);
    EXPECT_EQ(scene.cameras[0].targetItem, "cube (2)");
    EXPECT_FALSE(scene.lights[0].hasTarget) << "it shines along its +Z";
}

TEST_F(LwsSceneTest, MotionsBecomeKeysOfComponents) {
    const SceneDescription scene = read("AddLight 20000000\nLightMotion\nNumChannels 9\nChannel 1\n" + kKeys +
                                        "Channel 2\n{ Envelope\n  1\n  Key 5 0 0\n  Behaviors 1 1\n}\nChannel 3\n" +
                                        kKeys + "LightIntensity (envelope)\n" + kKeys);
    const LightDescription &light = scene.lights.at(0);
    EXPECT_EQ(light.position, (Double3{0, 0, 5}));
    ASSERT_EQ(light.channels.size(), 3u);
    EXPECT_EQ(light.channels[0].channel, Channel::position);
    EXPECT_EQ(light.channels[0].component, 1);
    EXPECT_EQ(light.channels[0].keys.keys.at(1).value[0], 2);
    EXPECT_EQ(light.channels[0].keys.after, kBehaveRepeat);
    EXPECT_EQ(light.channels[1].channel, Channel::rotation);
    EXPECT_NEAR(light.channels[1].keys.keys.at(1).value[0], 360 / std::numbers::pi, kTolerance);
    EXPECT_EQ(light.channels[2].channel, Channel::intensity);
}

TEST_F(LwsSceneTest, TheZoomBecomesTheFieldOfView) {
    const auto degrees = [](double zoom) { return 2 * std::atan(640.0 / 480 / zoom) * 180 / std::numbers::pi; };
    const SceneDescription scene = read("FramesPerSecond 10\nAddCamera 30000000\nZoomFactor 3.2\nFrameSize 640 480\n"
                                        "AddCamera 30000001\nZoomFactor (envelope)\n" +
                                        kKeys);
    EXPECT_NEAR(scene.cameras.at(0).fieldOfView, 45.2397, 1e-4);
    const CameraDescription &moving = scene.cameras.at(1);
    ASSERT_EQ(moving.channels.size(), 1u);
    const KeysDescription &keys = moving.channels[0].keys;
    ASSERT_EQ(keys.keys.size(), 11u) << "one for each frame";
    EXPECT_EQ(keys.after, kBehaveRepeat);
    for (std::size_t i = 0; i <= 10; ++i) {
        const double time = static_cast<double>(i) / 10;
        EXPECT_NEAR(keys.keys[i].time, time, kTolerance);
        EXPECT_NEAR(keys.keys[i].value[0], degrees(1 + time), kTolerance);
    }
}

// The film of the application is as wide as its picture: focal length = zoom * height / 2.
TEST_F(LwsSceneTest, CamerasHaveTheShapeOfThePicture) {
    const SceneDescription scene = read("AddCamera 30000000\nZoomFactor 2\nFrameSize 600 400\nPixelAspect 1.2\n"
                                        "ApertureHeight 0.02\n");
    const CameraDescription &camera = scene.cameras.at(0);
    const double aspect = 600 * 1.2 / 400, half = std::tan(camera.fieldOfView * std::numbers::pi / 360);
    EXPECT_EQ(scene.render.pixelAspect, 1.2);
    EXPECT_NEAR(half, aspect / 2, kTolerance);
    EXPECT_NEAR(camera.filmWidth, 0.02 * aspect, kTolerance);
    EXPECT_NEAR(camera.filmWidth / 2 / half, 2 * 0.02 / 2, kTolerance) << "the focal length";
}

TEST_F(LwsSceneTest, LensesHaveAnFNumber) {
    const SceneDescription scene =
        read("AddCamera 30000000\nDepthOfField 1\nLensFStop 2.8\nFocalDistance (envelope)\n" + kKeys +
             "DiaphragmSides 6\nDiaphragmRotation 15\n"
             "AddCamera 30000001\nLensFStop 2.8\nFocalDistance 3\n");
    const CameraDescription &camera = scene.cameras.at(0);
    EXPECT_EQ(camera.aperture, 2.8);
    EXPECT_EQ(camera.channels.at(0).channel, Channel::focusDistance);
    EXPECT_EQ(camera.channels[0].keys.keys.at(1).value[0], 2);
    EXPECT_EQ(camera.blades, 6);
    EXPECT_EQ(camera.bladeRotation, 15);
    EXPECT_EQ(scene.cameras.at(1).aperture, 0) << "which has depth of field switched off";
}

TEST_F(LwsSceneTest, MasksAndRegionsArePartsOfThePicture) {
    const SceneDescription scene =
        read("AddCamera 30000000\nFrameSize 400 200\nResolutionMultiplier 2\nCameraMask 1\nMaskPosition 0 20 300 160\n"
             "MaskColor -1 0.5 0\nLimitedRegion 1\nRegionLimits 0.25 2 0.1 0.5\n"
             "AddCamera 30000001\nFrameSize 400 200\nMaskPosition 0 20 300 160\n");
    EXPECT_EQ(scene.render.region, (Part{0.25, 0.1, 1, 0.5}));
    EXPECT_EQ(scene.cameras.at(0).mask, (Part{0, 0.1, 0.75, 0.9}));
    EXPECT_EQ(scene.cameras[0].maskColour, (Double3{0, 0.5, 0}));
    EXPECT_EQ(scene.cameras.at(1).mask, kWholePicture) << "the mask is switched off";
    EXPECT_EQ(read("AddCamera 30000000\nRegionLimits 0 0.5 0 0.5\n").render.region, kWholePicture);
}

TEST_F(LwsSceneTest, MotionBlurIsATimeOfTheShutter) {
    const SceneDescription scene = read("AddCamera 30000000\nMotionBlur 1\nBlurLength 0.75\n"
                                        "AddCamera 30000001\nMotionBlur 0\nBlurLength 0.75\n");
    EXPECT_EQ(scene.cameras.at(0).shutter, 0.75);
    EXPECT_EQ(scene.cameras.at(1).shutter, 0);
}

TEST(LwsZoom, LongAnimationsAreSampledAtALowerRate) {
    lws::Camera camera;
    for (const double time : {0.0, 100.0}) {
        KeyDescription &key = camera.zoom.keys.keys.emplace_back();
        key.time = time;
        key.value[0] = 1 + time;
    }
    CameraDescription converted;
    convertZoom(camera, {.aspect = 1, .framesPerSecond = 30, .mostSteps = 4}, converted);
    const KeysDescription &keys = converted.channels.at(0).keys;
    ASSERT_EQ(keys.keys.size(), 5u);
    EXPECT_EQ(keys.keys[1].time, 25);
    EXPECT_EQ(keys.keys[4].time, 100);
}

TEST_F(LwsSceneTest, LightsKeepTheirKindsAndRanges) {
    const SceneDescription scene = read(
        "AddLight 20000000\nLightColor 1 -1 0.5\nAddLight 20000001\nLightType 2\nLightFalloffType 1\nLightRange 0\n"
        "LightConeAngle 30\nLightEdgeAngle 5\nAddLight 20000002\nLightType 4\nLightQuality 3\nItemActive 0\n"
        "AddLight 20000003\nPlugin LightHandler 1 LavaLight\nEndPlugin\nAddLight 20000004\nLightType 1\n"
        "LightIntensity -1\nAddLight 20000005\nLightType 3\nLightQuality 2\n"
        "AddLight 20000006\nPlugin LightHandler 1 DomeLight\nEndPlugin\n");
    ASSERT_EQ(scene.lights.size(), 6u);
    EXPECT_EQ(scene.lights[0].kind, LightDescription::Kind::distant);
    EXPECT_EQ(scene.lights[0].colour, (Double3{1, 0, 0.5}));
    EXPECT_EQ(scene.lights[1].kind, LightDescription::Kind::spot);
    EXPECT_EQ(scene.lights[1].falloff, LightDescription::Falloff::linear);
    EXPECT_GT(scene.lights[1].range, 0);
    EXPECT_EQ(scene.lights[1].cone, 30);
    EXPECT_EQ(scene.lights[1].edge, 5);
    EXPECT_EQ(scene.lights[2].kind, LightDescription::Kind::area);
    EXPECT_EQ(scene.lights[2].samples, 9);
    EXPECT_EQ(scene.lights[2].intensity, 0) << "inactive";
    EXPECT_EQ(scene.lights[3].falloff, LightDescription::Falloff::none);
    EXPECT_EQ(scene.lights[3].intensity, 0) << "negative";
    EXPECT_EQ(scene.lights[4].kind, LightDescription::Kind::linear);
    EXPECT_EQ(scene.lights[4].length, 2);
    EXPECT_EQ(scene.lights[4].samples, 4);
    EXPECT_EQ(scene.lights[5].kind, LightDescription::Kind::dome);
    EXPECT_TRUE(scene.lights[5].hemisphere);
    EXPECT_EQ(scene.nulls.size(), 1u) << "the unknown light, to which others may be attached";
    EXPECT_EQ(warnings_.size(), 2u);
}

TEST_F(LwsSceneTest, ShadowsNeedTheirSwitches) {
    const auto shadows = [this](const std::string &lines) {
        const SceneDescription scene =
            read("AddLight 20000000\nShadowType 1\nAddLight 20000001\nShadowType 2\nAddLight 20000002\nShadowType 0\n" +
                 lines);
        std::vector<bool> all;
        for (const LightDescription &light : scene.lights) all.push_back(light.shadows);
        return all;
    };
    EXPECT_EQ(shadows(""), (std::vector<bool>{true, true, false}));
    EXPECT_EQ(shadows("RayTraceEffects 0\n"), (std::vector<bool>{false, true, false}));
    EXPECT_EQ(shadows("RayTraceEffects 7\nEnableShadowMaps 0\n"), (std::vector<bool>{true, false, false}));
}

TEST_F(LwsSceneTest, OnlyBonesThatCarrySomethingAreItems) {
    const SceneDescription scene =
        read("LoadObjectLayer 1 10000000 cube.lwo\nAddBone 40000000\nBoneName Hip\nAddBone 40010000\nBoneName Leg\n"
             "ParentItem 40000000\nAddBone 40020000\nBoneName Arm\nAddNullObject 10000001 Shoe\nParentItem 40010000\n");
    std::vector<std::string> names;
    for (const NullDescription &item : scene.nulls) names.push_back(item.name + " of " + item.parent);
    EXPECT_EQ(names, (std::vector<std::string>{"Shoe of Leg", "Leg of Hip", "Hip of cube"}));
}

TEST_F(LwsSceneTest, TheSceneHasItsSettings) {
    const SceneDescription scene =
        read("FirstFrame 5\nLastFrame 2\nFrameStep 0\nFramesPerSecond 24\nAmbientIntensity 0.1\nAmbientColor 1 0.5 0\n"
             "AddCamera 30000000\nAddCamera 30000001\nCameraName Top\nFrameSize 200 100\nResolutionMultiplier 2\n"
             "AASamples 4\nCurrentCamera 1\nSkyColor 0 0 1\nSkySqueezeAmount 3\nRayRecursionLimit 1000\n");
    EXPECT_EQ(scene.name, "shot");
    EXPECT_EQ(scene.render.firstFrame, 5);
    EXPECT_EQ(scene.render.lastFrame, 5) << "not before the first";
    EXPECT_EQ(scene.render.frameStep, 1);
    EXPECT_EQ(scene.render.framesPerSecond, 24);
    EXPECT_EQ(scene.render.ambientIntensity, 0.1);
    EXPECT_EQ(scene.render.ambientColour, (Double3{1, 0.5, 0}));
    EXPECT_EQ(scene.render.camera, "Top");
    EXPECT_EQ(scene.render.width, 400);
    EXPECT_EQ(scene.render.height, 200);
    EXPECT_EQ(scene.render.samples, 4);
    EXPECT_EQ(scene.render.recursionDepth, 256) << "the most there can be";
    EXPECT_EQ(scene.backdrop.kind, BackdropDescription::Kind::gradient);
    EXPECT_EQ(scene.backdrop.sky, (Double3{0, 0, 1}));
    EXPECT_EQ(scene.backdrop.skySqueeze, 3);
    const SceneDescription plain = read("SolidBackdrop 1\nBackdropColor 0.1 0.2 0.3\n");
    EXPECT_EQ(plain.backdrop.kind, BackdropDescription::Kind::plain);
    EXPECT_EQ(plain.backdrop.colour, (Double3{0.1, 0.2, 0.3}));
}

TEST_F(LwsSceneTest, FogIsConverted) {
    EXPECT_EQ(read("FogType 0\nFogMaxDistance 5\n").fog, FogDescription{});
    const SceneDescription scene = read("FogType 1\nFogMinDistance 2\nFogMaxDistance 1\nFogMinAmount -1\n"
                                        "FogMaxAmount 0.5\nFogColor 0.1 0.2 -3\nBackdropFog 1\n");
    EXPECT_EQ(scene.fog.kind, FogDescription::Kind::linear);
    EXPECT_EQ(scene.fog.minDistance, 2);
    EXPECT_EQ(scene.fog.maxDistance, 2.001) << "beyond the other one";
    EXPECT_EQ(scene.fog.minAmount, 0);
    EXPECT_EQ(scene.fog.maxAmount, 0.5);
    EXPECT_EQ(scene.fog.colour, (Double3{0.1, 0.2, 0}));
    EXPECT_TRUE(scene.fog.backdropColour);
    EXPECT_EQ(read("FogType 2\n").fog.kind, FogDescription::Kind::quadratic);
    EXPECT_EQ(read("FogType 7\n").fog.kind, FogDescription::Kind::cubic);
}

TEST_F(LwsSceneTest, FlatObjectsOnlyMoveTheirChildren) {
    const SceneDescription scene = read("LoadObjectLayer 1 10000000 cube.lwo\nObjectMotion\nNumChannels 9\nChannel 7\n"
                                        "{ Envelope\n  1\n  Key 0 0 0\n  Behaviors 1 1\n}\n");
    EXPECT_TRUE(scene.objects.empty());
    EXPECT_EQ(scene.nulls.size(), 1u);
}

TEST_F(LwsSceneTest, WarnsOfReflectionsThatTheSceneSwitchesOff) {
    using namespace test;
    const std::string level = subChunk("REFL", reals({0.5F}) + words({0}));
    directory_.write("mirror.lwo", triangleObject("Chrome", chunk("SURF", cString("Chrome") + cString("") + level)));
    const auto warnings = [this](const std::string &object, const std::string &effects) {
        read("LoadObjectLayer 1 10000000 " + object + "\nRayTraceEffects " + effects + "\n");
        return warnings_;
    };
    EXPECT_TRUE(warnings("cube.lwo", "0").empty()) << "which reflects nothing";
    EXPECT_TRUE(warnings("mirror.lwo", "2").empty());
    ASSERT_EQ(warnings("mirror.lwo", "0").size(), 1u);
    EXPECT_EQ(warnings_[0].text(), (directory_ / "shot.lws") + ": reflections are traced although the scene switches "
                                                               "them off (the first surface: \"Chrome\")");
}

TEST_F(LwsSceneTest, CanBeWrittenAsASceneOfOurs) {
    const SceneDescription scene =
        read("LastFrame 1\nFirstFrame 9\nFrameStep -3\nAmbientIntensity -1\nSkyColor -1 0 0\nSkySqueezeAmount 0\n"
             "LoadObjectLayer 2 10000000 car.lwo\nObjectMotion\nNumChannels 9\nChannel 4\n" +
             kKeys +
             "ObjectDissolve -1\nAddNullObject 10000001 car:2\nParentItem 10000000\nAddLight 20000000\nLightType 2\n" +
             "LightConeAngle 1000\nLightEdgeAngle -5\nLightRange -1\nLightIntensity -2\nParentItem 10000001\n"
             "AddCamera 30000000\nZoomFactor -1\nFrameSize 100000 1\nTargetItem 10000000\nPController 1\n");
    const std::string json = writeScene(scene, directory_.path().string());
    const SceneDescription again = readSceneText(json, directory_ / "shot.json", {});
    EXPECT_EQ(std::get<MeshFile>(again.objects.at(0).shape), (MeshFile{.file = car_, .layer = 1})) << json;
    EXPECT_EQ(again.objects[0].channels, scene.objects.at(0).channels);
    EXPECT_EQ(again.objects[0].pivot, (Double3{4, 5, 6}));
    EXPECT_EQ(again.objects[0].surfaces.size(), scene.objects[0].surfaces.size());
    EXPECT_EQ(again.nulls.at(0).parent, "car:2");
    EXPECT_EQ(again.lights.at(0).parent, "car:2 (2)");
    EXPECT_EQ(again.lights[0].cone, 180);
    EXPECT_EQ(again.cameras.at(0).targetItem, "car:2");
    EXPECT_EQ(again.cameras[0].fieldOfView, scene.cameras.at(0).fieldOfView);
    EXPECT_EQ(again.render.width, 32768);
}

TEST_F(LwsSceneTest, WarnsOfWhatIsLeftOut) {
    read("AddCamera 30000000\nFieldRendering 1\n", 6);
    ASSERT_EQ(warnings_.size(), 2u);
    EXPECT_EQ(warnings_[0].text(), (directory_ / "shot.lws") + ":2: the scene has version 6; it is read as version 5, "
                                                               "the last one that is known");
    EXPECT_EQ(warnings_[1].text(),
              (directory_ / "shot.lws") + ":4: a camera renders fields; whole frames are rendered");
}

} // namespace
} // namespace velm::host

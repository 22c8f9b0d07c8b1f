// Objects, lights, cameras and bones, their ids, and how they hang together.
#include "tests/lws/scene_text.h"

namespace velm::host::test {
namespace {

using lws::Light;
using Ids = std::vector<std::uint32_t>;

template <class Items>
Ids idsOf(const Items &items) {
    Ids ids;
    for (const lws::Item &item : items) ids.push_back(item.id);
    return ids;
}

TEST(LwsItems, ObjectsHaveALayerAndAPath) {
    const lws::Scene scene =
        readLws(5, "LoadObjectLayer 2 10000007 C:Big Files/red car.lwo\nAddNullObject 10000009 Rig\n"
                   "LoadObjectLayer 1 1000000a D:\\cars\\van.v2.lwo\n");
    ASSERT_EQ(scene.objects.size(), 3u);
    EXPECT_EQ(idsOf(scene.objects), (Ids{0x10000007, 0x10000009, 0x1000000a}));
    EXPECT_EQ(scene.objects[0].path, "C:Big Files/red car.lwo");
    EXPECT_EQ(scene.objects[0].name, "red car");
    EXPECT_EQ(scene.objects[0].layer, 2);
    EXPECT_EQ(scene.objects[0].line, 3);
    EXPECT_EQ(scene.objects[1].path, "");
    EXPECT_EQ(scene.objects[1].name, "Rig");
    EXPECT_EQ(scene.objects[2].name, "van.v2");
}

TEST(LwsItems, IdsFollowFromTheOrderBeforeVersion4) {
    const lws::Scene scene = readLws(3, "LoadObjectLayer 1 10000000\nAddNullObject N\nAddBone\nAddBone\n"
                                        "AddLight\nAddLight\nAddCamera\n");
    EXPECT_EQ(scene.objects.at(0).path, "10000000") << "a name, as version 3 has no ids";
    EXPECT_EQ(idsOf(scene.objects), (Ids{0x10000000, 0x10000001}));
    EXPECT_EQ(idsOf(scene.bones), (Ids{0x40000001, 0x40010001}));
    EXPECT_EQ(idsOf(scene.lights), (Ids{0x20000000, 0x20000001}));
    EXPECT_EQ(idsOf(scene.cameras), (Ids{0x30000000}));
}

TEST(LwsItems, AnIdThatIsTakenIsReplaced) {
    const lws::Scene scene = readLws(5, "AddLight 20000001\nAddLight 20000001\nAddLight\nAddLight\n");
    const Ids ids = idsOf(scene.lights);
    EXPECT_EQ(std::set<std::uint32_t>(ids.begin(), ids.end()).size(), 4u);
    EXPECT_EQ(ids[0], 0x20000001u);
}

TEST(LwsItems, ParentsMayComeLater) {
    const lws::Scene scene = readLws(5, "AddNullObject 10000000 A\nParentItem 20000003\nPivotPosition 1 2 3\n"
                                        "AddLight 20000003\nLightName Key light\nParentItem 10000005\n");
    EXPECT_EQ(scene.objects.at(0).parent, 0x20000003u);
    EXPECT_EQ(scene.objects[0].pivot, (Double3{1, 2, 3}));
    EXPECT_EQ(scene.lights.at(0).name, "Key light");
    EXPECT_FALSE(scene.lights[0].parent);
    EXPECT_EQ(lossesOf(scene),
              std::vector<std::string>{"6: a reference to an item is ignored: the scene has no such item"});
}

TEST(LwsItems, OldVersionsCountObjectsFromOne) {
    const lws::Scene scene = readLws(1, "LoadObject a\nParentObject 2\nLoadObject b\nAddCamera\nTargetObject 1\n");
    EXPECT_EQ(scene.objects.at(0).parent, scene.objects.at(1).id);
    EXPECT_EQ(scene.cameras.at(0).target, scene.objects[0].id);
    EXPECT_TRUE(scene.cameras[0].aims);
}

TEST(LwsItems, ItemsAboveThemselvesAreAnError) {
    EXPECT_EQ(
        errorOf(5, "AddNullObject 10000000 A\nParentItem 10000001\nAddNullObject 10000001 B\nParentItem 10000000\n"),
        "a.lws:3: the item \"A\" is its own parent, or the parent of one of its parents");
    EXPECT_EQ(errorOf(5, "AddLight 20000000\nParentItem 20000000\n"),
              "a.lws:3: the item \"Light\" is its own parent, or the parent of one of its parents");
}

TEST(LwsItems, ControllersAimOrAreLost) {
    const lws::Scene scene = readLws(5, "AddNullObject 10000000 A\nAddCamera 30000000\nTargetItem 10000000\n"
                                        "HController 1\nPController 1\nBController 0\nXController 3\n"
                                        "AddCamera\nTargetItem 10000000\nPositionItem 10000000\nPivotRotation 0 0 1\n");
    EXPECT_TRUE(scene.cameras.at(0).aims);
    EXPECT_FALSE(scene.cameras.at(1).aims) << "no controller uses the target";
    EXPECT_EQ(lossesOf(scene),
              (std::vector<std::string>{
                  "9: an axis is controlled by something else than keys and a target; its keys are used",
                  "12: an item takes part of its motion from another item; its own keys are used",
                  "13: the rotation of a pivot is ignored"}));
}

TEST(LwsItems, BonesAreItemsOfTheirObject) {
    const lws::Scene scene =
        readLws(5, "LoadObjectLayer 1 10000004 a.lwo\nAddBone 40000004\nBoneName Hip\nBoneActive 1\n"
                   "AddBone 40010004\nBoneName Leg\nBoneActive 1\nParentItem 40000004\n"
                   "AddNullObject 10000005 Shoe\nParentItem 40010004\n");
    ASSERT_EQ(scene.bones.size(), 2u);
    EXPECT_EQ(scene.bones[0].name, "Hip");
    EXPECT_EQ(scene.bones[0].parent, 0x10000004u) << "the object";
    EXPECT_EQ(scene.bones[1].parent, 0x40000004u);
    EXPECT_EQ(scene.objects.at(1).parent, 0x40010004u);
    EXPECT_EQ(lossesOf(scene), std::vector<std::string>{"6: 2 bones deform no objects"});
}

TEST(LwsItems, SubdivisionSurfacesHaveSegments) {
    const lws::Scene scene = readLws(5, "LoadObjectLayer 1 10000000 a\nSubPatchLevel 2 6\n"
                                        "LoadObjectLayer 1 10000001 b\nSubPatchLevel 4\n"
                                        "LoadObjectLayer 1 10000002 c\nSubPatchLevel many\n");
    EXPECT_EQ(scene.objects.at(0).segments, 6) << "as rendered, not as shown";
    EXPECT_EQ(scene.objects.at(1).segments, 4);
    EXPECT_FALSE(scene.objects.at(2).segments);
    EXPECT_EQ(lossesOf(scene).size(), 1u) << "the line that cannot be read";
}

TEST(LwsItems, ObjectsHaveFlags) {
    const lws::Scene scene =
        readLws(5, "LoadObjectLayer 1 10000000 a\nUnseenByRays 1\nUnseenByCamera 1\nShadowOptions 5\n"
                   "ItemActive 0\nShowObject 0 0\nLoadObjectLayer 1 10000001 b\nShadowOptions 2\n"
                   "PolygonSize 0.5\nDistanceDissolve 1\nMorphAmount (envelope)\n" +
                       envelope("Key 0 0 0\n") + "ExcludeLight 20000000\nNodeDisplacement 1\n");
    const lws::Object &a = scene.objects.at(0), &b = scene.objects.at(1);
    EXPECT_FALSE(a.seenByRays || a.seenByCamera || a.castsShadows || a.active);
    EXPECT_TRUE(b.seenByRays && b.seenByCamera && b.castsShadows && b.active);
    EXPECT_EQ(lossesOf(scene),
              (std::vector<std::string>{"13: the morphing of an object is left out", "20: a displacement is left out",
                                        "12: an object does not dissolve with its distance",
                                        "11: the polygon size of an object is ignored",
                                        "10: an object also receives shadows, its own included, against the scene",
                                        "19: the exclusion of a light from an object is ignored"}));
}

TEST(LwsItems, LightsHaveTheirValues) {
    const lws::Scene scene =
        readLws(5, "AddLight 20000000\nLightColor 1 0.5 0.25\nLightIntensity 1.5\nLightType 2\nLightFalloffType 3\n"
                   "LightRange 4\nLightConeAngle 40\nLightEdgeAngle (envelope)\n" +
                       envelope("Key 0 0 3\nKey 0.5 1 3\n") + "ShadowType 2\nLightQuality 5\n");
    const Light &light = scene.lights.at(0);
    EXPECT_EQ(light.kind, Light::Kind::spot);
    EXPECT_EQ(light.falloff, Light::Falloff::inverseSquare);
    EXPECT_EQ(light.colour[1].constant, 0.5);
    EXPECT_EQ(light.intensity.constant, 1.5);
    EXPECT_EQ(light.range.constant, 4);
    EXPECT_EQ(light.cone.constant, 40);
    EXPECT_NEAR(light.edge.keys.keys.at(1).value[0], 28.6478897565, 1e-9) << "keys have radians";
    EXPECT_EQ(light.shadows, Light::Shadows::mapped);
    EXPECT_EQ(light.quality, 5);
    EXPECT_EQ(lossesOf(scene), std::vector<std::string>{});
}

TEST(LwsItems, NegativeLightsAreLost) {
    const lws::Scene scene =
        readLws(5, "AddLight 20000000\nLightIntensity -0.5\nAddLight\nLightIntensity (envelope)\n" +
                       envelope("Key 1 0 3\nKey -1 1 3\n"));
    EXPECT_EQ(lossesOf(scene),
              std::vector<std::string>{"3: 2 lights whose intensities are negative are rendered without light"});
}

TEST(LwsItems, AnItemCannotBeItsOwnTarget) {
    const lws::Scene scene = readLws(5, "AddCamera 30000000\nTargetItem 30000000\nHController 1\n");
    EXPECT_FALSE(scene.cameras.at(0).target);
    EXPECT_EQ(lossesOf(scene),
              std::vector<std::string>{"3: a reference to an item is ignored: the scene has no such item"});
}

TEST(LwsItems, OldLightsHaveOldUnits) {
    const lws::Scene scene = readLws(1, "AddLight\nLightColor 255 51 0\nLgtIntensity 0.5\nLightType 1\nFalloff 0.1\n"
                                        "ShadowCasting 0\nAddLight\nLightColor (envelope)\n  3\n  1\n  0 255 0\n"
                                        "  0 0 0 0 0\nEndBehavior 1\n");
    const Light &light = scene.lights.at(0);
    EXPECT_EQ(light.colour[0].constant, 1);
    EXPECT_NEAR(light.colour[1].constant, 0.2, 1e-12);
    EXPECT_EQ(light.falloff, Light::Falloff::linear);
    EXPECT_NEAR(light.range.constant, 10, 1e-12);
    EXPECT_EQ(light.shadows, Light::Shadows::none);
    EXPECT_EQ(scene.lights.at(1).colour[1].constant, 1);
    EXPECT_EQ(scene.lights[1].colour[0].constant, 0);
}

TEST(LwsItems, AColourMayHaveKeysForEachComponent) {
    const std::string keys = envelope("Key 0 0 3\nKey 1 1 3\n"), one = envelope("Key 0.5 0 3\n");
    const lws::Scene scene =
        readLws(5, "AddLight 20000000\nLightColor (envelope)\n" + keys + one + keys + "LightType 1\n");
    const Light &light = scene.lights.at(0);
    EXPECT_TRUE(light.colour[0].isAnimated() && light.colour[2].isAnimated());
    EXPECT_EQ(light.colour[1].constant, 0.5);
    EXPECT_EQ(light.kind, Light::Kind::point);
}

TEST(LwsItems, ThePluginOfALightIsItsKind) {
    const auto kindOf = [](const std::string &server) {
        const lws::Scene scene =
            readLws(5, "AddLight 20000000\nLightType 0\nPlugin LightHandler 1 " + server + "\nEndPlugin\n");
        return scene.lights.at(0).kind;
    };
    EXPECT_EQ(kindOf("DistantLight"), Light::Kind::distant);
    EXPECT_EQ(kindOf("PointLight"), Light::Kind::point);
    EXPECT_EQ(kindOf("SpotLight"), Light::Kind::spot);
    EXPECT_EQ(kindOf("AreaLight"), Light::Kind::area);
    EXPECT_EQ(kindOf("LinearLight"), Light::Kind::linear);
    EXPECT_EQ(kindOf("SphericalLight"), Light::Kind::otherPoint);
    EXPECT_EQ(kindOf("DomeLight"), Light::Kind::dome);
    EXPECT_EQ(kindOf("LavaLight"), Light::Kind::none);
    const lws::Scene scene =
        readLws(5, "AddLight 20000000\nPlugin LightHandler 1 LavaLight\n}\nLightType 1\nEndPlugin\n"
                   "AddLight 20000001\nPlugin LightHandler 1 SphericalLight\nEndPlugin\nLensFlare 1\nAffectSpecular 0\n"
                   "ShadowColor 0 0 1\nVolumetricLighting 1\nLightProjectionImage a.png\n");
    EXPECT_EQ(lossesOf(scene),
              (std::vector<std::string>{
                  "8: a spherical or photometric light is rendered as a point light",
                  "3: a light of a kind that is not rendered is left out", "11: a lens flare is left out",
                  "14: the volumetric effect of a light is left out", "15: the image that a light projects is left out",
                  "13: the shadow colour of a light is ignored",
                  "12: a light that has its diffuse or specular light switched off gives both"}));
}

TEST(LwsItems, CamerasHaveAFrameSize) {
    const lws::Scene scene = readLws(
        5, "AddCamera 30000000\nCameraName Wide\nZoomFactor 1.5\nResolutionMultiplier 0.5\nFrameSize 1920 1080\n"
           "PixelAspect 1\nApertureHeight 0.02\nAASamples 4\nAddCamera 30000001\nUseGlobalResolution 1\nFrameSize 5 5\n"
           "AddCamera 30000002\nGlobalFrameSize 320 200\nGlobalMultiplier 2\nGlobalPixelAspect 0.9\nGlobalFilmHeight "
           "0.024\n"
           "CurrentCamera 1\n");
    ASSERT_EQ(scene.cameras.size(), 3u);
    EXPECT_EQ(scene.cameras[0].name, "Wide");
    EXPECT_EQ(scene.cameras[0].zoom.constant, 1.5);
    EXPECT_EQ(scene.cameras[0].width, 1920);
    EXPECT_EQ(scene.cameras[0].height, 1080);
    EXPECT_EQ(scene.cameras[0].multiplier, 0.5);
    EXPECT_EQ(scene.cameras[0].samples, 4);
    EXPECT_EQ(scene.cameras[1].width, 320) << "the scene's own";
    EXPECT_EQ(scene.cameras[1].multiplier, 2);
    EXPECT_EQ(scene.cameras[2].width, 640) << "without any";
    EXPECT_EQ(scene.cameras[2].height, 480);
    EXPECT_EQ(scene.currentCamera, 1);
    EXPECT_EQ(scene.cameras[0].pixelAspect, 1);
    EXPECT_EQ(scene.cameras[1].pixelAspect, 0.9);
    EXPECT_EQ(scene.cameras[0].apertureHeight, 0.02);
    EXPECT_EQ(scene.cameras[1].apertureHeight, 0.024);
    EXPECT_EQ(scene.cameras[2].apertureHeight, 0.015) << "without any";
    EXPECT_EQ(lossesOf(scene), std::vector<std::string>{});
}

TEST(LwsItems, OldCamerasHaveCodes) {
    const lws::Scene own = readLws(2, "AddCamera\nResolution 1\nCustomSize 320 200\nPixelAspectRatio -1\n"
                                      "CustomPixelRatio 1.25\n");
    EXPECT_EQ(own.cameras.at(0).width, 320);
    EXPECT_EQ(own.cameras[0].pixelAspect, 0.8) << "the height of a pixel by its width";
    EXPECT_EQ(lossesOf(own), std::vector<std::string>{});
    const lws::Scene code = readLws(1, "AddCamera\nResolution 1\nPixelAspectRatio 0\nDepthofField 1\nMotionBlur 2\n"
                                       "LimitedRegion 1\nCameraMask 1\nFieldRendering 1\n");
    EXPECT_EQ(code.cameras.at(0).width, 640);
    EXPECT_TRUE(code.cameras[0].hasDepthOfField && code.cameras[0].hasMotionBlur);
    EXPECT_EQ(lossesOf(code),
              (std::vector<std::string>{
                  "10: a camera renders fields; whole frames are rendered",
                  "3: the shape of a camera's pixels is not given as a number; they are rendered as squares",
                  "3: the frame size of a camera is not given in pixels; it is rendered at 640 x 480"}));
}

TEST(LwsItems, CamerasHaveMasksAndRegions) {
    const lws::Scene scene = readLws(5, "AddCamera 30000000\nCameraMask 1\nMaskPosition 10 20 300 200\n"
                                        "MaskColor 1 0.5 0\nLimitedRegion 1\nRegionLimits 0.25 0.75 0.1 1\n"
                                        "AddCamera 30000001\nUseGlobalMask 1\nMaskPosition 0 0 1 1\nRegionLimits 0 1\n"
                                        "GlobalMaskPosition 1 2 3 4\n");
    using Four = std::array<double, 4>;
    EXPECT_TRUE(scene.cameras.at(0).hasMask);
    EXPECT_EQ(scene.cameras[0].mask, (Four{10, 20, 300, 200}));
    EXPECT_EQ(scene.cameras[0].maskColour, (Double3{1, 0.5, 0}));
    EXPECT_TRUE(scene.cameras[0].hasRegion);
    EXPECT_EQ(scene.cameras[0].region, (Four{0.25, 0.75, 0.1, 1}));
    EXPECT_FALSE(scene.cameras.at(1).hasMask);
    EXPECT_EQ(scene.cameras[1].mask, (Four{1, 2, 3, 4}));
    EXPECT_EQ(scene.cameras[1].region, (Four{0, 1, 0, 1})) << "two numbers are missing";
    EXPECT_EQ(lossesOf(scene),
              std::vector<std::string>{"12: a line is ignored: its arguments are not those that its keyword has"});
}

TEST(LwsItems, CamerasHaveAShutter) {
    const lws::Scene scene = readLws(5, "AddCamera 30000000\nMotionBlur 2\nBlurLength 0.75\nAddCamera 30000001\n"
                                        "UseGlobalBlur 1\nMotionBlur 0\nAddCamera 30000002\nMotionBlur 0\n"
                                        "GlobalMotionBlur 1\n");
    EXPECT_TRUE(scene.cameras.at(0).hasMotionBlur);
    EXPECT_EQ(scene.cameras[0].blurLength, 0.75);
    EXPECT_TRUE(scene.cameras.at(1).hasMotionBlur);
    EXPECT_FALSE(scene.cameras.at(2).hasMotionBlur);
    EXPECT_FALSE(readLws(1, "AddCamera\nMotionBlur 1\n").cameras.at(0).hasMotionBlur) << "of particles only";
}

TEST(LwsItems, CamerasHaveALens) {
    const lws::Scene scene = readLws(
        5, "AddCamera 30000000\nDepthOfField 1\nFocalDistance (envelope)\n" + envelope("Key 2 0 3\nKey 5 1 3\n") +
               "LensFStop 2.8\nDiaphragmSides 5\nDiaphragmRotation 10\nAddCamera 30000001\n");
    const lws::Camera &camera = scene.cameras.at(0);
    EXPECT_TRUE(camera.hasDepthOfField);
    EXPECT_EQ(camera.focusDistance.keys.keys.at(1).value[0], 5);
    EXPECT_EQ(camera.fNumber.constant, 2.8);
    EXPECT_EQ(camera.blades, 5);
    EXPECT_EQ(camera.bladeRotation, 10);
    EXPECT_FALSE(scene.cameras.at(1).hasDepthOfField);
    EXPECT_EQ(lossesOf(scene), std::vector<std::string>{});
    const lws::Scene old = readLws(1, "AddCamera\nDepthofField 1\nFilmSize 6\n");
    EXPECT_EQ(lossesOf(old), std::vector<std::string>{"3: the film of a camera with depth of field is not given as a "
                                                      "number; it is taken as 15 mm high"});
}

} // namespace
} // namespace velm::host::test

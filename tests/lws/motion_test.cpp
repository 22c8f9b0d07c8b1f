// Motions and values with keys, in the forms of all versions.
#include "tests/lws/scene_text.h"

#include "module/host.h"

#include <numbers>

namespace velm::host::test {
namespace {

constexpr double kTolerance = 1e-9;

const std::string kNull = "AddNullObject A\nObjectMotion\nNumChannels 9\n";

TEST(LwsMotion, RotationsAreInDegrees) {
    const std::string quarter = std::to_string(std::numbers::pi / 2);
    const lws::Scene scene = readLws(3, kNull + "Channel 0\n" + envelope("Key 2 0 0\n") + "Channel 4\n" +
                                            envelope("Key " + quarter + " 0 0 0 0 0 0 0 0\n"));
    const auto &motion = scene.objects.at(0).motion;
    EXPECT_EQ(motion[0].constant, 2);
    EXPECT_NEAR(motion[4].constant, 90, 1e-4); // std::to_string gives six digits
    EXPECT_EQ(motion[6].constant, 1) << "the scale is 1 without a channel";
    for (const lws::Value &value : motion) EXPECT_FALSE(value.isAnimated()) << "one key is a constant";
}

TEST(LwsMotion, EveryShapeHasItsParameters) {
    const lws::Scene scene = readLws(5, kNull + "Channel 3\n" +
                                            envelope("Key 0 0 0 0.1 0.2 0.3 9 9 9\nKey 1 1 1 0.1 0.2 0.3 4 5 9\n"
                                                     "Key 2 2 2 0 0 0 4 5 9\nKey 3 3 3\nKey 4 4 4\n"
                                                     "Key 5 5 5 -0.1 0.2 0.3 0.4 9 9\n",
                                                     "2 4"));
    const KeysDescription &keys = scene.objects.at(0).motion[3].keys;
    constexpr double kDegrees = 180 / std::numbers::pi;
    ASSERT_EQ(keys.keys.size(), 6u);
    EXPECT_EQ(keys.before, kBehaveRepeat);
    EXPECT_EQ(keys.after, kBehaveOffsetRepeat);
    for (int i = 0; i < 6; ++i) {
        const KeyDescription &key = keys.keys[static_cast<std::size_t>(i)];
        EXPECT_EQ(key.shape, i);
        EXPECT_EQ(key.time, i);
        EXPECT_NEAR(key.value[0], i * kDegrees, kTolerance);
    }
    EXPECT_EQ(keys.keys[0].tension, 0.1);
    EXPECT_EQ(keys.keys[0].continuity, 0.2);
    EXPECT_EQ(keys.keys[0].bias, 0.3);
    EXPECT_NEAR(keys.keys[1].parameters[0], 4 * kDegrees, kTolerance);
    EXPECT_NEAR(keys.keys[2].parameters[1], 5 * kDegrees, kTolerance);
    EXPECT_EQ(keys.keys[5].parameters[0], -0.1) << "a time";
    EXPECT_NEAR(keys.keys[5].parameters[1], 0.2 * kDegrees, kTolerance);
    EXPECT_EQ(keys.keys[5].parameters[2], 0.3) << "a time";
    EXPECT_NEAR(keys.keys[5].parameters[3], 0.4 * kDegrees, kTolerance);
}

TEST(LwsMotion, KeysAreOrderedAndTheLastOfATimeCounts) {
    const lws::Scene scene =
        readLws(5, kNull + "Channel 0\n" + envelope("Key 3 2 3\nKey 1 0 3\nKey 2 1 3\nKey 5 1 3\n"));
    const KeysDescription &keys = scene.objects.at(0).motion[0].keys;
    ASSERT_EQ(keys.keys.size(), 3u);
    EXPECT_EQ(keys.keys[0].value[0], 1);
    EXPECT_EQ(keys.keys[1].value[0], 5);
    EXPECT_EQ(keys.keys[2].value[0], 3);
}

TEST(LwsMotion, KeysThatSayNothingBecomeTheConstant) {
    const std::string flat = "Key 3 0 3\nKey 3 1 0\n";
    const lws::Scene scene = readLws(5, kNull + "Channel 0\n" + envelope(flat) + "Channel 1\n" + envelope(flat, "0 1"));
    EXPECT_EQ(scene.objects.at(0).motion[0].constant, 3);
    EXPECT_FALSE(scene.objects.at(0).motion[0].isAnimated());
    EXPECT_TRUE(scene.objects.at(0).motion[1].isAnimated()) << "it is 0 before its first key";
}

TEST(LwsMotion, Version1SharesKeysBetweenChannels) {
    const lws::Scene scene = readLws(1, "FramesPerSecond 24\nLoadObject a.lwo\nObjectMotion (unnamed)\n  9\n  2\n"
                                        "  0 0 0 10 0 0 1 1 1\n  0 0 0 0 0\n  1 2 3 90 0 0 1 1 1\n"
                                        "  12 1 0.25 0.5 0.75\nEndBehavior 2\nShadowOptions 0\n");
    const lws::Object &object = scene.objects.at(0);
    ASSERT_EQ(object.motion[3].keys.keys.size(), 2u);
    const KeysDescription &heading = object.motion[3].keys;
    EXPECT_EQ(heading.keys[0].value[0], 10) << "degrees";
    EXPECT_EQ(heading.keys[0].shape, kShapeTcb);
    EXPECT_EQ(heading.keys[1].time, 0.5) << "12 frames of 24 a second";
    EXPECT_EQ(heading.keys[1].shape, kShapeLinear);
    EXPECT_EQ(heading.keys[1].tension, 0.25);
    EXPECT_EQ(heading.keys[1].continuity, 0.5);
    EXPECT_EQ(heading.keys[1].bias, 0.75);
    EXPECT_EQ(heading.before, kBehaveConstant);
    EXPECT_EQ(heading.after, kBehaveRepeat);
    EXPECT_FALSE(object.motion[8].isAnimated());
    EXPECT_FALSE(object.castsShadows) << "the lines after the list are read";
}

TEST(LwsMotion, Version2HasKeysForEachChannel) {
    const lws::Scene scene =
        readLws(2, "AddCamera\nCameraMotion (unnamed)\n  6\n  2\n  1 0 2 0.5 0 0\n  3 1.5 2 0 0 0\n"
                   "  1\n  4 0 2 0 0 0\n  1\n  5 0 2 0 0 0\n  1\n  45 0 2 0 0 0\n  1\n  0 0 2 0 0 0\n"
                   "  1\n  0 0 2 0 0 0\nPre/PostBehavior 1 5 1 1 1 1 1 1 1 1 1 1\nZoomFactor 2\n");
    const lws::Camera &camera = scene.cameras.at(0);
    ASSERT_EQ(camera.motion[0].keys.keys.size(), 2u);
    EXPECT_EQ(camera.motion[0].keys.keys[0].tension, 0.5);
    EXPECT_EQ(camera.motion[0].keys.keys[1].time, 1.5) << "seconds";
    EXPECT_EQ(camera.motion[0].keys.after, kBehaveLinear);
    EXPECT_EQ(camera.motion[1].constant, 4);
    EXPECT_EQ(camera.motion[3].constant, 45) << "degrees";
    EXPECT_EQ(camera.motion[8].constant, 1) << "cameras have six channels";
    EXPECT_EQ(camera.zoom.constant, 2);
}

TEST(LwsMotion, ValuesMayHaveKeys) {
    const std::string keys = envelope("Key 0 0 3\nKey 1 1 3\n");
    const auto dissolveOf = [](const lws::Scene &scene) { return scene.objects.at(0).dissolve; };
    EXPECT_EQ(dissolveOf(readLws(3, "AddNullObject A\nObjectDissolve 0.25\n")).constant, 0.25);
    for (const char *arguments : {"(envelope)", "0.5", ""}) {
        const lws::Scene scene =
            readLws(5, "AddNullObject A\nObjectDissolve " + std::string(arguments) + "\n" + keys + "UnseenByRays 1\n");
        EXPECT_EQ(dissolveOf(scene).keys.keys.size(), 2u) << arguments;
        EXPECT_FALSE(scene.objects[0].seenByRays) << arguments;
    }
    const lws::Scene old = readLws(1, "FramesPerSecond 10\nLoadObject a\nObjDissolve (envelope)\n  1\n  2\n  0\n"
                                      "  0 1 0 0 0\n  1\n  5 1 0 0 0\nEndBehavior 1\nUnseenByRays 1\n");
    EXPECT_EQ(dissolveOf(old).keys.keys.at(1).time, 0.5);
    EXPECT_FALSE(old.objects[0].seenByRays);
}

TEST(LwsMotion, DamageIsAnErrorWithItsLine) {
    const std::string null = "AddNullObject A\nChannel 0\n";
    EXPECT_EQ(errorOf(5, null + "{ Envelope\n  1\n  Key x 0 0\n}\n"),
              "a.lws:7: the keys are damaged: expected the value of a key in \"Key x 0 0\"");
    EXPECT_EQ(errorOf(5, null + "{ Envelope\n  1\n  Key 1\n}\n"),
              "a.lws:7: the keys are damaged: expected the time of a key in \"Key 1\"");
    EXPECT_EQ(errorOf(5, null + "{ Envelope\n}\n"), "a.lws:5: the envelope has no keys");
    EXPECT_EQ(errorOf(5, null + "{ Envelope\n  1\n"), "a.lws:5: the block \"{ Envelope\" is not closed");
    EXPECT_EQ(errorOf(1, "LoadObject a\nObjectMotion (unnamed)\nnine\n"),
              "a.lws:5: the keys are damaged: expected the number of channels, 1 to 64");
    EXPECT_EQ(errorOf(2, "LoadObject a\nObjectMotion (unnamed)\n9\n3\n0 0 2 0 0 0\n"),
              "a.lws:7: the file ends where a key was expected");
}

TEST(LwsMotion, ModifiersOfChannelsAreLost) {
    const lws::Scene scene = readLws(5, kNull + "Channel 0\n{ Envelope\n  1\n  Key 1 0 0\n  Behaviors 1 1\n"
                                                "  ChannelHandler 1 Noise\n  { Data\n    Key 5 5 5\n  }\n}\n");
    EXPECT_EQ(scene.objects.at(0).motion[0].constant, 1);
    EXPECT_EQ(lossesOf(scene), std::vector<std::string>{"11: a plug-in that changes a motion is left out"});
}

} // namespace
} // namespace velm::host::test

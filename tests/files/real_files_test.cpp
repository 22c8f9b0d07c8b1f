// Files written by other programs: those of Debian's package assimp-testmodels.
#include "tests/files/test_files.h"

#include "host/animation/channel.h"
#include "host/base/error.h"
#include "host/files/network_block.h"
#include "host/files/object_file.h"
#include "host/io/files.h"
#include "host/state/save_state.h"

#include <cmath>
#include <memory>

namespace velm::host::test {
namespace {

constexpr const char *kMissing = "the package assimp-testmodels is not installed; ./run test does that";

std::string throughASurface(const ObjectFile &file, std::size_t index, bool *hasPlaceholder = nullptr) {
    Surface surface(file.surfaces()[index].name);
    loadNetwork(surface, *file.network(index), file.name(), file.networkOffset(index));
    if (hasPlaceholder)
        for (const auto &node : surface.network().nodes()) *hasPlaceholder |= node->placeholder != nullptr;
    StateWriter writer(kStateBinary);
    surface.save(*writer.state());
    return writer.finish();
}

TEST(RealFiles, EveryNetworkOfEveryObjectComesBackToTheByte) {
    const auto files = realFiles(".lwo");
    ASSERT_FALSE(files.empty()) << kMissing;
    int networks = 0, others = 0;
    for (const auto &path : files) {
        const std::string bytes = readFile(path.string());
        if (bytes.substr(0, 4) != "FORM" || bytes.substr(8, 4) != "LWO2") {
            EXPECT_THROW(ObjectFile(bytes, path.string()), InputError);
            continue;
        }
        ObjectFile file(bytes, path.string());
        EXPECT_EQ(file.write(), bytes) << path;
        for (std::size_t i = 0; i < file.surfaces().size(); ++i) {
            if (!file.network(i)) continue;
            bool hasPlaceholder = false;
            const std::string block = throughASurface(file, i, &hasPlaceholder);
            EXPECT_EQ(block, *file.network(i)) << path;
            file.setNetwork(i, block);
            ++networks;
            if (hasPlaceholder) ++others;
        }
        EXPECT_EQ(file.write(), bytes) << path;
    }
    EXPECT_EQ(networks, 39);
    EXPECT_EQ(others, 2); // with gradients, which this host does not have
}

TEST(RealFiles, EveryNetworkOfEverySceneComesBackToTheByte) {
    const auto files = realFiles(".lws");
    ASSERT_FALSE(files.empty()) << kMissing;
    int networks = 0;
    for (const auto &path : files) {
        const std::string bytes = readFile(path.string());
        SceneText scene(bytes, path.string());
        EXPECT_EQ(scene.write(), bytes) << path;
        for (const std::size_t i : scene.find("Nodal_Block")) {
            const auto network = readNetwork(scene, scene.blocks()[i]);
            EXPECT_EQ(network->root().server->name(), "Displacement");
            EXPECT_EQ(network->state(), 1); // switched off
            scene.setBlock(i, writeNetwork(*network));
            ++networks;
        }
        EXPECT_EQ(scene.write(), bytes) << path;
    }
    EXPECT_EQ(networks, 13);
}

TEST(RealFiles, ANodeThatIsNotThereIsMagenta) {
    const std::string path = "/usr/share/assimp/models/LWO/LWO2/sphere_with_gradient.lwo";
    ASSERT_TRUE(std::filesystem::exists(path)) << kMissing;
    const ObjectFile file(readFile(path), path);
    Surface surface("Default");
    loadNetwork(surface, *file.network(0), path, file.networkOffset(0));
    ShadingSample sample{};
    const SurfaceValues values = surface.evaluate(&sample);
    EXPECT_EQ(values.colour[0], 1);
    EXPECT_EQ(values.colour[1], 0);
    EXPECT_EQ(values.colour[2], 1);
}

// ---- The motion of scenes -------------------------------------------------------------------------------------------

// A channel of the first item of a scene; 0 to 2 are its position.
std::unique_ptr<HostEnvelope> channel(const std::string &file, int number) {
    const std::string path = "/usr/share/assimp/models/LWS/" + file;
    if (!std::filesystem::exists(path)) throw InputError(kMissing);
    const SceneText scene(readFile(path), path);
    for (const std::size_t i : scene.find("Envelope"))
        if (scene.blocks()[i].before == "Channel " + std::to_string(number))
            return readEnvelope(scene, scene.blocks()[i]);
    throw InputError("there is no channel " + std::to_string(number));
}

constexpr double kClose = 1e-12;

TEST(RealFiles, EveryChannelHasItsKeysValuesAtItsKeys) {
    int keys = 0;
    for (const auto &path : realFiles(".lws")) {
        const SceneText scene(readFile(path.string()), path.string());
        for (const std::size_t i : scene.find("Envelope")) {
            const auto envelope = readEnvelope(scene, scene.blocks()[i]);
            for (const auto &key : envelope->keys) {
                EXPECT_NEAR(envelope->evaluate(key->time), key->value, kClose) << path << ":" << scene.blocks()[i].line;
                ++keys;
            }
        }
    }
    EXPECT_GT(keys, 300);
}

// X goes from 0 over 1.92 at 2/3 s to -0.52 at 2 s. The value half way between two keys depends on the shape.
constexpr double kKey0 = 0, kKey1 = 1.924918483918713, kKey2 = -0.52300345897674561;
constexpr double kTime1 = 0.66666666666666663, kTime2 = 2;

TEST(RealFiles, LinearSpansAreStraight) {
    const auto x = channel("move_xz_linear.lws", 0);
    for (const double part : {0.1, 0.25, 0.5, 0.9}) {
        EXPECT_NEAR(x->evaluate(part * kTime1), kKey0 + part * (kKey1 - kKey0), kClose);
        EXPECT_NEAR(x->evaluate(kTime1 + part * (kTime2 - kTime1)), kKey1 + part * (kKey2 - kKey1), kClose);
    }
}

TEST(RealFiles, SteppedSpansHoldTheirFirstValue) {
    const auto x = channel("move_xz_stepped.lws", 0);
    for (const double part : {0.0, 0.25, 0.999}) {
        EXPECT_EQ(x->evaluate(part * kTime1), kKey0);
        EXPECT_EQ(x->evaluate(kTime1 + part * (kTime2 - kTime1)), kKey1);
    }
}

// Half way a cubic with the end values a and b and the tangents m and n (per span) is (a + b) / 2 + (m - n) / 8.
double halfWay(double a, double b, double m, double n) { return (a + b) / 2 + (m - n) / 8; }

TEST(RealFiles, HermiteSpansGoByTheirKeysTangents) {
    const auto x = channel("move_xz_hermite.lws", 0);
    // The fourth and fifth number of a key: its tangents in and out. Those of the middle key are for both spans
    // together, and each span takes its fraction.
    const double arriving = -0.17433448632558185 * kTime1 / kTime2;
    const double leaving = -0.3486689726511637 * (kTime2 - kTime1) / kTime2;
    EXPECT_NEAR(x->evaluate(kTime1 / 2), halfWay(kKey0, kKey1, 2.0144942798797212, arriving), kClose);
    EXPECT_NEAR(x->evaluate((kTime1 + kTime2) / 2), halfWay(kKey1, kKey2, leaving, -2.4474120653818376), kClose);
}

TEST(RealFiles, SplineSpansGoByTheirNeighbours) {
    const auto x = channel("move_xz_spline.lws", 0);
    constexpr double kMiddle = 2.0153336524963379;
    // Tension, continuity and bias are 0. At an end the tangent is the difference to the neighbour; between two
    // neighbours, half the sum of the differences, scaled by the span's fraction of both.
    const double whole = kKey2 - kKey0; // the sum of both differences
    const double arriving = whole * kTime1 / kTime2, leaving = whole * (kTime2 - kTime1) / kTime2;
    EXPECT_NEAR(x->evaluate(kTime1 / 2), halfWay(kKey0, kMiddle, kMiddle - kKey0, arriving), kClose);
    EXPECT_NEAR(x->evaluate((kTime1 + kTime2) / 2), halfWay(kMiddle, kKey2, leaving, kKey2 - kMiddle), kClose);
}

TEST(RealFiles, BezierSpansAreTheCurveOfTheirHandles) {
    const auto x = channel("move_xz_bezier.lws", 0);
    // From the first key's second handle to the second key's first one: a curve of time and value with one parameter.
    const double time[4] = {0, 0.22222, kTime1 - 0.22222, kTime1};
    const double value[4] = {kKey0, 0.64163307824462457, kKey1 + 0.012913536517090266, kKey1};
    const auto at = [](const double(&p)[4], double t) {
        const double s = 1 - t;
        return s * s * s * p[0] + 3 * s * s * t * p[1] + 3 * s * t * t * p[2] + t * t * t * p[3];
    };
    for (const double t : {0.1, 0.5, 0.8}) EXPECT_NEAR(x->evaluate(at(time, t)), at(value, t), 1e-9);
}

TEST(RealFiles, BeyondTheKeysABehaviourGoesOn) {
    // Y goes from 0 at 0 s and 1 s to 0.989 at 1.7 s. Before the keys it repeats with an offset, after them it
    // oscillates.
    const auto y = channel("move_y_pre_ofrep_post_osc.lws", 1);
    constexpr double kLast = 1.7, kTop = 0.98909872770309448;
    for (const double time : {0.3, 1.2, 1.6}) {
        EXPECT_NEAR(y->evaluate(kLast + time), y->evaluate(kLast - time), kClose);
        EXPECT_NEAR(y->evaluate(2 * kLast + time), y->evaluate(time), kClose);
        EXPECT_NEAR(y->evaluate(time - kLast), y->evaluate(time) - kTop, kClose);
        EXPECT_NEAR(y->evaluate(time - 2 * kLast), y->evaluate(time) - 2 * kTop, kClose);
    }
}

TEST(RealFiles, EachFileOfAPostBehaviourDoesAsItsNameSays) {
    struct Row {
        const char *file;
        int behaviour;
    };
    constexpr Row kRows[] = {{"move_x_post_reset.lws", kBehaveReset},
                             {"move_x_post_constant.lws", kBehaveConstant},
                             {"move_x_post_repeat.lws", kBehaveRepeat},
                             {"move_x_post_offset_repeat.lws", kBehaveOffsetRepeat},
                             {"move_x_post_linear.lws", kBehaveLinear}};
    for (const Row &row : kRows) {
        const auto x = channel(row.file, 0);
        EXPECT_EQ(x->after, row.behaviour) << row.file;
        const HostKey &first = *x->keys.front(), &last = *x->keys.back();
        const double length = last.time - first.time, step = length / 3, rise = last.value - first.value;
        ASSERT_GT(length, 0) << row.file;
        const double found = x->evaluate(last.time + step), inside = x->evaluate(first.time + step);
        switch (row.behaviour) {
        case kBehaveReset: EXPECT_EQ(found, 0); break;
        case kBehaveConstant: EXPECT_EQ(found, last.value); break;
        case kBehaveRepeat: EXPECT_NEAR(found, inside, kClose); break;
        case kBehaveOffsetRepeat: EXPECT_NEAR(found, inside + rise, kClose); break;
        default: { // the slope with which the last span ends
            const double before = x->evaluate(last.time - 1e-6);
            EXPECT_NEAR(found, last.value + (last.value - before) / 1e-6 * step, 1e-4 * std::fabs(rise) + 1e-9);
        }
        }
    }
}

} // namespace
} // namespace velm::host::test

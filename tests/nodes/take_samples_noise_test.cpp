// Take Samples with an input that changes: on several threads, and with noise.
#include "tests/module/test_node.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <thread>

namespace velm::plugin {
namespace {

TEST(TakeSamplesThreaded, EveryThreadCombinesItsOwn) {
    FakeHost host;
    TestNode node(host, "Velm Take Samples");
    node.set(0x8002, 5);
    // Each evaluation gives a value that is 1 higher; each thread has a count of its own.
    node.input("Color").source = [](ShadingSample *sample, void *value) {
        for (int i = 0; i < 3; ++i) static_cast<double *>(value)[i] = sample->pixelX * 10 + i;
        ++sample->pixelX;
    };
    std::array<int, kMaxThreads> wrong{};
    std::vector<std::thread> threads;
    for (int i = 0; i < kMaxThreads; ++i)
        threads.emplace_back([&, i] {
            ShadingSample sample = plainSample();
            sample.threadIndex = i;
            for (int start = i * 1000; start < i * 1000 + 500; ++start) {
                sample.pixelX = start;
                const HostNodeValue value = node.evaluate("Color", sample);
                for (int c = 0; c < 3; ++c)
                    wrong[static_cast<size_t>(i)] += std::fabs(value.numbers[c] - (start * 10 + 20 + c)) > 1e-6;
            }
        });
    for (std::thread &thread : threads) thread.join();
    for (const int count : wrong) EXPECT_EQ(count, 0);
}

// Averages of n uniform numbers have the mean 1/2 and the standard deviation 1/sqrt(12 n). Over 3000 averages the
// measured deviation must be within 5 % of that (its standard error is below 1.3 %), and the mean within 4 standard
// errors.
TEST(TakeSamplesConvergence, AveragesOfNoiseScatterByTheRootOfTheirNumber) {
    FakeHost host;
    TestNode random(host, "Velm Random", "random"), node(host, "Velm Take Samples");
    ShadingSample sample = plainSample();
    HostOutput &out = random.output("Out");
    node.input("Color").source = [&](ShadingSample *shaded, void *value) {
        HostNodeValue drawn = {.asked = &out};
        random.handler.evaluate(random.instance, shaded, &out, &drawn);
        std::fill_n(static_cast<double *>(value), 3, drawn.numbers[0]);
    };
    for (const int samples : {1, 4, 16, 64}) {
        node.set(0x8002, samples);
        constexpr int averages = 3000;
        double sum = 0, squares = 0;
        for (int i = 0; i < averages; ++i) {
            const double error = node.scalar("Color", sample) - 0.5;
            sum += error;
            squares += error * error;
        }
        const double deviation = std::sqrt(squares / averages), expected = 1 / std::sqrt(12.0 * samples);
        EXPECT_NEAR(deviation, expected, 0.05 * expected) << samples;
        EXPECT_NEAR(sum / averages, 0, 4 * expected / std::sqrt(averages)) << samples;
    }
}

} // namespace
} // namespace velm::plugin

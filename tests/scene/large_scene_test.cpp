// Reading a large scene takes a time that grows in proportion to its size.
#include "tests/scene/scene_text.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <chrono>

namespace velm::host {
namespace {

// A surface with a chain of so many nodes.
std::string chain(int count) {
    std::string nodes, connections;
    for (int i = 0; i < count; ++i)
        nodes += fmt::format(R"({}"N.{}": {{"server": "Constant Scalar"}})", i > 0 ? "," : "", i);
    for (int i = 1; i < count; ++i)
        connections += fmt::format(R"({}"N.{}.Out -> N.{}.In")", i > 1 ? "," : "", i - 1, i);
    return fmt::format(
        R"({{"cameras": {{"Main": {{}}}}, "surfaces": {{"Wall": {{"nodes": {{{}}}, "connections": [{}]}}}}}})", nodes,
        connections);
}

double secondsToRead(int count) {
    const std::string text = chain(count);
    const auto start = std::chrono::steady_clock::now();
    const SceneDescription scene = test::read(text);
    EXPECT_EQ(scene.surfaces.at(0).network.connections.size(), static_cast<std::size_t>(count) - 1);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(LargeScene, TakesTimeInProportionToItsSize) {
    constexpr int kFew = 2000, kTimes = 8;
    // A time that grows as the square would be 64 times as long. Other work of the machine may lengthen either one.
    constexpr double kMost = 24;
    double ratio = kMost;
    for (int tries = 0; tries < 5 && ratio >= kMost; ++tries)
        ratio = secondsToRead(kTimes * kFew) / secondsToRead(kFew);
    EXPECT_LT(ratio, kMost);
}

} // namespace
} // namespace velm::host

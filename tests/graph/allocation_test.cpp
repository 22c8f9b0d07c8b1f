// Memory: evaluating a network allocates none, and loading one allocates little.
#include "host/graph/builtin/builtin.h"
#include "host/graph/surface.h"
#include "host/load/lookup.h"
#include "host/state/load_state.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace {

thread_local long allocations = 0;
thread_local std::size_t allocatedBytes = 0;

void *counted(std::size_t size) noexcept {
    ++allocations;
    allocatedBytes += size;
    return std::malloc(size > 0 ? size : 1);
}

void *countedOrThrow(std::size_t size) {
    if (void *memory = counted(size)) return memory;
    throw std::bad_alloc();
}

} // namespace

// Replacements for the whole program, in every form that it uses.
void *operator new(std::size_t size) { return countedOrThrow(size); }
void *operator new[](std::size_t size) { return countedOrThrow(size); }
void *operator new(std::size_t size, const std::nothrow_t &) noexcept { return counted(size); }
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept { return counted(size); }
void operator delete(void *memory) noexcept { std::free(memory); }
void operator delete[](void *memory) noexcept { std::free(memory); }
void operator delete(void *memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void *memory, std::size_t) noexcept { std::free(memory); }

namespace velm::host::test {
namespace {

TEST(Allocation, EvaluatingEveryBuiltInNodeAllocatesNothing) {
    Surface surface("Clay");
    Network &network = surface.network();
    std::vector<HostOutput *> outputs;
    for (const auto &server : serverList().all()) {
        if (server->origin() != kBuiltinOrigin) continue;
        for (const auto &output : network.addNode(*server).outputs) outputs.push_back(output.get());
    }
    ASSERT_GT(outputs.size(), 30u);
    surface.init(kInitRender);
    ShadingSample sample{};
    sample.shadingNormal[1] = 1;
    for (HostOutput *output : outputs) {
        // Into a scalar and into a colour, so that one of them is converted.
        network.connect(*output, *network.root().findInput("Diffuse"));
        network.connect(*output, *network.root().findInput("Color"));
        const long before = allocations;
        surface.evaluate(&sample);
        EXPECT_EQ(allocations, before) << output->node->name << '.' << output->name;
    }
    const long before = allocations;
    std::string counts(100, ' ');
    EXPECT_GT(allocations, before) << counts; // the count itself works
}

TEST(Allocation, StringsOfANetworkAllocateTheirLength) {
    constexpr std::size_t kStrings = 2000, kLong = 40'000;
    std::string text = "{ Nodes\n  Server \"" + std::string(kLong, 'l') + "\"\n";
    for (std::size_t i = 0; i < kStrings; ++i) text += "  Server \"Rain\"\n";
    text += "  { Tag\n    Name \"Net\"\n    Comment \"" + std::string(kLong, 'c') + "\"\n  }\n}\n";
    Network network("Net", "Net", nullptr, nullptr);
    StateReader reader(kStateText, text, "network");
    const std::size_t before = allocatedBytes;
    network.load(*reader.state());
    EXPECT_LT(allocatedBytes - before, kStrings * 1000);
    EXPECT_EQ(network.root().look.comment, std::string(kLong, 'c'));
}

} // namespace
} // namespace velm::host::test

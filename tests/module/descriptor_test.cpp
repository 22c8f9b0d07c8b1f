// What the host finds first: the descriptor, its entry points, and the table of servers with their tags.
#include "module/host.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

extern "C" {
extern const HostModuleDescriptor _mod_descrip;
}

namespace velm::plugin {
namespace {

struct ExpectedNode {
    const char *server;
    const char *displayName;
    const char *menu;
    bool panel;
};

// Every node of the module, in the order of its table.
constexpr ExpectedNode kExpected[] = {
    {.server = "Velm Advanced RayTrace",
     .displayName = "Advanced RayTrace",
     .menu = "Velm's Nodes/Surfacing",
     .panel = true},
    {.server = "Velm Ambient Occlusion",
     .displayName = "Ambient Occlusion",
     .menu = "Velm's Nodes/Surfacing",
     .panel = true},
    {.server = "Velm Counter", .displayName = "Counter", .menu = "Velm's Nodes/Math", .panel = true},
    {.server = "Velm Exponential Decay (Color)",
     .displayName = "Exponential Decay (Color)",
     .menu = "Velm's Nodes/Math",
     .panel = true},
    {.server = "Velm Exponential Decay (Scalar)",
     .displayName = "Exponential Decay (Scalar)",
     .menu = "Velm's Nodes/Math",
     .panel = true},
    {.server = "Velm Gaussian Reflections",
     .displayName = "Gaussian Reflections",
     .menu = "Velm's Nodes/Surfacing",
     .panel = true},
    {.server = "Velm Gaussian Refractions",
     .displayName = "Gaussian Refractions",
     .menu = "Velm's Nodes/Surfacing",
     .panel = true},
    {.server = "Velm Get Material", .displayName = "Get Material", .menu = "Velm's Nodes/Tools", .panel = true},
    {.server = "Velm Group Node", .displayName = "Group Node", .menu = "Velm's Nodes/Tools", .panel = true},
    {.server = "Velm Hold Value", .displayName = "Hold Value", .menu = "Velm's Nodes/Math", .panel = true},
    {.server = "Velm Pixel Image", .displayName = "Pixel Image", .menu = "Velm's Nodes/Surfacing", .panel = true},
    {.server = "Velm Render Info", .displayName = "Render Info", .menu = "Velm's Nodes/Info", .panel = false},
    {.server = "Velm Random", .displayName = "Random", .menu = "Velm's Nodes/Math", .panel = true},
    {.server = "Velm RayShade", .displayName = "RayShade", .menu = "Velm's Nodes/Surfacing", .panel = true},
    {.server = "Velm Sqrt", .displayName = "Sqrt", .menu = "Velm's Nodes/Math", .panel = true},
    {.server = "Velm Store Material", .displayName = "Store Material", .menu = "Velm's Nodes/Tools", .panel = true},
    {.server = "Velm Take Samples", .displayName = "Take Samples", .menu = "Velm's Nodes/Surfacing", .panel = true},
};
constexpr size_t kNodes = std::size(kExpected);

std::vector<HostServer> servers() {
    std::vector<HostServer> rows;
    for (const HostServer *row = _mod_descrip.servers; row->className; ++row) rows.push_back(*row);
    return rows;
}

TEST(Descriptor, CarriesTheWordsThatTheHostChecks) {
    EXPECT_EQ(_mod_descrip.syncWord, 0x04121994u);
    EXPECT_EQ(_mod_descrip.version, 3u);
#ifdef _WIN32
    EXPECT_EQ(_mod_descrip.platform, 0x300u);
#else
    EXPECT_EQ(_mod_descrip.platform, 0x400u);
#endif
}

TEST(Descriptor, StartupGivesTheSameWordEveryTime) {
    for (int i = 0; i < 3; ++i) EXPECT_EQ(reinterpret_cast<uintptr_t>(_mod_descrip.startup()), 4u);
}

TEST(Descriptor, ShutdownTakesAnyWord) {
    for (const uintptr_t word : {uintptr_t{0}, uintptr_t{4}, UINTPTR_MAX})
        _mod_descrip.shutdown(reinterpret_cast<void *>(word)); // NOLINT(performance-no-int-to-ptr): no address
    EXPECT_EQ(reinterpret_cast<uintptr_t>(_mod_descrip.startup()), 4u) << "nothing was shut down";
}

TEST(ServerTable, EndsWithARecordOfNulls) {
    const HostServer *end = _mod_descrip.servers + 2 * kNodes;
    for (const HostServer *row = _mod_descrip.servers; row != end; ++row) ASSERT_NE(row->className, nullptr);
    EXPECT_EQ(end->className, nullptr);
    EXPECT_EQ(end->name, nullptr);
    EXPECT_EQ(end->activate, nullptr);
    EXPECT_EQ(end->tags, nullptr);
}

TEST(ServerTable, ListsEveryNodeAsItsShadingAndThenItsPanel) {
    const std::vector<HostServer> rows = servers();
    ASSERT_EQ(rows.size(), 2 * kNodes);
    for (size_t i = 0; i < kNodes; ++i) {
        const HostServer &shading = rows[2 * i], &panel = rows[2 * i + 1];
        SCOPED_TRACE(kExpected[i].server);
        EXPECT_STREQ(shading.className, "NodeHandler");
        EXPECT_STREQ(shading.name, kExpected[i].server);
        EXPECT_NE(shading.activate, nullptr);
        EXPECT_STREQ(panel.className, "NodeInterface");
        EXPECT_STREQ(panel.name, kExpected[i].server);
        EXPECT_EQ(panel.activate != nullptr, kExpected[i].panel);
        EXPECT_NE(panel.activate, shading.activate);
        EXPECT_EQ(shading.tags, panel.tags) << "both records show the same tags";
    }
}

TEST(ServerTable, TagsGiveTheDisplayNameAndTheMenu) {
    const std::vector<HostServer> rows = servers();
    ASSERT_EQ(rows.size(), 2 * kNodes);
    for (size_t i = 0; i < kNodes; ++i) {
        const HostTag *tags = rows[2 * i].tags;
        EXPECT_EQ(tags[0].code, 0x0u);
        EXPECT_STREQ(tags[0].text, kExpected[i].displayName);
        EXPECT_EQ(tags[1].code, 0x70000u);
        EXPECT_STREQ(tags[1].text, kExpected[i].menu);
        EXPECT_EQ(tags[2].text, nullptr);
        EXPECT_EQ(tags[2].code, 0u);
    }
}

TEST(ServerTable, NoActivationServesTwoRecords) {
    std::vector<HostActivate *> activations;
    for (const HostServer &row : servers())
        if (row.activate) activations.push_back(row.activate);
    std::sort(activations.begin(), activations.end());
    EXPECT_EQ(std::adjacent_find(activations.begin(), activations.end()), activations.end());
}

TEST(ServerTable, EveryNameStandsOnceInEachClass) {
    for (const HostServer &row : servers()) {
        int handlers = 0, interfaces = 0;
        for (const HostServer &other : servers()) {
            if (std::strcmp(other.name, row.name) != 0) continue;
            handlers += std::strcmp(other.className, "NodeHandler") == 0;
            interfaces += std::strcmp(other.className, "NodeInterface") == 0;
        }
        EXPECT_EQ(handlers, 1) << row.name;
        EXPECT_EQ(interfaces, 1) << row.name;
    }
}

// Where a name is sorted. One node has always stood before two others that come earlier in the alphabet.
std::string place(const char *name) { return std::strcmp(name, "Velm Render Info") == 0 ? "Velm Ra" : name; }

TEST(ServerTable, IsInAlphabeticalOrder) {
    const std::vector<HostServer> rows = servers();
    for (size_t i = 2; i < rows.size(); i += 2)
        EXPECT_LT(place(rows[i - 2].name), place(rows[i].name)) << rows[i - 2].name << ", " << rows[i].name;
}

TEST(ServerTable, DoesNotOfferTheRenderCamera) {
    for (const HostServer &row : servers()) {
        EXPECT_EQ(std::strstr(row.name, "Render Cam"), nullptr);
        EXPECT_EQ(std::strstr(row.tags[0].text, "Render Cam"), nullptr);
    }
}

} // namespace
} // namespace velm::plugin

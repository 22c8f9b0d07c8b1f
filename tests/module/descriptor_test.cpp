// The descriptor, its entry points, and the server table with its tags: what the host reads first.
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

struct PublishedNode {
    const char *server;
    const char *displayName;
    const char *menu;
    bool panel;
};

// The nodes that have been published, in the order of the table: scenes name them, so none of this may change.
constexpr PublishedNode kPublished[] = {
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
        _mod_descrip.shutdown(reinterpret_cast<void *>(word)); // no address
    EXPECT_EQ(reinterpret_cast<uintptr_t>(_mod_descrip.startup()), 4u) << "nothing was shut down";
}

TEST(ServerTable, EndsWithARecordOfNulls) {
    const HostServer *end = _mod_descrip.servers;
    while (end->className) ++end;
    EXPECT_EQ(end->name, nullptr);
    EXPECT_EQ(end->activate, nullptr);
    EXPECT_EQ(end->tags, nullptr);
}

TEST(ServerTable, ListsEveryNodeAsItsShadingAndThenItsPanel) {
    const std::vector<HostServer> rows = servers();
    ASSERT_EQ(rows.size() % 2, 0u);
    for (size_t i = 0; i < rows.size(); i += 2) {
        const HostServer &shading = rows[i], &panel = rows[i + 1];
        SCOPED_TRACE(shading.name);
        EXPECT_STREQ(shading.className, "NodeHandler");
        EXPECT_NE(shading.activate, nullptr);
        EXPECT_STREQ(panel.className, "NodeInterface");
        EXPECT_STREQ(panel.name, shading.name);
        EXPECT_NE(panel.activate, shading.activate);
        EXPECT_EQ(shading.tags, panel.tags) << "both records show the same tags";
    }
}

TEST(ServerTable, TagsAreADisplayNameAndAMenu) {
    for (const HostServer &row : servers()) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.tags[0].code, 0x0u);
        EXPECT_NE(row.tags[0].text, nullptr);
        EXPECT_EQ(row.tags[1].code, 0x70000u);
        EXPECT_NE(row.tags[1].text, nullptr);
        EXPECT_EQ(row.tags[2].text, nullptr);
        EXPECT_EQ(row.tags[2].code, 0u);
    }
}

TEST(ServerTable, PublishedNodesKeepTheirNamesMenusAndOrder) {
    const std::vector<HostServer> rows = servers();
    size_t next = 0;
    for (size_t i = 0; i + 1 < rows.size() && next < std::size(kPublished); i += 2) {
        const PublishedNode &node = kPublished[next];
        if (std::strcmp(rows[i].name, node.server) != 0) continue; // a newer one
        SCOPED_TRACE(node.server);
        EXPECT_STREQ(rows[i].tags[0].text, node.displayName);
        EXPECT_STREQ(rows[i].tags[1].text, node.menu);
        EXPECT_EQ(rows[i + 1].activate != nullptr, node.panel);
        ++next;
    }
    EXPECT_EQ(next, std::size(kPublished)) << "missing, or out of order, from here on";
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

// The name that a server is sorted by. Render Info has always stood before Random and RayShade.
std::string sortName(const char *name) { return std::strcmp(name, "Velm Render Info") == 0 ? "Velm Ra" : name; }

TEST(ServerTable, IsInAlphabeticalOrder) {
    const std::vector<HostServer> rows = servers();
    for (size_t i = 2; i < rows.size(); i += 2)
        EXPECT_LT(sortName(rows[i - 2].name), sortName(rows[i].name)) << rows[i - 2].name << ", " << rows[i].name;
}

TEST(ServerTable, DoesNotOfferTheRenderCamera) {
    for (const HostServer &row : servers()) {
        EXPECT_EQ(std::strstr(row.name, "Render Cam"), nullptr);
        EXPECT_EQ(std::strstr(row.tags[0].text, "Render Cam"), nullptr);
    }
}

} // namespace
} // namespace velm::plugin

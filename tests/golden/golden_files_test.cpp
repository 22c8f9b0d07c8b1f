// An object file and a scene file from an earlier version, with networks of the module's nodes. They must open, and be
// written back unchanged.
#include "tests/golden/golden_settings.h"

#include "host/files/network_block.h"
#include "host/files/object_file.h"
#include "host/image/image.h"
#include "host/io/files.h"
#include "host/state/save_state.h"

#include <gtest/gtest.h>

namespace velm::host::test {
namespace {

class GoldenFiles : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { loadModule(); }
    void TearDown() override { ImageList::instance().clear(); }
};

void expectNothingKeptIn(const Network &editor) {
    for (const auto &node : editor.nodes()) expectNothingKept(*node);
}

TEST_F(GoldenFiles, TheObjectIsWrittenBackToTheByte) {
    const std::string bytes = readFile("object.lwo");
    ObjectFile object(bytes, "object.lwo");
    ASSERT_EQ(object.surfaces().size(), 2u);
    // All of them exist at the same time, since one surface uses a material that the other stores.
    std::vector<std::unique_ptr<Surface>> surfaces;
    for (std::size_t i = 0; i < object.surfaces().size(); ++i) {
        ASSERT_TRUE(object.network(i)) << object.surfaces()[i].name;
        surfaces.push_back(std::make_unique<Surface>(object.surfaces()[i].name));
        loadNetwork(*surfaces[i], *object.network(i), object.name(), object.networkOffset(i));
    }
    for (std::size_t i = 0; i < surfaces.size(); ++i) {
        SCOPED_TRACE(surfaces[i]->name());
        expectNothingKeptIn(surfaces[i]->network());
        StateWriter writer(kStateBinary);
        surfaces[i]->save(*writer.state());
        object.setNetwork(i, writer.finish());
        const SurfaceDescription described = describedIn("object.json", surfaces[i]->name());
        expectNetwork(surfaces[i]->network(), described.network, described.name);
    }
    EXPECT_EQ(object.write(), bytes);
}

TEST_F(GoldenFiles, TheSceneIsWrittenBackToTheByte) {
    const std::string bytes = readFile("scene.lws");
    SceneText scene(bytes, "scene.lws");
    const std::vector<std::size_t> blocks = scene.find("Nodal_Block");
    ASSERT_EQ(blocks.size(), 1u);
    const auto network = readNetwork(scene, scene.blocks()[blocks.front()]);
    EXPECT_EQ(network->root().server->name(), "Displacement");
    scene.setBlock(blocks.front(), writeNetwork(*network));
    EXPECT_EQ(scene.write(), bytes);
    expectNetwork(*network, describedIn("scene.json", "Displacement").network, "Displacement");
}

} // namespace
} // namespace velm::host::test

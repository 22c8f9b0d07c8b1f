// The order of evaluation for modules that the renderer knows nothing of, with node classes of the test's own.
#include "host/graph/server_list.h"
#include "host/services/services.h"
#include "tests/render/test_scene.h"

#include <gtest/gtest.h>

#include <string>

namespace velm::host::test {
namespace {

// ---- Node classes ----

std::uint32_t stream = 1;                                                     // of random words, one for all nodes
std::uint32_t nextWord() { return stream = stream * 1664525u + 1013904223u; } // W. Press et al., "Numerical Recipes"

void *createNode(void *, void *node, const char **) {
    nodeOutputFuncs()->create(static_cast<HostNode *>(node), kConnectScalar, "Out");
    return new int(0);
}
void *createAndRestart(void *data, void *node, const char **error) {
    stream = 1;
    return createNode(data, node, error);
}
void destroyNode(void *instance) { delete static_cast<int *>(instance); }

void give(HostNodeValue *value, double result) { nodeOutputFuncs()->setValue(value, &result); }
void draw(void *, ShadingSample *, HostOutput *, HostNodeValue *value) { give(value, nextWord() / 4294967296.0); }
void count(void *instance, ShadingSample *, HostOutput *, HostNodeValue *value) {
    give(value, ++*static_cast<int *>(instance) % 1000 / 1000.0);
}
void position(void *, ShadingSample *sample, HostOutput *, HostNodeValue *value) { give(value, sample->position[0]); }

template <auto create, auto evaluate>
int activate(int, HostLookup *, void *local, void *) {
    auto *handler = static_cast<HostNodeHandler *>(local);
    handler->instance->create = create;
    handler->instance->destroy = destroyNode;
    handler->evaluate = evaluate;
    return kActivateOk;
}

template <auto create, auto evaluate>
constexpr HostServer serverNamed(const char *name) {
    return {
        .className = HOST_CLASS_NODE_HANDLER, .name = name, .activate = activate<create, evaluate>, .tags = nullptr};
}

constexpr HostServer kEnd = {.className = nullptr, .name = nullptr, .activate = nullptr, .tags = nullptr};
// A module with the server that restarts the module's stream, and one without.
constexpr HostServer kPlaceable[] = {serverNamed<createAndRestart, draw>("Velm Random"),
                                     serverNamed<createNode, count>("Recall"),
                                     serverNamed<createNode, position>("Position"), kEnd};
constexpr HostServer kForeign[] = {serverNamed<createNode, position>("Foreign"), kEnd};

// ---- The tests ----

class ModuleOrder : public testing::Test {
  protected:
    ModuleOrder() {
        serverList().add(kPlaceable, "placeable.p");
        serverList().add(kForeign, "foreign.p");
    }
    ~ModuleOrder() override {
        serverList().remove("foreign.p");
        serverList().remove("placeable.p");
    }

    // A wall that fills a picture of 64 by 40 pixels and shows what the node gives.
    static Frame render(const std::string &server, RenderOrder order, int threads) {
        TestScene scene;
        scene.job.width = 64;
        scene.job.height = 40;
        scene.job.samples = 2;
        scene.job.order = order;
        scene.job.threads = threads;
        scene.surface("Wall");
        scene.object("Wall", BoxShape{.size = {90, 90, 1}}, "Wall");
        Network &network = scene.surfaceOf("Wall")->network();
        const HostNode &node = network.addNode(serverList().get(server));
        network.connect(node.name, "Out", "Wall", "Luminosity");
        return scene.render();
    }
};

constexpr Region kWhole = {.left = 0, .top = 0, .right = 64, .bottom = 40};

TEST_F(ModuleOrder, TheStreamIsPlacedThroughAnyServerThatRestartsIt) {
    const Frame one = render("Velm Random", RenderOrder::automatic, 1);
    EXPECT_EQ(one.statistics.order, RenderOrder::repeatable);
    EXPECT_NE(one.picture.pixel(0, 0)[0], one.picture.pixel(1, 0)[0]);
    for (const int threads : {1, 2, 3})
        EXPECT_TRUE(samePixels(render("Velm Random", RenderOrder::automatic, threads).picture, one.picture, kWhole));
}

TEST_F(ModuleOrder, AnUnknownNodeWithAMemoryIsFoundByRenderingTwice) {
    const Frame frame = render("Recall", RenderOrder::automatic, 2);
    EXPECT_EQ(frame.statistics.order, RenderOrder::classic);
    EXPECT_EQ(frame.statistics.orderReason,
              "the same samples came out differently a second time, perhaps because of the node \"Recall\"");
}

// The samples of the small picture must not count in the one that is then rendered.
TEST_F(ModuleOrder, RenderingTwiceLeavesTheMemoryAsItWas) {
    EXPECT_TRUE(samePixels(render("Recall", RenderOrder::automatic, 1).picture,
                           render("Recall", RenderOrder::classic, 1).picture, kWhole));
}

TEST_F(ModuleOrder, AnUnknownNodeWithoutAMemoryIsRepeatable) {
    const Frame frame = render("Position", RenderOrder::automatic, 2);
    EXPECT_EQ(frame.statistics.order, RenderOrder::repeatable);
    EXPECT_EQ(frame.statistics.orderReason, "");
}

TEST_F(ModuleOrder, AModuleWithoutSuchAServerIsRenderedInClassicOrder) {
    const Frame frame = render("Foreign", RenderOrder::automatic, 2);
    EXPECT_EQ(frame.statistics.order, RenderOrder::classic);
    EXPECT_EQ(frame.statistics.orderReason, "the random numbers of foreign.p, if it has any, cannot be repeated");
    EXPECT_EQ(render("Foreign", RenderOrder::repeatable, 2).statistics.order, RenderOrder::repeatable) << "on demand";
}

} // namespace
} // namespace velm::host::test

// The module of examples/first_node, compiled by the command in its README.
#include "host/graph/surface.h"
#include "host/load/module.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"
#include "tests/cli/program.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace velm::host::test {
namespace {

// The command that the README gives: its only line that begins with "gcc".
std::string commandOfTheReadme() {
    std::ifstream stream(VELM_SOURCE_DIR "/examples/first_node/README.md");
    for (std::string line; std::getline(stream, line);)
        if (line.starts_with("gcc ")) return line;
    return "false # the README has no line that begins with gcc";
}

// Runs the command where the tree seems to be, and loads what it makes.
class DistinctValue : public ::testing::Test {
  protected:
    DistinctValue() {
        for (const char *name : {"module", "examples"})
            std::filesystem::create_directory_symlink(std::filesystem::path(VELM_SOURCE_DIR) / name, directory_ / name);
        const std::string command = "cd '" + directory_.path().string() + "' && " + commandOfTheReadme();
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        module_ = Module::open(file());
        serverList().add(module_->servers(), file());
        surface_.emplace("Clay");
    }
    ~DistinctValue() override {
        surface_.reset();
        serverList().remove(file());
    }

    std::string file() const { return directory_ / "distinct_value.p"; }
    HostNode &addNode() { return surface_->network().addNode(serverList().get("Example Distinct Value")); }
    // What arrives at an input of the surface that the node is connected to.
    double valueOf(HostNode &node) {
        HostInput &input = *surface_->network().root().findInput("Diffuse");
        surface_->network().connect(*node.findOutput("Value"), input);
        ShadingSample sample{};
        double value = -1;
        EXPECT_EQ(evaluateInput(&input, &sample, &value), 1);
        return value;
    }
    std::string saved(int mode) {
        StateWriter writer(mode);
        surface_->save(*writer.state());
        return writer.finish();
    }

    const WorkDirectory directory_;
    std::optional<Module> module_;
    std::optional<Surface> surface_;
};

TEST_F(DistinctValue, DiffersFromNodeToNode) {
    const double first = valueOf(addNode()), second = valueOf(addNode());
    for (const double value : {first, second}) {
        EXPECT_GE(value, 0);
        EXPECT_LT(value, 1);
    }
    EXPECT_GT(std::abs(first - second), 0.3);
}

TEST_F(DistinctValue, IsCopiedAndSavedWithItsNode) {
    HostNode &node = addNode();
    const double value = valueOf(node);
    HostNode &other = addNode();
    ASSERT_NE(valueOf(other), value);
    EXPECT_EQ(node.handler->instance->copy(other.instance, node.instance), nullptr);
    EXPECT_EQ(valueOf(other), value);
    for (const int mode : {kStateBinary, kStateText}) {
        const std::string bytes = saved(mode);
        surface_.emplace("Clay");
        StateReader reader(mode, bytes, "surface");
        surface_->load(*reader.state());
        EXPECT_FALSE(reader.failed()) << reader.error();
        ASSERT_EQ(surface_->network().nodes().size(), 2U);
        EXPECT_EQ(valueOf(*surface_->network().nodes().front()), value);
    }
}

TEST_F(DistinctValue, PassesTheChecks) {
    const Outcome outcome = runProgram(directory_, {"check", file(), "--level", "5"});
    EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
    EXPECT_NE(outcome.out.find("PASS   settings.reload"), std::string::npos) << outcome.out;
}

} // namespace
} // namespace velm::host::test

// Networks in files, in both forms.
#include "tests/graph/test_nodes.h"

#include "host/graph/surface.h"
#include "host/panel/settings.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

#include <functional>

namespace velm::host::test {
namespace {

std::string saved(int mode, const std::function<void(const HostSaveState &)> &save) {
    StateWriter writer(mode);
    save(*writer.state());
    return writer.finish();
}

void loaded(int mode, const std::string &bytes, const std::function<void(const HostLoadState &)> &load) {
    StateReader reader(mode, bytes, "network");
    load(*reader.state());
    EXPECT_FALSE(reader.failed()) << reader.error();
}

std::string savedSurface(int mode, Surface &surface) {
    return saved(mode, [&](const HostSaveState &state) { surface.save(state); });
}

std::string hex(const std::string &bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(bytes[i]));
        text += digits;
        if (i % 40 == 39) text += '\n';
    }
    return text;
}

void build(Surface &surface) {
    Network &network = surface.network();
    HostNode &level = network.addNode(serverList().get("Constant Integer"), "Level");
    applySetting(*panelOf(level), {"Integer", 3.0, {}});
    level.look = {.at = {-120, 40}, .mode = 1, .preview = "Integer", .comment = "from \"one\" to three"};
    network.connect("Level", "Integer", surface.name(), "Luminosity");
}

class FilesTest : public GraphTest, public ::testing::WithParamInterface<int> {};

TEST_F(FilesTest, TextFormIsStable) {
    Surface surface("Clay");
    build(surface);
    EXPECT_EQ(savedSurface(kStateText, surface), R"({ Nodal_Block
  { Root
    Location 0 0
    Zoom 1
    Disabled 0
  }
  Version 1
  { Nodes
    Server "Surface"
    { Tag
      RealName "Surface"
      Name "Surface"
      Coordinates 0 0
      Mode 1
      { Data
        { VariantParameter
          3
          0
          { ParameterValue
            0.78431 0.78431 0.78431
            0
          }
        }
        { VariantParameter
          3
          0
          { ParameterValue
            0
            0
          }
        }
        { VariantParameter
          3
          0
          { ParameterValue
            1
            0
          }
        }
        { VariantParameter
          3
          0
          { ParameterValue
            0
            0
          }
        }
        { VariantParameter
          3
          0
          { ParameterValue
            0.4
            0
          }
        }
        { VariantParameter
          3
          0
          { ParameterValue
            0
            0
          }
        }
        { VariantParameter
          3
          0
          { ParameterValue
            0
            0
          }
        }
        { VariantParameter
          3
          0
          { ParameterValue
            1
            0
          }
        }
      }
      Preview ""
      Comment ""
    }
    Server "Constant Integer"
    { Tag
      RealName "Constant Integer"
      Name "Level"
      Coordinates -120 40
      Mode 1
      { Data
        3
      }
      Preview "Integer"
      Comment "from \"one\" to three"
    }
  }
  { Connections
    NodeName "Surface"
    InputName "Luminosity"
    InputNodeName "Level"
    InputOutputName "Integer"
  }
}
)");
}

TEST_F(FilesTest, BinaryFormIsStable) {
    Network network("Net", "Net", nullptr, nullptr);
    addRootInputs(network);
    testNode(add(network, "A")).scalar = 1;
    network.connect("A", "Scalar", "Net", "Scalar");
    EXPECT_EQ(hex(saved(kStateBinary, [&](const HostSaveState &state) { network.save(state); })),
              "4e524f5400204e4c4f43000800000000000000004e5a4f4d00043f8000004e535441000200004e56\n"
              "45520004000000014e4e445300bc4e53525600044e6574004e54414700424e524e4d00044e657400\n"
              "4e4e4d4500044e6574004e435244000800000000000000004e4d4f440004000000014e4454410000\n"
              "4e505257000200004e434f4d000200004e535256000a54657374204e6f6465004e54414700544e52\n"
              "4e4d000854657374657200004e4e4d45000241004e435244000800000000000000004e4d4f440004\n"
              "000000014e44544100103ff000000000000000000000000000004e505257000200004e434f4d0002\n"
              "00004e434f4e002e494e4d4500044e65740049494e4d00085363616c6172000049494e4e00024100\n"
              "494f4e4d00085363616c61720000");
}

TEST_P(FilesTest, ASurfaceIsLoadedAsItWasSaved) {
    Surface surface("Clay");
    build(surface);
    surface.setDefault("Diffuse", 0.25);
    surface.network().addNode(serverList().get("Fractal Noise"));
    surface.network().connect("Fractal Noise", "Color", "Clay", "Color");
    const std::string bytes = savedSurface(GetParam(), surface);

    Surface again("Clay");
    again.network().addNode(serverList().get("Curve"), "Old");
    loaded(GetParam(), bytes, [&](const HostLoadState &state) { again.load(state); });
    EXPECT_EQ(savedSurface(GetParam(), again), bytes);
    const SurfaceValues values = again.evaluate(&sample);
    EXPECT_EQ(values.luminosity, 3);
    EXPECT_EQ(values.diffuse, 0.25);
    EXPECT_EQ(again.network().node("Level").look.comment, "from \"one\" to three");
    EXPECT_EQ(again.network().findNode("Old"), nullptr);

    Surface renamed("Other"); // connections to the root are made although it has another name
    loaded(GetParam(), bytes, [&](const HostLoadState &state) { renamed.load(state); });
    EXPECT_EQ(renamed.evaluate(&sample).luminosity, 3);
}

TEST_P(FilesTest, NestedNetworksAreLoadedAsTheyWereSaved) {
    Network network("Net", "Net", nullptr, nullptr);
    addRootInputs(network);
    Network *inside = &network;
    for (const char *name : {"One", "Two", "Three"}) {
        HostNode &group = addGroup(*inside, name);
        inside->connect(name, "Scalar", inside->root().name, "Scalar");
        inside = testGroup(group).network;
    }
    testNode(add(*inside, "Source")).scalar = 8;
    inside->connect("Source", "Scalar", "Inside", "Scalar");
    const auto save = [&](Network &from) {
        return saved(GetParam(), [&](const HostSaveState &state) { from.save(state); });
    };
    const std::string bytes = save(network);

    Network again("Net", "Net", nullptr, nullptr);
    addRootInputs(again);
    loaded(GetParam(), bytes, [&](const HostLoadState &state) { again.load(state); });
    EXPECT_EQ(scalarOf(again.root(), "Scalar"), 8);
    EXPECT_EQ(save(again), bytes);
}

INSTANTIATE_TEST_SUITE_P(Forms, FilesTest, ::testing::Values(kStateBinary, kStateText),
                         [](const auto &mode) { return mode.param == kStateText ? "Text" : "Binary"; });

// ---- Invalid files -------------------------------------------------------------------------------------------------

std::string loadError(const std::string &text) {
    Network network("Net", "Net", nullptr, nullptr);
    addRootInputs(network);
    StateReader reader(kStateText, text, "network");
    try {
        network.load(*reader.state());
    } catch (const InputError &error) {
        return error.what();
    }
    return "no error";
}

std::string withNode(const std::string &server, const std::string &data, const std::string &connections) {
    return "{ Nodes\n  Server \"Net\"\n  { Tag\n    Name \"Net\"\n  }\n  Server \"" + server +
           "\"\n  { Tag\n    Name \"A\"\n    { Data\n" + data + "    }\n  }\n}\n{ Connections\n" + connections + "}\n";
}

std::string connection(const std::string &to, const std::string &input, const std::string &from,
                       const std::string &output) {
    return "  NodeName \"" + to + "\"\n  InputName \"" + input + "\"\n  InputNodeName \"" + from +
           "\"\n  InputOutputName \"" + output + "\"\n";
}

TEST_F(FilesTest, InvalidFilesAreReported) {
    const std::string data = "1 2\n";
    const std::pair<std::string, const char *> kRows[] = {
        {withNode("Test Node", data, connection("Net", "Scalar", "A", "Scalar")), "no error"},
        {withNode("Tset Node", data, ""), "no error"},
        {withNode("Test Node", "", ""), "cannot load the node \"A\": two numbers are missing"},
        {withNode("Test Node", data, connection("Net", "Scalar", "A", "Scaler")),
         "node \"A\" has no output \"Scaler\", did you mean \"Scalar\"?"},
        {withNode("Test Node", data, connection("A", "Scalar", "A", "Scalar")),
         "cannot connect \"A.Scalar\" to \"A.Scalar\": it would close the cycle A -> A"},
        {"Version 2\n", "the network has version 2 of the format; only version 1 is known"},
    };
    for (const auto &[text, expected] : kRows) EXPECT_EQ(loadError(text), expected) << text;
}

TEST_F(FilesTest, UnknownBlocksAreSkippedAndTheOrderDoesNotMatter) {
    const std::string text = "{ Connections\n" + connection("Net", "Scalar", "A", "Scalar") +
                             "}\n{ Weather\n  Rain 1\n}\n{ Nodes\n  Server \"Net\"\n  { Tag\n    Name \"Net\"\n  }\n"
                             "  Server \"Test Node\"\n  { Tag\n    Name \"A\"\n    Sunshine 3\n  }\n}\n";
    Network network("Net", "Net", nullptr, nullptr);
    addRootInputs(network);
    loaded(kStateText, text, [&](const HostLoadState &state) { network.load(state); });
    EXPECT_NE(network.root().findInput("Scalar")->source, nullptr);
}

TEST_F(FilesTest, ASurfaceWithoutItsBlockIsAnError) {
    Surface surface("Clay");
    StateReader reader(kStateText, "Something 1\n", "scene");
    EXPECT_THROW(surface.load(*reader.state()), InputError);
}

// Each new name is compared with all names before it. A search through all nodes would take minutes here.
TEST_F(FilesTest, ThousandsOfNodesOfOneNameGetTheirNumbers) {
    constexpr int kNodes = 10'000;
    std::string text = "{ Nodes\n  Server \"Net\"\n  { Tag\n    Name \"Gradient\"\n  }\n";
    for (int i = 0; i < kNodes; ++i) text += "  Server \"Weather\"\n  { Tag\n    Name \"Gradient\"\n  }\n";
    Network network("Gradient", "Net", nullptr, nullptr);
    loaded(kStateText, text + "}\n", [&](const HostLoadState &state) { network.load(state); });
    ASSERT_EQ(network.nodes().size(), static_cast<std::size_t>(kNodes));
    for (int i = 0; i < kNodes; ++i) {
        const HostNode &node = *network.nodes()[static_cast<std::size_t>(i)];
        ASSERT_EQ(node.name, i == 0 ? "Gradient" : "Gradient (" + std::to_string(i + 1) + ")");
        ASSERT_EQ(network.findNode(node.name), &node);
    }
    EXPECT_EQ(network.root().name, "Gradient (10001)");
}

} // namespace
} // namespace velm::host::test

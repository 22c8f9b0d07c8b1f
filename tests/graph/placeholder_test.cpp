// Placeholders of nodes whose server is missing: the data that they save, and their results.
#include "tests/graph/test_nodes.h"

#include "host/graph/node_data.h"
#include "host/graph/placeholder.h"
#include "host/graph/surface.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

namespace velm::host::test {
namespace {

// A network in which a node "Rain" of an unknown server feeds a known node, another unknown one, and the root.
const std::string kText = R"text({ Nodal_Block
  { Root
    Location -3 4
    Zoom 0.75
    Disabled 0
  }
  Version 1
  { Nodes
    Server "Surface"
    { Tag
      RealName "Surface"
      Name "Surface"
      Coordinates -10 -10
      Mode 1
      { Data
      }
      Preview ""
      Comment ""
    }
    Server "Weather"
    { Tag
      RealName "Some Weather"
      Name "Rain (1)"
      Coordinates 5 -7
      Mode 0
      { Data
        Drops 1.50 "all { of }  them"
        { Clouds
          0x10
        }
      }
      Preview "Drops"
      Comment "wet"
    }
    Server "Weather"
    { Tag
      RealName "Some Weather"
      Name "Clay"
      Coordinates 0 0
      Mode 1
      { Data
      }
      Preview ""
      Comment ""
    }
    Server "Constant Scalar"
    { Tag
      RealName "Constant Scalar"
      Name "Half"
      Coordinates 0 0
      Mode 1
      { Data
        { VariantParameter
          3
          0
          { ParameterValue
            0.5
            0
          }
        }
      }
      Preview ""
      Comment ""
    }
  }
  { Connections
    NodeName "Surface"
    InputName "Color"
    InputNodeName "Rain (1)"
    InputOutputName "Drops"
    NodeName "Surface"
    InputName "Diffuse"
    InputNodeName "Rain (1)"
    InputOutputName "Drops"
    NodeName "Surface"
    InputName "Bump"
    InputNodeName "Half"
    InputOutputName "Scalar"
    NodeName "Rain (1)"
    InputName "Wind"
    InputNodeName "Half"
    InputOutputName "Scalar"
    NodeName "Clay"
    InputName "In"
    InputNodeName "Rain (1)"
    InputOutputName "Drops"
  }
}
)text";

class PlaceholderTest : public GraphTest {
  protected:
    static void load(Surface &surface, int mode, const std::string &bytes) {
        StateReader reader(mode, bytes, "network");
        surface.load(*reader.state());
        EXPECT_FALSE(reader.failed()) << reader.error();
    }
    static std::string save(Surface &surface, int mode) {
        StateWriter writer(mode);
        surface.save(*writer.state());
        return writer.finish();
    }
    static std::string savedNetwork(Network &network) {
        StateWriter writer(kStateBinary);
        network.save(*writer.state());
        return writer.finish();
    }
};

TEST_F(PlaceholderTest, TextIsSavedUnchanged) {
    Surface surface("Clay"); // a name that one of the file's nodes has as well
    load(surface, kStateText, kText);
    EXPECT_EQ(save(surface, kStateText), kText);
    EXPECT_EQ(surface.network().node("Rain (1)").server->name(), "Weather");
    EXPECT_NE(surface.network().node("Rain (1)").placeholder, nullptr);
    EXPECT_EQ(surface.network().node("Half").placeholder, nullptr);
}

TEST_F(PlaceholderTest, CopiesHaveTheSameData) {
    Surface surface("Clay"), copy("Other");
    load(surface, kStateText, kText);
    copy.network().copyFrom(surface.network());
    EXPECT_EQ(save(copy, kStateText), kText);
}

TEST_F(PlaceholderTest, ColoursAreMagentaAndNumbersKeepTheirOwnValues) {
    Surface surface("Clay");
    load(surface, kStateText, kText);
    const SurfaceValues values = surface.evaluate(&sample);
    EXPECT_EQ(values.colour[0], 1);
    EXPECT_EQ(values.colour[1], 0);
    EXPECT_EQ(values.colour[2], 1);
    EXPECT_EQ(values.diffuse, 1);
}

TEST_F(PlaceholderTest, MaterialsAreMagentaAndVectorsAndIntegersAreLeftAlone) {
    Network network("Net", "Net", nullptr, nullptr);
    addRootInputs(network);
    network.addPlaceholder(std::make_shared<Placeholder>("Weather", "Some Weather"), "Rain");
    for (const char *input : {"Material", "Vector", "Integer", "Scalar"})
        network.connectAsSaved("Rain", input, "Net", input);
    HostMaterial material{};
    EXPECT_EQ(evaluateInput(network.root().findInput("Material"), &sample, &material), 1);
    EXPECT_EQ(material.diffuse[0], 1);
    EXPECT_EQ(material.diffuse[1], 0);
    EXPECT_EQ(material.diffuse[2], 1);
    double vector[3] = {1, 2, 3};
    evaluateInput(network.root().findInput("Vector"), &sample, vector);
    EXPECT_EQ(vector[1], 2);
    int integer = 7;
    evaluateInput(network.root().findInput("Integer"), &sample, &integer);
    EXPECT_EQ(integer, 7);
}

TEST_F(PlaceholderTest, BinaryDataAreSavedUnchangedAndCannotBecomeText) {
    Surface surface("Clay");
    HostNode &rain = surface.network().addPlaceholder(std::make_shared<Placeholder>("Weather", "Some Weather"), "Rain");
    const std::string data("\1\0\2NODS\xff", 8);
    loadSavedData(rain, data, "rain");
    EXPECT_EQ(savedData(rain), data);
    Surface again("Clay");
    load(again, kStateBinary, save(surface, kStateBinary));
    EXPECT_EQ(save(again, kStateBinary), save(surface, kStateBinary));
    EXPECT_EQ(savedData(again.network().node("Rain")), data);
    EXPECT_THROW(save(surface, kStateText), InputError);
    load(again, kStateText, kText);
    EXPECT_THROW(save(again, kStateBinary), InputError);
}

TEST_F(PlaceholderTest, ARootWithoutDataSavesNone) {
    Surface surface("Clay");
    load(surface, kStateText, kText);
    EXPECT_FALSE(surface.network().root().savesData);
    Surface full("Clay");
    load(full, kStateBinary, save(full, kStateBinary));
    EXPECT_TRUE(full.network().root().savesData);
}

TEST_F(PlaceholderTest, DataThatTheServerSavesDifferentlyAreSavedUnchangedUntilTheNodeChanges) {
    Network network("Net", "Net", nullptr, nullptr);
    HostNode &node = add(network, "A");
    // The test node reads two doubles; the rest stands for data of a later version.
    const std::string data = std::string("\x3f\xf0\0\0\0\0\0\0", 8) + std::string(8, '\0') + "and more";
    loadSavedData(node, data, "test");
    EXPECT_EQ(testNode(node).scalar, 1);
    EXPECT_EQ(savedData(node), data);
    testNode(node).scalar = 2;
    EXPECT_EQ(savedData(node).size(), 16U);
    testNode(node).scalar = 1;
    EXPECT_EQ(savedData(node), data);
}

TEST_F(PlaceholderTest, EmptyDataAreSavedUnchangedUntilTheNodeChanges) {
    Network network("Net", "Net", nullptr, nullptr);
    HostNode &node = addGroup(network, "A");
    const std::string own = savedData(node);
    EXPECT_FALSE(own.empty());
    loadSavedData(node, "", "test");
    EXPECT_EQ(savedData(node), "");

    Network again("Net", "Net", nullptr, nullptr);
    StateReader reader(kStateBinary, savedNetwork(network), "network");
    again.load(*reader.state());
    EXPECT_EQ(savedData(again.node("A")), "");
    Network copy("Net", "Net", nullptr, nullptr);
    copy.copyFrom(again);
    EXPECT_EQ(savedNetwork(copy), savedNetwork(network));

    add(*testGroup(again.node("A")).network, "Inside the group");
    EXPECT_GT(savedData(again.node("A")).size(), own.size());
    loadSavedData(node, own, "test");
    EXPECT_EQ(savedData(node), own);
}

} // namespace
} // namespace velm::host::test

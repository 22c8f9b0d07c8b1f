// Adds nodes to the description of a surface's network.
#pragma once

#include "host/object/envelopes.h"
#include "host/scene/format/description.h"

#include <array>
#include <cstddef>
#include <string>

namespace velm::host {

// Panels show fractions in percent.
inline constexpr double kPercentPerFraction = 100;
// A node's text has at most this many characters.
inline constexpr std::size_t kLongestNodeText = 255;
// The entries of the popups "Wrap U" and "Wrap V" of Image Projection, by the numbers of object files and by
// MeshTexture::Wrap.
inline constexpr const char *kImageWraps[] = {"Reset", "Repeat", "Mirror", "Edge"};

// An output of a node.
struct NodeOutput {
    std::string node;
    const char *output = "";
};

class NetworkWriter {
  public:
    // The columns in which an editor shows the nodes, counted from the surface to the left.
    static constexpr int kBlendColumn = 1, kLayerColumn = 2, kValueColumn = 3;

    // A node that was added.
    class Node {
      public:
        const std::string &name() const { return description().name; }
        void set(const std::string &label, SettingValue value);
        // Sets a number, or the keys of its envelope, multiplied by `factor`, which converts from the unit of the file
        // to that of the panel. Numbers that are not finite count as 0.
        void set(const std::string &label, float number, const ComponentEnvelopes &envelopes, double factor,
                 std::size_t component = 0);
        // The same for three numbers. If the components have different keys, a node "Make Vector" has them and feeds
        // the input `label`.
        void set(const std::string &label, const std::array<float, 3> &numbers, const ComponentEnvelopes &envelopes);
        // Connects an output to one of the node's inputs.
        void connect(const NodeOutput &from, const char *input);

      private:
        friend class NetworkWriter;
        Node(NetworkWriter &writer, std::size_t index) : writer_(writer), index_(index) {}
        NodeDescription &description() const { return writer_.network_.nodes[index_]; }

        NetworkWriter &writer_;
        std::size_t index_;
    };

    // `surface` has to outlive the writer.
    explicit NetworkWriter(SurfaceDescription &surface) : surface_(surface), network_(surface.network) {}

    // Adds a node of a server in the current row. A node of the layers' column starts a new row.
    Node add(std::string name, const char *server, int column);
    void startRow() { ++rows_; }
    // Adds a node of three numbers, "Make Color" or "Make Vector", and returns its output. The components may have
    // different keys.
    NodeOutput addComponents(std::string name, bool isColour, const std::array<float, 3> &numbers,
                             const ComponentEnvelopes &envelopes);
    // Connects an output to an input of the surface.
    void connectToSurface(const NodeOutput &from, const char *input) { connect(from, surface_.name, input); }

  private:
    void connect(const NodeOutput &from, const std::string &toNode, const char *input);

    SurfaceDescription &surface_;
    NetworkDescription &network_;
    int rows_ = 0; // of nodes in an editor
};

} // namespace velm::host

// Nodes, their inputs and outputs, and the way of a sample through them. What stands first in each record is what
// render threads read; from an input to the node that feeds it are two steps: input -> output -> node.
#pragma once

#include "module/host.h"

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {
class Network;
class ServerClass;
class Placeholder;

// The data of a node as a file had them, which may be none at all, and what the node's server saved once it had read
// them.
struct KeptData {
    std::string inFile, asSaved;
};
} // namespace velm::host

struct HostOutput {
    HostNode *node = nullptr;
    int type = 0; // a connection type
    std::string name;
    std::vector<HostInput *> consumers; // the inputs that it feeds, in order of connection
};

struct HostInput {
    HostOutput *source = nullptr; // null: unconnected
    int type = 0;                 // a connection type
    HostNode *node = nullptr;
    HostInputEvent *event = nullptr; // may be null
    std::string name;
    bool isKept = false; // of no use here: a file says that it is connected, and so will the next one
};

// Lives on the stack of one evaluation: where the result goes, and what it is converted from and to.
struct HostNodeValue {
    void *holder;   // what the asking input holds, of type askingType
    int askingType; // connection types
    int outputType;
};

struct HostNode {
    void (*evaluate)(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) = nullptr;
    void *instance = nullptr; // of the server; null for a root node that only its owner reads

    velm::host::Network *editor = nullptr;
    velm::host::ServerClass *server = nullptr; // null for a root node made from a root description
    const HostNodeHandler *handler = nullptr;  // null likewise; the server's
    std::string name;                          // unique in its editor
    std::vector<std::unique_ptr<HostInput>> inputs;
    std::vector<std::unique_ptr<HostOutput>> outputs;
    HostChannelGroup *group = nullptr; // made when first asked for
    HostPanel *panel = nullptr;        // made by the server when first asked for; the host destroys it
    // The networks that the instance holds: what it made while it was being created. The instance destroys them.
    std::vector<velm::host::Network *> nested;

    std::shared_ptr<velm::host::Placeholder>
        placeholder; // keeps the class of a node whose server is not there; null for others
    // A root whose values are kept elsewhere in its file saves none.
    bool savesData = true;
    // The data that a file had, where they are not what the server saves of them. See node_data.h.
    std::optional<velm::host::KeptData> keptData;

    // How an editor shows it.
    std::array<int, 3> colour{128, 128, 128};
    int previewType = kPreviewRendered;
    int previewUpdates = 0; // how often the preview was to be redrawn
    std::array<int, 2> coordinates{0, 0};
    int mode = 1;              // as saved; 1 is a node drawn open
    std::string previewOutput; // name of the output that is previewed
    std::string comment;

    HostNode();
    ~HostNode(); // releases the group; the editor has destroyed instance, panel and connections before
    HostNode(const HostNode &) = delete;
    HostNode &operator=(const HostNode &) = delete;

    // By name; null when there is none.
    HostInput *findInput(std::string_view wanted) const;
    HostOutput *findOutput(std::string_view wanted) const;
};

namespace velm::host {

// Converts a value of one connection type to another. `from` and `to` may be the same place.
//   colour, material -> scalar   luminance, 0.299 R + 0.587 G + 0.114 B (ITU-R BT.601)
//   vector -> scalar             the same, its components standing for red, green and blue
//   scalar, integer -> triple    the value in each component
//   anything -> integer          through the scalar, truncated towards zero; beyond an int the nearest int; NaN gives 0
//   material -> colour, vector   the diffuse colour
//   anything -> material         the diffuse colour from it, the rest 0
//   function                     a scalar; but see evaluateInput
void convertValue(int fromType, const void *from, int toType, void *to);

// Size in bytes of a value of a connection type; 0 for a code that is none.
int valueSize(int type);

// "colour", "scalar" and so on; "unknown".
const char *typeName(int type);

namespace detail {
// Unlike types, and functions. Out of line to keep the usual way short.
void evaluateUnlike(HostOutput *source, int askingType, ShadingSample *sample, void *value);
// Networks that reach themselves through a server's own pointers, behind the host's back, would recurse for ever.
constexpr int kMaxEvaluationDepth = 4000;
inline constinit thread_local int evaluationDepth = 0;
void evaluationTooDeep();
} // namespace detail

// True when an evaluation was cut off since the last call because nodes asked each other in a circle; the inputs
// involved counted as unconnected. [between frames]
bool takeEvaluationTooDeep();

// Evaluates what is connected to an input into *value, which is of the input's type. 1 when connected. Unconnected,
// *value stays as it is and the result is 0; it also stays when the node sets none. A function transforms the value
// found: each component of a triple by itself, the diffuse colour of a material, an integer by way of a double; the
// function's node is then asked for a function. [render threads]
inline int evaluateInput(const HostInput *input, ShadingSample *sample, void *value) {
    HostOutput *source = input->source;
    if (!source) return 0;
    const int depth = detail::evaluationDepth;
    if (depth >= detail::kMaxEvaluationDepth) [[unlikely]] {
        detail::evaluationTooDeep();
        return 0;
    }
    detail::evaluationDepth = depth + 1;
    if (source->type == input->type) {
        HostNodeValue result{value, input->type, source->type};
        const HostNode *node = source->node;
        node->evaluate(node->instance, sample, source, &result);
    } else {
        detail::evaluateUnlike(source, input->type, sample, value);
    }
    detail::evaluationDepth = depth; // put back, not counted down: a count would wait for those of the inner ones
    return 1;
}

} // namespace velm::host

// Nodes, their inputs and outputs, and the evaluation of an input. Each record begins with the members that render
// threads read. From an input to the node that feeds it there are two steps: input -> output -> node.
#pragma once

#include "host/graph/node_look.h"
#include "host/graph/values.h"
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

// A saved copy of a node's data, for data that the node's server does not save as they were read. See node_data.h.
struct SavedCopy {
    std::string inFile;  // the data as the file has them; may be empty
    std::string asSaved; // what the server saved right after it had read them
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
    // Unknown to this host: nothing evaluates it. It exists because a file connects it, and saves the connection again.
    bool isForeign = false;
};

// One evaluation of an output. It lives on the stack of the thread that evaluates.
struct HostNodeValue {
    void *target;   // the value of the asking input, of type askingType; the result replaces it
    int askingType; // a connection type, as the next
    int outputType;
};

struct HostNode {
    // The server's function; one that sets nothing while there is no instance. Never null.
    void (*evaluate)(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) = nullptr;
    void *instance = nullptr; // of the server; null for a root node that only its owner reads

    velm::host::Network *network = nullptr;    // that the node belongs to
    velm::host::ServerClass *server = nullptr; // null for a root node that is described by functions
    const HostNodeHandler *handler = nullptr;  // the server's; null likewise
    std::string name;                          // unique in its network
    std::vector<std::unique_ptr<HostInput>> inputs;
    std::vector<std::unique_ptr<HostOutput>> outputs;
    HostChannelGroup *group = nullptr; // owned; created when it is first asked for
    HostPanel *panel = nullptr;        // created by the server when it is first asked for; the host destroys it
    // The networks that the instance created while it was being created itself. The instance owns and destroys them.
    std::vector<velm::host::Network *> nestedNetworks;

    // Keeps the class of a node whose server is missing; null for other nodes.
    std::shared_ptr<velm::host::Placeholder> placeholder;
    // False for a root whose values are saved in another part of the file.
    bool savesData = true;
    // Present where the server saves the node's data differently from how it read them.
    std::optional<velm::host::SavedCopy> savedCopy;

    // Set by the node itself; not saved. Change it through the network, which tells its observers.
    std::array<int, 3> colour{128, 128, 128}; // red, green and blue of its title, 0 to 255
    int previewType = kPreviewRendered;
    // Set by the artist; saved. Change it through Network::setLook.
    velm::host::NodeLook look;

    HostNode();
    // Releases the group. The network has destroyed instance, panel and connections before.
    ~HostNode();
    HostNode(const HostNode &) = delete;
    HostNode &operator=(const HostNode &) = delete;

    // By name; null when there is none.
    HostInput *findInput(std::string_view wanted) const;
    HostOutput *findOutput(std::string_view wanted) const;
};

namespace velm::host {

namespace detail {
// Evaluates an output whose type differs from the input's, or a function. Out of line to keep the usual case short.
void evaluateUnlike(HostOutput *source, int askingType, ShadingSample *sample, void *value);
// A network that reaches itself through a server's own pointers, which the host cannot see, would recurse for ever.
constexpr int kMaxEvaluationDepth = 4000;
inline constinit thread_local int evaluationDepth = 0;
void evaluationTooDeep();
bool wasEvaluationTooDeep(); // since takeEvaluationTooDeep() was called
} // namespace detail

// True when an evaluation was cut off since the last call because nodes evaluated each other in a cycle. The inputs
// involved counted as unconnected. [between frames]
bool takeEvaluationTooDeep();

// Evaluates what is connected to an input into *value, which has the input's type. Returns 1 when the input is
// connected. Otherwise returns 0 and leaves *value alone; *value also stays when the node sets no result. A function
// transforms *value: each component of a colour or vector by itself, the diffuse colour of a material, an integer by
// way of a double; the function's node finds kConnectFunction as the asking type. [render threads]
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
    detail::evaluationDepth = depth; // not decremented, which would have to wait for the stores of inner evaluations
    return 1;
}

} // namespace velm::host

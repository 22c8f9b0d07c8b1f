// A network of nodes with a root node: what a surface has, and what a node may hold inside itself.
#pragma once

#include "host/base/error.h"
#include "host/graph/node.h"
#include "host/graph/node_names.h"
#include "host/graph/server_list.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The plug-in interface's opaque handle of a network. Every handle is the Network derived from it.
struct HostNodeEditor {
  protected:
    HostNodeEditor() = default;
    ~HostNodeEditor() = default;
};

namespace velm::host {

// Everything is for the [interface thread; not while rendering] but what says otherwise. The functions throw
// InputError; the service functions in front of them turn that into results.
class Network final : public HostNodeEditor {
  public:
    // An editor whose root node is described by functions. The root takes the editor's name. `root` may be null. Made
    // while a server creates a node's instance, the editor is nested: that node holds it. InputError when it would be
    // nested deeper than kDeepestNesting.
    Network(std::string name, std::string title, const HostRootDescription *root, void *userData);
    // An editor whose root node is an instance of a server; `server` outlives the editor.
    Network(std::string name, ServerClass &server);
    // An editor whose root node is of a kind that this host does not have, as in scene files.
    Network(std::string name, std::shared_ptr<Placeholder> placeholder);
    ~Network(); // destroys all nodes, the last one made first, then the root
    Network(const Network &) = delete;
    Network &operator=(const Network &) = delete;

    const std::string &name() const { return name_; }
    const std::string &title() const { return title_; } // of its window
    void setTitle(std::string title) { title_ = std::move(title); }
    // The node that holds this network inside itself; null for a network of its own.
    HostNode *holder() const { return holder_; }
    void loseHolder() { holder_ = nullptr; }
    // The server in whose call it was made, by its number on the call board: its functions are the server's.
    int maker() const { return maker_; }
    // True when the other is this network or one inside it, at any depth.
    bool contains(const Network &other) const;
    HostNode &root() { return *root_; }
    const HostNode &root() const { return *root_; }
    // All but the root, in the order in which they were made.
    const std::vector<std::unique_ptr<HostNode>> &nodes() const { return nodes_; }
    // By name, the root included; null when there is none.
    HostNode *findNode(std::string_view name) const;
    // InputError naming the nearest one.
    HostNode &node(std::string_view name) const;

    // Makes a node. An empty name stands for the server's display name; a name that is taken gets a number: "Counter",
    // "Counter (2)". InputError with the server's own message when it makes no instance.
    HostNode &addNode(ServerClass &server, std::string_view name = {});
    // The same for a node whose server is not there.
    HostNode &addPlaceholder(std::shared_ptr<Placeholder> placeholder, std::string_view name);
    // Destroys a node of this editor other than the root. Inputs that it fed learn of it with event 2.
    void destroyNode(HostNode &node);
    // Destroys all nodes but the root.
    void clear();
    // Gives a node another name; made unique as in addNode.
    void rename(HostNode &node, std::string_view name);

    // Connects, replacing what the input had. InputError when the nodes are not both in this editor, when the output
    // is the root's, or when a circle would arise; the message names its path.
    void connect(HostOutput &output, HostInput &input);
    // By names; InputError naming the nearest right one.
    void connect(std::string_view fromNode, std::string_view output, std::string_view toNode, std::string_view input);

    // The same for a connection as a file has it: nodes whose server is not there get the inputs and outputs that it
    // names, and so does a root of a server get inputs.
    void connectAsSaved(std::string_view fromNode, std::string_view output, std::string_view toNode,
                        std::string_view input);

    // Breaks the connection of an input of this editor, if there is one. The input's node learns of it with event 1.
    void disconnect(HostInput &input);

    // Rendering starts, a frame starts (seconds), rendering has ended; forwarded to the root and to every node.
    // InputError with the node's name when a node reports an error, or a network inside it had one that the node kept
    // to itself; when that is init, what was initialised before is cleaned up. [between frames]
    void init(int mode);
    void newTime(int frame, double time);
    void cleanup();

    // Makes this network like another: nodes, settings, connections, names. Both have the same root inputs. InputError
    // when a node cannot be copied; the network then holds what was copied before it. The same goes for loading.
    // InputError, and nothing changed, when one of the networks is inside the other.
    void copyFrom(Network &from);
    // The contents of a network's block; the caller opens and closes the block itself. Loading replaces the network;
    // nodes whose server is not there come as stand-ins, see stand_in.h.
    void save(const HostSaveState &state);
    void load(const HostLoadState &state);

    // Where the channel groups of nodes are made from now on; not owned. Without it, a group of the editor's own.
    void setChannelGroup(HostChannelGroup *group) { group_ = group; }
    HostChannelGroup *channelGroup();

    // What the editor's window shows, kept in files.
    const std::array<int, 2> &location() const { return location_; }
    float zoom() const { return zoom_; }
    void setView(const std::array<int, 2> &location, float zoom) {
        location_ = location;
        zoom_ = zoom;
    }

    // Kept in files; non-zero switches the network off: its owner then goes by the root's own values alone.
    int state() const { return state_; }
    void setState(int state) { state_ = state; }

    void *userData() const { return userData_; }
    void setUserData(void *data) { userData_ = data; }
    void setEvent(HostEditorEvent *event) { event_ = event; }
    void setAutosize(HostEditorAutosize *autosize) { autosize_ = autosize; }
    // The bounds to be previewed, from the autosize callback; a unit cube about the origin when there is none.
    void bounds(double result[3][2]);
    // The root's preview of a sample; false when the root offers none. [render threads]
    bool previewSample(ShadingSample *sample, double colour[3]);
    const HostRootDescription &description() const { return description_; }

    // Remembers an error that a service function could not report, and gives it to whoever asks.
    void setLastError(std::string message) { lastError_ = std::move(message); }
    const std::string &lastError() const { return lastError_; }
    std::string takeLastError() { return std::exchange(lastError_, {}); }

  private:
    HostNode &take(std::unique_ptr<HostNode> node);
    void giveName(HostNode &node, std::string_view wanted);
    std::unique_ptr<HostNode> makeNode(ServerClass &server, std::string name,
                                       std::shared_ptr<Placeholder> placeholder = nullptr);
    std::string nameInFile(const HostNode &node) const;
    void dismantle(HostNode &node);
    std::vector<HostNode *> all() const; // the root first
    HostError initNode(HostNode &node, int mode);
    HostError newTimeNode(HostNode &node, int frame, double time);
    void cleanupNode(HostNode &node);
    void changed();
    class Loader; // network_load.cpp

    std::string name_, title_;
    HostNode *holder_ = nullptr;
    const int maker_ = serverInCall();
    HostRootDescription description_{};
    std::unique_ptr<HostNode> root_;
    std::vector<std::unique_ptr<HostNode>> nodes_;
    NodeNames names_; // the root's, too
    std::unique_ptr<HostChannelGroup> ownGroup_;
    HostChannelGroup *group_ = nullptr;
    void *userData_ = nullptr;
    HostEditorEvent *event_ = nullptr;
    HostEditorAutosize *autosize_ = nullptr;
    int state_ = 0;
    std::array<int, 2> location_{0, 0}; // of the editor's view
    float zoom_ = 1;
    std::string lastError_;
};

// The network behind a handle of the plug-in interface.
inline Network &networkOf(HostNodeEditor &editor) { return static_cast<Network &>(editor); }
inline Network *networkOf(HostNodeEditor *editor) { return static_cast<Network *>(editor); }

// Networks in networks, counted from one that no node holds. Far beyond need, and shallow enough for whatever walks
// them by recursion.
constexpr int kDeepestNesting = 16;

// What went wrong in a node's callback: what it said, else what happened in a network that it holds and it did not
// pass on; nothing when all went well. Forgets what the networks remembered.
std::optional<std::string> failureOf(const HostNode &node, HostError said);

// The panel of a node; null when it has none. Made once. [interface thread; not while rendering]
HostPanel *panelOf(HostNode &node);

// The inputs and outputs of a node, at the service functions' disposal. Creating gives a handle owned by the node.
HostInput *createInput(HostNode &node, int type, const char *name, HostInputEvent *event);
HostOutput *createOutput(HostNode &node, int type, const char *name);
void destroyInput(HostInput &input);
void destroyOutput(HostOutput &output);
// Breaks the connection of an input, if any; the input's node learns of it with `event`, the editor's owner not at all.
void breakConnection(HostInput &input, int event = kInputDisconnected);

} // namespace velm::host

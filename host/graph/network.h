// A network of nodes with a root node. A surface has one, and a node may have some inside itself.
#pragma once

#include "host/base/error.h"
#include "host/base/observers.h"
#include "host/graph/network_observer.h"
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

// A server created no instance of a node.
class CreationError : public InputError {
  public:
    // The node's name, and the server's message; empty if it gave none.
    CreationError(const std::string &node, const std::string &reason);
    bool hasReason() const { return hasReason_; } // the server gave a message

  private:
    bool hasReason_;
};

// [interface thread; not while rendering] except where said otherwise. Functions throw InputError on failure; the
// service functions that call them turn it into results.
class Network final : public HostNodeEditor {
  public:
    // A network whose root node is described by functions and gets the network's name. `root` may be null; it is
    // copied. A network that is created while a server creates the instance of a node is nested, and belongs to that
    // node. InputError when it would be nested deeper than kDeepestNesting.
    Network(std::string name, std::string title, const HostRootDescription *root, void *userData);
    // A network whose root node is an instance of a server, which must outlive the network. InputError when the server
    // cannot create it.
    Network(std::string name, ServerClass &server);
    // A network whose root node has a server that this host lacks, as the roots in LightWave scenes have.
    Network(std::string name, std::shared_ptr<Placeholder> placeholder);
    ~Network(); // destroys all nodes, the last created first, then the root
    Network(const Network &) = delete;
    Network &operator=(const Network &) = delete;

    // Watches the network; see network_observer.h.
    ObserverList<NetworkObserver> &observers() { return observers_; }

    const std::string &name() const { return name_; }
    const std::string &title() const { return title_; } // of the window that shows it
    void setTitle(std::string title) { title_ = std::move(title); }
    // The node that this network is nested in; null for a network of its own, and once that node is gone.
    HostNode *ownerNode() const { return ownerNode_; }
    void loseOwnerNode() { ownerNode_ = nullptr; } // for that node's destructor
    // The server that created the network, by its number in the call record. The network's callbacks are its functions.
    int owningServer() const { return owningServer_; }
    // True when the other is this network or nested in it, at any depth.
    bool contains(const Network &other) const;
    HostNode &root() { return *root_; }
    const HostNode &root() const { return *root_; }
    // All nodes except the root, in the order of creation.
    const std::vector<std::unique_ptr<HostNode>> &nodes() const { return nodes_; }
    // By name, the root included; null when there is none.
    HostNode *findNode(std::string_view name) const;
    // By name, the root included; InputError, with the nearest name, when there is none.
    HostNode &node(std::string_view name) const;

    // Creates a node. An empty name stands for the server's display name; a name that is taken gets a number:
    // "Counter", "Counter (2)". CreationError when the server creates no instance.
    HostNode &addNode(ServerClass &server, std::string_view name = {});
    // The same for a node whose server is missing.
    HostNode &addPlaceholder(std::shared_ptr<Placeholder> placeholder, std::string_view name);
    // Destroys a node. Inputs that it fed receive kInputSourceDestroyed. InputError for the root and for a node of
    // another network.
    void destroyNode(HostNode &node);
    // Destroys all nodes except the root.
    void clear();
    // Renames a node, the root included; the name is made unique as in addNode.
    void rename(HostNode &node, std::string_view name);

    // Connects an output to an input, in place of what the input was connected to. InputError when they are not both of
    // this network, when the output is the root's, or when a cycle would result, which the message spells out.
    void connect(HostOutput &output, HostInput &input);
    // The same by names; InputError, with the nearest name, for one that does not exist.
    void connect(std::string_view fromNode, std::string_view output, std::string_view toNode, std::string_view input);
    // The same for a connection from a file. Inputs and outputs that are missing are created for placeholders, and
    // inputs also for a root that has a server.
    void connectAsSaved(std::string_view fromNode, std::string_view output, std::string_view toNode,
                        std::string_view input);
    // Breaks the connection of an input of this network, if there is one. The input receives kInputDisconnected.
    void disconnect(HostInput &input);

    // Rendering starts, a frame starts (`time` in seconds), rendering has ended: calls the root and every node.
    // InputError, with the node's name, when a node reports an error, or hides one of a network nested in it. When init
    // fails, the nodes that it has initialised are cleaned up again. [between frames]
    void init(int mode);
    void newTime(int frame, double time);
    void cleanup();

    // Makes this network a copy of another: nodes, settings, connections, names. Both must have the same root inputs.
    // InputError when a node cannot be copied; the nodes before it are then copied. InputError, with nothing changed,
    // when one of the networks is nested in the other.
    void copyFrom(Network &from);
    // Writes or reads the contents of a network's block; the caller opens and closes the block itself. Loading replaces
    // the network; nodes whose server is missing become placeholders. InputError when a node cannot be saved or loaded;
    // the nodes before it are then saved or loaded.
    void save(const HostSaveState &state);
    void load(const HostLoadState &state);

    // Sets the group under which the nodes' channel groups are created from now on. It is not owned. Without one, the
    // network creates a group of its own.
    void setChannelGroup(HostChannelGroup *group) { group_ = group; }
    HostChannelGroup *channelGroup();

    // The part of the network that its window shows, in units of its own; saved.
    const std::array<int, 2> &location() const { return location_; }
    float zoom() const { return zoom_; }
    void setView(const std::array<int, 2> &location, float zoom) {
        location_ = location;
        zoom_ = zoom;
    }
    // Saved. Non-zero switches the network off: its owner then uses the root's own values alone.
    int state() const { return state_; }
    void setState(int state) { state_ = state; }

    // These three change a node of this network and tell its observers.
    void setLook(HostNode &node, NodeLook look);
    void setColour(HostNode &node, const std::array<int, 3> &colour); // red, green and blue, 0 to 255
    void setPreviewType(HostNode &node, int type);                    // kPreviewRendered and so on
    // Tells observers that the node wants its preview to be drawn anew.
    void requestPreview(HostNode &node);
    // Tells observers that the node's inputs or outputs were created or destroyed.
    void noteSocketsChanged(HostNode &node);

    void *userData() const { return userData_; }
    void setUserData(void *data) { userData_ = data; }
    // Called after each change of nodes, connections or names. Null for none.
    void setEvent(HostEditorEvent *event) { event_ = event; }
    void setAutosize(HostEditorAutosize *autosize) { autosize_ = autosize; }
    // The extent that previews show, from the autosize callback: low and high of x, y and z in metres. Without a
    // callback, a unit cube about the origin.
    void bounds(double result[3][2]);
    // Evaluates the root's preview of a sample; false when the root offers none. [render threads]
    bool previewSample(ShadingSample *sample, double colour[3]);
    const HostRootDescription &description() const { return description_; }

    // An error that a service function could not return to its caller; empty for none.
    void setLastError(std::string message) { lastError_ = std::move(message); }
    const std::string &lastError() const { return lastError_; }
    std::string takeLastError() { return std::exchange(lastError_, {}); }

  private:
    // network_life.cpp
    std::unique_ptr<HostNode> createNode(ServerClass &server, std::string name,
                                         std::shared_ptr<Placeholder> placeholder = nullptr);
    HostNode &add(std::unique_ptr<HostNode> node);
    void breakConnections(HostNode &node);
    void destroyInstance(HostNode &node);
    void removeNode(HostNode &node);
    using Failure = std::optional<std::string>; // the error that a node's callback has reported
    Failure initNode(HostNode &node, int mode);
    Failure newTimeNode(HostNode &node, int frame, double time);
    void cleanupNode(HostNode &node);
    // network.cpp
    std::vector<HostNode *> all() const; // the root first
    void giveName(HostNode &node, std::string_view wanted);
    bool isListed(const HostNode &node) const;
    void noteLookChanged(HostNode &node);
    void changed();
    std::string nameInFile(const HostNode &node) const; // network_save.cpp
    class Loader;                                       // network_load.cpp

    std::string name_, title_;
    HostNode *ownerNode_ = nullptr;
    const int owningServer_ = serverInCall();
    HostRootDescription description_{};
    std::unique_ptr<HostNode> root_;
    std::vector<std::unique_ptr<HostNode>> nodes_;
    NodeNames names_; // the root's included
    std::unique_ptr<HostChannelGroup> ownGroup_;
    HostChannelGroup *group_ = nullptr;
    void *userData_ = nullptr;
    HostEditorEvent *event_ = nullptr;
    HostEditorAutosize *autosize_ = nullptr;
    int state_ = 0;
    std::array<int, 2> location_{0, 0};
    float zoom_ = 1;
    std::string lastError_;
    ObserverList<NetworkObserver> observers_;
};

// The network behind a handle of the plug-in interface.
inline Network &networkOf(HostNodeEditor &editor) { return static_cast<Network &>(editor); }
inline Network *networkOf(HostNodeEditor *editor) { return static_cast<Network *>(editor); }

// The depth of the deepest network, where one that is not nested has depth 0. Far beyond need, and shallow enough for
// recursion over nested networks.
constexpr int kDeepestNesting = 16;

// The error of a node's callback: the one that it reported, or else the last error of a network nested in the node,
// which the node did not pass on; nothing when neither is there. Clears the last errors of those networks.
std::optional<std::string> failureOf(const HostNode &node, std::optional<std::string> reported);

// The panel of a node, owned by the node; null when it has none. InputError when the server refuses.
// [interface thread; not while rendering]
HostPanel *panelOf(HostNode &node);

// Creates an input or output of a node, which owns it, or destroys one, breaking its connections. `type` is a
// connection type; a null name is an empty one; `event` may be null. [interface thread; not while rendering]
HostInput *createInput(HostNode &node, int type, const char *name, HostInputEvent *event);
HostOutput *createOutput(HostNode &node, int type, const char *name);
void destroyInput(HostInput &input);
void destroyOutput(HostOutput &output);
// Breaks the connection of an input, if there is one. The input receives `event`; the network's owner is not called.
void breakConnection(HostInput &input, int event = kInputDisconnected);

} // namespace velm::host

// What a network tells those who watch it, such as the window that shows it.
#pragma once

#include "host/base/observers.h"
#include "host/graph/node.h"

#include <string>

namespace velm::host {

// Register it with Network::observers(). The default implementations do nothing. They are called after the change, and
// after the nodes concerned have been told of it, except where said otherwise. Rules for the functions: see
// ObserverList. [interface thread; not while rendering]
class NetworkObserver {
  public:
    // A new node: its inputs and outputs are there; when it is loaded or copied, its data, look and connections follow.
    virtual void nodeAdded(HostNode & /*node*/) {}
    // A node is about to be destroyed. Its connections are gone already, each announced by `disconnected`; its name,
    // instance and panel are still there. The root goes without this, together with the network.
    virtual void nodeRemoved(HostNode & /*node*/) {}
    virtual void nodeRenamed(HostNode & /*node*/, const std::string & /*nameBefore*/) {}

    // An input or output of the network's nodes, the root included, was created, or destroyed after its connections.
    virtual void socketsChanged(HostNode & /*node*/) {}
    // A connection that replaces another one is announced after the other's `disconnected`.
    virtual void connected(HostOutput & /*output*/, HostInput & /*input*/) {}
    virtual void disconnected(HostOutput & /*output*/, HostInput & /*input*/) {}

    // The comment, position or another part of the node's look has changed, or its colour or type of preview.
    virtual void lookChanged(HostNode & /*node*/) {}
    // The node asks for its preview to be drawn anew.
    virtual void previewRequested(HostNode & /*node*/) {}

    // The network is about to be destroyed; its nodes other than the root are gone.
    virtual void networkDestroyed() {}

  protected:
    NetworkObserver() = default;
    ~NetworkObserver() = default;
    NetworkObserver(const NetworkObserver &) = default;
    NetworkObserver &operator=(const NetworkObserver &) = default;
};

} // namespace velm::host

// The life of a network and its nodes: creation, rendering, destruction.
#include "host/animation/channel.h"
#include "host/base/names.h"
#include "host/base/thread_role.h"
#include "host/graph/network.h"
#include "host/graph/placeholder.h"
#include "host/guard/module_call.h"
#include "host/guard/process_settings.h"
#include "host/panel/panel.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace velm::host {

namespace {

// Marks that the instance of a node is being created, until the end of the scope. Creations nest.
class InstanceCreation {
  public:
    explicit InstanceCreation(HostNode &node) : node_(node), outer_(std::exchange(innermost_, this)) {}
    ~InstanceCreation() { innermost_ = outer_; }
    InstanceCreation(const InstanceCreation &) = delete;
    InstanceCreation &operator=(const InstanceCreation &) = delete;

    // Networks that are created now are nested in its node; null when no instance is being created.
    static InstanceCreation *innermost() { return innermost_; }
    HostNode &node() { return node_; }
    // Why the host refused a network; the server learns only that it did. Empty when it refused none.
    std::string refusal;

  private:
    HostNode &node_;
    InstanceCreation *outer_;
    static inline InstanceCreation *innermost_ = nullptr; // of the interface thread, which alone creates
};

int depthOf(const Network *network) {
    int depth = 0;
    for (; network->ownerNode(); network = network->ownerNode()->network) ++depth;
    return depth;
}

} // namespace

Network::Network(std::string name, std::string title, const HostRootDescription *root, void *userData)
    : name_(std::move(name)), title_(std::move(title)), userData_(userData) {
    assertInterface();
    if (InstanceCreation *creation = InstanceCreation::innermost()) {
        if (depthOf(creation->node().network) == kDeepestNesting) {
            creation->refusal = "networks cannot be nested deeper than " + std::to_string(kDeepestNesting);
            throw InputError(creation->refusal);
        }
        ownerNode_ = &creation->node();
    }
    if (root) description_ = *root;
    root_ = std::make_unique<HostNode>();
    root_->network = this;
    root_->name = name_;
    root_->previewType = description_.previewType;
    names_.add(*root_);
    if (ownerNode_) ownerNode_->nestedNetworks.push_back(this);
}

Network::Network(std::string name, ServerClass &server) : name_(std::move(name)), title_(name_) {
    assertInterface();
    root_ = createNode(server, name_);
    names_.add(*root_);
}

Network::Network(std::string name, std::shared_ptr<Placeholder> placeholder) : name_(std::move(name)), title_(name_) {
    assertInterface();
    ServerClass &server = placeholder->serverClass();
    root_ = createNode(server, name_, std::move(placeholder));
    names_.add(*root_);
}

Network::~Network() {
    assertInterface();
    event_ = nullptr; // the owner that it would call is being destroyed, too
    try {
        clear();
        observers_.notify([](NetworkObserver &observer) { observer.networkDestroyed(); });
        breakConnections(*root_);
        destroyInstance(*root_);
    } catch (const ModuleError &error) {
        endByModuleError(error);
    }
    root_.reset();
    if (ownerNode_) std::erase(ownerNode_->nestedNetworks, this);
}

// ---- Creation ------------------------------------------------------------------------------------------------------

CreationError::CreationError(const std::string &node, const std::string &reason)
    : InputError(fmt::format("cannot make the node {}: {}", inQuotes(node),
                             reason.empty() ? "its server gives no reason" : reason)),
      hasReason_(!reason.empty()) {}

std::unique_ptr<HostNode> Network::createNode(ServerClass &server, std::string name,
                                              std::shared_ptr<Placeholder> placeholder) {
    const HostNodeHandler &handler = server.handler();
    auto node = std::make_unique<HostNode>();
    node->network = this;
    node->placeholder = std::move(placeholder);
    node->server = &server;
    node->handler = &handler;
    node->name = std::move(name);
    InstanceCreation creation(*node);
    node->instance = callModule(server.number(), "create", [&] {
        const char *error = nullptr;
        void *instance = handler.instance->create(handler.instance->priv, node.get(), &error);
        if (!instance && creation.refusal.empty()) creation.refusal = moduleText(error);
        return instance;
    });
    if (!node->instance) throw CreationError(node->name, creation.refusal);
    node->evaluate = handler.evaluate;
    return node;
}

HostNode &Network::addNode(ServerClass &server, std::string_view name) {
    assertInterface();
    return add(createNode(server, names_.unique(name.empty() ? server.displayName() : name)));
}

HostNode &Network::addPlaceholder(std::shared_ptr<Placeholder> placeholder, std::string_view name) {
    assertInterface();
    ServerClass &server = placeholder->serverClass();
    const std::string unique = names_.unique(name.empty() ? server.displayName() : name);
    return add(createNode(server, unique, std::move(placeholder)));
}

HostNode &Network::add(std::unique_ptr<HostNode> node) {
    HostNode &added = *nodes_.emplace_back(std::move(node));
    names_.add(added);
    observers_.notify([&](NetworkObserver &observer) { observer.nodeAdded(added); });
    changed();
    return added;
}

// ---- Destruction ---------------------------------------------------------------------------------------------------
// A node is dismantled from the outside in: first its connections, then its panel, which reads the instance, then the
// instance, which has parameters in the channel group, and last the group, with the record.

void Network::breakConnections(HostNode &node) {
    for (const auto &output : node.outputs)
        while (!output->consumers.empty()) breakConnection(*output->consumers.front(), kInputSourceDestroyed);
    for (const auto &input : node.inputs) {
        input->event = nullptr; // the instance is about to be destroyed
        breakConnection(*input);
    }
}

void Network::destroyInstance(HostNode &node) {
    if (node.panel) panelFuncs()->destroy(node.panel);
    node.panel = nullptr;
    if (node.handler)
        callModule(node.server->number(), "destroy", [&] { node.handler->instance->destroy(node.instance); });
    node.instance = nullptr;
}

void Network::removeNode(HostNode &node) {
    breakConnections(node);
    observers_.notify([&](NetworkObserver &observer) { observer.nodeRemoved(node); });
    destroyInstance(node);
    names_.remove(node);
    const auto last = std::find_if(nodes_.rbegin(), nodes_.rend(), [&](const auto &one) { return one.get() == &node; });
    nodes_.erase(std::prev(last.base()));
    changed();
}

void Network::destroyNode(HostNode &node) {
    assertInterface();
    if (node.network != this || &node == root_.get())
        throw InputError(fmt::format("node {} cannot be removed from {}", inQuotes(node.name), inQuotes(name_)));
    removeNode(node);
}

void Network::clear() {
    assertInterface();
    while (!nodes_.empty()) removeNode(*nodes_.back());
}

// ---- Rendering -----------------------------------------------------------------------------------------------------
// A node without a server is a root that is described by functions.

Network::Failure Network::initNode(HostNode &node, int mode) {
    if (node.handler) {
        const auto init = node.handler->render->init;
        if (!init) return {};
        return callForError(node.server->number(), "init", [&] { return init(node.instance, mode); });
    }
    if (!description_.init) return {};
    return callForError(owningServer_, "root init", [&] { return description_.init(this, mode); });
}

Network::Failure Network::newTimeNode(HostNode &node, int frame, double time) {
    if (node.handler) {
        const auto set = node.handler->render->newTime;
        if (!set) return {};
        return callForError(node.server->number(), "newTime", [&] { return set(node.instance, frame, time); });
    }
    if (!description_.newTime) return {};
    return callForError(owningServer_, "root newTime", [&] { return description_.newTime(this, frame, time); });
}

void Network::cleanupNode(HostNode &node) {
    if (!node.handler) {
        if (description_.cleanup) callModule(owningServer_, "root cleanup", [&] { description_.cleanup(this); });
    } else if (node.handler->render->cleanup) {
        callModule(node.server->number(), "cleanup", [&] { node.handler->render->cleanup(node.instance); });
    }
}

void Network::init(int mode) {
    assertBetweenFrames();
    putBackSettings(); // as the nodes may have changed them while they were made
    const std::vector<HostNode *> every = all();
    for (std::size_t i = 0; i < every.size(); ++i) {
        const auto error = failureOf(*every[i], initNode(*every[i], mode));
        if (!error) continue;
        const std::string message = fmt::format("node {}: {}", inQuotes(every[i]->name), *error);
        while (i > 0) cleanupNode(*every[--i]);
        throw InputError(message);
    }
    putBackSettings();
}

void Network::newTime(int frame, double time) {
    assertBetweenFrames();
    for (HostNode *node : all())
        if (const auto error = failureOf(*node, newTimeNode(*node, frame, time)))
            throw InputError(fmt::format("node {}: {}", inQuotes(node->name), *error));
    putBackSettings();
}

void Network::cleanup() {
    assertBetweenFrames();
    for (HostNode *node : all()) cleanupNode(*node);
    putBackSettings();
}

std::optional<std::string> failureOf(const HostNode &node, std::optional<std::string> reported) {
    std::optional<std::string> failure = std::move(reported);
    for (Network *nested : node.nestedNetworks) {
        std::string hidden = nested->takeLastError();
        if (!failure && !hidden.empty()) failure = std::move(hidden);
    }
    return failure;
}

} // namespace velm::host

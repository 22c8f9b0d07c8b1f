#include "host/graph/network.h"

#include "host/animation/channel.h"
#include "host/base/names.h"
#include "host/base/thread_role.h"
#include "host/graph/placeholder.h"
#include "host/guard/module_call.h"
#include "host/panel/panel.h"

#include <algorithm>
#include <utility>

namespace velm::host {

namespace {

// The wall hands a message out through a slot; a server may leave it empty.
std::string messageOr(const char *message, const char *otherwise) { return message && *message ? message : otherwise; }

// The node whose instance is being created, innermost: whatever network is made meanwhile is inside it.
class Making {
  public:
    explicit Making(HostNode &node) : node_(node), outer_(std::exchange(innermost_, this)) {}
    ~Making() { innermost_ = outer_; }
    Making(const Making &) = delete;
    Making &operator=(const Making &) = delete;

    // Null outside of all creation.
    static Making *innermost() { return innermost_; }
    HostNode &node() { return node_; }
    // Why the host refused a network; the server knows only that it did.
    std::string refusal;

  private:
    HostNode &node_;
    Making *outer_;
    static inline Making *innermost_ = nullptr; // creation is for the interface thread alone
};

int depthOf(const Network *editor) {
    int depth = 0;
    for (; editor->holder(); editor = editor->holder()->editor) ++depth;
    return depth;
}

} // namespace

Network::Network(std::string name, std::string title, const HostRootDescription *root, void *userData)
    : name_(std::move(name)), title_(std::move(title)), userData_(userData) {
    assertInterface();
    if (Making *making = Making::innermost()) {
        if (depthOf(making->node().editor) == kDeepestNesting) {
            making->refusal = "networks cannot be nested deeper than " + std::to_string(kDeepestNesting);
            throw InputError(making->refusal);
        }
        holder_ = &making->node();
    }
    if (root) description_ = *root;
    root_ = std::make_unique<HostNode>();
    root_->editor = this;
    root_->name = name_;
    names_.add(*root_);
    root_->previewType = description_.previewType;
    if (holder_) holder_->nested.push_back(this);
}

Network::Network(std::string name, ServerClass &server) : name_(std::move(name)), title_(name_) {
    assertInterface();
    root_ = makeNode(server, name_);
    names_.add(*root_);
}

Network::Network(std::string name, std::shared_ptr<Placeholder> placeholder) : name_(std::move(name)), title_(name_) {
    assertInterface();
    ServerClass &server = placeholder->serverClass();
    root_ = makeNode(server, name_, std::move(placeholder));
    names_.add(*root_);
}

Network::~Network() {
    assertInterface();
    event_ = nullptr; // its owner is going, too
    clear();
    dismantle(*root_);
    root_.reset();
    if (holder_) std::erase(holder_->nested, this);
}

bool Network::contains(const Network &other) const {
    const Network *at = &other;
    while (at != this && at->holder_) at = at->holder_->editor;
    return at == this;
}

std::unique_ptr<HostNode> Network::makeNode(ServerClass &server, std::string name,
                                            std::shared_ptr<Placeholder> placeholder) {
    const HostNodeHandler &handler = server.handler();
    auto node = std::make_unique<HostNode>();
    node->editor = this;
    node->placeholder = std::move(placeholder);
    node->server = &server;
    node->handler = &handler;
    node->name = std::move(name);
    const char *error = nullptr;
    Making making(*node);
    node->instance = callModule(server.number(), "create",
                                [&] { return handler.instance->create(handler.instance->priv, node.get(), &error); });
    if (!node->instance)
        throw InputError("cannot make the node " + quoted(node->name) + ": " +
                         (making.refusal.empty() ? messageOr(error, "its server gives no reason") : making.refusal));
    node->evaluate = handler.evaluate;
    return node;
}

HostNode &Network::addNode(ServerClass &server, std::string_view name) {
    assertInterface();
    return take(makeNode(server, names_.unique(name.empty() ? server.displayName() : name)));
}

HostNode &Network::addPlaceholder(std::shared_ptr<Placeholder> placeholder, std::string_view name) {
    assertInterface();
    ServerClass &server = placeholder->serverClass();
    const std::string unique = names_.unique(name.empty() ? server.displayName() : name);
    return take(makeNode(server, unique, std::move(placeholder)));
}

HostNode &Network::take(std::unique_ptr<HostNode> node) {
    HostNode &added = *nodes_.emplace_back(std::move(node));
    names_.add(added);
    changed();
    return added;
}

// What a node leaves behind is taken apart from the outside in: first whoever reads it, then its panel, which reads
// its instance, then the instance, which holds parameters in its channel group, and with the record the group.
void Network::dismantle(HostNode &node) {
    for (const auto &output : node.outputs)
        while (!output->consumers.empty()) breakConnection(*output->consumers.front(), kInputSourceDestroyed);
    for (const auto &input : node.inputs) {
        input->event = nullptr; // the instance is not told any more
        breakConnection(*input);
    }
    if (node.panel) panelFuncs()->destroy(node.panel);
    node.panel = nullptr;
    if (node.handler)
        callModule(node.server->number(), "destroy", [&] { node.handler->instance->destroy(node.instance); });
    node.instance = nullptr;
}

void Network::destroyNode(HostNode &node) {
    assertInterface();
    const auto found = std::find_if(nodes_.begin(), nodes_.end(), [&](const auto &one) { return one.get() == &node; });
    if (found == nodes_.end())
        throw InputError("node " + quoted(node.name) + " cannot be removed from " + quoted(name_));
    dismantle(node);
    names_.remove(node);
    nodes_.erase(found);
    changed();
}

void Network::clear() {
    assertInterface();
    while (!nodes_.empty()) {
        dismantle(*nodes_.back());
        names_.remove(*nodes_.back());
        nodes_.pop_back();
        changed();
    }
}

HostNode *Network::findNode(std::string_view wanted) const { return names_.find(wanted); }

HostNode &Network::node(std::string_view wanted) const {
    if (HostNode *found = findNode(wanted)) return *found;
    std::vector<std::string> known{root_->name};
    for (const auto &one : nodes_) known.push_back(one->name);
    throw InputError("no node " + quoted(wanted) + " in " + quoted(name_) + suggestion(wanted, known));
}

void Network::rename(HostNode &node, std::string_view name) {
    assertInterface();
    giveName(node, name);
    changed();
}

void Network::giveName(HostNode &node, std::string_view wanted) {
    names_.remove(node);
    node.name = names_.unique(wanted);
    names_.add(node);
}

std::vector<HostNode *> Network::all() const {
    std::vector<HostNode *> every{root_.get()};
    for (const auto &node : nodes_) every.push_back(node.get());
    return every;
}

// A node without a server is a root that is described by functions.
HostError Network::initNode(HostNode &node, int mode) {
    if (node.handler) {
        const auto init = node.handler->render->init;
        return init ? callModule(node.server->number(), "init", [&] { return init(node.instance, mode); }) : nullptr;
    }
    if (!description_.init) return nullptr;
    return callModule(maker_, "root init", [&] { return description_.init(this, mode); });
}

HostError Network::newTimeNode(HostNode &node, int frame, double time) {
    if (node.handler) {
        const auto set = node.handler->render->newTime;
        return set ? callModule(node.server->number(), "newTime", [&] { return set(node.instance, frame, time); })
                   : nullptr;
    }
    if (!description_.newTime) return nullptr;
    return callModule(maker_, "root newTime", [&] { return description_.newTime(this, frame, time); });
}

void Network::cleanupNode(HostNode &node) {
    if (!node.handler) {
        if (description_.cleanup) callModule(maker_, "root cleanup", [&] { description_.cleanup(this); });
    } else if (node.handler->render->cleanup) {
        callModule(node.server->number(), "cleanup", [&] { node.handler->render->cleanup(node.instance); });
    }
}

void Network::init(int mode) {
    assertBetweenFrames();
    const std::vector<HostNode *> every = all();
    for (std::size_t i = 0; i < every.size(); ++i) {
        const auto error = failureOf(*every[i], initNode(*every[i], mode));
        if (!error) continue;
        const std::string message = "node " + quoted(every[i]->name) + ": " + *error;
        while (i > 0) cleanupNode(*every[--i]);
        throw InputError(message);
    }
}

void Network::newTime(int frame, double time) {
    assertBetweenFrames();
    for (HostNode *node : all())
        if (const auto error = failureOf(*node, newTimeNode(*node, frame, time)))
            throw InputError("node " + quoted(node->name) + ": " + *error);
}

void Network::cleanup() {
    assertBetweenFrames();
    for (HostNode *node : all()) cleanupNode(*node);
}

HostChannelGroup *Network::channelGroup() {
    if (group_) return group_;
    if (!ownGroup_) ownGroup_ = makeRootGroup(name_);
    return ownGroup_.get();
}

void Network::bounds(double result[3][2]) {
    for (int axis = 0; axis < 3; ++axis) {
        result[axis][0] = -0.5;
        result[axis][1] = 0.5;
    }
    if (autosize_) callModule(maker_, "autosize", [&] { autosize_(this, userData_, result); });
}

bool Network::previewSample(ShadingSample *sample, double colour[3]) {
    assertRender();
    if (!description_.preview) return false;
    description_.preview(this, sample, colour);
    return true;
}

void Network::changed() {
    if (event_) callModule(maker_, "network event", [&] { event_(this); });
}

std::optional<std::string> failureOf(const HostNode &node, HostError said) {
    std::optional<std::string> failure;
    if (said) failure = said;
    for (Network *inside : node.nested) {
        std::string unsaid = inside->takeLastError();
        if (!failure && !unsaid.empty()) failure = std::move(unsaid);
    }
    return failure;
}

HostPanel *panelOf(HostNode &node) {
    assertInterface();
    if (node.server) {
        // Asked for each time, as a host does that opens a panel; the server keeps one panel for an instance.
        node.panel = node.server->panel(node.instance);
        return node.panel;
    }
    const HostRootDescription &description = node.editor->description();
    if (!description.panel) return nullptr;
    return callModule(node.editor->maker(), "root panel", [&] { return description.panel(node.editor); });
}

} // namespace velm::host

// Loading a network from a file.
#include "host/base/names.h"
#include "host/base/thread_role.h"
#include "host/graph/network.h"
#include "host/graph/network_blocks.h"
#include "host/graph/node_data.h"
#include "host/graph/placeholder.h"
#include "host/state/load_state.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>

namespace velm::host {

using namespace blocks;

namespace {

constexpr int kLongestString = 65536; // with its terminating zero; no block is longer

} // namespace

class Network::Loader {
  public:
    Loader(Network &network, const HostLoadState &state) : network_(network), state_(state) {}

    void run() {
        static constexpr HostBlockId kTable[] = {kRoot, kVersion, kNodes, kConnections, {0, nullptr}};
        forEachBlock(state_, kTable, [&](unsigned int id) {
            if (id == kRoot.id) readView();
            if (id == kVersion.id) readVersion();
            if (id == kNodes.id) readNodes();
            if (id == kConnections.id) readConnections();
        });
        for (const Connection &connection : connections_)
            network_.connectAsSaved(nameNow(connection.fromNode), connection.output, nameNow(connection.toNode),
                                    connection.input);
    }

  private:
    struct Connection {
        std::string toNode, input, fromNode, output;
    };

    std::string readString() {
        const int length = state_.readString(state_.data, buffer_.get(), kLongestString);
        return {buffer_.get(), static_cast<std::size_t>(std::clamp(length, 0, kLongestString - 1))};
    }

    void readView() {
        static constexpr HostBlockId kTable[] = {kLocation, kZoom, kDisabled, {0, nullptr}};
        forEachBlock(state_, kTable, [&](unsigned int id) {
            if (id == kLocation.id) state_.readI4(state_.data, network_.location_.data(), 2);
            if (id == kZoom.id) state_.readFP(state_.data, &network_.zoom_, 1);
            unsigned short disabled = 0;
            if (id == kDisabled.id && state_.readU2(state_.data, &disabled, 1) == 1) network_.state_ = disabled;
        });
    }

    void readVersion() {
        int version = 0;
        state_.readI4(state_.data, &version, 1);
        if (version != kFormatVersion)
            throw InputError(fmt::format("the network has version {} of the format; only version {} is known", version,
                                         kFormatVersion));
    }

    // Each node has two blocks: the name of its server, then its tag.
    void readNodes() {
        static constexpr HostBlockId kTable[] = {kServer, kTag, {0, nullptr}};
        std::string server;
        bool isRoot = true;
        const UnnamedRoot unnamed(network_);
        forEachBlock(state_, kTable, [&](unsigned int id) {
            if (id == kServer.id) {
                server = readString();
                return;
            }
            readNode(server, isRoot);
            isRoot = false;
        });
    }

    // Takes the name away from the root until the end of the scope. The root is named after the network's owner, and a
    // node of the file may have the same name: the node then keeps it, and the root gets a number.
    class UnnamedRoot {
      public:
        explicit UnnamedRoot(Network &network) : network_(network), name_(network.root().name) {
            network_.giveName(network_.root(), {});
        }
        ~UnnamedRoot() {
            HostNode &root = network_.root();
            network_.giveName(root, name_);
            if (root.name == name_) return;
            network_.observers_.notify([&](NetworkObserver &observer) { observer.nodeRenamed(root, name_); });
        }
        UnnamedRoot(const UnnamedRoot &) = delete;
        UnnamedRoot &operator=(const UnnamedRoot &) = delete;

      private:
        Network &network_;
        const std::string name_;
    };

    // A node is created when its data are reached, or at the end of its tag when it has none. Its name precedes them.
    void readNode(const std::string &server, bool isRoot) {
        static constexpr HostBlockId kTable[] = {kRealName, kName,    kCoordinates, kMode,
                                                 kData,     kPreview, kComment,     {0, nullptr}};
        HostNode *created = isRoot ? &network_.root() : nullptr;
        std::string realName, name;
        NodeLook look;
        const auto node = [&]() -> HostNode & {
            if (!created) created = &createNode(server, realName, name);
            return *created;
        };
        forEachBlock(state_, kTable, [&](unsigned int id) {
            if (id == kRealName.id) realName = readString();
            if (id == kName.id) name = readString();
            if (id == kCoordinates.id) state_.readI4(state_.data, look.at.data(), 2);
            if (id == kMode.id) state_.readI4(state_.data, &look.mode, 1);
            if (id == kData.id) readData(node());
            if (id == kPreview.id) look.preview = readString();
            if (id == kComment.id) look.comment = readString();
        });
        network_.setLook(node(), look);
        names_.emplace(name, &node()); // should two nodes of a file have one name, connections mean the first
    }

    HostNode &createNode(const std::string &server, const std::string &realName, const std::string &name) {
        if (ServerClass *known = serverList().find(server)) return network_.addNode(*known, name);
        std::shared_ptr<Placeholder> &kind = placeholders_[server];
        if (!kind) kind = std::make_shared<Placeholder>(server, realName);
        return network_.addPlaceholder(kind, name);
    }

    // A root's values may be saved in another part of the file; its data are then empty.
    void readData(HostNode &node) {
        const bool isRoot = &node == &network_.root();
        if (isRoot) node.savesData = node.placeholder || !isOfReader(state_) || !unreadContents(state_).empty();
        if (node.savesData) loadData(node, state_);
    }

    // Each connection has four strings, the output last.
    void readConnections() {
        static constexpr HostBlockId kTable[] = {kInputNode, kInput, kOutputNode, kOutput, {0, nullptr}};
        Connection next;
        forEachBlock(state_, kTable, [&](unsigned int id) {
            if (id == kInputNode.id) next.toNode = readString();
            if (id == kInput.id) next.input = readString();
            if (id == kOutputNode.id) next.fromNode = readString();
            if (id != kOutput.id) return;
            next.output = readString();
            connections_.push_back(next);
        });
    }

    // The name that a node of the file has got here.
    std::string nameNow(const std::string &inFile) const {
        const auto found = names_.find(inFile);
        return found == names_.end() ? inFile : found->second->name;
    }

    Network &network_;
    const HostLoadState &state_;
    // Receives each string before its length is known. Not cleared, so that only the pages that are read are touched.
    const std::unique_ptr<char[]> buffer_ = std::make_unique_for_overwrite<char[]>(kLongestString);
    std::map<std::string, const HostNode *> names_;                    // by name in the file
    std::map<std::string, std::shared_ptr<Placeholder>> placeholders_; // by server
    std::vector<Connection> connections_;
};

void Network::load(const HostLoadState &state) {
    assertInterface();
    clear();
    Loader(*this, state).run();
}

} // namespace velm::host

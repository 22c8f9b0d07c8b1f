// A network from a file.
#include "host/base/names.h"
#include "host/base/thread_role.h"
#include "host/graph/network.h"
#include "host/graph/network_blocks.h"
#include "host/graph/node_data.h"
#include "host/graph/placeholder.h"
#include "host/state/load_state.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>

namespace velm::host {

using namespace blocks;

namespace {

constexpr int kLongestString = 65536; // with its end; as long as a block can be

// Calls `act` with the identifier of each known block in turn; it finds the block entered.
template <class Act>
void forEachBlock(const HostLoadState &state, const HostBlockId *table, Act act) {
    while (const unsigned int id = state.findBlock(state.data, table)) {
        act(id);
        state.endBlock(state.data);
    }
}

} // namespace

class Network::Loader {
  public:
    Loader(Network &editor, const HostLoadState &state) : editor_(editor), state_(state) {}

    void run() {
        static constexpr HostBlockId kTable[] = {kRoot, kVersion, kNodes, kConnections, {0, nullptr}};
        forEachBlock(state_, kTable, [&](unsigned int id) {
            if (id == kRoot.id) readView();
            if (id == kVersion.id) readVersion();
            if (id == kNodes.id) readNodes();
            if (id == kConnections.id) readConnections();
        });
        for (const Connection &connection : connections_)
            editor_.connectAsSaved(nameNow(connection.fromNode), connection.output, nameNow(connection.toNode),
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
            if (id == kLocation.id) state_.readI4(state_.data, editor_.location_.data(), 2);
            if (id == kZoom.id) state_.readFP(state_.data, &editor_.zoom_, 1);
            unsigned short disabled = 0;
            if (id == kDisabled.id && state_.readU2(state_.data, &disabled, 1) == 1) editor_.state_ = disabled;
        });
    }

    void readVersion() {
        int version = 0;
        state_.readI4(state_.data, &version, 1);
        if (version != kFormatVersion)
            throw InputError("the network has version " + std::to_string(version) + " of the format; only version " +
                             std::to_string(kFormatVersion) + " is known");
    }

    // Each node is the name of its server and then a tag.
    void readNodes() {
        static constexpr HostBlockId kTable[] = {kServer, kTag, {0, nullptr}};
        std::string server;
        bool isRoot = true;
        const RootAside aside(editor_);
        forEachBlock(state_, kTable, [&](unsigned int id) {
            if (id == kServer.id) {
                server = readString();
                return;
            }
            readNode(server, isRoot);
            isRoot = false;
        });
    }

    // The root has the name of what has the network, which nodes of the file may have, too: theirs come first.
    class RootAside {
      public:
        explicit RootAside(Network &editor) : editor_(editor), name_(editor.root().name) {
            editor_.giveName(editor_.root(), {});
        }
        ~RootAside() { editor_.giveName(editor_.root(), name_); }
        RootAside(const RootAside &) = delete;
        RootAside &operator=(const RootAside &) = delete;

      private:
        Network &editor_;
        const std::string name_;
    };

    // A node is made when its data come, or at the end of its tag when there are none. Its name stands before them.
    void readNode(const std::string &server, bool isRoot) {
        static constexpr HostBlockId kTable[] = {kRealName, kName,    kCoordinates, kMode,
                                                 kData,     kPreview, kComment,     {0, nullptr}};
        HostNode *made = isRoot ? &editor_.root() : nullptr;
        std::string realName, name, preview, comment;
        std::array<int, 2> coordinates{};
        int mode = 1;
        const auto node = [&]() -> HostNode & {
            if (!made) made = &makeNode(server, realName, name);
            return *made;
        };
        forEachBlock(state_, kTable, [&](unsigned int id) {
            if (id == kRealName.id) realName = readString();
            if (id == kName.id) name = readString();
            if (id == kCoordinates.id) state_.readI4(state_.data, coordinates.data(), 2);
            if (id == kMode.id) state_.readI4(state_.data, &mode, 1);
            if (id == kData.id) readData(node());
            if (id == kPreview.id) preview = readString();
            if (id == kComment.id) comment = readString();
        });
        node().coordinates = coordinates;
        node().mode = mode;
        node().previewOutput = preview;
        node().comment = comment;
        names_.emplace(name, &node()); // the first of a name, should a file have two
    }

    HostNode &makeNode(const std::string &server, const std::string &realName, const std::string &name) {
        if (ServerClass *known = serverList().find(server)) return editor_.addNode(*known, name);
        std::shared_ptr<Placeholder> &kind = standIns_[server];
        if (!kind) kind = std::make_shared<Placeholder>(server, realName);
        return editor_.addPlaceholder(kind, name);
    }

    // A root may have its values elsewhere in the file.
    void readData(HostNode &node) {
        const bool isRoot = &node == &editor_.root();
        if (isRoot) node.savesData = node.placeholder || !isOfReader(state_) || !unreadContents(state_).empty();
        if (node.savesData) loadData(node, state_);
    }

    // Four strings a connection, the output last.
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

    // What a node of the file is called here.
    std::string nameNow(const std::string &inFile) const {
        const auto found = names_.find(inFile);
        return found == names_.end() ? inFile : found->second->name;
    }

    Network &editor_;
    const HostLoadState &state_;
    // Where each string is read before its length is known; not cleared, so that only what is read is ever touched.
    const std::unique_ptr<char[]> buffer_ = std::make_unique_for_overwrite<char[]>(kLongestString);
    std::map<std::string, const HostNode *> names_;
    std::map<std::string, std::shared_ptr<Placeholder>> standIns_;
    std::vector<Connection> connections_;
};

void Network::load(const HostLoadState &state) {
    assertInterface();
    clear();
    Loader(*this, state).run();
}

} // namespace velm::host

// A network from a file.
#include "host/graph/names.h"
#include "host/graph/network.h"
#include "host/graph/network_blocks.h"
#include "host/thread_role.h"

#include <map>
#include <optional>

using namespace velm::blocks;
using velm::assertInterface;
using velm::InputError;
using velm::quoted;

namespace {

std::string readString(const HostLoadState &state) {
    // As long as a block can be.
    std::string buffer(65536, '\0');
    const int length = state.readString(state.data, buffer.data(), static_cast<int>(buffer.size()));
    buffer.resize(length > 0 ? std::min(static_cast<std::size_t>(length), buffer.size() - 1) : 0);
    return buffer;
}

// Calls `act` with the identifier of each known block in turn; it finds the block entered.
template <class Act>
void forEachBlock(const HostLoadState &state, const HostBlockId *table, Act act) {
    while (const unsigned int id = state.findBlock(state.data, table)) {
        act(id);
        state.endBlock(state.data);
    }
}

} // namespace

class HostNodeEditor::Loader {
  public:
    Loader(HostNodeEditor &editor, const HostLoadState &state) : editor_(editor), state_(state) {}

    void run() {
        static constexpr HostBlockId kTable[] = {kRoot, kVersion, kNodes, kConnections, {0, nullptr}};
        forEachBlock(state_, kTable, [&](unsigned int id) {
            if (id == kRoot.id) readView();
            if (id == kVersion.id) readVersion();
            if (id == kNodes.id) readNodes();
            if (id == kConnections.id) readConnections();
        });
        for (const Connection &connection : connections_)
            editor_.connect(nameNow(connection.fromNode), connection.output, nameNow(connection.toNode),
                            connection.input);
    }

  private:
    struct Connection {
        std::string toNode, input, fromNode, output;
    };

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
        forEachBlock(state_, kTable, [&](unsigned int id) {
            if (id == kServer.id) {
                server = readString(state_);
                return;
            }
            readNode(server, isRoot);
            isRoot = false;
        });
    }

    // A node is made when its data come, or at the end of its tag when there are none. Its name stands before them.
    void readNode(const std::string &server, bool isRoot) {
        static constexpr HostBlockId kTable[] = {kName, kCoordinates, kMode, kData, kPreview, kComment, {0, nullptr}};
        HostNode *made = isRoot ? &editor_.root() : nullptr;
        std::string name, preview, comment;
        std::array<int, 2> coordinates{};
        int mode = 1;
        const auto node = [&]() -> HostNode & {
            if (!made) made = &editor_.addNode(velm::serverList().get(server), name);
            return *made;
        };
        forEachBlock(state_, kTable, [&](unsigned int id) {
            if (id == kName.id) name = readString(state_);
            if (id == kCoordinates.id) state_.readI4(state_.data, coordinates.data(), 2);
            if (id == kMode.id) state_.readI4(state_.data, &mode, 1);
            if (id == kData.id) readData(node());
            if (id == kPreview.id) preview = readString(state_);
            if (id == kComment.id) comment = readString(state_);
        });
        node().coordinates = coordinates;
        node().mode = mode;
        node().previewOutput = preview;
        node().comment = comment;
        names_.emplace(name, node().name); // the first of a name, should a file have two
    }

    void readData(HostNode &node) {
        const int depth = state_.depth(state_.data);
        if (!node.handler || !node.handler->instance->load) return;
        if (const auto error = velm::failureOf(node, node.handler->instance->load(node.instance, &state_)))
            throw InputError("cannot load the node " + quoted(node.name) + ": " + *error);
        while (state_.depth(state_.data) > depth) state_.endBlock(state_.data); // that the server left open
    }

    // Four strings a connection, the output last.
    void readConnections() {
        static constexpr HostBlockId kTable[] = {kInputNode, kInput, kOutputNode, kOutput, {0, nullptr}};
        Connection next;
        forEachBlock(state_, kTable, [&](unsigned int id) {
            if (id == kInputNode.id) next.toNode = readString(state_);
            if (id == kInput.id) next.input = readString(state_);
            if (id == kOutputNode.id) next.fromNode = readString(state_);
            if (id != kOutput.id) return;
            next.output = readString(state_);
            connections_.push_back(next);
        });
    }

    // What a node of the file is called here: the root has its editor's name.
    std::string nameNow(const std::string &inFile) const {
        const auto found = names_.find(inFile);
        return found == names_.end() ? inFile : found->second;
    }

    HostNodeEditor &editor_;
    const HostLoadState &state_;
    std::map<std::string, std::string> names_;
    std::vector<Connection> connections_;
};

void HostNodeEditor::load(const HostLoadState &state) {
    assertInterface();
    clear();
    Loader(*this, state).run();
}

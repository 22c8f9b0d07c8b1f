#include "host/files/same_network.h"

#include "host/graph/network_blocks.h"
#include "host/state/load_state.h"

#include <algorithm>
#include <string>
#include <vector>

namespace velm::host {

namespace {

using namespace blocks;

// The contents of a network as a sorted list of texts: the path to each value, and its bytes.
class Facts {
  public:
    explicit Facts(std::string_view block) : reader_(kStateBinary, block, "network"), state_(*reader_.state()) {
        static constexpr HostBlockId kTop[] = {blocks::kNetwork, {0, nullptr}};
        static constexpr HostBlockId kParts[] = {kRoot, kNodes, kConnections, {0, nullptr}};
        forEachBlock(state_, kTop, [&](unsigned int) {
            forEachBlock(state_, kParts, [&](unsigned int id) {
                if (id == kRoot.id) readView();
                if (id == kNodes.id) readNodes();
                if (id == kConnections.id) readConnections();
            });
        });
        std::sort(facts_.begin(), facts_.end());
    }

    bool areWhole() const { return !reader_.failed(); }
    bool operator==(const Facts &other) const { return facts_ == other.facts_; }

  private:
    // Adds a value unless it is the default, which a file may leave out: `defaultBytes`, or zeros where those are
    // empty. The default of data is no data.
    void add(const std::string &path, unsigned int id, std::string_view defaultBytes = {}) {
        const std::string bytes = unreadContents(state_);
        const bool isZero = id == kData.id ? bytes.empty() : bytes.find_first_not_of('\0') == std::string::npos;
        if (!(defaultBytes.empty() ? isZero : bytes == defaultBytes)) facts_.push_back(path + blockName(id) + bytes);
    }

    void readView() {
        static constexpr HostBlockId kView[] = {kLocation, kZoom, kDisabled, {0, nullptr}};
        static constexpr std::string_view kZoomOne("\x3f\x80\0\0", 4);
        forEachBlock(state_, kView,
                     [&](unsigned int id) { add("view", id, id == kZoom.id ? kZoomOne : std::string_view()); });
    }

    // The display name of the server is left out: it depends on the server, not on the network.
    void readNodes() {
        static constexpr HostBlockId kEach[] = {kServer, kTag, {0, nullptr}};
        static constexpr HostBlockId kOfTag[] = {kName, kCoordinates, kMode, kData, kPreview, kComment, {0, nullptr}};
        static constexpr std::string_view kModeOne("\0\0\0\1", 4);
        int number = 0;
        forEachBlock(state_, kEach, [&](unsigned int id) {
            const std::string path = "node " + std::to_string(number) + ' ';
            if (id == kServer.id) return add(path, id);
            forEachBlock(state_, kOfTag,
                         [&](unsigned int part) { add(path, part, part == kMode.id ? kModeOne : std::string_view()); });
            ++number;
        });
    }

    // A connection has four strings, of which the output is the last.
    void readConnections() {
        static constexpr HostBlockId kEach[] = {kInputNode, kInput, kOutputNode, kOutput, {0, nullptr}};
        std::string connection;
        forEachBlock(state_, kEach, [&](unsigned int id) {
            connection += blockName(id) + unreadContents(state_);
            if (id != kOutput.id) return;
            facts_.push_back(connection);
            connection.clear();
        });
    }

    StateReader reader_;
    const HostLoadState &state_;
    std::vector<std::string> facts_;
};

} // namespace

bool sameNetwork(std::string_view one, std::string_view other) {
    const Facts first(one), second(other);
    return first.areWhole() && second.areWhole() && first == second;
}

} // namespace velm::host

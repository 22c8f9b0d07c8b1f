#include "host/files/network_outline.h"

#include "host/graph/network_blocks.h"
#include "host/state/load_state.h"

#include <utility>

namespace velm::host {

namespace {

class Outline {
  public:
    explicit Outline(std::string_view block) : reader_(kStateBinary, block, "network"), state_(*reader_.state()) {}

    NetworkOutline read() {
        static constexpr HostBlockId kTop[] = {blocks::kNetwork, {0, nullptr}};
        static constexpr HostBlockId kParts[] = {blocks::kNodes, blocks::kConnections, {0, nullptr}};
        forEachBlock(state_, kTop, [&](unsigned int) {
            forEachBlock(state_, kParts,
                         [&](unsigned int id) { id == blocks::kNodes.id ? readNodes() : readConnections(); });
        });
        return std::move(result_);
    }

  private:
    // The root is the first node.
    void readNodes() {
        static constexpr HostBlockId kEach[] = {blocks::kTag, {0, nullptr}};
        static constexpr HostBlockId kOfTag[] = {blocks::kName, {0, nullptr}};
        bool isRoot = true;
        forEachBlock(state_, kEach, [&](unsigned int) {
            if (isRoot)
                forEachBlock(state_, kOfTag, [&](unsigned int) { rootName_ = unreadContents(state_); });
            else
                ++result_.nodes;
            isRoot = false;
        });
    }

    // The input's node comes before the input.
    void readConnections() {
        static constexpr HostBlockId kEach[] = {blocks::kInputNode, blocks::kInput, {0, nullptr}};
        bool isOfRoot = false;
        forEachBlock(state_, kEach, [&](unsigned int id) {
            const std::string text = unreadContents(state_);
            if (id == blocks::kInputNode.id) isOfRoot = text == rootName_;
            if (id == blocks::kInput.id && isOfRoot) result_.rootInputs.emplace_back(text.c_str());
        });
    }

    StateReader reader_;
    const HostLoadState &state_;
    NetworkOutline result_;
    std::string rootName_; // as it is in the file, with its padding
};

} // namespace

NetworkOutline outlineOf(std::string_view block) { return Outline(block).read(); }

} // namespace velm::host

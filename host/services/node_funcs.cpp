// "NodeFuncs": facts about a node, for the node itself.
#include "host/animation/channel.h"
#include "host/base/thread_role.h"
#include "host/graph/network.h"
#include "host/services/services.h"

namespace velm::host {

namespace {

const char *nodeName(HostNode *node) {
    assertInterface();
    return node->name.c_str();
}

const char *serverUserName(HostNode *node) {
    assertInterface();
    return node->server ? node->server->displayName().c_str() : node->network->name().c_str();
}

// The node's group, which is created at the first call in the network's group.
HostChannelGroup *channelGroup(HostNode *node) {
    assertInterface();
    if (!node->group) node->group = envelopeFuncs()->createGroup(node->network->channelGroup(), node->name.c_str());
    return node->group;
}

void setColourRgb(HostNode *node, int red, int green, int blue) { node->network->setColour(*node, {red, green, blue}); }

void setColour(HostNode *node, const int rgb[3]) { setColourRgb(node, rgb[0], rgb[1], rgb[2]); }

void setPreviewType(HostNode *node, int type) { node->network->setPreviewType(*node, type); }

void updatePreview(HostNode *node) { node->network->requestPreview(*node); }

} // namespace

const HostNodeFuncs *nodeFuncs() {
    static constexpr HostNodeFuncs kTable = {
        .nodeName = nodeName,
        .serverUserName = serverUserName,
        .channelGroup = channelGroup,
        .setColour = setColour,
        .setColourRgb = setColourRgb,
        .setPreviewType = setPreviewType,
        .updatePreview = updatePreview,
    };
    return &kTable;
}

} // namespace velm::host

#include "host/graph/builtin/builtin.h"
#include "host/graph/builtin/definitions.h"

#include <iterator>
#include <vector>

namespace velm::host {

namespace {

using namespace builtin;

template <const Definition &definition, const HostTag *tags>
void add(std::vector<HostServer> &servers) {
    servers.push_back({HOST_CLASS_NODE_HANDLER, definition.name, activate<definition>, tags});
    servers.push_back({HOST_CLASS_NODE_INTERFACE, definition.name, activateInterface, tags});
}

// The menu groups. There is no tag for a display name: nodes are shown by their server's name.
constexpr HostTag kConstants[] = {{"Constants", kTagMenu}, {nullptr, 0}};
constexpr HostTag kInfo[] = {{"Info", kTagMenu}, {nullptr, 0}};
constexpr HostTag kMath[] = {{"Math", kTagMenu}, {nullptr, 0}};
constexpr HostTag kTextures[] = {{"Textures", kTagMenu}, {nullptr, 0}};

std::vector<HostServer> table() {
    std::vector<HostServer> servers;
    add<constantColour, kConstants>(servers);
    add<constantScalar, kConstants>(servers);
    add<constantVector, kConstants>(servers);
    add<constantInteger, kConstants>(servers);
    add<spotInfo, kInfo>(servers);
    add<vertexColour, kInfo>(servers);
    add<weightMap, kInfo>(servers);
    add<incidence, kInfo>(servers);
    add<fresnel, kInfo>(servers);
    add<cameraDistance, kInfo>(servers);
    add<itemInfoNode, kInfo>(servers);
    add<timeInfoNode, kInfo>(servers);
    add<addScalar, kMath>(servers);
    add<multiplyScalar, kMath>(servers);
    add<mixScalar, kMath>(servers);
    add<clampScalar, kMath>(servers);
    add<addColour, kMath>(servers);
    add<multiplyColour, kMath>(servers);
    add<mixColour, kMath>(servers);
    add<clampColour, kMath>(servers);
    add<scalarMath, kMath>(servers);
    add<vectorMath, kMath>(servers);
    add<makeVector, kMath>(servers);
    add<splitVector, kMath>(servers);
    add<makeColour, kMath>(servers);
    add<splitColour, kMath>(servers);
    add<curve, kMath>(servers);
    add<checker, kTextures>(servers);
    add<fractalNoise, kTextures>(servers);
    add<image, kTextures>(servers);
    add<imageProjection, kTextures>(servers);
    add<colourRamp, kTextures>(servers);
    add<blendColour, kTextures>(servers);
    add<blendScalar, kTextures>(servers);
    add<bump, kTextures>(servers);
    add<proceduralPattern, kTextures>(servers);
    add<turbulence, kTextures>(servers);
    add<marble, kTextures>(servers);
    add<wood, kTextures>(servers);
    add<cells, kTextures>(servers);
    add<brick, kTextures>(servers);
    servers.push_back({nullptr, nullptr, nullptr, nullptr});
    return servers;
}

} // namespace

const HostServer *builtinServers() {
    static const std::vector<HostServer> servers = table();
    return servers.data();
}

} // namespace velm::host

// The nodes that compute single texture layers.
#pragma once

#include "host/object/losses.h"
#include "host/object/surface_textures.h"
#include "host/scene/convert/network_writer.h"
#include "host/scene/convert/texture_channels.h"

#include <optional>
#include <string>

namespace velm::host {

// A layer that can be blended with the layers below it.
struct LayerOutputs {
    std::optional<NodeOutput> value;    // of the channel; empty if the value is `constant`
    SettingValue constant;              // used if `value` is empty
    std::optional<NodeOutput> coverage; // the opacity of the layer at each point; empty for 100 %
};

// The layers below a layer.
struct LayersBelow {
    std::optional<NodeOutput> top;  // the channel without the layer; empty if its value is `base`
    SettingValue base;              // the surface's own value
    std::optional<NodeOutput> bump; // the height of the surface's bump; empty for a surface without one
};

// Makes the nodes of a surface's layers. Counts what they cannot represent.
class LayerNodes {
  public:
    // `writer`, `surface`, which is the surface's name, and `losses` have to outlive the object.
    LayerNodes(NetworkWriter &writer, const std::string &surface, Losses &losses)
        : writer_(writer), surface_(surface), losses_(losses) {}

    // Whether the layer has no effect or is not supported; counts the loss of the latter. `channel` is null for a
    // channel that is not rendered.
    bool isLeftOut(const SurfaceTexture &texture, const TextureChannel *channel);
    // Adds the nodes of a layer that is not left out. `number` counts the layers of the channel from 1.
    LayerOutputs add(const SurfaceTexture &texture, const TextureChannel &channel, int number,
                     const LayersBelow &below);
    // The envelopes of one of a texture's numbers; empty if it is not animated. Counts envelopes that are missing from
    // the object or changed by a plug-in.
    ComponentEnvelopes envelopesOf(const SurfaceTexture &texture, TextureNumber number);

  private:
    void lose(Loss kind, const std::string &detail = {}, std::size_t count = 1);
    NetworkWriter::Node addNode(const TextureChannel &channel, const char *what, int number, const char *server);
    LayerOutputs addImage(const SurfaceTexture &texture, const TextureChannel &channel, int number);
    LayerOutputs addRamp(const SurfaceTexture &texture, const TextureChannel &channel, int number,
                         const LayersBelow &below);
    NodeOutput addWeight(const SurfaceTexture &texture, const TextureChannel &channel, int number);
    LayerOutputs addPattern(const SurfaceTexture &texture, const TextureChannel &channel, int number);
    NodeOutput amplified(NodeOutput height, const SurfaceTexture &texture, int number);
    void setPosition(const SurfaceTexture &texture, NetworkWriter::Node &node);
    void setFalloff(const SurfaceTexture &texture, NetworkWriter::Node &node);
    void notePositionLosses(const SurfaceTexture &texture);
    void noteImageLosses(const SurfaceTexture &texture);
    void addKeys(const SurfaceTexture &texture, NetworkWriter::Node &node);

    NetworkWriter &writer_;
    const std::string &surface_;
    Losses &losses_;
};

} // namespace velm::host

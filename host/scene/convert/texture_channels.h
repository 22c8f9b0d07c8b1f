// The channels of texture layers: the values of a surface that layers change.
#pragma once

#include "host/base/four_cc.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace velm::host {

// A channel, and the input of a surface that it drives.
struct TextureChannel {
    std::uint32_t id;
    const char *label;
    bool isColour = false;
};

inline constexpr TextureChannel kTextureChannels[] = {
    {.id = fourCC("COLR"), .label = "Color", .isColour = true},
    {.id = fourCC("LUMI"), .label = "Luminosity"},
    {.id = fourCC("DIFF"), .label = "Diffuse"},
    {.id = fourCC("SPEC"), .label = "Specular"},
    {.id = fourCC("GLOS"), .label = "Glossiness"},
    {.id = fourCC("REFL"), .label = "Reflection"},
    {.id = fourCC("TRAN"), .label = "Transparency"},
    {.id = fourCC("RIND"), .label = "Refraction Index"},
};
inline constexpr const TextureChannel &kColourChannel = kTextureChannels[0];

// The bump. Its layers are heights in metres, which a node turns into the surface's normal.
inline constexpr TextureChannel kBumpChannel{.id = fourCC("BUMP"), .label = "Bump"};

// The channel with an identifier; null for one that is not rendered.
inline const TextureChannel *findTextureChannel(std::uint32_t id) {
    if (id == kBumpChannel.id) return &kBumpChannel;
    const auto *found = std::ranges::find(kTextureChannels, id, &TextureChannel::id);
    return found == std::end(kTextureChannels) ? nullptr : found;
}

} // namespace velm::host

// What is baked: one value of a surface at each of its points.
#pragma once

#include "host/graph/node.h"
#include "host/render/tracing/ray_state.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

class Surface;

enum class BakedKind {
    number, // the same in all three components
    colour,
    vector,
    normal // of length 1, in world space
};

// A value by its name, at the surfaces that have it:
//   "NODE.OUTPUT"    an output of a node of the surface's network; a material counts as its diffuse colour
//   "Color", ...     a value of the surface, with what is connected to it
//   "Normal"         the surface's normal, with what is connected to it
//   "lit"            the colour of the surface, shaded with the scene's lights and rays, without fog
class BakedValue {
  public:
    // `surfaces`: indices into RenderSceneData::surfaces. InputError, listing the names that there are, if none of
    // these surfaces has the value, and if outputs of that name differ in kind. The scene has to outlive the result,
    // and the networks must not change. [interface thread; not while rendering]
    BakedValue(const RenderSceneData &scene, std::string_view name, const std::vector<std::uint16_t> &surfaces);

    BakedKind kind() const { return kind_; }
    // Whether a surface has the value, by its index into RenderSceneData::surfaces.
    bool has(std::uint16_t surface) const { return surface < sources_.size() && sources_[surface].surface; }

    // The value at a sample of a surface that has it. `state.origin` has to be the sample's. [render threads]
    Vec3 evaluate(RayState &state, std::uint16_t surface, ShadingSample &sample) const;

  private:
    // Where the value of a surface comes from. The surface is null if it does not have the value.
    struct Source {
        const Surface *surface = nullptr;
        HostInput output; // reads the output of a node; unconnected for other values
    };
    bool findOutput(const RenderSceneData &scene, std::string_view name, const std::vector<std::uint16_t> &surfaces);
    void findOwn(const RenderSceneData &scene, std::string_view name, const std::vector<std::uint16_t> &surfaces);

    enum class From { output, own, lit } from_ = From::output;
    int own_ = 0; // which of the surface's own values
    BakedKind kind_ = BakedKind::colour;
    std::vector<Source> sources_; // by surface
};

} // namespace velm::host

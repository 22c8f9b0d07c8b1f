// Finds what is baked by the names that a user gives.
#pragma once

#include "host/render/scene/render_scene_data.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace velm::host {

// An object and those of its surfaces that are baked.
struct BakeTarget {
    std::uint32_t object = 0;            // an index into RenderSceneData::objects
    std::vector<std::uint16_t> surfaces; // indices into RenderSceneData::surfaces, each once
};

// The object of that name, or, for an empty name, the only object. InputError, listing the objects, where there is none
// of that name, and where the name is empty and the scene has several or none. [any thread]
std::uint32_t findObject(const RenderSceneData &scene, const std::string &name);

// The surfaces of these names, or all that polygons of the object have if there are no names. InputError, listing the
// object's surfaces, for a name that is none of them. [any thread]
std::vector<std::uint16_t> findSurfaces(const RenderSceneData &scene, std::uint32_t object,
                                        const std::vector<std::string> &names);

// The index of the mesh's UV map of that name, or of its first UV map for an empty name. InputError, listing the UV
// maps, if there is none. [any thread]
std::size_t findUvMap(const RenderSceneData &scene, std::uint32_t object, const std::string &name);

} // namespace velm::host

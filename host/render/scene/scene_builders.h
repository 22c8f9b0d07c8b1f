// The two steps in which the contents of a render scene are built from a description.
//
// Both steps fill `data` and read `former`, the contents before a change, to take over from it what is still right:
// meshes and the acceleration structure. For a new scene `former` is empty. Both throw as RenderScene does, and then
// leave `former` as it was.
#pragma once

#include "host/render/scene/item_handles.h"
#include "host/render/scene/render_scene.h"
#include "host/render/scene/render_scene_data.h"

namespace velm::host {

class MeshCache;

// The first step: names, settings, cameras, lights, and objects with their meshes, without normals for smoothing, all
// at a time in seconds. New handles are taken from `handles`, and are only filled in by attachHandles. Meshes that
// `meshes` has are taken from it; it may be null.
void buildItems(const SceneDescription &scene, double time, const RenderSceneData &former, MeshCache *meshes,
                ItemHandles &handles, RenderSceneData &data);

// Makes the handles refer to the items of `data`, and to nothing where `data` has no such item. Throws nothing.
void attachHandles(ItemHandles &handles, const RenderSceneData &data);

// The second step: surfaces, normals, backdrop, ambient light and acceleration structure.
void buildSurfaces(const SceneDescription &scene, const SurfaceLookup &surfaceOf, const RenderSceneData &former,
                   RenderSceneData &data);

// Tells the surfaces their bounds. Throws nothing.
void attachSurfaces(const RenderSceneData &data);

} // namespace velm::host

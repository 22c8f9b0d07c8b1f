// Writes values that were baked at the vertices of an object, beside what is in the file that the object's mesh was
// read from.
#pragma once

#include "host/bake/files/mesh_values.h"
#include "host/render/scene/render_scene_data.h"

#include <string>

namespace velm::host {

// The vertex maps that values can be written as.
enum class VertexMapKind { weights, colours, coloursWithAlpha };

constexpr std::uint32_t sizeOf(VertexMapKind kind) {
    return kind == VertexMapKind::weights ? 1 : kind == VertexMapKind::colours ? 3 : 4;
}

// InputError, listing the extensions of files for vertices, if the file has none of them. [any thread]
void checkVertexEnding(const std::string &file);

// Checks before the work that the object's vertices can be written to a file of this name:
//   .lwo   for a LightWave object: all of its bytes, and the map (see vertex_map_writer.h)
//   .glb   for a .glb or .gltf file: everything in it, and the colours (see gltf_writer.h)
//   .ply   for any mesh: its vertices and polygons, and the values (see ply_writer.h)
// `map` is the name of the map. InputError, saying what is possible, for another extension, for an object of which such
// a file cannot be made, and for a kind of map or a name that such a file cannot have. [interface thread]
void checkVertexFile(const std::string &output, const ShapeDescription &shape, const std::string &map,
                     VertexMapKind kind);

// The bytes of the file. The output, the map and its kind have passed checkVertexFile. InputError if the mesh's file
// cannot be read again, or has changed. [interface thread]
std::string vertexFile(const std::string &output, const RenderObject &object, const MeshValues &values,
                       const std::string &map, VertexMapKind kind);

} // namespace velm::host

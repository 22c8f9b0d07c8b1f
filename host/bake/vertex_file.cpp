#include "host/bake/vertex_file.h"

#include "host/bake/files/gltf_writer.h"
#include "host/bake/files/object_values.h"
#include "host/bake/files/ply_writer.h"
#include "host/base/error.h"
#include "host/base/names.h"
#include "host/io/files.h"
#include "host/io/reader_process.h"
#include "host/object/vertex_map_writer.h"
#include "host/render/geometry/mesh_formats.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fmt/format.h>
#include <string_view>
#include <variant>

namespace velm::host {
namespace {

constexpr std::array<std::uint32_t, 3> kTypes = {fourCC("WGHT"), fourCC("RGB "), fourCC("RGBA")}; // by VertexMapKind

constexpr std::string_view kObjectEnding = ".lwo", kGltfEnding = ".glb", kPlyEnding = ".ply";

std::string endingOf(const std::string &file) {
    std::string ending = std::filesystem::path(file).extension().string();
    std::ranges::transform(ending, ending.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return ending;
}

// The file of a mesh; fails for a shape that is none.
const MeshFile &meshFileOf(const ShapeDescription &shape, const std::string &output) {
    const auto *mesh = std::get_if<MeshFile>(&shape);
    if (!mesh)
        throw InputError(fmt::format("cannot write {}: the object has no mesh file whose contents it could keep. Write "
                                     "a .ply file",
                                     inQuotes(output)));
    return *mesh;
}

bool areInOneDirectory(const std::string &one, const std::string &other) {
    const auto directoryOf = [](const std::string &file) {
        const std::filesystem::path directory = std::filesystem::path(file).parent_path();
        return directory.empty() ? std::filesystem::path(".") : directory;
    };
    std::error_code error; // for directories that do not exist
    return std::filesystem::equivalent(directoryOf(one), directoryOf(other), error);
}

void checkObject(const std::string &output, const ShapeDescription &shape) {
    const std::string &file = meshFileOf(shape, output).file;
    const MeshFormat *format = meshFormatOf(file);
    if (!format || format->read != readObjectMesh)
        throw InputError(fmt::format("cannot write {}: {} is no LightWave object. Write a .ply file", inQuotes(output),
                                     inQuotes(file)));
    // Refuses other forms.
    const std::string bytes = readFile(file);
    withVertexMap(bytes, file, readObject(bytes, file), {});
}

void checkGltf(const std::string &output, const ShapeDescription &shape, VertexMapKind kind) {
    const std::string &file = meshFileOf(shape, output).file;
    const MeshFormat *format = meshFormatOf(file);
    if (!format || !format->isGltf())
        throw InputError(fmt::format("cannot write {}: {} is neither a .glb nor a .gltf file. Write a .ply file",
                                     inQuotes(output), inQuotes(file)));
    if (kind == VertexMapKind::weights)
        throw InputError(fmt::format("cannot write {}: .glb files hold no weights but those of bones. Choose RGB or "
                                     "RGBA",
                                     inQuotes(output)));
    const std::vector<std::string> others = namesInGltf(file);
    if (!others.empty() && !areInOneDirectory(file, output))
        throw InputError(fmt::format("cannot write {}: {} refers to {}, relative to its directory. Write the .glb file "
                                     "to the same directory",
                                     inQuotes(output), inQuotes(file), inQuotes(others.front())));
}

} // namespace

void checkVertexEnding(const std::string &file) {
    const std::string ending = endingOf(file);
    if (ending != kObjectEnding && ending != kGltfEnding && ending != kPlyEnding)
        throw InputError(fmt::format("cannot write {}: vertices are written to files whose names end in .lwo, .glb or "
                                     ".ply",
                                     inQuotes(file)));
}

void checkVertexFile(const std::string &output, const ShapeDescription &shape, const std::string &map,
                     VertexMapKind kind) {
    checkVertexEnding(output);
    const std::string ending = endingOf(output);
    if (ending == kObjectEnding) checkObject(output, shape);
    if (ending == kGltfEnding) checkGltf(output, shape, kind);
    if (ending == kPlyEnding && kind == VertexMapKind::weights) checkPlyName(map);
}

std::string vertexFile(const std::string &output, const RenderObject &object, const MeshValues &values,
                       const std::string &map, VertexMapKind kind) {
    const std::string ending = endingOf(output);
    if (ending == kPlyEnding) return plyFile(*object.mesh, values, object.transform, map);
    const MeshFile &mesh = meshFileOf(object.shape, output);
    if (ending == kGltfEnding) return gltfWithColours(mesh.file, *object.mesh, values, object.transform);
    const std::string bytes = readFile(mesh.file);
    const ObjectGeometry geometry = readObject(bytes, mesh.file);
    return withVertexMap(bytes, mesh.file, geometry,
                         {.type = kTypes[static_cast<std::size_t>(kind)],
                          .size = values.size,
                          .name = map,
                          .tolerance = kEqualValues,
                          .layers = objectValues(*object.mesh, values, geometry,
                                                 {.file = mesh.file,
                                                  .layer = mesh.layer,
                                                  .subdivision = mesh.subdivision,
                                                  .mostBytes = readLimitInBytes(),
                                                  .transform = object.transform})});
}

} // namespace velm::host

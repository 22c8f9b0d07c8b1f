// Fuzzes the readers of PLY, STL and OBJ files, of cameras and lights in 3DS files, and of images inside of FBX files.
// Files that the first three leave to the mesh library are not read any further.
#include "fuzz/require.h"

#include "host/io/fbx_images.h"
#include "host/io/file_ends.h"
#include "host/render/geometry/items_3ds.h"
#include "host/render/geometry/mesh_formats.h"
#include "host/render/geometry/vector.h"

#include <algorithm>
#include <cmath>

using namespace velm::host;
using namespace velm::host::fuzz;

namespace {

const std::string kName = "fuzzed.ply", kMaterials = "fuzzed.mtl";

void requireWhole(const Mesh &mesh) {
    const std::size_t points = mesh.points.size(), triangles = mesh.triangles.size();
    require(triangles > 0, "a mesh has triangles");
    for (const HostPolygon &triangle : mesh.triangles)
        require(std::ranges::all_of(triangle.corners, [points](std::uint32_t corner) { return corner < points; }),
                "corners are points");
    require(mesh.normals.empty() || mesh.normals.size() == points, "each vertex has a normal");
    for (const UvMap &map : mesh.uvMaps) require(map.values.size() == points, "each vertex has UV coordinates");
    for (const VertexMap &map : mesh.vertexMaps)
        require(map.values.size() == map.size * points, "each vertex has a colour");
    require(mesh.polygonNumbers.empty() || mesh.polygonNumbers.size() == triangles, "each triangle has a polygon");
    require(std::ranges::all_of(mesh.polygonNumbers, [&](std::uint32_t number) { return number < mesh.polygonCount; }),
            "polygons are numbered");
    require(mesh.materialNumbers.empty() || mesh.materialNumbers.size() == triangles, "each triangle has a material");
    require(!mesh.materials.empty() &&
                std::ranges::all_of(mesh.materialNumbers,
                                    [&](std::uint16_t number) { return number < mesh.materials.size(); }),
            "materials are numbered");
}

// Reads an OBJ file. If it names the file of materials kMaterials, that has the same bytes.
std::optional<Mesh> objMesh(std::string_view bytes, const MeshFormat &format) {
    const auto readOther = [&](const std::string &name) {
        return name == kMaterials ? std::optional<std::string>(bytes) : std::nullopt;
    };
    return plainObjMesh(bytes, kName, format, Transform(), readOther);
}

std::optional<Mesh> meshIn(std::string_view bytes) {
    if (bytes.starts_with("ply")) return plainPlyMesh(bytes, kName, Transform());
    const MeshFormat *format =
        meshFormatOf(FileEnds{.head = std::string(bytes.substr(0, kFileEnd)), .tail = {}, .size = bytes.size()});
    if (format && format->read == readObjMesh) return objMesh(bytes, *format);
    return plainStlMesh(bytes, kName, Transform());
}

void requireFinite(const MeshItems &items) {
    for (const MeshCamera &camera : items.cameras)
        require(isFinite(Vec3(camera.position)) && isFinite(Vec3(camera.rotation)), "cameras have finite positions");
    for (const MeshLight &light : items.lights) {
        require(std::isfinite(light.intensity) && light.intensity >= 0, "lights have finite intensities");
        require(isFinite(Vec3(light.position)) && isFinite(Vec3(light.rotation)), "lights have finite positions");
    }
}

void requireInside(std::string_view file, const std::vector<FbxImage> &images) {
    std::size_t total = 0;
    for (const FbxImage &image : images) total += image.bytes().size();
    require(total <= file.size(), "images are parts of the file");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    const std::string_view bytes = asText(data, size);
    requireFinite(itemsOf3ds(bytes, 1));
    acceptsInput(kName, [&] {
        if (isFbx(bytes)) return requireInside(bytes, imagesOfFbx(bytes, kName));
        const auto mesh = meshIn(bytes);
        if (mesh) requireWhole(*mesh);
    });
    return 0;
}

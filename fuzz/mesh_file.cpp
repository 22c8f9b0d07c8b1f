// Fuzzes the readers of PLY and STL files. Files that they leave to the mesh library are not read any further.
#include "fuzz/require.h"

#include "host/render/geometry/mesh_formats.h"

#include <algorithm>

using namespace velm::host;
using namespace velm::host::fuzz;

namespace {

const std::string kName = "fuzzed.ply";

void requireWhole(const Mesh &mesh) {
    const std::size_t points = mesh.points.size(), triangles = mesh.triangles.size();
    require(triangles > 0, "a mesh has triangles");
    for (const HostPolygon &triangle : mesh.triangles)
        require(std::ranges::all_of(triangle.corners, [points](std::uint32_t corner) { return corner < points; }),
                "corners are points");
    require(mesh.normals.empty() || mesh.normals.size() == points, "each vertex has a normal");
    for (const UvMap &map : mesh.uvMaps) require(map.values.size() == points, "each vertex has UV coordinates");
    require(mesh.polygonNumbers.empty() || mesh.polygonNumbers.size() == triangles, "each triangle has a polygon");
    require(std::ranges::all_of(mesh.polygonNumbers, [&](std::uint32_t number) { return number < mesh.polygonCount; }),
            "polygons are numbered");
    require(mesh.materials.size() == 1 && mesh.materialNumbers.empty(), "all triangles have one material");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    const std::string_view bytes = asText(data, size);
    const auto read = bytes.starts_with("ply") ? plainPlyMesh : plainStlMesh;
    acceptsInput(kName, [&] {
        const auto mesh = read(bytes, kName, Transform(), std::pmr::get_default_resource());
        if (mesh) requireWhole(*mesh);
    });
    return 0;
}

// Reads meshes from files, in a process of its own for each.
#include "host/render/geometry/mesh_formats.h"

#include "host/base/error.h"
#include "host/io/files.h"
#include "host/io/reader_process.h"

#include <algorithm>
#include <utility>

namespace velm::host {
namespace {

// Moves the elements of a vector, with room for some more, and frees what they were in. Much of a mesh's memory is in
// these vectors, so that they are moved one by one.
template <class Vector>
void moveElements(Vector &from, Vector &to, std::size_t spare = 0) {
    to.reserve(from.size() + spare);
    to.assign(from.begin(), from.end());
    Vector(from.get_allocator()).swap(from);
}

// What the process that reads a mesh hands over.
struct ReadBuffers {
    explicit ReadBuffers(std::pmr::memory_resource *memory)
        : points(memory), triangles(memory), normals(memory), uvs(memory), polygonNumbers(memory),
          materialNumbers(memory), uvNames(memory), materials(memory) {}

    void take(Mesh mesh) {
        moveElements(mesh.points, points, 1); // padded as Mesh::padPoints does
        moveElements(mesh.triangles, triangles);
        moveElements(mesh.normals, normals);
        moveElements(mesh.polygonNumbers, polygonNumbers);
        moveElements(mesh.materialNumbers, materialNumbers);
        uvs.resize(mesh.uvMaps.size());
        for (std::size_t i = 0; i < uvs.size(); ++i) {
            moveElements(mesh.uvMaps[i].values, uvs[i]);
            uvNames.emplace_back(mesh.uvMaps[i].name);
        }
        materials.assign(mesh.materials.begin(), mesh.materials.end());
        polygonCount = mesh.polygonCount;
        leftOut = mesh.leftOut;
    }

    bool isWithin(const SharedArena &arena) const {
        const auto areHeld = [&](const auto &outer) {
            return arena.holds(outer) &&
                   std::all_of(outer.begin(), outer.end(), [&](const auto &inner) { return arena.holds(inner); });
        };
        return arena.holds(points) && arena.holds(triangles) && arena.holds(normals) && arena.holds(polygonNumbers) &&
               arena.holds(materialNumbers) && areHeld(uvs) && areHeld(uvNames) && areHeld(materials) && fits();
    }

    Mesh mesh(std::shared_ptr<void> memory) {
        Mesh result{.memory = std::move(memory),
                    .points = std::move(points),
                    .triangles = std::move(triangles),
                    .normals = std::move(normals),
                    .uvMaps = {},
                    .polygonNumbers = std::move(polygonNumbers),
                    .materialNumbers = std::move(materialNumbers),
                    .leftOut = leftOut,
                    .materials = {materials.begin(), materials.end()},
                    .polygonCount = polygonCount,
                    .smoothingAngles = {},
                    .splitFrom = {}};
        for (std::size_t i = 0; i < uvs.size(); ++i)
            result.uvMaps.push_back({.name = std::string(uvNames[i]), .values = std::move(uvs[i])});
        return result;
    }

  private:
    // Whether the buffers belong together, and no index leads out of them.
    bool fits() const {
        const auto isPoint = [&](std::uint32_t corner) { return corner < points.size(); };
        const auto isInside = [&](const HostPolygon &triangle) {
            return std::all_of(triangle.corners, triangle.corners + 3, isPoint);
        };
        const auto isComplete = [](const auto &buffer, std::size_t size) {
            return buffer.empty() || buffer.size() == size;
        };
        return isComplete(normals, points.size()) && isComplete(polygonNumbers, triangles.size()) &&
               isComplete(materialNumbers, triangles.size()) && uvNames.size() == uvs.size() &&
               std::all_of(uvs.begin(), uvs.end(), [&](const auto &map) { return map.size() == points.size(); }) &&
               std::all_of(materialNumbers.begin(), materialNumbers.end(),
                           [&](std::uint16_t number) { return number < materials.size(); }) &&
               std::all_of(triangles.begin(), triangles.end(), isInside);
    }

    std::pmr::vector<HostPoint> points;
    std::pmr::vector<HostPolygon> triangles;
    std::pmr::vector<std::array<float, 3>> normals;
    std::pmr::vector<std::pmr::vector<std::array<float, 2>>> uvs; // by map, then by vertex
    std::pmr::vector<std::uint32_t> polygonNumbers;
    std::pmr::vector<std::uint16_t> materialNumbers;
    std::pmr::vector<std::pmr::string> uvNames, materials;
    std::uint32_t polygonCount = 0;
    LeftOutCounts leftOut{};
};

// The names of the files that a mesh file makes its reader open.
struct ReadNames {
    explicit ReadNames(std::pmr::memory_resource *memory) : names(memory) {}

    bool isWithin(const SharedArena &arena) const {
        return arena.holds(names) &&
               std::all_of(names.begin(), names.end(), [&](const std::pmr::string &name) { return arena.holds(name); });
    }

    std::pmr::vector<std::pmr::string> names;
};

void requireReadable(const std::string &file) {
    if (const auto reason = whyUnreadable(file)) throw InputError({.file = file}, "cannot read the mesh: " + *reason);
}

// The format of a file, which has passed the format's check.
const MeshFormat &checkedFormatOf(const std::string &file) {
    const MeshFormat *format = meshFormatOf(file);
    if (!format)
        throw InputError({.file = file},
                         "cannot read the mesh: it has none of the formats that are read: " + meshFormats());
    if (format->check) format->check(file);
    return *format;
}

} // namespace

Mesh readMesh(const std::string &file, const Transform &transform) {
    requireReadable(file);
    const auto read = readApart<ReadBuffers>(file, "the mesh", [&](ReadBuffers &buffers) {
        buffers.take(readWithAssimp(file, checkedFormatOf(file), transform));
    });
    return read->mesh(read);
}

std::vector<std::string> filesOfMesh(const std::string &file) {
    requireReadable(file);
    const auto read = readApart<ReadNames>(file, "the mesh", [&](ReadNames &files) {
        for (const std::string &name : filesReadWithAssimp(file, checkedFormatOf(file))) files.names.emplace_back(name);
    });
    return {read->names.begin(), read->names.end()};
}

} // namespace velm::host

// Reads meshes from files, in a process of its own for each.
#include "host/render/geometry/item_buffers.h"
#include "host/render/geometry/material_buffers.h"
#include "host/render/geometry/mesh_formats.h"

#include "host/base/error.h"
#include "host/io/files.h"
#include "host/io/named_files.h"
#include "host/io/reader_process.h"

#include <algorithm>
#include <utility>

namespace velm::host {
namespace {

// Moves the elements of a vector to another with room for `spare` more. Takes over the memory if that has the room, or
// else copies the elements and frees it. Much of a mesh's memory is in these vectors, so that they are moved one by
// one.
template <class Vector>
void moveElements(Vector &from, Vector &to, std::size_t spare = 0) {
    if (from.get_allocator() == to.get_allocator() && from.capacity() >= from.size() + spare) {
        to = std::move(from);
        return;
    }
    to.reserve(from.size() + spare);
    to.assign(from.begin(), from.end());
    Vector(from.get_allocator()).swap(from);
}

// What the process that reads a mesh hands over.
class ReadBuffers {
  public:
    explicit ReadBuffers(std::pmr::memory_resource *memory)
        : points_(memory), triangles_(memory), normals_(memory), uvs_(memory), maps_(memory), mapSizes_(memory),
          polygonNumbers_(memory), materialNumbers_(memory), firstOfPoint_(memory), limitNormals_(memory),
          uvNames_(memory), mapNames_(memory), materials_(memory), parts_(memory), warnings_(memory),
          areBesideMesh_(memory), materialValues_(memory), items_(memory) {}

    // The memory in which the buffers of the mesh should be.
    std::pmr::memory_resource *memory() const { return points_.get_allocator().resource(); }

    void take(Mesh mesh) {
        moveElements(mesh.points, points_, 1); // padded as Mesh::padPoints does
        moveElements(mesh.triangles, triangles_);
        moveElements(mesh.normals, normals_);
        moveElements(mesh.polygonNumbers, polygonNumbers_);
        moveElements(mesh.materialNumbers, materialNumbers_);
        moveElements(mesh.firstOfPoint, firstOfPoint_);
        moveElements(mesh.limitNormals, limitNormals_);
        uvs_.resize(mesh.uvMaps.size());
        for (std::size_t i = 0; i < uvs_.size(); ++i) {
            moveElements(mesh.uvMaps[i].values, uvs_[i]);
            uvNames_.emplace_back(mesh.uvMaps[i].name);
        }
        maps_.resize(mesh.vertexMaps.size());
        for (std::size_t i = 0; i < maps_.size(); ++i) {
            moveElements(mesh.vertexMaps[i].values, maps_[i]);
            mapNames_.emplace_back(mesh.vertexMaps[i].name);
            mapSizes_.push_back(mesh.vertexMaps[i].size);
        }
        materials_.assign(mesh.materials.begin(), mesh.materials.end());
        parts_.assign(mesh.parts.begin(), mesh.parts.end());
        for (const MeshWarning &warning : mesh.warnings) {
            warnings_.emplace_back(warning.brief);
            warnings_.emplace_back(warning.message);
            areBesideMesh_.push_back(warning.isBesideMesh);
        }
        materialValues_.take(mesh.materialValues);
        items_.take(mesh.cameras, mesh.lights);
        polygonCount_ = mesh.polygonCount;
    }

    bool isWithin(const SharedArena &arena) const {
        const auto areHeld = [&](const auto &outer) {
            return arena.holds(outer) &&
                   std::all_of(outer.begin(), outer.end(), [&](const auto &inner) { return arena.holds(inner); });
        };
        return arena.holds(points_) && arena.holds(triangles_) && arena.holds(normals_) &&
               arena.holds(polygonNumbers_) && arena.holds(materialNumbers_) && arena.holds(firstOfPoint_) &&
               arena.holds(limitNormals_) && areHeld(uvs_) && areHeld(uvNames_) && areHeld(maps_) &&
               areHeld(mapNames_) && arena.holds(mapSizes_) && areHeld(materials_) && areHeld(parts_) &&
               areHeld(warnings_) && arena.holds(areBesideMesh_) && areBesideMesh_.size() * 2 == warnings_.size() &&
               materialValues_.isWithin(arena) && items_.isWithin(arena) && fits();
    }

    Mesh mesh(std::shared_ptr<void> memory) {
        Mesh result{.memory = std::move(memory),
                    .points = std::move(points_),
                    .triangles = std::move(triangles_),
                    .normals = std::move(normals_),
                    .uvMaps = {},
                    .vertexMaps = {},
                    .polygonNumbers = std::move(polygonNumbers_),
                    .materialNumbers = std::move(materialNumbers_),
                    .materials = {materials_.begin(), materials_.end()},
                    .materialValues = materialValues_.materials(),
                    .cameras = items_.cameras(),
                    .lights = items_.lights(),
                    .parts = {parts_.begin(), parts_.end()},
                    .polygonCount = polygonCount_,
                    .firstOfPoint = std::move(firstOfPoint_),
                    .limitNormals = std::move(limitNormals_),
                    .warnings = {},
                    .smoothingAngles = {},
                    .splitFrom = {}};
        for (std::size_t i = 0; i < uvs_.size(); ++i)
            result.uvMaps.push_back({.name = std::string(uvNames_[i]), .values = std::move(uvs_[i])});
        for (std::size_t i = 0; i < maps_.size(); ++i)
            result.vertexMaps.push_back(
                {.name = std::string(mapNames_[i]), .size = mapSizes_[i], .values = std::move(maps_[i])});
        for (std::size_t i = 0; i < areBesideMesh_.size(); ++i)
            result.warnings.push_back({.brief = std::string(warnings_[2 * i]),
                                       .message = std::string(warnings_[2 * i + 1]),
                                       .isBesideMesh = areBesideMesh_[i] != 0});
        return result;
    }

  private:
    // Whether the buffers belong together, and no index leads out of them.
    bool fits() const {
        const auto isPoint = [&](std::uint32_t corner) { return corner < points_.size(); };
        const auto isInside = [&](const HostPolygon &triangle) {
            return std::all_of(triangle.corners, triangle.corners + 3, isPoint);
        };
        const auto isComplete = [](const auto &buffer, std::size_t size) {
            return buffer.empty() || buffer.size() == size;
        };
        return isComplete(normals_, points_.size()) && isComplete(polygonNumbers_, triangles_.size()) &&
               isComplete(materialNumbers_, triangles_.size()) && isComplete(firstOfPoint_, points_.size()) &&
               isComplete(limitNormals_, points_.size()) &&
               std::all_of(firstOfPoint_.begin(), firstOfPoint_.end(), isPoint) && uvNames_.size() == uvs_.size() &&
               std::all_of(uvs_.begin(), uvs_.end(), [&](const auto &map) { return map.size() == points_.size(); }) &&
               mapsFit() &&
               std::all_of(materialNumbers_.begin(), materialNumbers_.end(),
                           [&](std::uint16_t number) { return number < materials_.size(); }) &&
               std::all_of(triangles_.begin(), triangles_.end(), isInside);
    }

    bool mapsFit() const {
        if (mapNames_.size() != maps_.size() || mapSizes_.size() != maps_.size()) return false;
        for (std::size_t i = 0; i < maps_.size(); ++i) {
            const std::uint32_t size = mapSizes_[i];
            if ((size != 1 && size != 3 && size != 4) || maps_[i].size() != size * points_.size()) return false;
        }
        return true;
    }

    std::pmr::vector<HostPoint> points_;
    std::pmr::vector<HostPolygon> triangles_;
    std::pmr::vector<std::array<float, 3>> normals_;
    std::pmr::vector<std::pmr::vector<std::array<float, 2>>> uvs_; // by map, then by vertex
    std::pmr::vector<std::pmr::vector<float>> maps_;               // the values of weights and colours, by map
    std::pmr::vector<std::uint32_t> mapSizes_;
    std::pmr::vector<std::uint32_t> polygonNumbers_;
    std::pmr::vector<std::uint16_t> materialNumbers_;
    std::pmr::vector<std::uint32_t> firstOfPoint_;
    std::pmr::vector<std::array<float, 3>> limitNormals_;
    std::pmr::vector<std::pmr::string> uvNames_, mapNames_, materials_, parts_;
    std::pmr::vector<std::pmr::string> warnings_;  // brief and message in turn
    std::pmr::vector<std::uint8_t> areBesideMesh_; // by warning
    MaterialBuffers materialValues_;
    ItemBuffers items_;
    std::uint32_t polygonCount_ = 0;
};

void requireReadable(const std::string &file) {
    if (const auto reason = whyUnreadable(file)) throw InputError({.file = file}, "cannot read the mesh: " + *reason);
}

const MeshFormat &requireFormatOf(const std::string &file) {
    const MeshFormat *format = meshFormatOf(file);
    if (!format)
        throw InputError({.file = file},
                         "cannot read the mesh: it has none of the formats that are read: " + meshFormats());
    return *format;
}

} // namespace

void addWarnings(const Losses &losses, Mesh &mesh) {
    for (Losses::Text &text : losses.texts())
        mesh.warnings.push_back({.brief = std::move(text.brief),
                                 .message = std::move(text.message),
                                 .isBesideMesh = isBesideMesh(text.kind)});
}

Mesh readMesh(const std::string &file, const Transform &transform, std::optional<int> layer, int subdivision) {
    requireReadable(file);
    const auto read = readApart<ReadBuffers>(file, "the mesh", [&](ReadBuffers &buffers) {
        const MeshFormat &format = requireFormatOf(file);
        if (format.read == readObjectMesh)
            buffers.take(readObjectLayers(file, transform, layer, subdivision, buffers.memory()));
        else if (!layer)
            buffers.take(format.read(file, format, transform, buffers.memory()));
        else
            throw InputError({.file = file}, "a file of this format has no layers");
    });
    return read->mesh(read);
}

std::vector<std::string> filesOfMesh(const std::string &file) {
    requireReadable(file);
    return namesReadApart(file, "the mesh", [&file] {
        const MeshFormat &format = requireFormatOf(file);
        return format.files(file, format);
    });
}

} // namespace velm::host

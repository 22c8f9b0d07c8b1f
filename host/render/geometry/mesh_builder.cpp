#include "host/render/geometry/mesh_builder.h"

#include "host/base/error.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace velm::host {
namespace {

// Frees the unused capacity of a vector, except for `spare` elements.
template <typename Element>
void trim(std::pmr::vector<Element> &elements, std::size_t spare = 0) {
    if (elements.capacity() <= elements.size() + spare + elements.size() / 8) return;
    std::pmr::vector<Element> tight(elements.get_allocator());
    tight.reserve(elements.size() + spare);
    tight.assign(elements.begin(), elements.end());
    elements = std::move(tight);
}

} // namespace

MeshBuilder::MeshBuilder(std::vector<std::string> uvMapNames, bool hasNormals, std::pmr::memory_resource *memory)
    : mesh_{.points = std::pmr::vector<HostPoint>(memory),
            .triangles = std::pmr::vector<HostPolygon>(memory),
            .normals = std::pmr::vector<std::array<float, 3>>(memory),
            .uvMaps = {},
            .vertexMaps = {},
            .polygonNumbers = std::pmr::vector<std::uint32_t>(memory),
            .materialNumbers = std::pmr::vector<std::uint16_t>(memory),
            .materials = {},
            .materialValues = {},
            .cameras = {},
            .lights = {},
            .parts = {},
            .firstOfPoint = std::pmr::vector<std::uint32_t>(memory),
            .limitNormals = std::pmr::vector<std::array<float, 3>>(memory),
            .warnings = {},
            .smoothingAngles = {},
            .splitFrom = {}},
      hasNormals_(hasNormals) {
    for (std::string &name : uvMapNames)
        mesh_.uvMaps.push_back({.name = std::move(name), .values = std::pmr::vector<std::array<float, 2>>(memory)});
}

void MeshBuilder::addVertexMap(std::string name, std::uint32_t size) {
    const auto allocator = mesh_.points.get_allocator();
    mesh_.vertexMaps.push_back(
        {.name = std::move(name), .size = size, .values = std::pmr::vector<float>(allocator.resource())});
}

std::uint32_t MeshBuilder::hashOf(std::size_t vertex) const {
    std::uint64_t hash = 0;
    for (const float value : mesh_.points[vertex].position) hash = mixIn(hash, value);
    if (hasNormals_)
        for (const float value : mesh_.normals[vertex]) hash = mixIn(hash, value);
    for (const UvMap &map : mesh_.uvMaps)
        for (const float value : map.values[vertex]) hash = mixIn(hash, value);
    for (const VertexMap &map : mesh_.vertexMaps)
        for (const float value : map.valueOf(vertex)) hash = mixIn(hash, value);
    return endOfHash(hash);
}

bool MeshBuilder::equal(std::uint32_t a, std::uint32_t b) const {
    if (!equalNumbers(mesh_.points[a].position, mesh_.points[b].position)) return false;
    if (hasNormals_ && !equalNumbers(mesh_.normals[a], mesh_.normals[b])) return false;
    for (const UvMap &map : mesh_.uvMaps)
        if (!equalNumbers(map.values[a], map.values[b])) return false;
    for (const VertexMap &map : mesh_.vertexMaps)
        if (!equalNumbers(map.valueOf(a), map.valueOf(b))) return false;
    return true;
}

void MeshBuilder::append(const BuilderVertex &vertex) {
    const std::array<float, 3> p = narrowed(vertex.position);
    mesh_.points.push_back({{p[0], p[1], p[2]}});
    if (hasNormals_) mesh_.normals.push_back(narrowed(vertex.normal));
    for (std::size_t map = 0; map < mesh_.uvMaps.size(); ++map) mesh_.uvMaps[map].values.push_back(vertex.uvs[map]);
    const float *values = vertex.values.data();
    for (VertexMap &map : mesh_.vertexMaps) {
        map.values.insert(map.values.end(), values, values + map.size);
        values += map.size;
    }
}

void MeshBuilder::moveVertex(std::size_t from, std::size_t to) {
    mesh_.points[to] = mesh_.points[from];
    if (hasNormals_) mesh_.normals[to] = mesh_.normals[from];
    for (UvMap &map : mesh_.uvMaps) map.values[to] = map.values[from];
    for (VertexMap &map : mesh_.vertexMaps) map.copyValue(from, to);
}

// Removes the last vertices.
void MeshBuilder::resizeVertices(std::size_t count) {
    mesh_.points.resize(count);
    if (hasNormals_) mesh_.normals.resize(count);
    for (UvMap &map : mesh_.uvMaps) map.values.resize(count);
    for (VertexMap &map : mesh_.vertexMaps) map.resize(count);
}

void MeshBuilder::requireRoom() const {
    if (mesh_.points.size() >= std::numeric_limits<std::uint32_t>::max() - 1)
        throw InputError("a mesh of more than four billion vertices");
}

std::uint32_t MeshBuilder::addSeparateVertex(const BuilderVertex &vertex) {
    requireRoom();
    append(vertex);
    return static_cast<std::uint32_t>(mesh_.points.size() - 1);
}

void MeshBuilder::reserve(std::size_t vertices, std::size_t triangles) {
    mesh_.points.reserve(vertices + 1);
    for (UvMap &map : mesh_.uvMaps) map.values.reserve(vertices);
    for (VertexMap &map : mesh_.vertexMaps) map.reserve(vertices);
    if (hasNormals_) mesh_.normals.reserve(vertices);
    mesh_.triangles.reserve(triangles);
}

std::uint32_t MeshBuilder::addVertex(const BuilderVertex &vertex) {
    requireRoom();
    // The vertex is appended first, so that it can be hashed like the others, and removed again if it has a duplicate.
    append(vertex);
    const auto newcomer = static_cast<std::uint32_t>(mesh_.points.size() - 1);
    const std::uint32_t found =
        table_.findOrAdd(hashOf(newcomer), newcomer, [&](std::uint32_t other) { return equal(other, newcomer); });
    if (found != newcomer) resizeVertices(newcomer);
    return found;
}

std::vector<std::uint32_t> MeshBuilder::mergeVertices() {
    const std::size_t count = mesh_.points.size();
    std::vector<std::uint32_t> numbers(count);
    std::uint32_t kept = 0;
    table_.reserve(count);
    const auto add = [&](std::size_t vertex, std::uint32_t hash) {
        moveVertex(vertex, kept);
        numbers[vertex] = table_.findOrAdd(hash, kept, [&](std::uint32_t other) { return equal(other, kept); });
        if (numbers[vertex] == kept) ++kept;
    };
    table_.addAll(
        count, [this](std::size_t vertex) { return hashOf(vertex); }, add);
    resizeVertices(kept);
    table_ = {};
    return numbers;
}

std::uint16_t MeshBuilder::addMaterial(const std::string &name) {
    if (const auto found = materialNumbers_.find(name); found != materialNumbers_.end()) return found->second;
    if (mesh_.materials.size() > std::numeric_limits<std::uint16_t>::max())
        throw InputError("a mesh of more than 65536 materials");
    const auto number = static_cast<std::uint16_t>(mesh_.materials.size());
    mesh_.materials.push_back(name);
    materialNumbers_.emplace(name, number);
    return number;
}

void MeshBuilder::addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint16_t material) {
    const auto at = [this](std::uint32_t number) {
        const float *p = mesh_.points[number].position;
        return Vec3{p[0], p[1], p[2]};
    };
    const Vec3 across = cross(at(b) - at(a), at(c) - at(a));
    if (!(largest(across) > 0) || !isFinite(across)) return;
    numberTriangle(material);
    mesh_.triangles.push_back({{a, b, c}});
}

// Stores the polygon and the material of the triangle that is added next. As long as every triangle is a polygon, or
// all are of the first material, these numbers are left out of the mesh: see Mesh.
void MeshBuilder::numberTriangle(std::uint16_t material) {
    const std::size_t triangle = mesh_.triangles.size();
    if (mesh_.polygonNumbers.empty() && mesh_.polygonCount != triangle) {
        mesh_.polygonNumbers.reserve(mesh_.triangles.capacity());
        mesh_.polygonNumbers.resize(triangle);
        std::iota(mesh_.polygonNumbers.begin(), mesh_.polygonNumbers.end(), 0u);
        storesPolygons_ = true;
    }
    if (storesPolygons_) mesh_.polygonNumbers.push_back(mesh_.polygonCount);
    if (mesh_.materialNumbers.empty() && material != 0) {
        mesh_.materialNumbers.reserve(mesh_.triangles.capacity());
        mesh_.materialNumbers.resize(triangle);
        storesMaterials_ = true;
    }
    if (storesMaterials_) mesh_.materialNumbers.push_back(material);
}

void MeshBuilder::addPolygon(const std::vector<std::uint32_t> &corners, std::uint16_t material) {
    if (corners.size() == 3) {
        addTriangle(corners[0], corners[1], corners[2], material);
    } else {
        positions_.clear();
        for (const std::uint32_t corner : corners) {
            const float *p = mesh_.points[corner].position;
            positions_.emplace_back(p[0], p[1], p[2]);
        }
        triangulate(positions_, cut_);
        for (const auto &[a, b, c] : cut_) addTriangle(corners[a], corners[b], corners[c], material);
    }
    ++mesh_.polygonCount;
}

Mesh MeshBuilder::finish() {
    table_ = {};
    return std::move(mesh_);
}

void trimBuffers(Mesh &mesh) {
    trim(mesh.points, 1);
    mesh.padPoints();
    trim(mesh.triangles);
    trim(mesh.normals);
    for (UvMap &map : mesh.uvMaps) trim(map.values);
    for (VertexMap &map : mesh.vertexMaps) trim(map.values);
    trim(mesh.polygonNumbers);
    trim(mesh.materialNumbers);
}

} // namespace velm::host

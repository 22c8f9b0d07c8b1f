#include "host/render/geometry/mesh_builder.h"

#include "host/base/error.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace velm::host {
namespace {

// Adding 0 turns minus zero into zero, so that equal points have equal bytes.
std::array<float, 3> narrowed(const Vec3 &v) {
    return {static_cast<float>(v.x) + 0.0f, static_cast<float>(v.y) + 0.0f, static_cast<float>(v.z) + 0.0f};
}

// Zero and minus zero count as equal, and so do all NaNs.
std::uint32_t bits(float value) {
    if (value == 0) return 0;
    return value != value ? 0x7fc00000u : std::bit_cast<std::uint32_t>(value);
}

std::uint64_t mixIn(std::uint64_t hash, float value) {
    hash = (hash ^ bits(value)) * 0x9e3779b97f4a7c15u; // the golden ratio's multiplier (Knuth, TAOCP 6.4)
    return hash ^ (hash >> 29);
}

template <std::size_t n>
bool same(const std::array<float, n> &a, const std::array<float, n> &b) {
    for (std::size_t i = 0; i < n; ++i)
        if (bits(a[i]) != bits(b[i])) return false;
    return true;
}

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

MeshBuilder::MeshBuilder(std::vector<std::string> uvMapNames, bool hasNormals) : hasNormals_(hasNormals), table_(1024) {
    for (std::string &name : uvMapNames) mesh_.uvMaps.push_back({.name = std::move(name), .values = {}});
}

std::uint64_t MeshBuilder::hashOf(std::uint32_t number) const {
    std::uint64_t hash = 0;
    for (const float value : mesh_.points[number].position) hash = mixIn(hash, value);
    if (hasNormals_)
        for (const float value : mesh_.normals[number]) hash = mixIn(hash, value);
    for (const UvMap &map : mesh_.uvMaps)
        for (const float value : map.values[number]) hash = mixIn(hash, value);
    return hash;
}

bool MeshBuilder::equals(std::uint32_t number, const BuilderVertex &vertex) const {
    const float *p = mesh_.points[number].position;
    if (!same(std::array<float, 3>{p[0], p[1], p[2]}, narrowed(vertex.position))) return false;
    if (hasNormals_ && !same(mesh_.normals[number], narrowed(vertex.normal))) return false;
    for (std::size_t map = 0; map < mesh_.uvMaps.size(); ++map)
        if (!same(mesh_.uvMaps[map].values[number], vertex.uvs[map])) return false;
    return true;
}

void MeshBuilder::append(const BuilderVertex &vertex) {
    const std::array<float, 3> p = narrowed(vertex.position);
    mesh_.points.push_back({{p[0], p[1], p[2]}});
    if (hasNormals_) mesh_.normals.push_back(narrowed(vertex.normal));
    for (std::size_t map = 0; map < mesh_.uvMaps.size(); ++map) mesh_.uvMaps[map].values.push_back(vertex.uvs[map]);
}

void MeshBuilder::grow() {
    std::vector<std::uint32_t> larger(table_.size() * 2);
    const std::size_t mask = larger.size() - 1;
    for (const std::uint32_t entry : table_) {
        if (entry == 0) continue;
        std::size_t slot = hashOf(entry - 1) & mask;
        while (larger[slot] != 0) slot = (slot + 1) & mask;
        larger[slot] = entry;
    }
    table_ = std::move(larger);
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
    mesh_.points.reserve(vertices);
    for (UvMap &map : mesh_.uvMaps) map.values.reserve(vertices);
    if (hasNormals_) mesh_.normals.reserve(vertices);
    mesh_.triangles.reserve(triangles);
    mesh_.polygonNumbers.reserve(triangles);
    mesh_.materialNumbers.reserve(triangles);
}

std::uint32_t MeshBuilder::addVertex(const BuilderVertex &vertex) {
    requireRoom();
    if ((mesh_.points.size() + 1) * 3 > table_.size() * 2) grow();
    // The vertex is appended first, so that it can be hashed like the others, and removed again if it has a duplicate.
    append(vertex);
    const std::uint32_t newcomer = static_cast<std::uint32_t>(mesh_.points.size() - 1);
    const std::size_t mask = table_.size() - 1;
    std::size_t slot = hashOf(newcomer) & mask;
    for (; table_[slot] != 0; slot = (slot + 1) & mask) {
        if (!equals(table_[slot] - 1, vertex)) continue;
        mesh_.points.pop_back();
        if (hasNormals_) mesh_.normals.pop_back();
        for (UvMap &map : mesh_.uvMaps) map.values.pop_back();
        return table_[slot] - 1;
    }
    table_[slot] = newcomer + 1;
    return newcomer;
}

std::uint16_t MeshBuilder::addMaterial(const std::string &name) {
    for (std::size_t i = 0; i < mesh_.materials.size(); ++i)
        if (mesh_.materials[i] == name) return static_cast<std::uint16_t>(i);
    if (mesh_.materials.size() > std::numeric_limits<std::uint16_t>::max())
        throw InputError("a mesh of more than 65536 materials");
    mesh_.materials.push_back(name);
    return static_cast<std::uint16_t>(mesh_.materials.size() - 1);
}

void MeshBuilder::addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint16_t material) {
    const auto at = [this](std::uint32_t number) {
        const float *p = mesh_.points[number].position;
        return Vec3{p[0], p[1], p[2]};
    };
    const Vec3 across = cross(at(b) - at(a), at(c) - at(a));
    if (!(largest(across) > 0) || !isFinite(across)) return;
    mesh_.triangles.push_back({{a, b, c}});
    mesh_.polygonNumbers.push_back(mesh_.polygonCount);
    mesh_.materialNumbers.push_back(material);
}

void MeshBuilder::addPolygon(const std::vector<std::uint32_t> &corners, std::uint16_t material) {
    if (corners.size() == 3) {
        addTriangle(corners[0], corners[1], corners[2], material);
    } else {
        std::vector<Vec3> positions;
        positions.reserve(corners.size());
        for (const std::uint32_t corner : corners) {
            const float *p = mesh_.points[corner].position;
            positions.emplace_back(p[0], p[1], p[2]);
        }
        triangulate(positions, cut_);
        for (const auto &[a, b, c] : cut_) addTriangle(corners[a], corners[b], corners[c], material);
    }
    ++mesh_.polygonCount;
}

Mesh MeshBuilder::finish() {
    table_ = {};
    std::uint32_t number = 0;
    const auto isOwnNumber = [&number](std::uint32_t polygon) { return polygon == number++; };
    if (std::all_of(mesh_.polygonNumbers.begin(), mesh_.polygonNumbers.end(), isOwnNumber)) mesh_.polygonNumbers = {};
    if (mesh_.materials.size() < 2) mesh_.materialNumbers = {};
    return std::move(mesh_);
}

void trimBuffers(Mesh &mesh) {
    trim(mesh.points, 1);
    mesh.padPoints();
    trim(mesh.triangles);
    trim(mesh.normals);
    for (UvMap &map : mesh.uvMaps) trim(map.values);
    trim(mesh.polygonNumbers);
    trim(mesh.materialNumbers);
}

} // namespace velm::host

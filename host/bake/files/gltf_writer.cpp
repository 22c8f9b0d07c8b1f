#include "host/bake/files/gltf_writer.h"

#include "host/bake/files/gltf_document.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <set>
#include <utility>

namespace velm::host {
namespace {

using nlohmann::ordered_json;

constexpr std::size_t kStrip = 5, kFan = 6, kTriangles = 4; // modes of primitives

// From the coordinates of a node to those of the file, right-handed.
struct Placing {
    Matrix matrix;
    Vec3 position;

    Placing operator*(const Placing &other) const {
        return {.matrix = matrix * other.matrix, .position = matrix * other.position + position};
    }
};

Matrix rotationOf(const std::array<double, 4> &q) {
    const auto [x, y, z, w] = q;
    return {{1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w), 2 * (x * y + z * w),
             1 - 2 * (x * x + z * z), 2 * (y * z - x * w), 2 * (x * z - y * w), 2 * (y * z + x * w),
             1 - 2 * (x * x + y * y)}};
}

template <std::size_t n>
std::array<double, n> numbersOf(const ordered_json &node, const char *name, std::array<double, n> otherwise) {
    return node.contains(name) ? node.at(name).get<std::array<double, n>>() : otherwise;
}

Placing placingOf(const ordered_json &node) {
    if (node.contains("matrix")) {
        const auto m = node.at("matrix").get<std::array<double, 16>>(); // by column
        return {.matrix = {{m[0], m[4], m[8], m[1], m[5], m[9], m[2], m[6], m[10]}}, .position = {m[12], m[13], m[14]}};
    }
    Placing placing{.matrix = rotationOf(numbersOf<4>(node, "rotation", {0, 0, 0, 1})),
                    .position = Vec3(numbersOf<3>(node, "translation", {0, 0, 0}))};
    const auto scale = numbersOf<3>(node, "scale", {1, 1, 1});
    for (std::size_t i = 0; i < 9; ++i) placing.matrix.m[i] *= scale[i % 3];
    return placing;
}

class GltfColours {
  public:
    GltfColours(const std::string &file, const Mesh &mesh, const MeshValues &values, const Transform &transform)
        : document_(file), polygons_(mesh, values), transform_(transform) {}

    std::string write() {
        document_.guarded([&] {
            takeScene();
            if (polygon_ != polygons_.count()) failForOtherPolygons(document_.file());
            bool hasValues = false;
            for (auto &[key, sums] : sums_) hasValues = store(key, sums) || hasValues;
            if (!hasValues) failForOtherPolygons(document_.file());
        });
        return document_.bytes();
    }

  private:
    using Key = std::pair<std::size_t, std::size_t>; // a mesh of the file, and one of its primitives
    using Sums = std::vector<ValueSum>;              // by vertex

    // Visits the polygons in the order in which the mesh has them: node by node.
    void takeScene() {
        const ordered_json &json = document_.json;
        const std::size_t scene = json.contains("scene") ? json.at("scene").get<std::size_t>() : 0;
        for (const ordered_json &node : json.at("scenes").at(scene).at("nodes")) takeNode(node.get<std::size_t>(), {});
    }

    void takeNode(std::size_t index, const Placing &parent) {
        if (!entered_.insert(index).second) document_.fail("a node of it is below itself");
        const ordered_json &node = document_.json.at("nodes").at(index);
        const Placing placing = parent * placingOf(node);
        if (node.contains("mesh")) {
            const auto mesh = node.at("mesh").get<std::size_t>();
            const std::size_t count = document_.json.at("meshes").at(mesh).at("primitives").size();
            for (std::size_t i = 0; i < count; ++i) takePrimitive({mesh, i}, placing);
        }
        if (node.contains("children"))
            for (const ordered_json &child : node.at("children")) takeNode(child.get<std::size_t>(), placing);
        entered_.erase(index);
    }

    const ordered_json &primitiveAt(const Key &key) const {
        return document_.json.at("meshes").at(key.first).at("primitives").at(key.second);
    }

    void takePrimitive(const Key &key, const Placing &placing) {
        const ordered_json &primitive = primitiveAt(key);
        const std::size_t mode = primitive.contains("mode") ? primitive.at("mode").get<std::size_t>() : kTriangles;
        if (mode < kTriangles || mode > kFan) return; // points and lines
        const std::vector<float> points = document_.vectors(primitive.at("attributes").at("POSITION"), 3);
        Sums &sums = sums_.try_emplace(key, points.size() / 3, ValueSum(polygons_.size())).first->second;
        std::vector<std::size_t> indices;
        if (primitive.contains("indices")) indices = document_.integers(primitive.at("indices"));
        for (std::size_t i = 0; !primitive.contains("indices") && i < sums.size(); ++i) indices.push_back(i);
        if (indices.size() < 3) return;
        const std::size_t count = mode == kTriangles ? indices.size() / 3 : indices.size() - 2;
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t first = mode == kTriangles ? 3 * i : mode == kFan ? 0 : i;
            const std::size_t next = mode == kFan ? i + 1 : first + 1;
            takeTriangle({indices[first], indices[next], indices[next + 1]}, points, placing, sums);
        }
    }

    void takeTriangle(const std::array<std::size_t, 3> &corners, const std::vector<float> &points,
                      const Placing &placing, Sums &sums) {
        if (polygon_ >= polygons_.count()) failForOtherPolygons(document_.file());
        for (const std::size_t vertex : corners) {
            if (vertex >= sums.size()) document_.fail("a polygon of the mesh has a vertex that is not there");
            const float *p = points.data() + 3 * vertex;
            const Vec3 inFile = placing.matrix * Vec3{p[0], p[1], p[2]} + placing.position;
            const ValueSum value = polygons_.at(polygon_, transform_.pointToWorld({inFile.x, inFile.y, 0 - inFile.z}));
            if (value.weight() > 0) sums[vertex].add(value.mean(), value.weight());
        }
        ++polygon_;
    }

    // Stores the colours of a primitive; false if it has none.
    bool store(const Key &key, const Sums &sums) {
        if (std::ranges::none_of(sums, [](const ValueSum &sum) { return sum.weight() > 0; })) return false;
        const std::size_t size = std::max<std::size_t>(polygons_.size(), 3);
        std::vector<float> colours;
        colours.reserve(sums.size() * size);
        for (const ValueSum &sum : sums) {
            std::vector<float> colour = sum.weight() > 0 ? sum.mean() : std::vector<float>(size, 1.0F);
            if (colour.size() == 1) colour.assign(size, colour.front());
            colours.insert(colours.end(), colour.begin(), colour.end());
        }
        ordered_json &attributes =
            document_.json.at("meshes").at(key.first).at("primitives").at(key.second).at("attributes");
        constexpr const char *kColours = "COLOR_0";
        if (attributes.contains(kColours) && usesOf(attributes.at(kColours)) == 1 &&
            document_.replaceVectors(attributes.at(kColours), colours, size))
            return true;
        attributes[kColours] = document_.addVectors(colours, size);
        return true;
    }

    // How many attributes of all primitives have this accessor.
    std::size_t usesOf(std::size_t accessor) const {
        std::size_t count = 0;
        for (const ordered_json &mesh : document_.json.at("meshes"))
            for (const ordered_json &primitive : mesh.at("primitives"))
                for (const ordered_json &used : primitive.at("attributes")) count += used == accessor ? 1 : 0;
        return count;
    }

    GltfDocument document_;
    const PolygonValues polygons_;
    const Transform &transform_;
    std::set<std::size_t> entered_; // the nodes from the scene down to the current one
    std::size_t polygon_ = 0;       // of the mesh, which is the next one
    std::map<Key, Sums> sums_;
};

} // namespace

std::string gltfWithColours(const std::string &file, const Mesh &mesh, const MeshValues &values,
                            const Transform &transform) {
    return GltfColours(file, mesh, values, transform).write();
}

std::vector<std::string> namesInGltf(const std::string &file) { return GltfDocument(file).otherFiles(); }

} // namespace velm::host

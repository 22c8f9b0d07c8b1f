#include "host/bake/files/ply_writer.h"

#include "host/bake/files/little_endian.h"
#include "host/bake/files/outlines.h"
#include "host/base/error.h"
#include "host/base/names.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <string_view>
#include <utility>

namespace velm::host {
namespace {

constexpr std::array<std::string_view, 4> kColours = {"red", "green", "blue", "alpha"};
constexpr std::array<std::string_view, 8> kOthers = {"x", "y", "z", "nx", "ny", "nz", "s", "t"};

char eightBits(float number) { return static_cast<char>(std::lround(std::clamp(number, 0.0F, 1.0F) * 255)); }

// A vertex of the file.
struct PlyVertex {
    std::uint32_t vertex; // of the mesh
    std::vector<float> value;
};

class PlyWriter {
  public:
    PlyWriter(const Mesh &mesh, const MeshValues &values, const Transform &transform, const std::string &name)
        : mesh_(mesh), polygons_(mesh, values), transform_(transform), name_(name), hasNormals_(mesh.hasOwnNormals()),
          hasUvs_(!mesh.uvMaps.empty()) {}

    std::string write() {
        collectFaces();
        hasLongFaces_ = std::ranges::any_of(faces_, [](const Face &face) { return face.size() > 255; });
        numberVertices();
        std::string bytes = header();
        for (const PlyVertex &vertex : vertices_) addVertex(vertex, bytes);
        for (const Face &face : faces_) addFace(face, bytes);
        return bytes;
    }

  private:
    // A corner of a face with its value.
    struct Corner {
        std::uint32_t vertex;
        ValueSum value;
        std::size_t number = 0; // of its vertex in the file
    };
    using Face = std::vector<Corner>;

    void collectFaces() {
        std::vector<std::vector<std::uint32_t>> outlines;
        for (std::size_t polygon = 0; polygon < polygons_.count(); ++polygon) {
            outlines.clear();
            addOutlines(polygons_, polygon, outlines);
            for (const std::vector<std::uint32_t> &outline : outlines) {
                Face &face = faces_.emplace_back();
                for (const std::uint32_t vertex : outline)
                    face.push_back({.vertex = vertex, .value = polygons_.at(polygon, vertex)});
            }
        }
    }

    // Makes the vertices of the file, in the order of the mesh's.
    void numberVertices() {
        std::vector<std::vector<Corner *>> corners(mesh_.points.size()); // by vertex of the mesh
        for (Face &face : faces_)
            for (Corner &corner : face) corners[corner.vertex].push_back(&corner);
        for (const std::vector<Corner *> &here : corners)
            if (!here.empty()) numberCorners(here);
    }

    // Those of one vertex of the mesh.
    void numberCorners(const std::vector<Corner *> &corners) {
        ValueSum all(polygons_.size());
        for (const Corner *corner : corners)
            if (corner->value.weight() > 0) all.add(corner->value.mean(), corner->value.weight());
        const std::vector<float> mean =
            all.weight() > 0 ? all.mean() : std::vector<float>(polygons_.size(), polygons_.size() == 1 ? 0.0F : 1.0F);
        const auto valueOf = [&mean](const Corner &corner) {
            return corner.value.weight() > 0 ? corner.value.mean() : mean;
        };
        const bool isOne =
            std::ranges::all_of(corners, [&](const Corner *corner) { return areEqual(valueOf(*corner), mean); });
        const std::size_t first = vertices_.size();
        for (Corner *corner : corners) {
            const std::vector<float> value = isOne ? mean : valueOf(*corner);
            const auto known = std::find_if(vertices_.begin() + static_cast<std::ptrdiff_t>(first), vertices_.end(),
                                            [&](const PlyVertex &vertex) { return areEqual(vertex.value, value); });
            corner->number = static_cast<std::size_t>(known - vertices_.begin());
            if (known == vertices_.end()) vertices_.push_back({.vertex = corner->vertex, .value = value});
        }
    }

    static bool areEqual(const std::vector<float> &a, const std::vector<float> &b) {
        return std::ranges::equal(
            a, b, [](float one, float other) { return std::abs(double{one} - double{other}) <= kEqualValues; });
    }

    std::string header() const {
        std::string text = fmt::format("ply\nformat binary_little_endian 1.0\nelement vertex {}\n", vertices_.size());
        const auto add = [&text](std::string_view type, std::string_view name) {
            text += fmt::format("property {} {}\n", type, name);
        };
        for (std::size_t i = 0; i < kOthers.size(); ++i)
            if (i < 3 || (i < 6 ? hasNormals_ : hasUvs_)) add("float", kOthers[i]);
        if (polygons_.size() == 1) add("float", name_);
        for (std::size_t i = 0; polygons_.size() > 1 && i < polygons_.size(); ++i) add("uchar", kColours[i]);
        text += fmt::format("element face {}\n", faces_.size());
        add(fmt::format("list {} int", hasLongFaces_ ? "int" : "uchar"), "vertex_indices");
        return text + "end_header\n";
    }

    void addVertex(const PlyVertex &vertex, std::string &bytes) const {
        const auto addVector = [&bytes](const Vec3 &v) {
            for (const double number : {v.x, v.y, 0 - v.z}) bytes += littleEndianBytes(static_cast<float>(number));
        };
        const float *p = mesh_.points[vertex.vertex].position;
        addVector(transform_.pointToObject({p[0], p[1], p[2]}));
        if (hasNormals_) {
            const auto &n = mesh_.normals[vertex.vertex];
            addVector(normalised(transform_.toWorld.transposedTimes({n[0], n[1], n[2]}), {0, 0, 0}));
        }
        if (hasUvs_)
            for (const float number : mesh_.uvMaps.front().values[vertex.vertex])
                bytes += littleEndianBytes(std::isnan(number) ? 0.0F : number);
        for (const float number : vertex.value)
            bytes += polygons_.size() == 1 ? littleEndianBytes(number) : std::string(1, eightBits(number));
    }

    void addFace(const Face &face, std::string &bytes) const {
        if (hasLongFaces_)
            bytes += littleEndianBytes(static_cast<std::int32_t>(face.size()));
        else
            bytes += static_cast<char>(face.size());
        // The change to right-handed axes reverses every polygon, and so does a mirroring transform.
        for (std::size_t i = 0; i < face.size(); ++i) {
            const std::size_t corner = transform_.mirrors() ? i : (face.size() - i) % face.size();
            bytes += littleEndianBytes(static_cast<std::int32_t>(face[corner].number));
        }
    }

    const Mesh &mesh_;
    const PolygonValues polygons_;
    const Transform &transform_;
    const std::string &name_;
    const bool hasNormals_, hasUvs_;
    std::vector<Face> faces_;
    bool hasLongFaces_ = false; // whether the number of a face's corners takes more than 8 bits
    std::vector<PlyVertex> vertices_;
};

} // namespace

void checkPlyName(const std::string &name) {
    const auto isUnfit = [](char letter) { return static_cast<unsigned char>(letter) <= ' ' || letter == '\x7f'; };
    if (name.empty() || std::ranges::any_of(name, isUnfit))
        throw InputError(
            fmt::format("{} cannot be the name of a number in a PLY file, which must not have blanks", inQuotes(name)));
    if (std::ranges::find(kOthers, name) != kOthers.end() || std::ranges::find(kColours, name) != kColours.end())
        throw InputError(fmt::format("{} is the name of another number in PLY files", inQuotes(name)));
}

std::string plyFile(const Mesh &mesh, const MeshValues &values, const Transform &transform, const std::string &name) {
    return PlyWriter(mesh, values, transform, name).write();
}

} // namespace velm::host

#include "bench/mesh_files.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <numbers>
#include <stdexcept>
#include <utility>

namespace velm::host::bench {
namespace {

using Triple = std::array<float, 3>;

// The bytes of a file as it is built.
class Bytes {
  public:
    template <class Number>
    void little(Number number) {
        add(number, std::endian::little);
    }
    template <class Number>
    void big(Number number) {
        add(number, std::endian::big);
    }
    void little(const Triple &triple) {
        for (const float each : triple) little(each);
    }
    void text(const std::string &text) { bytes += text; }

    std::string bytes;

  private:
    template <class Number>
    void add(Number number, std::endian order) {
        char raw[sizeof number];
        std::memcpy(raw, &number, sizeof raw);
        if (order != std::endian::native) std::reverse(raw, raw + sizeof raw);
        bytes.append(raw, sizeof raw);
    }
};

Triple cross(const Triple &a, const Triple &b, const Triple &c) {
    const auto edge = [&a](const Triple &p, std::size_t i) { return p[i] - a[i]; };
    Triple normal{};
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t j = (i + 1) % 3, k = (i + 2) % 3;
        normal[i] = edge(b, j) * edge(c, k) - edge(b, k) * edge(c, j);
    }
    return normal;
}

Triple unit(const Triple &v) {
    const float length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    return length > 0 ? Triple{v[0] / length, v[1] / length, v[2] / length} : Triple{0, 1, 0};
}

void addNormals(SampleMesh &mesh) {
    mesh.normals.resize(mesh.points.size());
    for (const auto &[a, b, c] : mesh.triangles) {
        const Triple normal = cross(mesh.points[a], mesh.points[b], mesh.points[c]);
        for (const std::uint32_t corner : {a, b, c})
            for (std::size_t i = 0; i < 3; ++i) mesh.normals[corner][i] += normal[i];
    }
    for (Triple &normal : mesh.normals) normal = unit(normal);
}

std::string plyOf(const SampleMesh &mesh) {
    Bytes file;
    file.text("ply\nformat binary_little_endian 1.0\nelement vertex " + std::to_string(mesh.points.size()) +
              "\nproperty float x\nproperty float y\nproperty float z\nelement face " +
              std::to_string(mesh.triangles.size()) + "\nproperty list uchar int vertex_indices\nend_header\n");
    for (const Triple &point : mesh.points) file.little(point);
    for (const auto &triangle : mesh.triangles) {
        file.little(std::uint8_t{3});
        for (const std::uint32_t corner : triangle) file.little(corner);
    }
    return std::move(file.bytes);
}

std::string stlOf(const SampleMesh &mesh) {
    Bytes file;
    file.text(std::string(80, ' '));
    file.little(static_cast<std::uint32_t>(mesh.triangles.size()));
    for (const auto &[a, b, c] : mesh.triangles) {
        file.little(unit(cross(mesh.points[a], mesh.points[b], mesh.points[c])));
        for (const std::uint32_t corner : {a, b, c}) file.little(mesh.points[corner]);
        file.little(std::uint16_t{0});
    }
    return std::move(file.bytes);
}

std::string objOf(const SampleMesh &mesh) {
    std::string file;
    char line[100];
    for (const Triple &p : mesh.points) {
        std::snprintf(line, sizeof line, "v %.6f %.6f %.6f\n", double{p[0]}, double{p[1]}, double{p[2]});
        file += line;
    }
    for (const auto &[a, b, c] : mesh.triangles) {
        std::snprintf(line, sizeof line, "f %u %u %u\n", a + 1, b + 1, c + 1);
        file += line;
    }
    return file;
}

std::string chunkOf(const char *name, const std::string &contents) {
    Bytes chunk;
    chunk.text(name);
    chunk.big(static_cast<std::uint32_t>(contents.size()));
    chunk.text(contents + std::string(contents.size() % 2, '\0'));
    return std::move(chunk.bytes);
}

// With indices of four bytes throughout, so that all polygons have the same size.
std::string lwoOf(const SampleMesh &mesh) {
    constexpr std::uint32_t kLong = 0xff000000;
    Bytes layer, points, polygons, tags;
    for (int i = 0; i < 4; ++i) layer.big(std::uint32_t{0}); // number, flags, pivot
    layer.big(std::uint16_t{0});                             // no name
    for (const auto &[x, y, z] : mesh.points)
        for (const float each : {x, y, -z}) points.big(each); // left-handed axes
    polygons.text("FACE");
    tags.text("SURF");
    for (std::uint32_t i = 0; i < mesh.triangles.size(); ++i) {
        const auto &[a, b, c] = mesh.triangles[i];
        polygons.big(std::uint16_t{3});
        for (const std::uint32_t corner : {a, b, c}) polygons.big(kLong | corner);
        tags.big(kLong | i);
        tags.big(std::uint16_t{0});
    }
    return chunkOf("FORM", "LWO2" + chunkOf("TAGS", std::string("Clay\0\0", 6)) + chunkOf("LAYR", layer.bytes) +
                               chunkOf("PNTS", points.bytes) + chunkOf("POLS", polygons.bytes) +
                               chunkOf("PTAG", tags.bytes));
}

std::string glbOf(const SampleMesh &mesh) {
    const std::size_t vertices = 12 * mesh.points.size(), corners = 12 * mesh.triangles.size();
    const auto view = [](std::size_t start, std::size_t size) {
        return R"({"buffer":0,"byteOffset":)" + std::to_string(start) + R"(,"byteLength":)" + std::to_string(size) +
               "}";
    };
    const auto accessor = [](int number, int type, std::size_t count, const char *kind) {
        return R"({"bufferView":)" + std::to_string(number) + R"(,"componentType":)" + std::to_string(type) +
               R"(,"count":)" + std::to_string(count) + R"(,"type":")" + kind + "\"}";
    };
    std::string about =
        R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],"meshes":[{"primitives":)"
        R"([{"attributes":{"POSITION":0,"NORMAL":1},"indices":2}]}],"accessors":[)" +
        accessor(0, 5126, mesh.points.size(), "VEC3") + "," + accessor(1, 5126, mesh.points.size(), "VEC3") + "," +
        accessor(2, 5125, mesh.triangles.size() * 3, "SCALAR") + R"(],"bufferViews":[)" + view(0, vertices) + "," +
        view(vertices, vertices) + "," + view(2 * vertices, corners) + R"(],"buffers":[{"byteLength":)" +
        std::to_string(2 * vertices + corners) + "}]}";
    about.resize((about.size() + 3) / 4 * 4, ' ');
    Bytes file;
    file.text("glTF");
    for (const std::size_t number : {std::size_t{2}, 28 + about.size() + 2 * vertices + corners, about.size()})
        file.little(static_cast<std::uint32_t>(number));
    file.text("JSON" + about);
    file.little(static_cast<std::uint32_t>(2 * vertices + corners));
    file.text(std::string("BIN\0", 4));
    for (const auto *triples : {&mesh.points, &mesh.normals})
        for (const Triple &each : *triples) file.little(each);
    for (const auto &triangle : mesh.triangles)
        for (const std::uint32_t corner : triangle) file.little(corner);
    return std::move(file.bytes);
}

} // namespace

SampleMesh bumpySphere(std::size_t triangles) {
    const auto rows = static_cast<std::uint32_t>(std::max(3.0, std::round(std::sqrt(double(triangles) / 4))));
    const std::uint32_t columns = 2 * rows;
    SampleMesh mesh;
    for (std::uint32_t row = 0; row <= rows; ++row)
        for (std::uint32_t column = 0; column < columns; ++column) {
            const double pitch = 0.01 + (std::numbers::pi - 0.02) * row / rows;
            const double heading = 2 * std::numbers::pi * column / columns;
            const double radius = 1 + 0.05 * std::sin(9 * pitch) * std::cos(11 * heading);
            mesh.points.push_back({static_cast<float>(radius * std::sin(pitch) * std::cos(heading)),
                                   static_cast<float>(radius * std::cos(pitch)),
                                   static_cast<float>(-radius * std::sin(pitch) * std::sin(heading))});
        }
    for (std::uint32_t row = 0; row < rows; ++row)
        for (std::uint32_t column = 0; column < columns; ++column) {
            const std::uint32_t a = row * columns + column, b = row * columns + (column + 1) % columns;
            mesh.triangles.push_back({a, a + columns, b + columns});
            mesh.triangles.push_back({a, b + columns, b});
        }
    addNormals(mesh);
    return mesh;
}

std::string writeSample(const SampleMesh &mesh, const std::string &directory, const std::string &format) {
    constexpr std::pair<std::string_view, std::string (*)(const SampleMesh &)> kWriters[] = {
        {"lwo", lwoOf}, {"ply", plyOf}, {"stl", stlOf}, {"glb", glbOf}, {"obj", objOf}};
    std::string name = directory + "/sphere." + format;
    for (const auto &[ending, contents] : kWriters)
        if (ending == format) std::ofstream(name, std::ios::binary) << contents(mesh);
    if (!std::ifstream(name)) throw std::runtime_error("cannot write " + name);
    return name;
}

} // namespace velm::host::bench

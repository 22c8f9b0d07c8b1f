// Mesh files of any size, for measuring how they are read.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace velm::host::bench {

// A closed surface with bumps, in right-handed axes. The triangles run counter-clockwise as seen from outside.
struct SampleMesh {
    std::vector<std::array<float, 3>> points, normals;
    std::vector<std::array<std::uint32_t, 3>> triangles;
};

// A sphere of about that many triangles.
SampleMesh bumpySphere(std::size_t triangles);

// The formats in which it can be written, as endings of file names.
inline constexpr const char *kSampleFormats[] = {"lwo", "ply", "stl", "glb", "obj"};

// Writes the mesh to DIRECTORY/sphere.FORMAT and gives that name. PLY and STL are binary; only GLB has the normals of
// vertices. Throws std::runtime_error.
std::string writeSample(const SampleMesh &mesh, const std::string &directory, const std::string &format);

} // namespace velm::host::bench

// The options of "velm bake".
#pragma once

#include "host/bake/normal_space.h"
#include "host/bake/vertex_file.h"
#include "host/cli/frame_list.h"
#include "host/cli/render_options.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velm::host {

struct BakeOptions : SceneOptions, ReportOptions {
    std::string object;                   // empty: the only one
    std::vector<std::string> surfaces;    // empty: all of the object
    std::string output;                   // what is baked: see BakedValue
    std::string file;                     // of the picture, or of the mesh with the vertex map
    std::optional<PictureSize> size;      // kUsualBakeSide by kUsualBakeSide by default
    std::string uvMap;                    // empty: the first one
    int samples = 4;                      // of a texel or a vertex
    int margin = 16;                      // texels
    std::string viewer = "normal";        // see Viewer
    std::optional<NormalSpace> space;     // of normals; tangent by default
    std::string vertexMap;                // the map of vertices that is baked instead of a picture; empty: none
    std::optional<VertexMapKind> mapKind; // of the vertex map; that of the value by default
    std::optional<FrameList> frames;
    int threads = 0; // 0: the machine's cores
    std::uint32_t seed = 0;
};

inline constexpr int kUsualBakeSide = 1024; // texels

// "2048" for a square, or "2048x1024". UsageError. Exposed for tests.
PictureSize parseBakeSize(const std::string &text);

// Binds the options of the command line to `options`.
void declareBakeOptions(CLI::App &command, ProgramOptions &program, BakeOptions &options);

} // namespace velm::host

// The options of "velm render".
#pragma once

#include "host/cli/command.h"
#include "host/cli/frame_list.h"
#include "host/cli/picture_file_options.h"
#include "host/cli/report_options.h"
#include "host/cli/scene_options.h"
#include "host/render/order/picture_part.h"
#include "host/render/scene/pixel_filter.h"
#include "host/render/scene/render_job.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velm::host {

struct PictureSize {
    int width = 0, height = 0;
};

// Options that are not given leave the scene's own settings as they are.
struct RenderOptions : SceneOptions, ReportOptions {
    std::string output; // empty: the scene's name with .png, in the current directory
    std::optional<FrameList> frames;
    bool skipExisting = false; // leaves frames alone whose pictures exist
    double timeLimit = 0;      // seconds; 0: none
    std::optional<PictureSize> size;
    std::optional<Region> region;
    std::optional<PicturePart> part; // only this part of each picture
    std::optional<PartsBy> partsBy;  // how pictures are divided into parts; by tiles by default
    std::optional<RenderOrder> order;
    std::uint32_t seed = 0;
    bool lockNoise = false;
    bool alpha = false; // leave the backdrop out
    std::vector<std::string> layers;
    PictureFileOptions files;
    std::optional<FilterShape> filter; // box by default
    std::optional<double> filterWidth; // pixels; the shape's own by default
    int samples = 0;                   // 0: the scene's
    int threads = 0;                   // 0: the machine's cores
};

// The texts of single options; UsageError says what is wrong with them. Exposed for tests.
PictureSize parseSize(const std::string &text); // "960x540"
Region parseRegion(const std::string &text);    // "0,0,320,200"
PicturePart parsePart(const std::string &text); // "3/8"

// Binds the options of the command line to `options`.
void declareRenderOptions(CLI::App &command, ProgramOptions &program, RenderOptions &options);

} // namespace velm::host

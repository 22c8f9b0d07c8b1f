// The options of "velm render".
#pragma once

#include "host/cli/command.h"
#include "host/render/scene/render_job.h"

#include <optional>
#include <string>
#include <vector>

namespace velm::host {

struct FrameRange {
    int first = 1, last = 1;
};

struct PictureSize {
    int width = 0, height = 0;
};

// Options that are not given leave the scene's own settings as they are.
struct RenderOptions {
    std::string scene;
    std::string output; // empty: the scene's name with .png, in the current directory
    std::optional<FrameRange> frames;
    std::optional<PictureSize> size;
    std::optional<Region> region;
    int samples = 0; // 0: the scene's
    int threads = 0; // 0: the machine's cores
    std::vector<std::string> data;
    bool strict = false; // warnings are errors
    bool quiet = false;
    bool stats = false;
};

// The texts of single options; UsageError says what is wrong with them. Exposed for tests.
FrameRange parseFrames(const std::string &text); // "7" or "1-24"
PictureSize parseSize(const std::string &text);  // "960x540"
Region parseRegion(const std::string &text);     // "0,0,320,200"

// Binds the options of the command line to `options`.
void declareRenderOptions(CLI::App &command, ProgramOptions &program, RenderOptions &options);

} // namespace velm::host

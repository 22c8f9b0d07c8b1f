#include "host/cli/render_options.h"

#include "host/base/limits.h"
#include "host/cli/option_types.h"
#include "module/host.h"

#include <fmt/format.h>

namespace velm::host {

FrameRange parseFrames(const std::string &text) {
    FrameRange range;
    if (const auto two = parseIntegers<2>(text, '-'))
        range = {.first = (*two)[0], .last = (*two)[1]};
    else if (const auto one = parseIntegers<1>(text, '-'))
        range = {.first = (*one)[0], .last = (*one)[0]};
    else
        throw UsageError(fmt::format("--frames: \"{}\" is neither a frame nor a range such as 1-24", text));
    if (range.last < range.first)
        throw UsageError(
            fmt::format("--frames: the last frame, {}, comes before the first, {}", range.last, range.first));
    if (range.first < -kLastFrameNumber || range.last > kLastFrameNumber)
        throw UsageError(
            fmt::format("--frames: frames are numbered from {} to {}", -kLastFrameNumber, kLastFrameNumber));
    return range;
}

PictureSize parseSize(const std::string &text) {
    const auto sides = parseIntegers<2>(text, 'x');
    if (!sides) throw UsageError(fmt::format("--size: \"{}\" is no size such as 960x540", text));
    for (const int side : *sides)
        if (side < 1 || side > kLargestSide)
            throw UsageError(fmt::format("--size: {} is not from 1 to {}", side, kLargestSide));
    return {.width = (*sides)[0], .height = (*sides)[1]};
}

Region parseRegion(const std::string &text) {
    const auto edges = parseIntegers<4>(text, ',');
    if (!edges) throw UsageError(fmt::format("--region: \"{}\" is no region such as 0,0,320,200", text));
    const Region region{.left = (*edges)[0], .top = (*edges)[1], .right = (*edges)[2], .bottom = (*edges)[3]};
    if (region.left < 0 || region.top < 0)
        throw UsageError(fmt::format("--region: \"{}\" starts outside the picture", text));
    if (region.right <= region.left || region.bottom <= region.top)
        throw UsageError(
            fmt::format("--region: \"{}\" is empty; it must end right of and below where it starts", text));
    return region;
}

void declareRenderOptions(CLI::App &command, ProgramOptions &, RenderOptions &options) {
    command.add_option("SCENE", options.scene, "The scene file")->required()->type_name("");
    command
        .add_option("-o,--output", options.output,
                    "The picture's file: .png, .jpg, .exr, .tif or .hdr. #### or %04d in the name\n"
                    "is replaced by the frame's number; without it, the number of each of several\n"
                    "frames goes before the extension. Default: the scene's name with .png, in\n"
                    "the current directory")
        ->type_name("FILE");
    addParsed(command, "--frames", options.frames, parseFrames, "A-B", "The frames to render, or one frame");
    addParsed(command, "--size", options.size, parseSize, "WxH", "The size of the picture in pixels");
    addParsed(command, "--region", options.region, parseRegion, "X0,Y0,X1,Y1",
              "Only the columns X0 to X1 - 1 and rows Y0 to Y1 - 1, from the upper left;\n"
              "the rest stays black");
    command.add_option("--samples", options.samples, "Samples per pixel")
        ->check(CLI::Range(1, kMostSamples))
        ->type_name("N");
    command.add_option("--threads", options.threads, "Render threads; the machine's cores by default")
        ->check(CLI::Range(1, static_cast<int>(kMaxThreads)))
        ->type_name("N");
    addData(command, options.data);
    command.add_flag("--strict", options.strict,
                     "Treat warnings, such as of a missing or damaged image, as errors:\n"
                     "no picture is written then");
    command.add_flag("--quiet", options.quiet, "No progress");
    command.add_flag("--stats", options.stats, "Print rays, times and memory when done");
}

} // namespace velm::host

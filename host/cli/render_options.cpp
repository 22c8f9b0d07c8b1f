#include "host/cli/render_options.h"

#include "host/base/limits.h"

#include <fmt/format.h>
#include <utility>

namespace velm::host {

namespace {

constexpr double kLongestRender = 1e9; // seconds

} // namespace

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

namespace {

RenderOrder parseOrder(const std::string &text) {
    constexpr std::pair<const char *, RenderOrder> kOrders[] = {{"automatic", RenderOrder::automatic},
                                                                {"repeatable", RenderOrder::repeatable},
                                                                {"classic", RenderOrder::classic}};
    return parseWord("--order", text, kOrders);
}

FilterShape parseFilter(const std::string &text) {
    constexpr std::pair<const char *, FilterShape> kShapes[] = {{"box", FilterShape::box},
                                                                {"gaussian", FilterShape::gaussian},
                                                                {"blackman-harris", FilterShape::blackmanHarris}};
    return parseWord("--filter", text, kShapes);
}

PartsBy parsePartsBy(const std::string &text) {
    constexpr std::pair<const char *, PartsBy> kWays[] = {{"tiles", PartsBy::tiles}, {"samples", PartsBy::samples}};
    return parseWord("--by", text, kWays);
}

} // namespace

PicturePart parsePart(const std::string &text) {
    const auto numbers = parseIntegers<2>(text, '/');
    if (!numbers) throw UsageError(fmt::format("--part: \"{}\" is no part such as 3/8", text));
    const auto [number, count] = *numbers;
    if (number < 1 || number > count)
        throw UsageError(fmt::format("--part: there is no part {} of {}; the first is 1/{}", number, count, count));
    return {.number = number, .count = count};
}

namespace {

// What decides about noise, and how a picture is divided.
void declareOrder(CLI::App &command, RenderOptions &options) {
    auto *const part = addParsed(command, "--part", options.part, parsePart, "K/N",
                                 "Only part K of N of each picture, as an EXR file; velm merge puts parts together");
    addParsed(command, "--by", options.partsBy, parsePartsBy, "WAY",
              "How parts divide a picture: by tiles, the default, or by samples")
        ->needs(part);
    addParsed(command, "--order", options.order, parseOrder, "ORDER",
              "repeatable: the same picture for any number of workers and parts; classic: nodes\n"
              "see samples one after the other, as in LightWave, on up to 16 threads; automatic,\n"
              "the default: classic for scenes with nodes that have a memory");
    command.add_option("--seed", options.seed, "Chooses another pattern of noise; 0 by default")->type_name("N");
    command.add_flag("--lock-noise", options.lockNoise, "The same pattern of noise in all frames");
}

void declareFilter(CLI::App &command, RenderOptions &options) {
    addParsed(command, "--filter", options.filter, parseFilter, "SHAPE",
              "How samples contribute to a pixel: box, the default, gaussian or blackman-harris,\n"
              "which give smoother edges; no effect with 1 sample");
    command
        .add_option("--filter-width", options.filterWidth,
                    "The width of the filter in pixels; 1 by default for box, 3 for the others")
        ->check(numberFrom(kNarrowestFilter, kWidestFilter))
        ->type_name("PIXELS");
}

} // namespace

void declareRenderOptions(CLI::App &command, ProgramOptions &program, RenderOptions &options) {
    declareSceneOptions(command, options);
    command
        .add_option("-o,--output", options.output,
                    "The picture's file: .png, .jpg, .exr, .tif or .hdr. #### or %04d in the name\n"
                    "is replaced by the frame's number; without it, the number of each of several\n"
                    "frames goes before the extension. Default: the scene's name with .png, in\n"
                    "the current directory")
        ->type_name("FILE");
    addParsed(command, "--frames", options.frames, FrameList::parse, "LIST",
              "The frames to render, in this order: frames and ranges such as 1-10x3,15, in\n"
              "which x3, or :3, is a step; otherwise the scene's step counts");
    command.add_flag("--skip-existing", options.skipExisting, "Leave frames alone whose pictures exist");
    command
        .add_option("--time-limit", options.timeLimit,
                    "Seconds after which the render ends with status 3; frames that are complete by\n"
                    "then are kept. 0, the default, for no limit")
        ->check(numberFrom(0, kLongestRender))
        ->type_name("SECONDS");
    addParsed(command, "--size", options.size, parseSize, "WxH", "The size of the picture in pixels");
    addParsed(command, "--region", options.region, parseRegion, "X0,Y0,X1,Y1",
              "Only the columns X0 to X1 - 1 and rows Y0 to Y1 - 1, from the upper left, instead\n"
              "of the scene's region: the data window of an EXR file; in other formats the rest\n"
              "is black");
    declareFilter(command, options);
    command.add_flag("--alpha", options.alpha,
                     "Leave the backdrop out: where it would show, the picture is transparent. EXR files\n"
                     "have associated alpha, PNG and TIFF files straight alpha");
    command
        .add_option("--layer", options.layers,
                    "Add a layer to an EXR file: depth, normal, position, albedo, object, surface,\n"
                    "samples, or an output of a node, such as \"AO.Scalar\" or, of one surface's node,\n"
                    "\"Clay/AO.Scalar\"; can be given more than once")
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->type_name("NAME");
    declarePictureFileOptions(command, options.files);
    command.add_option("--samples", options.samples, "Samples per pixel")
        ->check(CLI::Range(1, kMostSamples))
        ->type_name("N");
    command
        .add_option("--threads", options.threads,
                    "Workers that render; one for each core that this process may use by default")
        ->check(CLI::Range(1, kMostWorkers))
        ->type_name("N");
    declareOrder(command, options);
    addReadLimits(command, program.reading);
    declareReports(command, options);
    command
        .add_option("--log", program.log,
                    "A file to which a line is appended for each event, with the time, the level and\n"
                    "the memory in use")
        ->type_name("FILE");
}

} // namespace velm::host

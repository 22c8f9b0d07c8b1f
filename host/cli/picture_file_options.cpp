#include "host/cli/picture_file_options.h"

#include "host/base/names.h"
#include "host/cli/option_types.h"

#include <algorithm>
#include <filesystem>
#include <span>
#include <string_view>

namespace velm::host {

namespace {

constexpr double kMostStops = 32;

constexpr std::pair<const char *, NumberFormat> kBits[] = {{"8", NumberFormat::uint8},
                                                           {"16", NumberFormat::uint16},
                                                           {"half", NumberFormat::half},
                                                           {"float", NumberFormat::float32}};

constexpr std::pair<const char *, ViewTransform::Curve> kCurves[] = {{"standard", ViewTransform::Curve::standard},
                                                                     {"filmic", ViewTransform::Curve::filmic}};

ViewTransform::Curve parseCurve(const std::string &text) { return parseWord("--view-transform", text, kCurves); }

NumberFormat parseBits(const std::string &text) { return parseWord("--bits", text, kBits); }

const char *wordOf(NumberFormat numbers) {
    return std::ranges::find(kBits, numbers, [](const auto &each) { return each.second; })->first;
}

[[noreturn]] void refuse(const char *option, std::string_view value, const std::string &file,
                         const std::vector<std::string> &choices) {
    const std::string ending = std::filesystem::path(file).extension().string();
    if (choices.empty()) throw UsageError(fmt::format("{}: {} files leave no choice", option, ending));
    throw UsageError(
        fmt::format("{}: {} files cannot have {}, only {}", option, ending, value, fmt::join(choices, ", ")));
}

void checkBits(NumberFormat bits, const std::string &file, std::span<const NumberFormat> choices) {
    if (std::ranges::count(choices, bits) > 0) return;
    std::vector<std::string> words;
    for (const NumberFormat choice : choices) words.emplace_back(wordOf(choice));
    refuse("--bits", wordOf(bits), file, words);
}

void checkCompression(const std::string &compression, const std::string &file, std::span<const char *const> choices) {
    if (std::ranges::count(choices, std::string_view(compression)) > 0) return;
    refuse("--compression", compression, file, {choices.begin(), choices.end()});
}

ViewTransform viewOf(const PictureFileOptions &options) {
    return {.exposure = options.exposure.value_or(0),
            .curve = options.viewTransform.value_or(ViewTransform::Curve::standard)};
}

// The view option that is given; null for none.
const char *viewOption(const PictureFileOptions &options) {
    if (options.exposure) return "--exposure";
    return options.viewTransform ? "--view-transform" : nullptr;
}

// Files of light have no view.
void checkView(const PictureFileOptions &options, const std::string &file, NumberFormat numbers) {
    const char *const option = viewOption(options);
    const bool isLight = numbers == NumberFormat::half || numbers == NumberFormat::float32;
    if (option && isLight)
        throw UsageError(
            fmt::format("{}: {} contains light itself; the view is for files of 8 or 16 bits", option, inQuotes(file)));
}

} // namespace

void checkWorkflow(const PictureFileOptions &options, Workflow workflow) {
    const char *const option = viewOption(options);
    if (option && workflow == Workflow::classic)
        throw UsageError(fmt::format("{}: the picture has display values, not light, since its workflow is classic; "
                                     "--workflow linear renders light",
                                     option));
}

void declarePictureFileOptions(CLI::App &command, PictureFileOptions &options) {
    addParsed(command, "--bits", options.bits, parseBits, "BITS",
              "The numbers in the file: 8 or 16 for PNG, 8, 16 or float for TIFF, half or float\n"
              "for EXR; 8 by default, float for EXR");
    command
        .add_option("--compression", options.compression,
                    "Of EXR files: none, rle, zips, zip (the default), piz, pxr24, b44, b44a, dwaa or\n"
                    "dwab, of which pxr24 and those after it lose precision; of TIFF files: none, lzw\n"
                    "or zip (the default)")
        ->type_name("NAME");
    command.add_flag("--tiled", options.tiled, "Store EXR and TIFF files in tiles of 64 x 64 pixels");
    command
        .add_option("--exposure", options.exposure,
                    "Brighten 8-bit and 16-bit files by this number of stops, or darken them if it is\n"
                    "negative: each stop doubles the light")
        ->check(numberFrom(-kMostStops, kMostStops))
        ->type_name("STOPS");
    addParsed(command, "--view-transform", options.viewTransform, parseCurve, "CURVE",
              "How light is shown in 8-bit and 16-bit files: standard, the default, is sRGB and\n"
              "clips at 1; filmic compresses bright light first");
}

FileSettings fileSettings(const PictureFileOptions &options, const std::string &file) {
    const FileChoices choices = fileChoices(file);
    if (options.bits) checkBits(*options.bits, file, choices.numbers);
    if (options.compression) checkCompression(*options.compression, file, choices.compressions);
    if (options.tiled && !choices.canBeTiled)
        throw UsageError(fmt::format("--tiled: {} files have no tiles; EXR and TIFF files can have them",
                                     std::filesystem::path(file).extension().string()));
    checkView(options, file, options.bits.value_or(choices.usualNumbers));
    return {.numbers = options.bits,
            .compression = options.compression.value_or(""),
            .isTiled = options.tiled,
            .view = viewOf(options)};
}

std::string digestText(const PictureFileOptions &options) {
    std::string text;
    if (options.bits) text += fmt::format("bits {} ", wordOf(*options.bits));
    if (options.compression) text += fmt::format("compression {} ", *options.compression);
    if (options.tiled) text += "tiled ";
    if (const ViewTransform view = viewOf(options); view != ViewTransform{})
        text += fmt::format("view {} {} ", view.exposure, static_cast<int>(view.curve));
    return text;
}

} // namespace velm::host

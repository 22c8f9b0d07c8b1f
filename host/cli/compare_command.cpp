// "velm compare": whether two pictures are the same, and where they differ.
#include "host/base/error.h"
#include "host/cli/commands.h"
#include "host/cli/json_output.h"
#include "host/cli/option_types.h"
#include "host/cli/output_file.h"
#include "host/image/compare.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <ostream>

namespace velm::host {

namespace {

struct CompareOptions {
    std::string first, second;
    CompareLimits limits;
    std::string differences; // the file for a picture of the differences; empty: none
    bool json = false;
};

void declareOptions(CLI::App &command, ProgramOptions &program, CompareOptions &options) {
    constexpr double kLargest = 1e30;
    command.add_option("A", options.first, "A picture")->required()->type_name("");
    command.add_option("B", options.second, "The picture that it is compared with")->required()->type_name("");
    command
        .add_option("--tolerance", options.limits.tolerance,
                    "The absolute difference in a channel above which a pixel counts as different")
        ->check(numberFrom(0, kLargest))
        ->capture_default_str()
        ->type_name("T");
    command.add_option("--mean", options.limits.mean, "The largest mean of all differences")
        ->check(numberFrom(0, kLargest))
        ->capture_default_str()
        ->type_name("M");
    command.add_option("--rms", options.limits.rms, "The largest root mean square of all differences")
        ->check(numberFrom(0, kLargest))
        ->capture_default_str()
        ->type_name("R");
    command.add_option("--share", options.limits.fraction, "The fraction of all pixels that may differ, 0 to 1")
        ->check(numberFrom(0, 1))
        ->capture_default_str()
        ->type_name("S");
    command.add_flag("!--no-alpha", options.limits.alpha, "Leave alpha out");
    command.add_option("--differences", options.differences, "A picture file for the differences")->type_name("FILE");
    command.add_flag("--json", options.json, kJsonHelp);
    addReadLimits(command, program.reading);
}

std::string sizeText(const FilePixels &image) {
    const std::string origin =
        image.left == 0 && image.top == 0 ? std::string() : fmt::format(" from {},{}", image.left, image.top);
    return fmt::format("{} x {}{}", image.width, image.height, origin);
}

// Prints each figure beside its limit.
void printFigures(const Comparison &comparison, const CompareLimits &limits, std::ostream &out) {
    const WorstPixel &worst = comparison.worst;
    if (worst.difference > 0)
        out << fmt::format("  worst   {:.6g} in {} at {},{}: {:.6g} and {:.6g}\n", worst.difference, worst.channel,
                           worst.x, worst.y, worst.first, worst.second);
    out << fmt::format("  mean    {:.6g}; at most {:.6g}\n", comparison.mean, limits.mean);
    out << fmt::format("  RMS     {:.6g}; at most {:.6g}\n", comparison.rms, limits.rms);
    out << fmt::format("  pixels  {} of {} differ by more than {:.6g}; at most {:.6g} %\n", comparison.beyond,
                       comparison.pixels, limits.tolerance, 100 * limits.fraction);
    if (comparison.notNumbers > 0) out << fmt::format("  NaN     in {} pixels\n", comparison.notNumbers);
    if (!comparison.onlyInOne.empty())
        out << fmt::format("  only in one of them: {}\n", fmt::join(comparison.onlyInOne, ", "));
    if (comparison.channels == 0) out << "  no channel that both have\n";
    if (comparison.asScreen) out << "  light was compared as screen numbers\n";
}

Json jsonOfSize(const FilePixels &image) {
    return {{"width", image.width}, {"height", image.height}, {"left", image.left}, {"top", image.top}};
}

Json jsonOfFigures(const Comparison &comparison, const CompareLimits &limits) {
    Json json = {
        {"mean", jsonNumber(comparison.mean)},
        {"rms", jsonNumber(comparison.rms)},
        {"pixels", comparison.pixels},
        {"differentPixels", comparison.beyond},
        {"pixelsWithNaN", comparison.notNumbers},
        {"channels", comparison.channels},
        {"onlyInOne", comparison.onlyInOne},
        {"comparedAsScreen", comparison.asScreen},
        {"limits",
         {{"tolerance", limits.tolerance}, {"mean", limits.mean}, {"rms", limits.rms}, {"share", limits.fraction}}}};
    const WorstPixel &worst = comparison.worst;
    if (worst.difference > 0)
        json["worst"] = {{"difference", jsonNumber(worst.difference)},
                         {"channel", worst.channel},
                         {"x", worst.x},
                         {"y", worst.y},
                         {"first", jsonNumber(worst.first)},
                         {"second", jsonNumber(worst.second)}};
    return json;
}

int compareFiles(const CompareOptions &options, std::ostream &out) {
    if (!options.differences.empty()) {
        prepareOutput(options.differences);
        for (const std::string &input : {options.first, options.second}) refuseToReplace(options.differences, input);
    }
    const FilePixels first = readFilePixels(options.first), second = readFilePixels(options.second);
    const Comparison comparison = compareImages(first, second, options.limits);
    if (!comparison.sameSize) {
        if (options.json)
            printJson({{"verdict", "other size"}, {"first", jsonOfSize(first)}, {"second", jsonOfSize(second)}}, out);
        else
            out << fmt::format("other size: {} and {}\n", sizeText(first), sizeText(second));
        return kCompareOtherSize;
    }
    const bool same = withinLimits(comparison, options.limits);
    const char *const verdict = same ? "the same" : "different";
    if (options.json) {
        Json json = {{"verdict", verdict}};
        json.update(jsonOfFigures(comparison, options.limits));
        printJson(json, out);
    } else {
        out << verdict << '\n';
        printFigures(comparison, options.limits, out);
    }
    if (!options.differences.empty()) writePicture(comparison.differences, options.differences);
    return same ? kCompareSame : kCompareDifferent;
}

int run(const ProgramOptions &, const CompareOptions &compare, std::ostream &out, std::ostream &err) {
    try {
        return compareFiles(compare, out);
    } catch (const InputError &error) {
        err << "velm: " << error.what() << '\n';
        return kCompareFailed;
    } catch (const UsageError &error) { // about the name of the picture of differences
        throw UsageError(error.what(), kCompareFailed);
    }
}

} // namespace

constinit const Command compareCommand = makeCommand<CompareOptions, declareOptions, run>(
    {.name = "compare", .help = "Compare two pictures", .needsModule = false, .usageStatus = kCompareFailed});

} // namespace velm::host

// "velm compare": whether two pictures are the same, and where they are not.
#include "host/base/error.h"
#include "host/cli/commands.h"
#include "host/cli/output_file.h"
#include "host/cli/run.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <ostream>

namespace velm::host {

namespace {

std::string sizeText(const FilePixels &image) {
    const std::string place =
        image.left == 0 && image.top == 0 ? std::string() : fmt::format(" from {},{}", image.left, image.top);
    return fmt::format("{} x {}{}", image.width, image.height, place);
}

// The figures, each beside the limit that it is held against.
void printFigures(const Comparison &comparison, const CompareLimits &limits, std::ostream &out) {
    const WorstPixel &worst = comparison.worst;
    if (worst.difference > 0)
        out << fmt::format("  worst   {:.6g} in {} at {},{}: {:.6g} and {:.6g}\n", worst.difference, worst.channel,
                           worst.x, worst.y, worst.first, worst.second);
    out << fmt::format("  mean    {:.6g}; at most {:.6g}\n", comparison.mean, limits.mean);
    out << fmt::format("  RMS     {:.6g}; at most {:.6g}\n", comparison.rms, limits.rms);
    out << fmt::format("  pixels  {} of {} differ by more than {:.6g}; at most {:.6g} %\n", comparison.beyond,
                       comparison.pixels, limits.tolerance, 100 * limits.share);
    if (comparison.notNumbers > 0) out << fmt::format("  NaN     in {} pixels\n", comparison.notNumbers);
    if (!comparison.onlyInOne.empty())
        out << fmt::format("  only in one of them: {}\n", fmt::join(comparison.onlyInOne, ", "));
    if (comparison.channels == 0) out << "  no channel that both have\n";
    if (comparison.asScreen) out << "  light was compared as screen numbers\n";
}

int compareFiles(const CompareOptions &options, std::ostream &out) {
    if (!options.differences.empty()) {
        prepareOutput(options.differences);
        for (const std::string &input : {options.first, options.second}) refuseToReplace(options.differences, input);
    }
    const FilePixels first = readFilePixels(options.first), second = readFilePixels(options.second);
    const Comparison comparison = compareImages(first, second, options.limits);
    if (!comparison.sameSize) {
        out << fmt::format("other size: {} and {}\n", sizeText(first), sizeText(second));
        return kCompareOtherSize;
    }
    const bool same = withinLimits(comparison, options.limits);
    out << (same ? "the same\n" : "different\n");
    printFigures(comparison, options.limits, out);
    if (!options.differences.empty()) writePicture(comparison.differences, options.differences);
    return same ? kCompareSame : kCompareDifferent;
}

} // namespace

int runCompare(const CompareOptions &compare, std::ostream &out, std::ostream &err) {
    try {
        return compareFiles(compare, out);
    } catch (const InputError &error) {
        err << "velm: " << error.what() << '\n';
        return kCompareFailed;
    } catch (const UsageError &error) { // of the difference picture's name
        throw UsageError(error.what(), kCompareFailed);
    }
}

} // namespace velm::host

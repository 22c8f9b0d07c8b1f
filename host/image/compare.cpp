#include "host/image/compare.h"

#include "host/image/transfer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace velm::host {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kOpaque = -2; // instead of a channel index: 1 everywhere

// A channel that both images have: its index in each.
struct Pair {
    std::string name;
    int first, second;
    int colour;     // 0, 1, 2 for red, green and blue; -1 for other channels
    bool isEncoded; // converted by the sRGB curve if one image is light and the other is not
};

int colourOf(const std::string &name) {
    const auto index = std::string("RGB").find(name);
    return name.size() == 1 && index != std::string::npos ? static_cast<int>(index) : -1;
}

// The index of the channel that corresponds to a name of the other image; -1 if there is none.
int counterpart(const FilePixels &image, const std::string &name, bool isAlpha) {
    if (isAlpha) return image.alpha >= 0 ? image.alpha : kOpaque;
    const int found = image.find(name);
    return found < 0 && colourOf(name) >= 0 ? image.grey : found;
}

bool hasColours(const FilePixels &image) {
    return image.find("R") >= 0 || image.find("G") >= 0 || image.find("B") >= 0;
}

// Adds the channels of `from` that are not yet among the pairs.
void addPairs(const FilePixels &from, const FilePixels &first, const FilePixels &second, bool withAlpha,
              std::vector<Pair> &pairs, std::vector<std::string> &onlyInOne) {
    const FilePixels &other = &from == &first ? second : first;
    for (int channel = 0; channel < static_cast<int>(from.channels.size()); ++channel) {
        const bool isAlpha = channel == from.alpha, isGrey = channel == from.grey;
        if ((isAlpha && !withAlpha) || (isGrey && hasColours(other))) continue;
        // Two grey channels correspond, whatever their names.
        const bool bothGrey = isGrey && other.grey >= 0;
        const std::string name = isAlpha ? "A" : bothGrey ? "Y" : from.channels[static_cast<std::size_t>(channel)];
        if (std::any_of(pairs.begin(), pairs.end(), [&](const Pair &pair) { return pair.name == name; })) continue;
        const Pair pair{.name = name,
                        .first = bothGrey ? first.grey : counterpart(first, name, isAlpha),
                        .second = bothGrey ? second.grey : counterpart(second, name, isAlpha),
                        .colour = colourOf(name),
                        .isEncoded = isGrey || colourOf(name) >= 0};
        if (pair.first == -1 || pair.second == -1)
            onlyInOne.push_back(name);
        else
            pairs.push_back(pair);
    }
}

double difference(float first, float second) {
    if (first == second) return 0; // also equal infinities
    const double apart = std::abs(static_cast<double>(first) - second);
    return std::isfinite(apart) ? apart : kInfinity;
}

// Infinities and NaNs stay as they are: the sRGB curve would turn them into ordinary numbers.
float throughScreen(float light) { return std::isfinite(light) ? static_cast<float>(linearToSrgb(light)) : light; }

// Reads one side of the pairs.
struct Side {
    const FilePixels &image;
    bool encodes; // its light is converted by the sRGB curve

    float value(int x, int y, int channel, bool isEncoded) const {
        if (channel == kOpaque) return 1;
        const float value = image.pixel(x, y)[channel];
        return encodes && isEncoded ? throughScreen(value) : value;
    }
};

// Sums over all pixels, row by row, so that small numbers are not lost in large sums.
struct Sums {
    double row = 0, rowOfSquares = 0, all = 0, allOfSquares = 0;

    void add(double apart) {
        row += apart;
        rowOfSquares += apart * apart;
    }
    void endRow() {
        all += std::exchange(row, 0);
        allOfSquares += std::exchange(rowOfSquares, 0);
    }
};

void addToPicture(float *pixel, int colour, double apart) {
    for (int i = 0; i < 3; ++i)
        if (colour < 0 || colour == i) pixel[i] = std::max(pixel[i], static_cast<float>(apart));
    pixel[3] = 1;
}

void comparePixel(int x, int y, const std::vector<Pair> &pairs, const Side &first, const Side &second, double tolerance,
                  Comparison &result, Sums &sums) {
    bool isBeyond = false, isNoNumber = false;
    for (const Pair &pair : pairs) {
        const float a = first.value(x, y, pair.first, pair.isEncoded);
        const float b = second.value(x, y, pair.second, pair.isEncoded);
        const double apart = difference(a, b);
        sums.add(apart);
        isBeyond = isBeyond || apart > tolerance;
        isNoNumber = isNoNumber || std::isnan(a) || std::isnan(b);
        addToPicture(result.differences.pixel(x, y), pair.colour, apart);
        if (apart > result.worst.difference)
            result.worst = {.difference = apart, .x = x, .y = y, .channel = pair.name, .first = a, .second = b};
    }
    result.beyond += isBeyond ? 1 : 0;
    result.notNumbers += isNoNumber ? 1 : 0;
}

} // namespace

Comparison compareImages(const FilePixels &first, const FilePixels &second, const CompareLimits &limits) {
    Comparison result;
    result.sameSize = first.width == second.width && first.height == second.height && first.left == second.left &&
                      first.top == second.top;
    if (!result.sameSize) return result;
    result.asScreen = first.isLight != second.isLight;
    std::vector<Pair> pairs;
    for (const FilePixels *image : {&first, &second})
        addPairs(*image, first, second, limits.alpha, pairs, result.onlyInOne);

    result.channels = pairs.size();
    const Side sides[2] = {{.image = first, .encodes = result.asScreen && first.isLight},
                           {.image = second, .encodes = result.asScreen && second.isLight}};
    result.differences = Picture(first.width, first.height);
    Sums sums;
    for (int y = 0; y < first.height; ++y) {
        for (int x = 0; x < first.width; ++x)
            comparePixel(x, y, pairs, sides[0], sides[1], limits.tolerance, result, sums);
        sums.endRow();
    }
    result.pixels = static_cast<std::uint64_t>(first.width) * static_cast<std::uint64_t>(first.height);
    const double count =
        static_cast<double>(result.pixels) * static_cast<double>(std::max<std::size_t>(1, result.channels));
    result.mean = sums.all / count;
    result.rms = std::sqrt(sums.allOfSquares / count);
    return result;
}

bool withinLimits(const Comparison &comparison, const CompareLimits &limits) {
    return comparison.sameSize && comparison.channels > 0 && comparison.onlyInOne.empty() &&
           comparison.notNumbers == 0 && comparison.mean <= limits.mean && comparison.rms <= limits.rms &&
           static_cast<double>(comparison.beyond) <= limits.fraction * static_cast<double>(comparison.pixels);
}

} // namespace velm::host

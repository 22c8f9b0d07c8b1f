// Reads images and builds their pyramids (mip maps), in which wide spots are looked up.
#include "host/image/image.h"

#include "host/base/direction.h"
#include "host/base/error.h"
#include "host/image/filters.h"
#include "host/image/image_formats.h"
#include "host/image/transfer.h"
#include "host/io/embedded_images.h"
#include "host/io/files.h"
#include "host/io/reader_process.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <memory>
#include <numbers>
#include <span>

namespace velm::host {
namespace {

// Which channels of the file make up the image.
struct ChannelChoice {
    std::vector<int> source; // in our order: luminance or red, green, blue; then alpha
    bool isColour = false, hasAlpha = false;
};

ChannelChoice chooseChannels(const ImageHeader &header) {
    ChannelChoice choice;
    std::vector<int> others;
    const int alpha = header.alpha, channels = static_cast<int>(header.channels.size());
    for (int channel = 0; channel < channels; ++channel)
        if (channel != alpha && channel != header.depthChannel) others.push_back(channel);
    const std::array<int, 3> named = {header.find("R"), header.find("G"), header.find("B")};
    if (std::all_of(named.begin(), named.end(), [](int channel) { return channel >= 0; })) {
        choice.source.assign(named.begin(), named.end());
    } else if (others.size() >= 3) {
        choice.source.assign(others.begin(), others.begin() + 3);
    } else if (!others.empty()) {
        choice.source.assign(1, others.front());
    }
    choice.isColour = choice.source.size() == 3;
    choice.hasAlpha = alpha >= 0 && !choice.source.empty();
    if (choice.hasAlpha) choice.source.push_back(alpha);
    return choice;
}

// Converts display values of 8 or 16 bits to linear light by a table; every 8-bit value is also a 16-bit one.
class LinearTable {
  public:
    LinearTable() : values_(65536) {
        for (std::size_t i = 0; i < values_.size(); ++i)
            values_[i] = static_cast<float>(srgbToLinear(static_cast<double>(i) / 65535.0));
    }
    float operator()(float encoded) const {
        return values_[static_cast<std::size_t>(std::lround(std::clamp(encoded, 0.0f, 1.0f) * 65535.0f))];
    }

  private:
    std::vector<float> values_;
};

// How the colours of the file are changed.
struct ColourChange {
    const std::vector<ImageFilter> &filters; // applied first
    bool isWithinOne = false;                // see applyFilters
    bool linearises = false;                 // converts the filtered colours from sRGB to linear light
};

// Converts the channels of the file to ours.
std::pmr::vector<float> arrange(std::span<const float> read, int fileChannels, const ChannelChoice &choice,
                                const ColourChange &change, std::pmr::memory_resource *memory) {
    const std::size_t stride = static_cast<std::size_t>(fileChannels), count = read.size() / stride;
    const std::size_t channels = choice.source.size(), colours = channels - (choice.hasAlpha ? 1 : 0);
    static const LinearTable toLinear;
    std::pmr::vector<float> pixels(count * channels, memory);
    for (std::size_t i = 0; i < count; ++i) {
        const std::span<float> pixel(pixels.data() + i * channels, channels), colour = pixel.first(colours);
        for (std::size_t channel = 0; channel < channels; ++channel)
            pixel[channel] = read[i * stride + static_cast<std::size_t>(choice.source[channel])];
        if (!change.filters.empty()) applyFilters(change.filters, change.isWithinOne, colour);
        if (!change.linearises) continue;
        for (float &component : colour) component = toLinear(component);
    }
    return pixels;
}

// One axis of a level of half the size: which source pixels a pixel covers, and the fraction of each. The areas are
// exact, also for odd sizes.
struct Coverage {
    int first = 0;
    std::array<float, 4> weight{};
};

std::vector<Coverage> halveAxis(int size, int half) {
    std::vector<Coverage> result(static_cast<std::size_t>(half));
    const double step = static_cast<double>(size) / half;
    for (int i = 0; i < half; ++i) {
        Coverage &coverage = result[static_cast<std::size_t>(i)];
        const double begin = i * step, end = (i + 1) * step;
        coverage.first = std::min(static_cast<int>(begin), size - 1);
        for (int k = 0; k < 4; ++k) {
            const double low = std::max(begin, static_cast<double>(coverage.first + k));
            const double high = std::min(end, static_cast<double>(coverage.first + k + 1));
            coverage.weight[static_cast<std::size_t>(k)] = static_cast<float>(std::max(0.0, high - low) / step);
        }
    }
    return result;
}

ImageLevel halve(const ImageLevel &level, int channels) {
    ImageLevel half{.width = std::max(1, level.width / 2),
                    .height = std::max(1, level.height / 2),
                    .pixels = std::pmr::vector<float>(level.pixels.get_allocator())};
    const std::vector<Coverage> columns = halveAxis(level.width, half.width),
                                rows = halveAxis(level.height, half.height);
    half.pixels.resize(static_cast<std::size_t>(half.width) * static_cast<std::size_t>(half.height) *
                       static_cast<std::size_t>(channels));
    float *target = half.pixels.data();
    for (const Coverage &row : rows) {
        for (const Coverage &column : columns) {
            for (int channel = 0; channel < channels; ++channel) {
                float sum = 0;
                for (int j = 0; j < 4; ++j) {
                    const int y = std::min(row.first + j, level.height - 1);
                    for (int i = 0; i < 4; ++i) {
                        const float weight =
                            row.weight[static_cast<std::size_t>(j)] * column.weight[static_cast<std::size_t>(i)];
                        if (weight == 0) continue;
                        const int x = std::min(column.first + i, level.width - 1);
                        const std::ptrdiff_t index = static_cast<std::ptrdiff_t>(y) * level.width + x;
                        sum += weight * level.pixels[static_cast<std::size_t>(index * channels + channel)];
                    }
                }
                *target++ = sum;
            }
        }
    }
    return half;
}

// What the process that reads an image hands over.
struct ReadPixels {
    explicit ReadPixels(std::pmr::memory_resource *memory) : levels(memory) {}

    bool isWithin(const SharedArena &arena) const {
        const auto isComplete = [&](const ImageLevel &level) {
            return level.width > 0 && level.height > 0 && arena.holds(level.pixels) &&
                   level.pixels.size() == static_cast<std::size_t>(level.width) *
                                              static_cast<std::size_t>(level.height) *
                                              static_cast<std::size_t>(channels);
        };
        return channels >= 1 && channels <= 4 && arena.holds(levels) && !levels.empty() &&
               std::all_of(levels.begin(), levels.end(), isComplete);
    }

    int channels = 0;
    bool isColour = false, hasAlpha = false;
    std::pmr::vector<ImageLevel> levels;
};

void buildLevels(ReadPixels &image, int width, int height, std::pmr::vector<float> pixels) {
    constexpr std::size_t kMostLevels = std::numeric_limits<int>::digits;
    image.levels.reserve(kMostLevels);
    image.levels.push_back({.width = width, .height = height, .pixels = std::move(pixels)});
    while (image.levels.back().width > 1 || image.levels.back().height > 1)
        image.levels.push_back(halve(image.levels.back(), image.channels));
}

[[noreturn]] void failToRead(const std::string &file, const std::string &why) {
    throw InputError({.file = file},
                     "cannot read the image: " + (why.empty() ? "it is damaged or ends too early" : why));
}

std::string sizeText(const ImageHeader &header) {
    return "its size of " + std::to_string(header.width) + " by " + std::to_string(header.height) + " pixels with " +
           std::to_string(header.channels.size()) + " channels";
}

// Throws if reading the image would take too much memory: the numbers of the file, and the image with its levels, which
// add a third.
void checkMemory(const ImageHeader &header, const ChannelChoice &choice, const std::string &file) {
    const double values =
        static_cast<double>(header.channels.size()) + static_cast<double>(choice.source.size()) * 4 / 3;
    if (header.pixels() * values * sizeof(float) > static_cast<double>(readLimitInBytes()))
        failToRead(file, sizeText(header) + " needs more than " + std::to_string(readLimits().mebibytes) +
                             " MiB of memory (see --read-memory)");
}

void readOpened(ImageFile &input, const std::string &file, Workflow workflow, const std::vector<ImageFilter> &filters,
                ReadPixels &image) {
    const ImageHeader &header = input.header();
    if (header.width < 1 || header.height < 1 || header.channels.empty() || header.depth > 1 || header.isDeep)
        failToRead(file, sizeText(header) + " is none that can be used");
    const ChannelChoice choice = chooseChannels(header);
    if (choice.source.empty()) failToRead(file, "it has no colour or luminance channel");
    checkMemory(header, choice, file);

    // Not initialised, so that a header that claims more than the file contains costs no memory.
    const std::size_t values =
        static_cast<std::size_t>(header.width) * static_cast<std::size_t>(header.height) * header.channels.size();
    const auto read = std::make_unique_for_overwrite<float[]>(values);
    if (!input.read(read.get())) failToRead(file, input.error());
    image.channels = static_cast<int>(choice.source.size());
    image.isColour = choice.isColour;
    image.hasAlpha = choice.hasAlpha;
    const bool isEncoded = header.numbers == StoredNumbers::shortIntegers;
    const ColourChange change{
        .filters = filters, .isWithinOne = isEncoded, .linearises = isEncoded && workflow == Workflow::linear};
    buildLevels(image, header.width, header.height,
                arrange({read.get(), values}, static_cast<int>(header.channels.size()), choice, change,
                        image.levels.get_allocator().resource()));
}

} // namespace

std::unique_ptr<HostImage> readImage(const std::string &file, const std::string &name, Workflow workflow,
                                     const std::vector<ImageFilter> &filters) {
    if (const auto reason = whyUnreadable(fileToOpen(file))) failToRead(file, *reason);
    setUpImageLibrary(); // once for all the processes
    const auto read = readApart<ReadPixels>(
        file, "the image", [&](ReadPixels &pixels) { readOpened(*openImage(file), file, workflow, filters, pixels); });
    return std::make_unique<HostImage>(HostImage{
        .memory = read,
        .name = name,
        .file = file,
        .width = read->levels.front().width,
        .height = read->levels.front().height,
        .channels = read->channels,
        .isColour = read->isColour,
        .hasAlpha = read->hasAlpha,
        .levels = {std::make_move_iterator(read->levels.begin()), std::make_move_iterator(read->levels.end())},
        .filters = filters});
}

void directionToImage(double seamAngle, const double direction[3], double *u, double *v) {
    const double x = direction[0], y = direction[1], z = direction[2];
    const double across = levelLength(direction);
    *u = 0.5;
    *v = 0.5;
    if (!std::isfinite(across + y) || !std::isfinite(seamAngle) || (across == 0 && y == 0)) return;
    const double turned = 0.5 + (std::atan2(x, z) - seamAngle) / (2 * std::numbers::pi);
    *u = turned - std::floor(turned);
    if (*u >= 1) *u = 0; // a tiny negative number minus its floor rounds up to 1
    *v = 0.5 - std::atan2(y, across) / std::numbers::pi;
}

} // namespace velm::host

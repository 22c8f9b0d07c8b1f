// Reads images and builds their pyramids (mip maps), in which wide spots are looked up.
#include "host/image/image.h"

#include "host/base/direction.h"
#include "host/base/error.h"
#include "host/image/transfer.h"
#include "host/io/files.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <new>
#include <numbers>
#include <span>

namespace velm::host {
namespace {

// Which channels of the file make up the image.
struct ChannelChoice {
    std::vector<int> source; // in our order: luminance or red, green, blue; then alpha
    bool isColour = false, hasAlpha = false;
};

ChannelChoice chooseChannels(const OIIO::ImageSpec &spec) {
    ChannelChoice choice;
    std::vector<int> others;
    for (int channel = 0; channel < spec.nchannels; ++channel)
        if (channel != spec.alpha_channel && channel != spec.z_channel) others.push_back(channel);
    const std::array<int, 3> named = {spec.channelindex("R"), spec.channelindex("G"), spec.channelindex("B")};
    if (std::all_of(named.begin(), named.end(), [](int channel) { return channel >= 0; })) {
        choice.source.assign(named.begin(), named.end());
    } else if (others.size() >= 3) {
        choice.source.assign(others.begin(), others.begin() + 3);
    } else if (!others.empty()) {
        choice.source.assign(1, others.front());
    }
    choice.isColour = choice.source.size() == 3;
    choice.hasAlpha = spec.alpha_channel >= 0 && !choice.source.empty();
    if (choice.hasAlpha) choice.source.push_back(spec.alpha_channel);
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

bool isScreenEncoded(const OIIO::TypeDesc &format) {
    return format.basetype == OIIO::TypeDesc::UINT8 || format.basetype == OIIO::TypeDesc::INT8 ||
           format.basetype == OIIO::TypeDesc::UINT16 || format.basetype == OIIO::TypeDesc::INT16;
}

// Converts the channels of the file to ours.
std::vector<float> arrange(std::span<const float> read, int fileChannels, const ChannelChoice &choice, bool linearise) {
    const std::size_t stride = static_cast<std::size_t>(fileChannels), count = read.size() / stride;
    const std::size_t channels = choice.source.size(), colours = channels - (choice.hasAlpha ? 1 : 0);
    static const LinearTable toLinear;
    std::vector<float> pixels(count * channels);
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const float value = read[i * stride + static_cast<std::size_t>(choice.source[channel])];
            pixels[i * channels + channel] = linearise && channel < colours ? toLinear(value) : value;
        }
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
    ImageLevel half{.width = std::max(1, level.width / 2), .height = std::max(1, level.height / 2), .pixels = {}};
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

void buildLevels(HostImage &image, std::vector<float> pixels) {
    image.levels.push_back({.width = image.width, .height = image.height, .pixels = std::move(pixels)});
    while (image.levels.back().width > 1 || image.levels.back().height > 1)
        image.levels.push_back(halve(image.levels.back(), image.channels));
}

[[noreturn]] void failToRead(const std::string &file, const std::string &why) {
    throw InputError({.file = file},
                     "cannot read the image: " + (why.empty() ? "it is damaged or ends too early" : why));
}

std::string sizeText(const OIIO::ImageSpec &spec) {
    return "its size of " + std::to_string(spec.width) + " by " + std::to_string(spec.height) + " pixels with " +
           std::to_string(spec.nchannels) + " channels";
}

// Throws if reading the image would take too much memory: the numbers of the file, and the image with its levels, which
// add a third.
void checkMemory(const OIIO::ImageSpec &spec, const ChannelChoice &choice, const std::string &file) {
    const double pixels = static_cast<double>(spec.width) * spec.height;
    const double values = spec.nchannels + static_cast<double>(choice.source.size()) * 4 / 3;
    if (pixels * values * sizeof(float) > static_cast<double>(kMostImageBytes))
        failToRead(file, sizeText(spec) + " needs more than the " + std::to_string(kMostImageBytes >> 20) +
                             " MiB of memory that one image may take");
}

std::unique_ptr<HostImage> readOpened(OIIO::ImageInput &input, const std::string &file) {
    const OIIO::ImageSpec spec = input.spec();
    if (spec.width < 1 || spec.height < 1 || spec.nchannels < 1 || spec.depth > 1 || spec.deep)
        failToRead(file, sizeText(spec) + " is none that can be used");
    const ChannelChoice choice = chooseChannels(spec);
    if (choice.source.empty()) failToRead(file, "it has no colour or luminance channel");
    checkMemory(spec, choice, file);

    // Not initialised, so that a header that claims more than the file contains costs no memory.
    const std::size_t values = static_cast<std::size_t>(spec.width) * static_cast<std::size_t>(spec.height) *
                               static_cast<std::size_t>(spec.nchannels);
    const auto read = std::make_unique_for_overwrite<float[]>(values);
    if (!input.read_image(0, 0, 0, spec.nchannels, OIIO::TypeDesc::FLOAT, read.get()))
        failToRead(file, input.geterror());
    auto image = std::make_unique<HostImage>();
    image->file = file;
    image->width = spec.width;
    image->height = spec.height;
    image->channels = static_cast<int>(choice.source.size());
    image->isColour = choice.isColour;
    image->hasAlpha = choice.hasAlpha;
    buildLevels(*image, arrange({read.get(), values}, spec.nchannels, choice, isScreenEncoded(spec.format)));
    return image;
}

} // namespace

std::unique_ptr<HostImage> readImage(const std::string &file, const std::string &name) {
    if (const auto reason = whyUnreadable(file)) failToRead(file, *reason);
    try {
        OIIO::ImageSpec wishes;
        wishes.attribute("oiio:UnassociatedAlpha", 1);
        const std::unique_ptr<OIIO::ImageInput> input = OIIO::ImageInput::open(file, &wishes);
        if (!input) failToRead(file, OIIO::geterror());
        std::unique_ptr<HostImage> image = readOpened(*input, file);
        image->name = name;
        return image;
    } catch (const std::bad_alloc &) {
        failToRead(file, "there is not enough memory for it");
    }
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

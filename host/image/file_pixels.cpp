#include "host/image/file_pixels.h"

#include "host/base/error.h"
#include "host/io/files.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <memory>
#include <new>

namespace velm::host {
namespace {

// Enough for 16,384 x 16,384 pixels with four channels. A header that claims more is treated as damaged.
constexpr double kMostBytes = 4.0 * (1U << 30);

[[noreturn]] void failToRead(const std::string &file, const std::string &why) {
    throw InputError({.file = file}, "cannot read the image" + (why.empty() ? std::string() : ": " + why));
}

bool isFloat(const OIIO::TypeDesc &format) {
    return format.basetype == OIIO::TypeDesc::HALF || format.basetype == OIIO::TypeDesc::FLOAT ||
           format.basetype == OIIO::TypeDesc::DOUBLE;
}

// The only channel beside alpha, if there is just one and it is not red, green or blue.
int greyChannel(const OIIO::ImageSpec &spec) {
    int grey = -1;
    for (int channel = 0; channel < spec.nchannels; ++channel) {
        if (channel == spec.alpha_channel || channel == spec.z_channel) continue;
        const std::string name = spec.channel_name(channel);
        if (grey >= 0 || name == "R" || name == "G" || name == "B") return -1;
        grey = channel;
    }
    return grey;
}

FilePixels readOpened(OIIO::ImageInput &input, const std::string &file) {
    const OIIO::ImageSpec &spec = input.spec();
    if (spec.width < 1 || spec.height < 1 || spec.nchannels < 1 || spec.depth > 1 || spec.deep)
        failToRead(file, "it has no flat picture");
    if (static_cast<double>(spec.image_pixels()) * spec.nchannels * sizeof(float) > kMostBytes)
        failToRead(file, "it is too large");
    FilePixels pixels{.width = spec.width,
                      .height = spec.height,
                      .left = spec.x,
                      .top = spec.y,
                      .isLight = isFloat(spec.format),
                      .channels = spec.channelnames,
                      .alpha = spec.alpha_channel,
                      .grey = greyChannel(spec),
                      .values = {}};
    pixels.values.resize(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels));
    if (!input.read_image(0, 0, 0, spec.nchannels, OIIO::TypeDesc::FLOAT, pixels.values.data()))
        failToRead(file, input.geterror());
    return pixels;
}

} // namespace

int FilePixels::find(const std::string &name) const {
    const auto found = std::find(channels.begin(), channels.end(), name);
    return found == channels.end() ? -1 : static_cast<int>(found - channels.begin());
}

FilePixels readFilePixels(const std::string &file) {
    if (const auto reason = whyUnreadable(file)) failToRead(file, *reason);
    try {
        OIIO::ImageSpec wishes;
        wishes.attribute("oiio:UnassociatedAlpha", 1);
        const std::unique_ptr<OIIO::ImageInput> input = OIIO::ImageInput::open(file, &wishes);
        if (!input) failToRead(file, OIIO::geterror());
        return readOpened(*input, file);
    } catch (const std::bad_alloc &) {
        failToRead(file, "there is not enough memory for it");
    }
}

} // namespace velm::host

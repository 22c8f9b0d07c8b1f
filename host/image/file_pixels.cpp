#include "host/image/file_pixels.h"

#include "host/base/error.h"
#include "host/image/image_formats.h"
#include "host/image/metadata_headers.h"
#include "host/io/embedded_images.h"
#include "host/io/files.h"
#include "host/io/reader_process.h"

#include <algorithm>
#include <utility>

namespace velm::host {
namespace {

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
        if (channel == alphaChannelOf(spec) || channel == depthChannelOf(spec)) continue;
        const std::string name = spec.channel_name(channel);
        if (grey >= 0 || name == "R" || name == "G" || name == "B") return -1;
        grey = channel;
    }
    return grey;
}

// What the process that reads an image hands over.
struct ReadValues {
    explicit ReadValues(std::pmr::memory_resource *memory) : channels(memory), values(memory) {}

    bool isWithin(const SharedArena &arena) const {
        const auto isHeld = [&](const std::pmr::string &name) { return arena.holds(name); };
        return width > 0 && height > 0 && arena.holds(channels) &&
               std::all_of(channels.begin(), channels.end(), isHeld) && arena.holds(values) &&
               values.size() == static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * channels.size() &&
               std::max(alpha, grey) < static_cast<int>(channels.size());
    }

    int width = 0, height = 0, left = 0, top = 0;
    bool isLight = false;
    int alpha = -1, grey = -1;
    std::pmr::vector<std::pmr::string> channels;
    std::pmr::vector<float> values;
};

void readOpened(OIIO::ImageInput &input, const std::string &file, ReadValues &read) {
    const OIIO::ImageSpec &spec = input.spec();
    if (spec.width < 1 || spec.height < 1 || spec.nchannels < 1 || spec.depth > 1 || spec.deep)
        failToRead(file, "it has no flat picture");
    if (static_cast<double>(spec.image_pixels()) * spec.nchannels * sizeof(float) >
        static_cast<double>(readLimitInBytes()))
        failToRead(file, "it needs more than " + std::to_string(readLimits().mebibytes) +
                             " MiB of memory (see --read-memory)");
    read.width = spec.width;
    read.height = spec.height;
    read.left = spec.x;
    read.top = spec.y;
    read.isLight =
        isFloat(spec.format) && spec.get_string_attribute(kWorkflowHeader) != workflowText(Workflow::classic);
    read.alpha = alphaChannelOf(spec);
    read.grey = greyChannel(spec);
    read.channels.reserve(static_cast<std::size_t>(spec.nchannels));
    for (int channel = 0; channel < spec.nchannels; ++channel) read.channels.emplace_back(spec.channel_name(channel));
    read.values.resize(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels));
    if (!input.read_image(0, 0, 0, spec.nchannels, OIIO::TypeDesc::FLOAT, read.values.data()))
        failToRead(file, input.geterror());
}

} // namespace

int FilePixels::find(const std::string &name) const {
    const auto found = std::find(channels.begin(), channels.end(), name);
    return found == channels.end() ? -1 : static_cast<int>(found - channels.begin());
}

FilePixels readFilePixels(const std::string &file) {
    if (const auto reason = whyUnreadable(fileToOpen(file))) failToRead(file, *reason);
    setUpImageLibrary(); // once for all the processes
    const auto read = readApart<ReadValues>(file, "the image",
                                            [&](ReadValues &values) { readOpened(*openImage(file), file, values); });
    return {.memory = read,
            .width = read->width,
            .height = read->height,
            .left = read->left,
            .top = read->top,
            .isLight = read->isLight,
            .channels = {read->channels.begin(), read->channels.end()},
            .alpha = read->alpha,
            .grey = read->grey,
            .values = std::move(read->values)};
}

} // namespace velm::host

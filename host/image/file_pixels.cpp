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

// The only channel beside alpha, if there is just one and it is not red, green or blue.
int greyChannel(const ImageHeader &header) {
    int grey = -1;
    for (int channel = 0; channel < static_cast<int>(header.channels.size()); ++channel) {
        if (channel == header.alpha || channel == header.depthChannel) continue;
        const std::string &name = header.channels[static_cast<std::size_t>(channel)];
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

void readOpened(ImageFile &input, const std::string &file, ReadValues &read) {
    const ImageHeader &header = input.header();
    if (header.width < 1 || header.height < 1 || header.channels.empty() || header.depth > 1 || header.isDeep)
        failToRead(file, "it has no flat picture");
    if (header.pixels() * static_cast<double>(header.channels.size()) * sizeof(float) >
        static_cast<double>(readLimitInBytes()))
        failToRead(file, "it needs more than " + std::to_string(readLimits().mebibytes) +
                             " MiB of memory (see --read-memory)");
    read.width = header.width;
    read.height = header.height;
    read.left = header.left;
    read.top = header.top;
    read.isLight =
        header.numbers == StoredNumbers::floats && input.text(kWorkflowHeader) != workflowText(Workflow::classic);
    read.alpha = header.alpha;
    read.grey = greyChannel(header);
    read.channels.reserve(header.channels.size());
    for (const std::string &channel : header.channels) read.channels.emplace_back(channel);
    read.values.resize(static_cast<std::size_t>(header.width) * static_cast<std::size_t>(header.height) *
                       header.channels.size());
    if (!input.read(read.values.data())) failToRead(file, input.error());
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

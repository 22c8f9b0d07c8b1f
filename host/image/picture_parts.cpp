#include "host/image/picture_parts.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/image/image_formats.h"
#include "host/image/layers.h"
#include "host/image/metadata_headers.h"
#include "host/io/files.h"
#include "host/io/reader_process.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <memory>
#include <set>
#include <string_view>

namespace velm::host {
namespace {

// What the process that reads a picture's file hands over.
struct ReadPicture {
    explicit ReadPicture(std::pmr::memory_resource *memory)
        : channels(memory), headers(memory), description(memory), values(memory) {}

    bool isWithin(const SharedArena &arena) const {
        const auto isHeld = [&](const std::pmr::string &text) { return arena.holds(text); };
        return arena.holds(channels) && std::all_of(channels.begin(), channels.end(), isHeld) && arena.holds(headers) &&
               headers.size() == std::size(kMetadataHeaders) && std::all_of(headers.begin(), headers.end(), isHeld) &&
               arena.holds(description) && arena.holds(values);
    }

    PictureMetadata metadata() const {
        PictureMetadata metadata;
        for (std::size_t i = 0; i < headers.size(); ++i) metadata.*kMetadataHeaders[i].member = headers[i];
        return metadata;
    }

    bool isExr = false;
    int width = 0, height = 0;
    std::pmr::vector<std::pmr::string> channels; // their names
    Region window;                               // of the pixels in the file
    std::pmr::vector<std::pmr::string> headers;  // in the order of kMetadataHeaders
    std::pmr::string description;                // the format's own
    std::pmr::vector<float> values;              // of the pixels of EXR files, if they are read
};

// Reads a picture in a process of its own; with its pixels if they can be a part's. InputError as readImage.
std::shared_ptr<ReadPicture> readPicture(const std::string &file, bool withPixels) {
    if (const auto reason = whyUnreadable(file)) throw InputError({.file = file}, *reason);
    setUpImageLibrary();
    return readApart<ReadPicture>(file, "the picture", [&](ReadPicture &read) {
        const std::unique_ptr<ImageFile> input = openImage(file);
        const ImageHeader &header = input->header();
        for (const MetadataHeader &metadata : kMetadataHeaders) read.headers.emplace_back(input->text(metadata.name));
        read.description = input->text("ImageDescription");
        read.isExr = header.isExr;
        read.width = header.fullWidth;
        read.height = header.fullHeight;
        read.channels.reserve(header.channels.size());
        for (const std::string &channel : header.channels) read.channels.emplace_back(channel);
        read.window = {.left = header.left,
                       .top = header.top,
                       .right = header.left + header.width,
                       .bottom = header.top + header.height};
        if (!withPixels || !read.isExr || header.isDeep) return;
        read.values.resize(static_cast<std::size_t>(header.width) * static_cast<std::size_t>(header.height) *
                           header.channels.size());
        if (!input->read(read.values.data())) throw InputError({.file = file}, "cannot be read: " + input->error());
    });
}

bool parseSamples(const std::string &text, SamplesOfPart &samples) {
    int last = 0, length = 0;
    const bool isRange =
        std::sscanf(text.c_str(), "%d-%d of %d%n", &samples.first, &last, &samples.count, &length) == 3 &&
        length == static_cast<int>(text.size());
    samples.end = last + 1;
    return isRange && samples.first >= 0 && samples.end > samples.first && samples.end <= samples.count;
}

// The samples that a pixel has so far, of all parts together.
class Coverage {
  public:
    explicit Coverage(int samples) : count_(samples) {}

    // InputError when another part has samples of the same pixels.
    void add(const PartFile &part) {
        for (const PartFile *other : added_) {
            const bool sharesPixels = !intersection(part.picture.window(), other->picture.window()).isEmpty();
            const bool sharesSamples =
                part.samples.first < other->samples.end && other->samples.first < part.samples.end;
            if (sharesPixels && sharesSamples)
                throw InputError({.file = part.file},
                                 fmt::format("has pixels in common with {}", inQuotes(other->file)));
        }
        added_.push_back(&part);
    }

    // InputError when a part of the picture is not there, or a pixel of the region lacks samples.
    void check(const Region &region) const {
        if (const std::string missing = missingNumbers(); !missing.empty())
            throw InputError(fmt::format("parts are missing: {}", missing));
        for (int y = region.top; y < region.bottom; ++y)
            for (int x = region.left; x < region.right; ++x)
                if (const int samples = samplesOf(x, y); samples < count_)
                    throw InputError(
                        fmt::format("parts are missing: pixel {}, {} has {} of {} samples", x, y, samples, count_));
    }

  private:
    int samplesOf(int x, int y) const {
        int samples = 0;
        for (const PartFile *part : added_)
            if (part->picture.window().contains(x, y)) samples += part->samples.end - part->samples.first;
        return samples;
    }

    // "3, 5 of 8 by tiles"; empty where none is missing, or the headers do not say how many there are.
    std::string missingNumbers() const {
        int number = 0, count = 0, length = 0;
        std::string by;
        std::set<int> present;
        for (const PartFile *part : added_) {
            const std::string &text = part->metadata.part;
            if (std::sscanf(text.c_str(), "%d/%d%n", &number, &count, &length) != 2) return {};
            by = text.substr(static_cast<std::size_t>(length));
            present.insert(number);
        }
        std::string missing;
        for (number = 1; number <= count; ++number)
            if (!present.contains(number)) missing += fmt::format("{}{}", missing.empty() ? "" : ", ", number);
        return missing.empty() ? "" : fmt::format("{} of {}{}", missing, count, by);
    }

    int count_; // samples of a pixel of the whole picture
    std::vector<const PartFile *> added_;
};

// The mean of the parts' values of a pixel, weighted by their samples; the value itself where there is only one.
void mergePixel(const std::vector<PartFile> &parts, int x, int y, float *merged) {
    double sums[Picture::kChannels] = {};
    for (const PartFile &part : parts) {
        if (!part.picture.window().contains(x, y)) continue;
        const float *pixel = part.picture.pixel(x, y);
        const int samples = part.samples.end - part.samples.first;
        if (samples == part.samples.count) {
            std::copy_n(pixel, Picture::kChannels, merged);
            return;
        }
        for (int i = 0; i < Picture::kChannels; ++i) sums[i] += static_cast<double>(pixel[i]) * samples;
    }
    for (int i = 0; i < Picture::kChannels; ++i) merged[i] = static_cast<float>(sums[i] / parts.front().samples.count);
}

// The values of a pixel's layers, by the rules of their channels. `parts` are in the order of their samples.
void mergeLayers(const std::vector<PartFile> &parts, int x, int y, const std::vector<LayerRule> &rules, float *merged) {
    std::vector<double> sums(rules.size());
    for (const PartFile &part : parts) {
        if (!part.picture.window().contains(x, y)) continue;
        const float *values = part.picture.layers(x, y);
        const int samples = part.samples.end - part.samples.first;
        if (samples == part.samples.count) {
            std::copy_n(values, rules.size(), merged);
            return;
        }
        for (std::size_t i = 0; i < rules.size(); ++i) {
            const auto value = static_cast<double>(values[i]);
            switch (rules[i]) {
            case LayerRule::mean: sums[i] += value * samples / part.samples.count; break;
            case LayerRule::first: sums[i] += part.samples.first == 0 ? value : 0; break;
            case LayerRule::count: sums[i] += value; break;
            }
        }
    }
    std::ranges::transform(sums, merged, [](double sum) { return static_cast<float>(sum); });
}

std::vector<LayerRule> rulesOf(const Picture &picture) {
    std::vector<LayerRule> rules;
    for (const std::string &channel : picture.layerChannels()) rules.push_back(layerRule(channel));
    return rules;
}

std::string channelText(const PartFile &part) {
    const std::vector<std::string> &channels = part.picture.layerChannels();
    return channels.empty() ? "empty" : fmt::format("{}", fmt::join(channels, ", "));
}

void requireSame(const PartFile &part, const PartFile &first) {
    const auto differs = [&](const char *what, const std::string &own, const std::string &other) {
        throw InputError({.file = part.file}, fmt::format("is no part of the same picture as {}: its {} is {}, not {}",
                                                          inQuotes(first.file), what, own, other));
    };
    const auto size = [](const PartFile &each) {
        return fmt::format("{}x{}", each.picture.width(), each.picture.height());
    };
    if (size(part) != size(first)) differs("size", size(part), size(first));
    if (part.samples.count != first.samples.count)
        differs("number of samples", std::to_string(part.samples.count), std::to_string(first.samples.count));
    if (part.picture.layerChannels() != first.picture.layerChannels())
        differs("list of layers", channelText(part), channelText(first));
    if (part.metadata.digest != first.metadata.digest)
        differs("digest of the scene (velm:scene)", part.metadata.digest, first.metadata.digest);
}

// Which channels of a file are which of a picture.
class PartChannels {
  public:
    explicit PartChannels(const ReadPicture &read) {
        constexpr std::string_view kColours = "RGBA";
        for (std::size_t index = 0; index < read.channels.size(); ++index) {
            const std::string_view name = read.channels[index];
            const std::size_t colour = name.size() == 1 ? kColours.find(name.front()) : std::string_view::npos;
            if (colour != std::string_view::npos) {
                colours_[colour] = static_cast<int>(index);
                continue;
            }
            layers_.emplace_back(name);
            layerIndices_.push_back(index);
        }
    }

    bool hasColours() const { return std::ranges::count(colours_, -1) == 0; }
    const std::vector<std::string> &layers() const { return layers_; }

    // Copies the values of a pixel in the file to those of a picture.
    void copy(const float *values, float *pixel, float *layers) const {
        for (std::size_t i = 0; i < colours_.size(); ++i) pixel[i] = values[colours_[i]];
        for (std::size_t i = 0; i < layerIndices_.size(); ++i) layers[i] = values[layerIndices_[i]];
    }

  private:
    std::array<int, Picture::kChannels> colours_{-1, -1, -1, -1}; // indices in the file; -1: none
    std::vector<std::string> layers_;
    std::vector<std::size_t> layerIndices_;
};

} // namespace

std::string samplesText(const SamplesOfPart &samples) {
    return fmt::format("{}-{} of {}", samples.first, samples.end - 1, samples.count);
}

std::string digestOfFile(const std::string &file) {
    try {
        const std::shared_ptr<ReadPicture> read = readPicture(file, false);
        std::string digest = read->metadata().digest;
        const std::string_view description = read->description;
        if (digest.empty() && description.starts_with(kDigestPrefix))
            return std::string(description.substr(kDigestPrefix.size()));
        return digest;
    } catch (const InputError &) { // a file that cannot be read has no digest
        return {};
    }
}

PartFile readPart(const std::string &file) {
    const auto fail = [&file](const std::string &why) { throw InputError({.file = file}, why); };
    const std::shared_ptr<ReadPicture> read = readPicture(file, true);
    if (!read->isExr) fail("is no EXR file");
    PartFile part{.file = file, .picture = {}, .metadata = read->metadata(), .samples = {}};
    if (part.metadata.digest.empty() || !parseSamples(part.metadata.samples, part.samples))
        fail("has no headers velm:scene and velm:samples, as pictures rendered by velm have");
    const PartChannels channels(*read);
    if (!channels.hasColours()) fail("has no channels R, G, B and A");
    const Region &window = read->window, whole = {.left = 0, .top = 0, .right = read->width, .bottom = read->height};
    if (window.isEmpty() || intersection(window, whole) != window) fail("its data window does not lie in the picture");
    const auto width = static_cast<std::size_t>(window.width()), height = static_cast<std::size_t>(window.height());
    if (read->values.size() != width * height * read->channels.size()) refuseResult(file, "the picture");
    part.picture = Picture(read->width, read->height, window, channels.layers());
    const float *values = read->values.data();
    for (int y = window.top; y < window.bottom; ++y)
        for (int x = window.left; x < window.right; ++x, values += read->channels.size())
            channels.copy(values, part.picture.pixel(x, y), part.picture.layers(x, y));
    return part;
}

PartFile mergeParts(std::vector<PartFile> parts, int expected) {
    const PartFile &first = parts.front();
    if (expected > 0 && static_cast<int>(parts.size()) != expected)
        throw InputError(fmt::format("there are {} parts, not {}", parts.size(), expected));
    Region region = first.picture.window();
    Coverage coverage(first.samples.count);
    for (const PartFile &part : parts) {
        requireSame(part, first);
        coverage.add(part);
        const Region &window = part.picture.window();
        region = {.left = std::min(region.left, window.left),
                  .top = std::min(region.top, window.top),
                  .right = std::max(region.right, window.right),
                  .bottom = std::max(region.bottom, window.bottom)};
    }
    coverage.check(region);
    const SamplesOfPart whole = {.first = 0, .end = first.samples.count, .count = first.samples.count};
    PartFile merged{.file = {},
                    .picture =
                        Picture(first.picture.width(), first.picture.height(), region, first.picture.layerChannels()),
                    .metadata = first.metadata,
                    .samples = whole};
    merged.metadata.part.clear();
    merged.metadata.samples = samplesText(whole);
    // In the order of the samples, so that sums do not depend on the order of the files.
    std::ranges::sort(parts, {}, [](const PartFile &part) { return part.samples.first; });
    const std::vector<LayerRule> rules = rulesOf(merged.picture);
    for (int y = region.top; y < region.bottom; ++y) {
        for (int x = region.left; x < region.right; ++x) {
            mergePixel(parts, x, y, merged.picture.pixel(x, y));
            if (!rules.empty()) mergeLayers(parts, x, y, rules, merged.picture.layers(x, y));
        }
    }
    return merged;
}

} // namespace velm::host

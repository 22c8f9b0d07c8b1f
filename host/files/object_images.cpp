#include "host/files/object_images.h"

#include "host/base/four_cc.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <unordered_map>
#include <utility>

namespace velm::host {

namespace {

std::optional<ImageFilter::Kind> filterKind(std::uint32_t id) {
    using Kind = ImageFilter::Kind;
    switch (id) {
    case fourCC("BRIT"): return Kind::brightness;
    case fourCC("CONT"): return Kind::contrast;
    case fourCC("SATR"): return Kind::saturation;
    case fourCC("HUE "): return Kind::hue;
    case fourCC("GAMM"): return Kind::gamma;
    case fourCC("NEGA"): return Kind::negative;
    default: return std::nullopt;
    }
}

// Adds the filter in a sub-chunk, if it is one, to an image. The index of an envelope follows the amount.
void addFilter(const IffFile &file, const Chunk &sub, ObjectImage &image) {
    if (sub.id == fourCC("IFLT") || sub.id == fourCC("PFLT")) image.hasPlugIn = true;
    const auto kind = filterKind(sub.id);
    if (!kind) return;
    ChunkCursor cursor(file, sub);
    if (*kind == ImageFilter::Kind::negative) {
        if (cursor.u2() != 0) image.filters.push_back({.kind = *kind});
        return;
    }
    const float amount = cursor.real(), neutral = *kind == ImageFilter::Kind::gamma ? 1 : 0;
    if (std::isfinite(amount) && amount != neutral) image.filters.push_back({.kind = *kind, .amount = amount});
    if (cursor.hasIndex() && cursor.index() != 0) image.hasEnvelope = true;
}

// A still image. If it has a colour cycle, a range of colours precedes the name; the cycle itself is not read.
ObjectImage readStill(ChunkCursor cursor, bool hasColourCycle) {
    if (hasColourCycle) cursor.u4(); // the range of colours
    return {.file = cursor.text("the name of an image")};
}

// A sequence of files; nothing if no pattern can describe their names.
std::optional<ObjectImage> readSequence(ChunkCursor cursor) {
    constexpr std::uint32_t kLoop = 1;
    const auto signedNumber = [&cursor] { return static_cast<std::int16_t>(cursor.u2()); };
    const std::uint32_t digitsAndFlags = cursor.u2();
    ImageSequence sequence{.offset = signedNumber(), .loop = (digitsAndFlags & kLoop) != 0};
    cursor.u2(); // reserved
    const int start = signedNumber(), end = signedNumber();
    sequence.first = std::min(start, end);
    sequence.last = std::max(start, end);
    const std::string prefix = cursor.text("the prefix of a sequence"),
                      suffix = cursor.text("the suffix of a sequence");
    if (prefix.ends_with('#') || suffix.find_first_of("#/\\") != std::string::npos) return std::nullopt;
    const std::size_t digits = std::max<std::size_t>(digitsAndFlags >> 8, 1);
    return ObjectImage{.file = prefix + std::string(digits, '#') + suffix, .sequence = sequence};
}

std::optional<ObjectImage> readSource(const IffFile &file, const Chunk &sub) {
    switch (sub.id) {
    case fourCC("STIL"): return readStill(ChunkCursor(file, sub), false);
    case fourCC("STCC"): return readStill(ChunkCursor(file, sub), true);
    case fourCC("ISEQ"): return readSequence(ChunkCursor(file, sub));
    default: return std::nullopt;
    }
}

// A clip as it is stored.
struct Clip {
    ObjectImage image;
    std::optional<std::uint32_t> original{}; // for an instance, the number of the clip whose file it shows
    std::size_t at = 0;                      // of its chunk in the file
};

// The clip in a chunk; nothing if it is not a still, a sequence or an instance.
std::optional<Clip> readClip(const IffFile &file, FileRange contents) {
    if (contents.size < 4) file.fail(contents.at, "the clip ends within its number");
    const FileRange rest{.at = contents.at + 4, .size = contents.size - 4};
    std::optional<Clip> clip;
    for (const Chunk &sub : file.subChunks(rest, "the clip")) {
        if (clip)
            addFilter(file, sub, clip->image);
        else if (sub.id == fourCC("XREF"))
            clip = Clip{.image = {}, .original = ChunkCursor(file, sub).u4()};
        else if (auto image = readSource(file, sub))
            clip = Clip{.image = std::move(*image)};
    }
    if (!clip) return std::nullopt;
    clip->image.number = file.number(contents.at, 4);
    clip->at = contents.at;
    return clip;
}

// The clip that has the file of an instance, or the clip itself if it is not an instance. Null if there is no such
// clip. `clips` are those of the object by their numbers.
const Clip *originalOf(const Clip &instance, const std::unordered_map<std::uint32_t, const Clip *> &clips) {
    constexpr int kMostInstances = 16; // in a row; also ends cycles of instances
    const Clip *clip = &instance;
    for (int i = 0; clip->original && i < kMostInstances; ++i) {
        const auto found = clips.find(*clip->original);
        if (found == clips.end()) return nullptr;
        clip = found->second;
    }
    return clip->original ? nullptr : clip;
}

// A text that differs for any two images that are not equal.
std::string identityOf(const ObjectImage &image) {
    std::string text = image.file;
    if (image.sequence)
        text += fmt::format("\n{} {} {} {}", image.sequence->first, image.sequence->last, image.sequence->offset,
                            image.sequence->loop);
    for (const ImageFilter &filter : image.filters)
        text += fmt::format("\n{} {}", static_cast<int>(filter.kind), filter.amount);
    return text;
}

void numberVariants(std::vector<ObjectImage> &images) {
    std::unordered_map<std::string, int> counts, variants; // by file name, and by identity
    for (ObjectImage &image : images) {
        const auto [variant, isNew] = variants.try_emplace(identityOf(image));
        if (isNew) variant->second = ++counts[lastPart(image.file)];
        image.variant = variant->second;
    }
}

} // namespace

std::vector<ObjectImage> readImages(const IffFile &file, const std::vector<Chunk> &chunks) {
    constexpr std::size_t kMostNameBytes = std::size_t{1} << 24; // many small instances may repeat one long name
    std::vector<Clip> clips;
    for (const Chunk &chunk : chunks)
        if (chunk.id == fourCC("CLIP"))
            if (auto clip = readClip(file, chunk.contents)) clips.push_back(std::move(*clip));
    std::unordered_map<std::uint32_t, const Clip *> byNumber;
    for (const Clip &clip : clips) byNumber.try_emplace(clip.image.number, &clip);
    std::vector<ObjectImage> images;
    std::size_t nameBytes = 0;
    for (const Clip &clip : clips) {
        const Clip *original = originalOf(clip, byNumber);
        if (!original) continue;
        nameBytes += original->image.file.size();
        if (nameBytes > kMostNameBytes) file.fail(clip.at, "the names of all clips take more than 16 MiB");
        ObjectImage &image = images.emplace_back(clip.image);
        image.file = original->image.file;
        image.sequence = original->image.sequence;
    }
    numberVariants(images);
    return images;
}

std::string lastPart(std::string_view file) { return std::string(file.substr(file.find_last_of("/\\:") + 1)); }

} // namespace velm::host

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

// Adds what a sub-chunk changes of an image. The amount of a filter is followed by the index of an envelope.
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

// The image of a still, or one whose colours change in a way that is not shown.
ObjectImage readStill(ChunkCursor cursor, bool hasColourCycle) {
    if (hasColourCycle) cursor.u4(); // the colours that change
    return {.file = cursor.text("the name of an image")};
}

// Nothing for names that no pattern stands for.
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

// A clip as the file has it. An instance shows the file of another clip.
struct Clip {
    ObjectImage image;
    std::optional<std::uint32_t> original{};
};

// Nothing for clips of other kinds.
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
    if (clip) clip->image.number = file.number(contents.at, 4);
    return clip;
}

// The clip that has the file of an instance; null where there is none. `clips` are those of the object by their
// numbers.
const Clip *originalOf(const Clip &instance, const std::unordered_map<std::uint32_t, const Clip *> &clips) {
    constexpr int kMostInstances = 16; // of instances; ends circles, too
    const Clip *clip = &instance;
    for (int i = 0; clip->original && i < kMostInstances; ++i) {
        const auto found = clips.find(*clip->original);
        if (found == clips.end()) return nullptr;
        clip = found->second;
    }
    return clip->original ? nullptr : clip;
}

// All that makes images of one name different.
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
    std::unordered_map<std::string, int> counts, variants; // by the name, and by the identity
    for (ObjectImage &image : images) {
        const auto [variant, isNew] = variants.try_emplace(identityOf(image));
        if (isNew) variant->second = ++counts[lastPart(image.file)];
        image.variant = variant->second;
    }
}

} // namespace

std::vector<ObjectImage> readImages(const IffFile &file, const std::vector<Chunk> &chunks) {
    std::vector<Clip> clips;
    for (const Chunk &chunk : chunks)
        if (chunk.id == fourCC("CLIP"))
            if (auto clip = readClip(file, chunk.contents)) clips.push_back(std::move(*clip));
    std::unordered_map<std::uint32_t, const Clip *> byNumber;
    for (const Clip &clip : clips) byNumber.try_emplace(clip.image.number, &clip);
    std::vector<ObjectImage> images;
    for (const Clip &clip : clips) {
        const Clip *original = originalOf(clip, byNumber);
        if (!original) continue;
        ObjectImage &image = images.emplace_back(clip.image);
        image.file = original->image.file;
        image.sequence = original->image.sequence;
    }
    numberVariants(images);
    return images;
}

std::string lastPart(std::string_view file) { return std::string(file.substr(file.find_last_of("/\\:") + 1)); }

} // namespace velm::host

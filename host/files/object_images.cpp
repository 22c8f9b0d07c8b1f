#include "host/files/object_images.h"

#include "host/base/four_cc.h"

#include <algorithm>
#include <bit>

namespace velm::host {

namespace {

// Whether a sub-chunk of a clip makes the image its negative.
bool isNegative(const IffFile &file, const Chunk &sub) {
    return sub.id == fourCC("NEGA") && sub.contents.size >= 2 && file.number(sub.contents.at, 2) != 0;
}

// Whether a sub-chunk of a clip changes the image in another way. Numbers are followed by the number of an envelope.
bool isFilter(const IffFile &file, const Chunk &sub) {
    const auto numberIs = [&](float neutral) {
        const bool isShort = sub.contents.size < 4;
        const bool isNeutral = isShort || std::bit_cast<float>(file.number(sub.contents.at, 4)) == neutral;
        return isNeutral && (sub.contents.size < 6 || file.number(sub.contents.at + 4, 2) == 0);
    };
    switch (sub.id) {
    case fourCC("BRIT"):
    case fourCC("CONT"):
    case fourCC("SATR"):
    case fourCC("HUE "): return !numberIs(0);
    case fourCC("GAMM"): return !numberIs(1);
    case fourCC("IFLT"):
    case fourCC("PFLT"): return true; // plug-ins
    default: return false;
    }
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

} // namespace

std::optional<ObjectImage> readClip(const IffFile &file, const Chunk &clip) {
    if (clip.contents.size < 4) file.fail(clip.contents.at, "the clip ends within its number");
    const FileRange rest{.at = clip.contents.at + 4, .size = clip.contents.size - 4};
    std::optional<ObjectImage> image;
    for (const Chunk &sub : file.subChunks(rest, "the clip")) {
        if (!image) {
            image = readSource(file, sub);
            continue;
        }
        if (isFilter(file, sub)) image->isFiltered = true;
        if (isNegative(file, sub)) image->isNegative = !image->isNegative;
    }
    if (image) image->number = file.number(clip.contents.at, 4);
    return image;
}

} // namespace velm::host

// A texture begins with a sub-chunk that names its channel and its kind. What follows, up to the next such sub-chunk,
// belongs to it.
#include "host/object/old_textures.h"

#include "host/base/four_cc.h"
#include "host/object/layer_builder.h"

#include <algorithm>
#include <iterator>

namespace velm::host {
namespace {

// The sub-chunk with which a texture begins, and its channel.
struct OldChannel {
    std::uint32_t id, channel;
};
constexpr OldChannel kOldChannels[] = {
    {.id = fourCC("CTEX"), .channel = fourCC("COLR")}, {.id = fourCC("DTEX"), .channel = fourCC("DIFF")},
    {.id = fourCC("STEX"), .channel = fourCC("SPEC")}, {.id = fourCC("RTEX"), .channel = fourCC("REFL")},
    {.id = fourCC("TTEX"), .channel = fourCC("TRAN")}, {.id = fourCC("LTEX"), .channel = fourCC("LUMI")},
    {.id = fourCC("BTEX"), .channel = fourCC("BUMP")},
};

// By the number of the projection.
constexpr const char *kImageKinds[] = {"Planar Image Map", "Cylindrical Image Map", "Spherical Image Map",
                                       "Cubic Image Map", "Front Projection Image Map"};

// Bits of TFLG; the first three are the axes.
constexpr std::uint32_t kWorld = 1U << 3, kNegative = 1U << 4, kBlendsPixels = 1U << 5, kAntialiased = 1U << 6;

SurfaceTexture begun(std::uint32_t channel, const std::string &kind) {
    SurfaceTexture texture;
    texture.channel = channel;
    texture.blend = TextureBlend::normal;
    const auto *found = std::ranges::find(kImageKinds, kind);
    if (found == std::end(kImageKinds)) {
        texture.kind = SurfaceTexture::Kind::procedural;
        texture.function = kind;
    } else {
        texture.projection = static_cast<int>(found - std::begin(kImageKinds));
    }
    return texture;
}

void setFlags(std::uint32_t flags, SurfaceTexture &texture) {
    for (int axis = 2; axis >= 0; --axis)
        if ((flags & 1U << axis) != 0) texture.axis = axis;
    texture.isInWorld = (flags & kWorld) != 0;
    texture.isNegative = (flags & kNegative) != 0;
    texture.isBlendingPixels = (flags & kBlendsPixels) != 0;
    if ((flags & kAntialiased) == 0) texture.antialiasing = 0;
}

std::string nameOrNone(ChunkCursor &cursor, const char *what) {
    std::string name = cursor.text(what);
    return name == "(none)" ? std::string() : name;
}

// A sequence of images is an image without a file, as in objects of the form LWO2.
void readImageName(ChunkCursor &cursor, SurfaceTexture &texture) {
    constexpr std::uint32_t kAnyNumber = 1;
    texture.imageFile = nameOrNone(cursor, "the name of an image");
    if (!texture.imageFile.ends_with(" (sequence)")) return;
    texture.clip = kAnyNumber;
    texture.imageFile.clear();
}

bool isMoving(const std::array<float, 3> &velocity) { return velocity != std::array<float, 3>{}; }

void readOldPart(const IffFile &file, const Chunk &part, SurfaceTexture &texture) {
    constexpr std::uint32_t kWraps = 4;
    constexpr float kFull = 256; // of values
    ChunkCursor cursor(file, part);
    switch (part.id) {
    case fourCC("TFLG"): return setFlags(cursor.u2(), texture);
    case fourCC("TSIZ"): texture.size = readVector(cursor); return;
    case fourCC("TCTR"): texture.centre = readVector(cursor); return;
    case fourCC("TFAL"): texture.falloff = readVector(cursor); return;
    case fourCC("TVEL"): texture.isMoving = isMoving(readVector(cursor)); return;
    case fourCC("TREF"): texture.reference = nameOrNone(cursor, "the reference object of a texture"); return;
    case fourCC("TIMG"): return readImageName(cursor, texture);
    case fourCC("TALP"): texture.alphaFile = nameOrNone(cursor, "the name of an image"); return;
    case fourCC("TWRP"):
        for (int &wrap : texture.wrap)
            if (const std::uint32_t number = cursor.u2(); number < kWraps) wrap = static_cast<int>(number);
        return;
    case fourCC("TFP0"):
    case fourCC("TFP1"):
        if (const float repeats = cursor.real(); repeats > 0) texture.repeats[part.id == fourCC("TFP1")] = repeats;
        return;
    case fourCC("TCLR"): texture.value = readOldColour(cursor); return;
    case fourCC("TVAL"): texture.value.fill(static_cast<float>(static_cast<std::int16_t>(cursor.u2())) / kFull); return;
    case fourCC("TFRQ"): texture.octaves = static_cast<int>(cursor.u2()); return;
    case fourCC("TAMP"): texture.amplitude = cursor.real(); return;
    case fourCC("TOPC"): texture.opacity = cursor.real(); return;
    case fourCC("TAAS"):
        if (texture.antialiasing > 0) texture.antialiasing = cursor.real();
        return;
    default: return;
    }
}

} // namespace

std::array<float, 3> readOldColour(ChunkCursor &cursor) {
    const std::uint32_t redGreen = cursor.u2(), blue = cursor.u2() >> 8;
    const auto fraction = [](std::uint32_t byte) { return static_cast<float>(byte) / 255; };
    return {fraction(redGreen >> 8), fraction(redGreen & 0xff), fraction(blue)};
}

std::vector<SurfaceTexture> readOldTextures(const IffFile &file, const std::vector<Chunk> &subChunks) {
    std::vector<SurfaceTexture> textures;
    for (const Chunk &part : subChunks) {
        const auto *channel = std::ranges::find(kOldChannels, part.id, &OldChannel::id);
        if (channel != std::end(kOldChannels))
            textures.push_back(begun(channel->channel, ChunkCursor(file, part).text("the kind of a texture")));
        else if (!textures.empty())
            readOldPart(file, part, textures.back());
    }
    // The parameters of a procedural have the same names as the repeats of an image.
    for (SurfaceTexture &texture : textures)
        if (texture.kind == SurfaceTexture::Kind::procedural) texture.repeats = {1, 1};
    return textures;
}

} // namespace velm::host

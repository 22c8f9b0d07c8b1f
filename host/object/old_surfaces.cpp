#include "host/object/old_surfaces.h"

#include "host/base/four_cc.h"
#include "host/object/iff.h"
#include "host/object/old_textures.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velm::host {
namespace {

using Value = std::optional<float> SurfaceChunkValues::*;

// A value as a whole number, where 256 is full, and as a real number, which counts where both are there.
struct Level {
    std::uint32_t whole, real;
    Value value;
};
constexpr Level kLevels[] = {
    {.whole = fourCC("LUMI"), .real = fourCC("VLUM"), .value = &SurfaceChunkValues::luminosity},
    {.whole = fourCC("DIFF"), .real = fourCC("VDIF"), .value = &SurfaceChunkValues::diffuse},
    {.whole = fourCC("SPEC"), .real = fourCC("VSPC"), .value = &SurfaceChunkValues::specular},
    {.whole = fourCC("REFL"), .real = fourCC("VRFL"), .value = &SurfaceChunkValues::reflection},
    {.whole = fourCC("TRAN"), .real = fourCC("VTRN"), .value = &SurfaceChunkValues::transparency},
};
constexpr std::uint32_t kSmooth = 1U << 2, kDoubleSided = 1U << 8; // of FLAG
constexpr double kUsualAngle = 89.5 * std::numbers::pi / 180;      // of smooth surfaces without an angle

// The glossiness g of an exponent n of highlights: n = 2^(10 g + 2).
float glossinessOf(std::uint32_t exponent) {
    return static_cast<float>(std::max(0.0, (std::log2(std::max(exponent, 1U)) - 2) / 10));
}

class OldSurfaceReader {
  public:
    OldSurfaceReader(const IffFile &file, const Chunk &chunk) : file_(file) {
        std::size_t at = chunk.contents.at;
        surface_.name = file.text(at, chunk.contents.end(), "the name of a surface");
        chunks_ = file.subChunks({.at = at, .size = chunk.contents.end() - at}, "the surface");
    }

    OldSurface read() {
        SurfaceChunkValues &values = surface_.values;
        if (const Chunk *colour = find("COLR")) {
            ChunkCursor cursor(file_, *colour);
            values.colour = readOldColour(cursor);
        }
        for (const Level &level : kLevels) {
            if (const Chunk *chunk = find(level.whole))
                values.*level.value =
                    static_cast<float>(static_cast<std::int16_t>(ChunkCursor(file_, *chunk).u2())) / 256;
            if (const Chunk *chunk = find(level.real)) values.*level.value = ChunkCursor(file_, *chunk).real();
        }
        if (const Chunk *chunk = find("GLOS")) values.glossiness = glossinessOf(ChunkCursor(file_, *chunk).u2());
        if (const Chunk *chunk = find("RIND")) values.refractionIndex = ChunkCursor(file_, *chunk).real();
        readFlags();
        surface_.textures = readOldTextures(file_, chunks_);
        return std::move(surface_);
    }

  private:
    void readFlags() {
        SurfaceChunkValues &values = surface_.values;
        const Chunk *chunk = find("FLAG"), *angle = find("SMAN");
        const std::uint32_t flags = chunk ? ChunkCursor(file_, *chunk).u2() : 0;
        values.sides = (flags & kDoubleSided) != 0 ? 3 : 1;
        values.smoothingAngle = 0.0F;
        if ((flags & kSmooth) != 0)
            values.smoothingAngle = angle ? ChunkCursor(file_, *angle).real() : static_cast<float>(kUsualAngle);
    }

    const Chunk *find(std::uint32_t id) const {
        const auto found =
            std::find_if(chunks_.begin(), chunks_.end(), [id](const Chunk &each) { return each.id == id; });
        return found == chunks_.end() ? nullptr : &*found;
    }
    const Chunk *find(const char (&id)[5]) const { return find(fourCC(id)); }

    const IffFile &file_;
    OldSurface surface_;
    std::vector<Chunk> chunks_;
};

} // namespace

bool isOldObject(std::string_view bytes) {
    return bytes.starts_with("FORM") && bytes.size() >= 12 &&
           (bytes.substr(8, 4) == "LWOB" || bytes.substr(8, 4) == "LWLO");
}

std::vector<OldSurface> readOldSurfaces(std::string_view bytes, const std::string &name) {
    const IffFile file(bytes, name);
    std::vector<OldSurface> surfaces;
    for (const Chunk &chunk : file.chunks())
        if (chunk.id == fourCC("SURF")) surfaces.push_back(OldSurfaceReader(file, chunk).read());
    return surfaces;
}

} // namespace velm::host

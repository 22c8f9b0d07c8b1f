// The blocks of LWO2: a sub-chunk "BLOK" holds a header, whose name says what it is, and its attributes.
#include "host/object/surface_textures.h"

#include "host/base/four_cc.h"
#include "host/object/layer_builder.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velm::host {
namespace {

constexpr int kProjections = 6, kAxes = 3, kWraps = 4, kFalloffs = 5, kShapes = 3;

// A number of the format; `usual` for one that the format does not define.
int numbered(std::uint32_t number, int count, int usual) {
    return number < static_cast<std::uint32_t>(count) ? static_cast<int>(number) : usual;
}

class BlockReader {
  public:
    BlockReader(const IffFile &file, const EnvelopeList &envelopes) : file_(file), envelopes_(envelopes) {}

    // False for a block of an unknown kind.
    bool read(const Chunk &block) {
        const std::vector<Chunk> parts = file_.subChunks(block.contents, "the texture");
        if (parts.empty() || !setKind(parts.front().id)) return false;
        readHeader(parts.front());
        for (auto part = parts.begin() + 1; part != parts.end(); ++part) readPart(*part);
        return true;
    }
    SurfaceTexture take() { return std::move(texture_); }

  private:
    bool setKind(std::uint32_t id) {
        using Kind = SurfaceTexture::Kind;
        switch (id) {
        case fourCC("IMAP"): texture_.kind = Kind::image; return true;
        case fourCC("PROC"): texture_.kind = Kind::procedural; return true;
        case fourCC("GRAD"): texture_.kind = Kind::gradient; return true;
        case fourCC("SHDR"): texture_.kind = Kind::shader; return true;
        default: return false;
        }
    }

    void readHeader(const Chunk &header) {
        const std::size_t end = header.contents.end();
        std::size_t at = header.contents.at;
        texture_.ordinal = file_.text(at, end, "the ordinal of a texture");
        for (const Chunk &part : file_.subChunks({.at = at, .size = end - at}, "the header of the texture"))
            readHeaderPart(part);
    }

    void readHeaderPart(const Chunk &part) {
        ChunkCursor cursor(file_, part);
        switch (part.id) {
        case fourCC("CHAN"): texture_.channel = cursor.u4(); return;
        case fourCC("ENAB"): texture_.isEnabled = cursor.u2() != 0; return;
        case fourCC("NEGA"): texture_.isNegative = cursor.u2() != 0; return;
        case fourCC("OPAC"): {
            constexpr int kAdditive = static_cast<int>(TextureBlend::additive);
            texture_.blend = static_cast<TextureBlend>(numbered(cursor.u2(), kAdditive + 1, kAdditive));
            texture_.opacity = cursor.real();
            return readEnvelopes(cursor, TextureNumber::opacity, 1);
        }
        default: return;
        }
    }

    void readPart(const Chunk &part) {
        switch (part.id) {
        case fourCC("TMAP"): return readPosition(part);
        case fourCC("PNAM"): texture_.input = ChunkCursor(file_, part).text("the input of a gradient"); return;
        case fourCC("INAM"): texture_.item = ChunkCursor(file_, part).text("the item of a gradient"); return;
        case fourCC("FKEY"): return readKeys(ChunkCursor(file_, part));
        case fourCC("IKEY"): return readShapes(ChunkCursor(file_, part));
        case fourCC("VALU"): return readValue(ChunkCursor(file_, part));
        case fourCC("FUNC"): texture_.function = ChunkCursor(file_, part).text("the name of a texture"); return;
        default: readImagePart(part.id, ChunkCursor(file_, part));
        }
    }

    // One number, or three.
    void readValue(ChunkCursor cursor) {
        constexpr std::size_t kColour = 12; // bytes
        const bool isColour = cursor.left() >= kColour;
        texture_.value.fill(cursor.real());
        if (!isColour) return;
        texture_.value[1] = cursor.real();
        texture_.value[2] = cursor.real();
    }

    void readImagePart(std::uint32_t id, ChunkCursor cursor) {
        switch (id) {
        case fourCC("PROJ"): texture_.projection = numbered(cursor.u2(), kProjections, 0); return;
        case fourCC("AXIS"): texture_.axis = numbered(cursor.u2(), kAxes, 0); return;
        case fourCC("IMAG"): texture_.clip = cursor.index(); return;
        case fourCC("WRAP"):
            for (int &wrap : texture_.wrap) wrap = numbered(cursor.u2(), kWraps, 1);
            return;
        case fourCC("WRPW"):
        case fourCC("WRPH"): {
            const bool isUp = id == fourCC("WRPH");
            texture_.repeats[isUp ? 1 : 0] = cursor.real();
            return readEnvelopes(cursor, isUp ? TextureNumber::repeatsV : TextureNumber::repeatsU, 1);
        }
        case fourCC("TAMP"):
            texture_.amplitude = cursor.real();
            return readEnvelopes(cursor, TextureNumber::amplitude, 1);
        case fourCC("VMAP"): texture_.uvMap = cursor.text("the name of a UV map"); return;
        case fourCC("AAST"): {
            const bool isOn = (cursor.u2() & 1) != 0;
            const float strength = cursor.real();
            texture_.antialiasing = isOn ? strength : 0;
            return;
        }
        case fourCC("PIXB"): texture_.isBlendingPixels = (cursor.u2() & 1) != 0; return;
        case fourCC("STCK"): texture_.isFrozen = cursor.u2() != 0; return;
        default: return;
        }
    }

    void readPosition(const Chunk &position) {
        for (const Chunk &part : file_.subChunks(position.contents, "the position of the texture")) {
            ChunkCursor cursor(file_, part);
            switch (part.id) {
            case fourCC("CNTR"): readAnimated(cursor, texture_.centre, TextureNumber::centre); break;
            case fourCC("SIZE"): readAnimated(cursor, texture_.size, TextureNumber::size); break;
            case fourCC("ROTA"): readAnimated(cursor, texture_.rotation, TextureNumber::rotation); break;
            case fourCC("FALL"):
                texture_.falloffType = numbered(cursor.u2(), kFalloffs, 0);
                readAnimated(cursor, texture_.falloff, TextureNumber::falloff);
                break;
            case fourCC("OREF"):
                texture_.reference = cursor.text("the reference object of a texture");
                if (texture_.reference == "(none)") texture_.reference.clear();
                break;
            case fourCC("CSYS"): texture_.isInWorld = cursor.u2() != 0; break;
            default: break;
            }
        }
    }

    void readAnimated(ChunkCursor &cursor, std::array<float, 3> &vector, TextureNumber number) {
        vector = readVector(cursor);
        readEnvelopes(cursor, number, 3);
    }

    // The numbers are followed by the number of the first envelope; 0 means none.
    void readEnvelopes(ChunkCursor &cursor, TextureNumber number, std::size_t components) {
        ComponentEnvelopes found = envelopes_.from(cursor.hasIndex() ? cursor.index() : 0, components);
        if (!found.empty()) texture_.envelopes[number] = std::move(found);
    }

    void readKeys(ChunkCursor cursor) {
        texture_.keys.clear();
        while (!cursor.isAtEnd()) {
            GradientKey &key = texture_.keys.emplace_back();
            key.at = cursor.real();
            for (float &component : key.colour) component = cursor.real();
        }
        setShapes();
    }

    void readShapes(ChunkCursor cursor) {
        shapes_.clear();
        while (!cursor.isAtEnd()) shapes_.push_back(static_cast<GradientKey::Shape>(numbered(cursor.u2(), kShapes, 0)));
        setShapes();
    }

    // The shapes come in a sub-chunk of their own, which may be before or after that of the keys.
    void setShapes() {
        for (std::size_t i = 0; i < std::min(shapes_.size(), texture_.keys.size()); ++i)
            texture_.keys[i].shape = shapes_[i];
    }

    const IffFile &file_;
    const EnvelopeList &envelopes_;
    SurfaceTexture texture_;
    std::vector<GradientKey::Shape> shapes_;
};

} // namespace

std::vector<SurfaceTexture> readTextures(const IffFile &file, const std::vector<Chunk> &subChunks,
                                         const EnvelopeList &envelopes) {
    std::vector<SurfaceTexture> textures;
    for (const Chunk &chunk : subChunks) {
        if (chunk.id != fourCC("BLOK")) continue;
        BlockReader reader(file, envelopes);
        if (reader.read(chunk)) textures.push_back(reader.take());
    }
    // Strings compare their characters as unsigned bytes.
    std::ranges::stable_sort(textures, {}, &SurfaceTexture::ordinal);
    return textures;
}

} // namespace velm::host

#include "host/files/object_file.h"

#include "host/base/error.h"
#include "host/base/four_cc.h"
#include "host/object/iff_writer.h"
#include "host/state/blocks.h"

#include <algorithm>
#include <bit>
#include <fmt/format.h>
#include <limits>
#include <utility>

namespace velm::host {

namespace {

constexpr std::uint32_t kObject = fourCC("LWO2"), kSurface = fourCC("SURF"), kEnvelope = fourCC("ENVL"),
                        kNetworkChunk = fourCC("NODS");
constexpr std::size_t kChunkHeader = 8, kSubChunkHeader = 6;
constexpr std::size_t kLargestSubChunk = 0xffff;

std::string_view asText(std::span<const std::byte> bytes) {
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

} // namespace

ObjectFile::ObjectFile(std::string_view bytes, std::string name) : name_(std::move(name)), bytes_(bytes) {
    readChunks();
    networks_.resize(surfaces_.size());
}

ObjectFile::ObjectFile(std::span<const std::byte> bytes, std::string name)
    : ObjectFile(asText(bytes), std::move(name)) {}

void ObjectFile::readChunks() {
    const IffFile file = iff();
    if (const std::uint32_t type = file.formType(); type != kObject)
        file.fail(8, fmt::format("the object file has the form {}; only LWO2 is read", blockName(type)));
    end_ = file.endOfForm();
    const std::vector<Chunk> chunks = file.chunks();
    for (const Chunk &chunk : chunks) {
        if (chunk.id == kSurface) readSurface(chunk.contents);
        if (chunk.id == kEnvelope) envelopes_.add(readEnvelope(file, chunk));
    }
    images_ = readImages(file, chunks);
}

void ObjectFile::readSurface(FileRange range) {
    const IffFile file = iff();
    std::size_t at = range.at;
    ObjectSurface surface;
    surface.chunk = range;
    surface.name = file.text(at, range.end(), "the name of a surface");
    surface.source = file.text(at, range.end(), "the name of a surface's source");
    surface.subChunks = file.subChunks({.at = at, .size = range.end() - at}, "the surface");
    surfaces_.push_back(std::move(surface));
}

std::optional<std::size_t> ObjectFile::findSurface(std::string_view surface) const {
    for (std::size_t i = 0; i < surfaces_.size(); ++i)
        if (surfaces_[i].name == surface) return i;
    return std::nullopt;
}

const Chunk *ObjectFile::find(const ObjectSurface &surface, std::uint32_t id) const {
    for (const Chunk &sub : surface.subChunks)
        if (sub.id == id) return &sub;
    return nullptr;
}

std::optional<std::string_view> ObjectFile::network(std::size_t surface) const {
    if (networks_[surface]) return *networks_[surface];
    const Chunk *sub = find(surfaces_[surface], kNetworkChunk);
    if (!sub) return std::nullopt;
    return std::string_view(bytes_).substr(sub->contents.at - kSubChunkHeader, kSubChunkHeader + sub->contents.size);
}

std::size_t ObjectFile::networkOffset(std::size_t surface) const {
    const Chunk *sub = find(surfaces_[surface], kNetworkChunk);
    return sub ? sub->contents.at - kSubChunkHeader : 0;
}

template <std::size_t n>
std::optional<std::array<float, n>> ObjectFile::floats(const ObjectSurface &surface, std::uint32_t id,
                                                       SurfaceChunkValues *values) const {
    const Chunk *sub = find(surface, id);
    if (!sub) return std::nullopt;
    if (sub->contents.size < 4 * n)
        iff().fail(sub->contents.at,
                   fmt::format("the sub-chunk {} has {} bytes; it needs {}", blockName(id), sub->contents.size, 4 * n));
    std::array<float, n> result{};
    for (std::size_t i = 0; i < n; ++i) result[i] = std::bit_cast<float>(iff().number(sub->contents.at + 4 * i, 4));
    if (!values) return result;
    ComponentEnvelopes envelopes = envelopesAfter(*sub, n);
    if (!envelopes.empty()) values->envelopes.emplace(blockName(id), std::move(envelopes));
    return result;
}

// The envelopes of a value of a sub-chunk. Its numbers are followed by the number of the first envelope; 0 means none.
ComponentEnvelopes ObjectFile::envelopesAfter(const Chunk &sub, std::size_t components) const {
    const IffFile file = iff();
    const std::size_t numbers = 4 * components;
    ChunkCursor cursor(
        file, {.id = sub.id, .contents = {.at = sub.contents.at + numbers, .size = sub.contents.size - numbers}});
    return envelopes_.from(cursor.hasIndex() ? cursor.index() : 0, components);
}

// The sub-chunk has the intensity, the index of its envelope, and the type and the name of the vertex map. The type is
// ignored: programs write "RGB " for maps with alpha, too.
std::optional<VertexTint> ObjectFile::tint(const ObjectSurface &surface, SurfaceChunkValues &values) const {
    const auto intensity = floats<1>(surface, fourCC("VCOL"), &values);
    if (!intensity) return std::nullopt;
    const IffFile file = iff();
    ChunkCursor cursor(file, *find(surface, fourCC("VCOL")));
    cursor.real();
    if (!cursor.hasIndex()) return std::nullopt;
    cursor.index();
    if (cursor.left() <= 4) return std::nullopt;
    cursor.u4();
    VertexTint tint{.intensity = (*intensity)[0], .map = cursor.text("the name of a map of vertex colours")};
    return tint.map.empty() ? std::nullopt : std::optional(std::move(tint));
}

SurfaceChunkValues ObjectFile::values(std::size_t index) const {
    const ObjectSurface &surface = surfaces_[index];
    SurfaceChunkValues values;
    const auto number = [&](std::uint32_t id) -> std::optional<float> {
        const auto found = floats<1>(surface, id, &values);
        return found ? std::optional((*found)[0]) : std::nullopt;
    };
    values.colour = floats<3>(surface, fourCC("COLR"), &values);
    values.luminosity = number(fourCC("LUMI"));
    values.diffuse = number(fourCC("DIFF"));
    values.specular = number(fourCC("SPEC"));
    values.glossiness = number(fourCC("GLOS"));
    values.reflection = number(fourCC("REFL"));
    values.transparency = number(fourCC("TRAN"));
    values.refractionIndex = number(fourCC("RIND"));
    values.bump = number(fourCC("BUMP"));
    values.tint = tint(surface, values);
    if (const auto angle = floats<1>(surface, fourCC("SMAN"), nullptr)) values.smoothingAngle = (*angle)[0];
    if (const Chunk *sides = find(surface, fourCC("SIDE"))) {
        if (sides->contents.size < 2) iff().fail(sides->contents.at, "the sub-chunk SIDE is too short");
        values.sides = static_cast<int>(iff().number(sides->contents.at, 2));
    }
    return values;
}

std::vector<SurfaceTexture> ObjectFile::textures(std::size_t index) const {
    std::vector<SurfaceTexture> textures = readTextures(iff(), surfaces_[index].subChunks, envelopes_);
    for (SurfaceTexture &texture : textures) {
        if (texture.kind != SurfaceTexture::Kind::image) continue;
        const auto image = std::ranges::find(images_, texture.clip, &ObjectImage::number);
        if (image == images_.end()) continue;
        texture.imageFile = image->file;
        texture.imageVariant = image->variant;
        texture.hasImagePlugIn = image->hasPlugIn;
        texture.hasFilterEnvelope = image->hasEnvelope;
    }
    return textures;
}

void ObjectFile::setNetwork(std::size_t surface, std::string block) { networks_[surface] = std::move(block); }

void ObjectFile::addSurface(std::string_view name, std::string_view subChunks, std::string_view network) {
    std::string contents = paddedString(name) + paddedString("");
    contents += subChunks;
    contents += network;
    added_ += chunkBytes(kSurface, contents);
}

// The contents of a surface's chunk with its network replaced.
std::string ObjectFile::surfaceWith(const ObjectSurface &surface, const std::string &network) const {
    const std::string_view old = std::string_view(bytes_).substr(surface.chunk.at, surface.chunk.size);
    const Chunk *sub = find(surface, kNetworkChunk);
    const std::size_t from = sub ? sub->contents.at - kSubChunkHeader - surface.chunk.at : old.size();
    const std::size_t to =
        sub ? std::min(from + kSubChunkHeader + sub->contents.size + sub->contents.size % 2, old.size()) : old.size();
    std::string contents(old.substr(0, from));
    if (!sub && contents.size() % 2 != 0) contents += '\0'; // missing padding of the last sub-chunk
    contents += network;
    if (network.size() % 2 != 0) contents += '\0';
    contents += old.substr(to);
    return contents;
}

std::string ObjectFile::write() const {
    std::string form;
    std::size_t copied = kChunkHeader;
    for (std::size_t i = 0; i < surfaces_.size(); ++i) {
        if (!networks_[i]) continue;
        if (networks_[i]->size() > kSubChunkHeader + kLargestSubChunk)
            throw InputError(fmt::format("{}: the network of the surface \"{}\" has {} bytes; a file holds at most {}",
                                         name_, surfaces_[i].name, networks_[i]->size(), kLargestSubChunk));
        const FileRange &range = surfaces_[i].chunk;
        form.append(bytes_, copied, range.at - kChunkHeader - copied);
        form += chunkBytes(kSurface, surfaceWith(surfaces_[i], *networks_[i]));
        copied = std::min(range.at + range.size + range.size % 2, end_);
    }
    form.append(bytes_, copied, end_ - copied);
    if (!added_.empty() && form.size() % 2 != 0) form += '\0';
    form += added_;
    if (form.size() > std::numeric_limits<std::uint32_t>::max())
        throw InputError(fmt::format("{}: the object has {} bytes; a file holds at most 4 GB", name_, form.size()));
    return bytes_.substr(0, 4) + bigEndian(form.size(), 4) + form + bytes_.substr(end_);
}

} // namespace velm::host

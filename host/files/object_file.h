// Object files of LightWave: big-endian IFF, form type "LWO2". Writing preserves every byte that was read, except those
// of networks that were replaced.
//
// A chunk is four characters, a size of four bytes, its contents, and a padding byte if the size is odd. A surface
// chunk "SURF" holds two strings, its name and the name of the surface that it derives from, and then sub-chunks, whose
// sizes have two bytes. The sub-chunk "NODS" is the network of the surface.
#pragma once

#include "host/files/object_images.h"
#include "host/object/iff.h"
#include "host/object/surface_textures.h"
#include "host/object/surface_values.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

struct ObjectSurface {
    std::string name, source;
    FileRange chunk; // of the contents of the surface chunk
    std::vector<Chunk> subChunks;
};

// One file in memory. Reading allocates no more than a few times the file's size.
class ObjectFile {
  public:
    // Parses the file. `name` is for errors. Throws InputError with the byte's offset when the file is truncated, a
    // chunk is larger than what contains it, a string has no end, or it is not an object file of this form.
    ObjectFile(std::span<const std::byte> bytes, std::string name);
    ObjectFile(std::string_view bytes, std::string name);

    const std::string &name() const { return name_; }
    const std::vector<ObjectSurface> &surfaces() const { return surfaces_; }
    const std::vector<ObjectImage> &images() const { return images_; }
    // The index of the first surface of that name; nothing when there is none.
    std::optional<std::size_t> findSurface(std::string_view surface) const;

    // The network of a surface as a block of a binary state: "NODS", its size, its contents. Nothing when it has none.
    std::optional<std::string_view> network(std::size_t surface) const;
    // The offset of that block in the file; 0 when the surface has none.
    std::size_t networkOffset(std::size_t surface) const;
    // The surface's own values. Throws InputError with the byte's offset for a sub-chunk that is too short.
    SurfaceChunkValues values(std::size_t surface) const;
    // The surface's texture layers and shaders, the lowest first; see readTextures. Texture layers with a still
    // image or a sequence have its file name. Throws InputError with the byte's offset for a sub-chunk that is too
    // short.
    std::vector<SurfaceTexture> textures(std::size_t surface) const;

    // Sets the network of a surface, as a block of the form that `network` gives. It replaces the old one; if there was
    // none, it is written after the last sub-chunk.
    void setNetwork(std::size_t surface, std::string block);
    // Adds a surface after all chunks of the file, with these sub-chunks, already encoded, and this network.
    void addSurface(std::string_view name, std::string_view subChunks, std::string_view network);

    // The file's bytes: exactly those that were read if nothing was set or added. Throws InputError when a network
    // that was set has more than 65,535 bytes, or the file more than 4 GB: the format has no room for such sizes.
    std::string write() const;

  private:
    void readChunks();
    void readSurface(FileRange chunk);
    IffFile iff() const { return {bytes_, name_}; }
    ComponentEnvelopes envelopesAfter(const Chunk &sub, std::size_t components) const;
    const Chunk *find(const ObjectSurface &surface, std::uint32_t id) const;
    std::optional<VertexTint> tint(const ObjectSurface &surface, SurfaceChunkValues &values) const;
    template <std::size_t n>
    std::optional<std::array<float, n>> floats(const ObjectSurface &surface, std::uint32_t id,
                                               SurfaceChunkValues *values) const;
    std::string surfaceWith(const ObjectSurface &surface, const std::string &network) const;

    std::string name_, bytes_;
    std::size_t end_ = 0; // end of the form; any bytes after it are preserved
    std::vector<ObjectSurface> surfaces_;
    std::vector<ObjectImage> images_;
    EnvelopeList envelopes_;
    std::vector<std::optional<std::string>> networks_; // those that were set, by surface
    std::string added_;                                // chunks of added surfaces
};

} // namespace velm::host

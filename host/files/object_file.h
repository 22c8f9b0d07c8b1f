// Object files of the big application: big-endian IFF, form type "LWO2". A file is read into its chunks; what is
// written back is every byte as it was but for the networks that were given anew.
//
// A chunk is four characters, a size of four bytes, its contents, and one more byte where the size is odd. A surface
// chunk "SURF" holds two strings, its name and that of the surface it is made after, and then sub-chunks, whose sizes
// have two bytes. One of them, "NODS", is the network of the surface.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// Part of an object file: `size` bytes from `at`, counted from the start of the file.
struct FileRange {
    std::size_t at = 0;
    std::size_t size = 0;
};

// A sub-chunk of a surface or a clip. The range is that of its contents.
struct SubChunk {
    std::uint32_t id = 0; // four characters, the first in the high byte
    FileRange contents;
};

struct ObjectSurface {
    std::string name, source;
    FileRange chunk; // the contents of the surface chunk
    std::vector<SubChunk> subChunks;
};

// An image that the object uses: its number, and the file as it was called on the machine that wrote the object.
struct ObjectImage {
    std::uint32_t number = 0;
    std::string file;
};

// What a surface keeps of its own values besides its network, by the sub-chunk. Nothing where there is no such
// sub-chunk. Fractions are 1 for full, the angle is in radians.
struct SurfaceChunkValues {
    std::optional<std::array<float, 3>> colour;                                 // COLR
    std::optional<float> luminosity, diffuse, specular, glossiness, reflection; // LUMI DIFF SPEC GLOS REFL
    std::optional<float> transparency, refractionIndex;                         // TRAN RIND
    std::optional<float> smoothingAngle;                                        // SMAN
    std::optional<int> sides;                                                   // SIDE: 1 or 3
    std::vector<std::string> animated; // sub-chunks of these whose values an envelope of the object drives
};

// One file in memory. Reading allocates no more than a few times the file's size.
class ObjectFile {
  public:
    // Takes the file apart. `name` stands before error texts. Throws InputError with the byte's offset when the file is
    // cut short, a size does not fit what holds it, a string has no end, or it is not an object file of this form.
    ObjectFile(std::span<const std::byte> bytes, std::string name);
    ObjectFile(std::string_view bytes, std::string name);

    const std::string &name() const { return name_; }
    const std::vector<ObjectSurface> &surfaces() const { return surfaces_; }
    const std::vector<ObjectImage> &images() const { return images_; }
    // The place of the first surface of that name; nothing when there is none.
    std::optional<std::size_t> findSurface(std::string_view surface) const;

    // The network of a surface as a block of a binary state: "NODS", its size, its contents. Nothing when it has none.
    std::optional<std::string_view> network(std::size_t surface) const;
    // The offset of that block in the file.
    std::size_t networkOffset(std::size_t surface) const;
    // The surface's own values. Throws InputError with the offset for a sub-chunk that is too short.
    SurfaceChunkValues values(std::size_t surface) const;

    // Gives a surface another network: a block as `network` gives it. It takes the place of the old one, or follows the
    // last sub-chunk where there was none.
    void setNetwork(std::size_t surface, std::string block);
    // Adds a surface behind all chunks of the file, with sub-chunks as they are to stand there, and this network.
    void addSurface(std::string_view name, std::string_view subChunks, std::string_view network);

    // The file: with nothing set or added, the bytes that were read. Throws InputError when it would be larger than the
    // form can tell, 4 GB.
    std::string write() const;

  private:
    void readChunks();
    void readSurface(FileRange chunk);
    void readImage(FileRange chunk);
    std::vector<SubChunk> readSubChunks(FileRange range, const char *holder) const;
    std::string readString(std::size_t &at, std::size_t end, const char *what) const;
    std::uint32_t big(std::size_t at, std::size_t count) const;
    const SubChunk *find(const ObjectSurface &surface, std::uint32_t id) const;
    template <std::size_t n>
    std::optional<std::array<float, n>> floats(const ObjectSurface &surface, std::uint32_t id,
                                               SurfaceChunkValues *values) const;
    std::string surfaceWith(const ObjectSurface &surface, const std::string &network) const;
    [[noreturn]] void fail(std::size_t at, const std::string &what) const;

    std::string name_, bytes_;
    std::size_t end_ = 0; // of the form; what stands behind it is kept
    std::vector<ObjectSurface> surfaces_;
    std::vector<ObjectImage> images_;
    std::vector<std::optional<std::string>> networks_; // set anew, by surface
    std::string added_;                                // chunks
};

} // namespace velm::host

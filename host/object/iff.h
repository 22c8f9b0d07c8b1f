// IFF files: a form that consists of chunks. All numbers are big-endian.
//
// A chunk is four characters, a size of four bytes, its contents, and a padding byte if the size is odd. The contents
// of some chunks are sub-chunks, whose sizes have two bytes. All errors are InputErrors that name the file and the
// byte.
#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// Part of a file: `size` bytes from the offset `at` in the file.
struct FileRange {
    std::size_t at = 0;
    std::size_t size = 0;

    std::size_t end() const { return at + size; }
};

// A chunk or sub-chunk.
struct Chunk {
    std::uint32_t id = 0; // four characters, the first in the high byte
    FileRange contents;
};

// The bytes of a file. They belong to the caller, and so does the name. [any thread]
class IffFile {
  public:
    IffFile(std::string_view bytes, std::string_view name) : bytes_(bytes), name_(name) {}

    // Throws the InputError for what is wrong at an offset.
    [[noreturn]] void fail(std::size_t at, const std::string &what) const;

    // The type of the form, such as "LWO2". Throws for a file that is no form.
    std::uint32_t formType() const;
    // Where the form ends; any bytes after it are not part of it. Throws for a file that is no form, or shorter.
    std::size_t endOfForm() const;
    // The chunks of the form, in order. Throws for one that is longer than the form, or whose name is not printable.
    std::vector<Chunk> chunks() const;
    // The sub-chunks in a range. `owner` names in errors what they are part of: "the surface".
    std::vector<Chunk> subChunks(FileRange range, const char *owner) const;

    // A number of that many bytes, which must be within the file.
    std::uint32_t number(std::size_t at, std::size_t count) const {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < count; ++i) value = value << 8 | static_cast<unsigned char>(bytes_[at + i]);
        return value;
    }
    // A string that ends with a zero and is padded to an even length. Moves `at` past it. Throws if it does not end
    // before `end`; the error calls it `what`.
    std::string text(std::size_t &at, std::size_t end, const char *what) const;

  private:
    void addChunk(std::size_t &at, std::size_t end, std::size_t sizeBytes, const char *owner,
                  std::vector<Chunk> &found) const;

    std::string_view bytes_, name_;
};

// Reads the contents of a chunk from its start to its end. Each reading function throws if the chunk ends before.
class ChunkCursor {
  public:
    // `chunk` is a chunk of the file, which has to outlive the cursor.
    ChunkCursor(const IffFile &file, const Chunk &chunk)
        : file_(file), id_(chunk.id), at_(chunk.contents.at), end_(chunk.contents.end()) {}

    bool isAtEnd() const { return at_ == end_; }
    std::size_t at() const { return at_; } // the offset in the file
    std::size_t left() const { return end_ - at_; }

    std::uint32_t u2() { return take(2); }
    std::uint32_t u4() { return take(4); }
    // An index of two bytes, or of four if the first one is 0xFF: then its value is in the other three.
    std::uint32_t index() {
        const std::uint32_t first = take(2);
        return first < 0xff00 ? first : (first & 0xff) << 16 | take(2);
    }
    // Whether the chunk has a whole index left.
    bool hasIndex() const { return left() >= 4 || (left() >= 2 && file_.number(at_, 1) != 0xff); }
    // NaN and denormal numbers count as 0.
    float real() {
        const auto value = std::bit_cast<float>(take(4));
        return std::isnormal(value) || std::isinf(value) ? value : 0;
    }
    std::string text(const char *what) { return file_.text(at_, end_, what); }

    // Throws the InputError for what is wrong with the chunk at an offset.
    [[noreturn]] void fail(std::size_t at, const std::string &what) const;

  private:
    std::uint32_t take(std::size_t count) {
        if (end_ - at_ < count) fail(at_, "it ends within a number");
        const std::uint32_t value = file_.number(at_, count);
        at_ += count;
        return value;
    }

    const IffFile &file_;
    std::uint32_t id_;
    std::size_t at_, end_;
};

} // namespace velm::host

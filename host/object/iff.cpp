#include "host/object/iff.h"

#include "host/base/error.h"
#include "host/base/four_cc.h"
#include "host/state/blocks.h"

#include <algorithm>
#include <fmt/format.h>

namespace velm::host {
namespace {

constexpr std::size_t kFormHeader = 12, kSize = 4; // bytes; the size of the form follows its name

bool isPrintable(std::uint32_t id) {
    for (int shift = 0; shift < 32; shift += 8) {
        const std::uint32_t character = id >> shift & 0xff;
        if (character < ' ' || character > '~') return false;
    }
    return true;
}

} // namespace

void IffFile::fail(std::size_t at, const std::string &what) const {
    throw InputError({.file = std::string(name_)}, fmt::format("byte {}: {}", at, what));
}

std::uint32_t IffFile::formType() const {
    if (bytes_.size() < kFormHeader || number(0, 4) != fourCC("FORM"))
        fail(0, "this is no object file: it does not start with FORM");
    return number(8, 4);
}

std::size_t IffFile::endOfForm() const {
    formType(); // throws where there is no form, and so no size
    const std::size_t size = number(kSize, 4), there = bytes_.size() - kSize - 4;
    if (size < 4 || size > there) fail(kSize, fmt::format("the form has {} bytes where {} are there", size, there));
    return kSize + 4 + size;
}

// Adds the chunk at `at` and moves past it.
void IffFile::addChunk(std::size_t &at, std::size_t end, std::size_t sizeBytes, const char *owner,
                       std::vector<Chunk> &found) const {
    const char *kind = sizeBytes == 2 ? "sub-chunk" : "chunk";
    const std::size_t header = 4 + sizeBytes;
    if (end - at < header) fail(at, fmt::format("{} ends within the head of a {}", owner, kind));
    const std::uint32_t id = number(at, 4);
    const std::size_t length = number(at + 4, sizeBytes), room = end - at - header;
    if (!isPrintable(id)) fail(at, fmt::format("expected a {}; found {}", kind, blockName(id)));
    if (length > room)
        fail(at, fmt::format("the {} {} has {} bytes where {} are left", kind, blockName(id), length, room));
    found.push_back({.id = id, .contents = {.at = at + header, .size = length}});
    // The padding byte of the last one may be missing.
    at = std::min(at + header + length + length % 2, end);
}

std::vector<Chunk> IffFile::chunks() const {
    std::vector<Chunk> found;
    const std::size_t end = endOfForm();
    for (std::size_t at = kFormHeader; at < end;) addChunk(at, end, 4, "the form", found);
    return found;
}

std::vector<Chunk> IffFile::subChunks(FileRange range, const char *owner) const {
    std::vector<Chunk> found;
    for (std::size_t at = range.at; at < range.end();) addChunk(at, range.end(), 2, owner, found);
    return found;
}

std::string IffFile::text(std::size_t &at, std::size_t end, const char *what) const {
    const std::string_view rest = bytes_.substr(at, end - at);
    const std::size_t zero = rest.find('\0');
    if (zero == std::string_view::npos) fail(at, fmt::format("{} has no end", what));
    const std::size_t length = zero + 1;
    at = std::min(at + length + length % 2, end);
    return std::string(rest.substr(0, zero));
}

void ChunkCursor::fail(std::size_t at, const std::string &what) const {
    file_.fail(at, fmt::format("the chunk {}: {}", blockName(id_), what));
}

} // namespace velm::host

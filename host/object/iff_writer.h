// The parts of IFF files as bytes, for writers: see iff.h.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace velm::host {

// The last `bytes` bytes of a number, the highest first.
inline std::string bigEndian(std::size_t value, int bytes) {
    std::string text;
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) text += static_cast<char>(value >> shift & 0xff);
    return text;
}

inline std::string bigEndian(float value) { return bigEndian(std::bit_cast<std::uint32_t>(value), 4); }

// The largest index that chunks can hold.
inline constexpr std::uint32_t kLargestIndex = 0x00ffffff;

// An index of at most kLargestIndex, in two bytes or four: see ChunkCursor::index.
inline std::string indexBytes(std::uint32_t index) {
    return index < 0xff00 ? bigEndian(index, 2) : bigEndian(0xff000000 | index, 4);
}

// A string with its final zero, padded to an even length.
inline std::string paddedString(std::string_view text) {
    std::string result(text);
    result.append(result.size() % 2 == 0 ? 2 : 1, '\0');
    return result;
}

// A chunk with its size and padding.
inline std::string chunkBytes(std::uint32_t id, const std::string &contents) {
    std::string result = bigEndian(id, 4) + bigEndian(contents.size(), 4) + contents;
    if (contents.size() % 2 != 0) result += '\0';
    return result;
}

} // namespace velm::host

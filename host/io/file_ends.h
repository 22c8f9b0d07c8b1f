// The first and the last bytes of a file, by which its format is recognised.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velm::host {

struct FileEnds {
    std::string head, tail; // at most kFileEnd bytes each; of a short file they overlap
    std::uint64_t size = 0; // of the file, in bytes

    bool startsWith(std::string_view bytes) const { return head.starts_with(bytes); }
    // Whether the head has these bytes from that position on.
    bool hasAt(std::size_t position, std::string_view bytes) const {
        return position <= head.size() && std::string_view(head).substr(position).starts_with(bytes);
    }
    // A little-endian number of the head; 0 beyond its end.
    std::uint32_t number(std::size_t position, std::size_t bytes) const;
};

constexpr std::size_t kFileEnd = 65536;

// Throws InputError, naming the file and the reason, if it is not a regular file or cannot be read.
FileEnds readFileEnds(const std::string &path);

} // namespace velm::host

#include "host/io/file_ends.h"

#include "host/base/error.h"
#include "host/io/files.h"

#include <algorithm>
#include <fstream>

namespace velm::host {

std::uint32_t FileEnds::number(std::size_t position, std::size_t bytes) const {
    std::uint32_t value = 0;
    for (std::size_t i = position + bytes; i-- > position;)
        value = value << 8 | (i < head.size() ? static_cast<unsigned char>(head[i]) : 0u);
    return value;
}

FileEnds readFileEnds(const std::string &path) {
    if (const auto reason = whyUnreadable(path)) throw InputError({.file = path}, "cannot read the file: " + *reason);
    FileEnds ends;
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    if (size > 0) {
        ends.size = static_cast<std::uint64_t>(size);
        const auto length = static_cast<std::size_t>(std::min<std::streamoff>(size, kFileEnd));
        ends.head.resize(length);
        ends.tail.resize(length);
        file.seekg(0).read(ends.head.data(), static_cast<std::streamsize>(length));
        file.seekg(size - static_cast<std::streamoff>(length))
            .read(ends.tail.data(), static_cast<std::streamsize>(length));
    }
    if (!file) throw InputError({.file = path}, "cannot read the file");
    return ends;
}

} // namespace velm::host

#include "host/cli/existing_picture.h"

#include "host/image/picture.h"
#include "host/image/picture_parts.h"

#include <filesystem>

namespace velm::host {

bool isCurrentPicture(const std::string &file, std::string_view digest) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) return false;
    return !hasDigest(file) || digestOfFile(file) == digest;
}

} // namespace velm::host

// Writing PNG files.
#pragma once

#include "host/image/library/image_library.h"

#include <string>
#include <vector>

namespace velm::host {

// Puts the PNG file of an image in `bytes`. The image has integers, rows and, if it has alpha, straight
// alpha. The file is the same, byte for byte, as the image library makes. Pictures are PNG files unless the user asks
// for another format, and opening the image library takes longer than rendering a small picture. If the image does not
// fit in a PNG file, returns false and sets `error`. [any thread]
bool makePng(const NewImage &image, std::vector<unsigned char> &bytes, std::string &error);

} // namespace velm::host

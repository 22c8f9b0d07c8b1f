// Images inside of FBX files, in the nodes "Video".
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// An image as it is stored: a view of the bytes of the file, which must outlive it.
struct FbxImage {
    std::vector<std::string_view> parts;
    bool isBase64 = false; // whether each part is text in base 64

    // The bytes of the image file.
    std::string bytes() const;
};

// Whether the bytes are those of an FBX file, text or binary. [any thread]
bool isFbx(std::string_view bytes);

// The images in the bytes of an FBX file, in the file's order. Throws InputError with the name of the file if a binary
// one is damaged. [any thread]
std::vector<FbxImage> imagesOfFbx(std::string_view bytes, const std::string &file);

} // namespace velm::host

// Images inside of FBX files, as the nodes "Video" have them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// An image as the file has it. Views the bytes of the file.
struct FbxImage {
    std::vector<std::string_view> parts;
    bool isBase64 = false; // each part

    std::string bytes() const;
};

// Whether the bytes are those of an FBX file, text or binary. [any thread]
bool isFbx(std::string_view bytes);

// The images in the bytes of an FBX file, in the file's order. Throws InputError with the name of the file if a binary
// one is damaged. [any thread]
std::vector<FbxImage> imagesOfFbx(std::string_view bytes, const std::string &file);

} // namespace velm::host

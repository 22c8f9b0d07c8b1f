// Images inside of other files, such as the textures in a GLB file. Such an image is named by the file, "#image/" and
// the index of the image in it, counted from 0: "chair.glb#image/0".
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

struct EmbeddedImage {
    std::string file; // that has the image inside
    std::size_t index = 0;
};

// The name of an image inside of a file: the inverse of embeddedImage. [any thread]
std::string embeddedName(const std::string &file, std::size_t index);

// What a name of that form means; nothing for any other name. [any thread]
std::optional<EmbeddedImage> embeddedImage(std::string_view name);

// The file to open for a name: the one that has the image inside, or the name itself where that is not the name of an
// image inside of another file, or where there is a file of exactly that name. [any thread]
std::string fileToOpen(const std::string &name);

// The images of a glTF 2.0 file, text or binary (GLB), in the file's order. Images that are files of their own are
// empty strings; all others are the bytes of an image file. Throws InputError with the file's name if the file is
// damaged or not glTF. To be called in a process of its own: see readApart.
std::vector<std::string> readEmbeddedImages(const std::string &file);

} // namespace velm::host

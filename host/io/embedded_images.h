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
    std::string file; // the file that has the image inside
    std::size_t index = 0;
};

// The name of an image inside of a file: the inverse of embeddedImage. [any thread]
std::string embeddedName(const std::string &file, std::size_t index);

// The image that has this name; nothing if it is not of the form above. Opens no file. [any thread]
std::optional<EmbeddedImage> embeddedImage(std::string_view name);

// The file to open for the name of an image: the one that has the image inside. It is the name itself if that is not of
// the form above, or if there is a file of exactly that name. [any thread]
std::string fileToOpen(const std::string &name);

// The images of a glTF 2.0 file, text or binary (GLB), or of an FBX file, text or binary, in the file's order. Images
// of glTF that are files of their own are empty strings; all others are the bytes of an image file. Also opens the
// files of buffers that a glTF file names, in any directory. Throws InputError with the name of the file that is
// missing, damaged or of another format. To be called in a process of its own: see readApart.
std::vector<std::string> readEmbeddedImages(const std::string &file);

// One of the images that readEmbeddedImages returns; empty if the file has no image of that index inside. Throws, and
// is to be called, like readEmbeddedImages.
std::string readEmbeddedImage(const EmbeddedImage &image);

// The files that readEmbeddedImages opens, the file itself first, without those that cannot be read. Reads the file in
// a process of its own. Throws InputError like readEmbeddedImages. [interface thread]
std::vector<std::string> filesOfEmbeddedImages(const std::string &file);

} // namespace velm::host

// Rendered pictures, and the files they are written to.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace velm::host {

// A picture in memory: red, green, blue in linear light and alpha (the fraction of the pixel that shows an object), as
// float; rows from the top. Alpha does not multiply the colour: the backdrop is part of the colour.
class Picture {
  public:
    static constexpr int kChannels = 4;

    Picture() = default;
    // Black and without coverage. Width and height of at least 1.
    Picture(int width, int height)
        : width_(width), height_(height),
          pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * kChannels) {}

    int width() const { return width_; }
    int height() const { return height_; }
    float *pixel(int x, int y) { return pixels_.data() + offset(x, y); }
    const float *pixel(int x, int y) const { return pixels_.data() + offset(x, y); }

  private:
    std::size_t offset(int x, int y) const {
        return (static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)) *
               kChannels;
    }

    int width_ = 0, height_ = 0;
    std::vector<float> pixels_;
};

// What made a picture; kept in the headers of files that have room for it. Empty members are left out.
struct PictureMetadata {
    std::string scene, module, version, command;
};

// Throws InputError, naming the known endings, unless the file's ending is one of them. For asking before the work.
void checkPictureEnding(const std::string &file);

// Writes in the format that the ending names, in any case: .png, .jpg, .jpeg, .tif, .tiff (8 bits, sRGB, no alpha),
// .exr (float, linear, with alpha), .hdr (shared exponent, linear, no alpha). 8-bit components are clamped to 0..1;
// what is not a number becomes 0 there. The metadata stands in EXR headers as scene, module, version and command. The
// picture is written under a temporary name beside `file` and renamed, so that `file` is whole or as it was. Throws
// InputError for an unknown ending and MachineError when the file cannot be written.
void writePicture(const Picture &picture, const std::string &file, const PictureMetadata &metadata = {});

} // namespace velm::host

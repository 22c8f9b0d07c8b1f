// Rendered pictures, and writing them to files.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace velm::host {

// A picture in memory: red, green and blue in linear light, and alpha (the fraction of the pixel that shows an object),
// as floats; rows from the top. The colour is not multiplied by alpha: it includes the backdrop.
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

// How a picture was made, for the headers of files that have room for it. Empty members are left out.
struct PictureMetadata {
    std::string scene, module, version, command;
};

// Throws InputError, listing the known extensions, if the file has none of them. To be called before the work.
void checkPictureEnding(const std::string &file);

// Writes a picture in the format of the file name's extension, in upper or lower case: .png, .jpg, .jpeg, .tif, .tiff
// (8 bits, sRGB, no alpha), .exr (float, linear, with alpha), .hdr (shared exponent, linear, no alpha). 8-bit
// components are clamped to 0..1; NaN becomes 0 there. EXR headers contain the metadata as scene, module, version and
// command. The picture is written to a temporary file beside `file` and renamed, so that `file` is never incomplete.
// Throws InputError for an unknown extension, and MachineError if the file cannot be written.
void writePicture(const Picture &picture, const std::string &file, const PictureMetadata &metadata = {});

} // namespace velm::host

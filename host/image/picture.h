// Rendered pictures, and writing them to files.
#pragma once

#include "host/base/region.h"
#include "host/base/shared_memory.h"
#include "host/base/workflow.h"
#include "host/image/library/image_library.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace velm::host {

// A picture in memory: red, green and blue, and alpha (the fraction of the pixel that shows an object), as floats; rows
// from the top. Colours are linear light in the linear workflow, and display values in the classic one. They include
// the backdrop, where it shows, or leave it out (see PictureMetadata::backdrop): then they are those of the objects
// alone, times alpha, as in associated alpha. Only the pixels of the data window take memory; those outside it are
// black and without coverage. The memory is shared with processes that are forked from this one, so that they can fill
// the picture in.
class Picture {
  public:
    static constexpr int kChannels = 4;

    Picture() = default;
    // Black and without coverage. Width and height of at least 1. MachineError when there is no memory.
    Picture(int width, int height) : Picture(width, height, {.left = 0, .top = 0, .right = width, .bottom = height}) {}
    // The same with a data window, which lies in the picture and is not empty, and with layers, whose values are 0.
    // `layerChannels` are the names of their channels; see layers.h.
    Picture(int width, int height, const Region &window, std::vector<std::string> layerChannels = {})
        : width_(width), height_(height), window_(window), layerChannels_(std::move(layerChannels)),
          pixels_(pixelsOf(window) * kChannels), layers_(pixelsOf(window) * layerChannels_.size()) {}
    Picture(Picture &&) = default;
    Picture &operator=(Picture &&) = default;
    Picture(const Picture &other);
    Picture &operator=(const Picture &other) { return *this = Picture(other); }
    ~Picture() = default;

    int width() const { return width_; }
    int height() const { return height_; }
    const Region &window() const { return window_; }
    // Of a pixel in the data window.
    float *pixel(int x, int y) { return pixels_.data() + offset(x, y); }
    // Of any pixel of the picture.
    const float *pixel(int x, int y) const {
        static constexpr float kOutside[kChannels] = {};
        return window_.contains(x, y) ? pixels_.data() + offset(x, y) : kOutside;
    }

    // The names of the channels of all layers, and their values for a pixel in the data window.
    const std::vector<std::string> &layerChannels() const { return layerChannels_; }
    float *layers(int x, int y) { return layers_.data() + number(x, y) * layerChannels_.size(); }
    const float *layers(int x, int y) const { return layers_.data() + number(x, y) * layerChannels_.size(); }

  private:
    static std::size_t pixelsOf(const Region &window) {
        return static_cast<std::size_t>(window.width()) * static_cast<std::size_t>(window.height());
    }
    // Of a pixel in the data window.
    std::size_t number(int x, int y) const {
        return static_cast<std::size_t>(y - window_.top) * static_cast<std::size_t>(window_.width()) +
               static_cast<std::size_t>(x - window_.left);
    }
    std::size_t offset(int x, int y) const { return number(x, y) * kChannels; }

    int width_ = 0, height_ = 0;
    Region window_;
    std::vector<std::string> layerChannels_;
    SharedArray<float> pixels_, layers_;
};

// How a picture was made, for the headers of files. Empty members are left out.
struct PictureMetadata {
    std::string scene, module, version, command;
    // Identifies all that the picture was rendered from, as 32 hexadecimal digits: equal for the parts of one picture.
    std::string digest;
    std::string part;    // "2/8 by tiles" of a picture that is rendered in parts; empty for a whole one
    std::string samples; // "0-3 of 16": the samples of each pixel, from the first to the last
    std::string seed;    // of the noise, as a number
    // "classic" for a picture of display values, to which no sRGB curve is applied; empty for linear light.
    std::string workflow;
    // "left out" of a picture whose colours do not include the backdrop; empty if they do.
    std::string backdrop;
    // The names of objects and surfaces, as JSON arrays, of pictures with layers of their numbers; else empty.
    std::string objects, surfaces;
    // Whether the picture has numbers instead of colours, to which no curve is applied either. Files do not say it.
    bool isData = false;
};

// The value of PictureMetadata::backdrop for pictures that leave the backdrop out.
inline constexpr const char *kBackdropLeftOut = "left out";

// The value of PictureMetadata::workflow for pictures that are rendered in this workflow. [any thread]
inline std::string workflowText(Workflow workflow) {
    return workflow == Workflow::linear ? std::string() : kWorkflowNames[static_cast<std::size_t>(workflow)];
}

// Throws InputError, listing the known extensions, if the file has none of them, and MachineError if the format needs
// the image library and that cannot be opened. To be called before rendering.
void checkPictureEnding(const std::string &file);

// Whether files with this extension, a known one, hold the digest of a picture's metadata, and whether they hold all
// that is needed to put a picture together from parts.
bool hasDigest(const std::string &file);
bool holdsParts(const std::string &file);

// How light becomes display values in integer files.
struct ViewTransform {
    enum class Curve { standard, filmic }; // the sRGB curve alone, or after filmicCurve (host/image/transfer.h)

    double exposure = 0; // stops: light is multiplied by 2 to this power first
    Curve curve = Curve::standard;
    bool operator==(const ViewTransform &) const = default;
};

// How a picture is stored in a file, where its format leaves a choice.
struct FileSettings {
    std::optional<NumberFormat> numbers; // the format's default: see writePicture
    std::string compression;             // the format's default if empty
    bool isTiled = false;                // in tiles of 64 x 64 pixels, instead of rows
    ViewTransform view = {};             // of integer files of pictures of light; others ignore it
};

// What files with an extension, a known one, offer.
struct FileChoices {
    NumberFormat usualNumbers;
    std::span<const NumberFormat> numbers;     // empty: there is no choice
    std::span<const char *const> compressions; // likewise
    bool canBeTiled, hasAlpha, hasLayers;
};
FileChoices fileChoices(const std::string &file);

// Writes a picture in the format of the file name's extension, in upper or lower case: .png, .jpg, .jpeg, .tif, .tiff
// (8 bits, sRGB), .exr (float, with alpha), .hdr (shared exponent, no alpha). `settings` has to be among fileChoices.
// Float files have the numbers of the picture; finite ones beyond the range of half are clamped to it. Integer files
// have display values: linear light is converted by the view transform, a picture of display values or of data is not;
// components are clamped to 0..1, and NaN becomes 0. PNG and TIFF files have alpha if the picture leaves the backdrop
// out. Their alpha is straight: colours are divided by it before any curve is applied, and are black where it is 0. EXR
// files have the picture's data window, its layers as 32-bit floats, and headers with the metadata: scene, module,
// version, command, velm:scene (the digest), velm:part, velm:samples, velm:seed, velm:workflow, velm:backdrop,
// velm:objects and velm:surfaces. PNG texts have these too, and TIFF files the digest in their description. The picture
// is written to a temporary file beside `file` and renamed, so that `file` is never incomplete. Throws InputError for
// an unknown extension, and MachineError if the file cannot be written.
void writePicture(const Picture &picture, const std::string &file, const PictureMetadata &metadata = {},
                  const FileSettings &settings = {});

} // namespace velm::host

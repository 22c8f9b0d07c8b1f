// The image library: reads and writes image files with OpenImageIO.
//
// OpenImageIO loads some 250 further shared libraries, which takes 0.3 seconds and 120 MB. So it is not linked to velm,
// but to a shared library of velm's own, libvelm-images.so (host/image/formats), which velm opens when it first reads
// or writes an image. This header is the interface between the two, which are always built together.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velm::host {

// The file name of the library, which is in the directory of the program.
inline constexpr const char *kImageLibraryFile = "libvelm-images.so";
// Changes with every change of the types below.
inline constexpr int kImageLibraryVersion = 3;
// The one function that the library exports. It sets OpenImageIO up when it is called first.
inline constexpr const char *kImageLibraryFunction = "velmImageLibrary";

// The kinds of numbers in image files: integers of 8 or 16 bits, integers of more bits, and floats of any size.
enum class StoredNumbers { shortIntegers, longIntegers, floats };

// The numbers of an image that is written. Integers are display values, from 0 to the largest one.
enum class NumberFormat { uint8, uint16, half, float32 };

// What an image file says about its first picture.
struct ImageHeader {
    int width = 0, height = 0, depth = 0; // as in the file; not checked
    int left = 0, top = 0;                // the origin of the pixels in the coordinates of the file
    int fullWidth = 0, fullHeight = 0;    // of the whole picture, of which the file may hold a window
    bool isDeep = false;                  // several samples for a pixel
    StoredNumbers numbers = StoredNumbers::longIntegers;
    std::vector<std::string> channels; // their names
    int alpha = -1, depthChannel = -1; // indices of channels; -1: none
    bool isExr = false;

    // The index of the channel with that name, or -1.
    int find(const std::string &name) const;
    double pixels() const { return static_cast<double>(width) * height; }
};

// An image file that is open for reading.
class ImageFile {
  public:
    virtual ~ImageFile() = default;

    virtual const ImageHeader &header() const = 0;
    // The text in the file's metadata under this name; empty if there is none.
    virtual std::string text(const char *name) const = 0;
    // Reads all channels of all pixels, interleaved, rows from the top; integers are mapped to 0..1. `values` has room
    // for them. Returns false if the file is damaged.
    virtual bool read(float *values) = 0;
    // Why the last call failed; may be empty.
    virtual std::string error() const = 0;
};

// An image to be written.
struct NewImage {
    std::string format;                         // "png", "jpg", "jpeg", "exr", "tif", "tiff" or "hdr"
    const char *compression = nullptr;          // as OpenImageIO names it; null: the format's default
    int left = 0, top = 0;                      // of the pixels in the picture
    int width = 0, height = 0;                  // of the pixels
    int fullWidth = 0, fullHeight = 0;          // of the picture
    int channels = 0;                           // 3: red, green, blue; 4: also alpha
    std::vector<std::string> layers;            // names of further channels, of float32; only of EXR files
    bool hasStraightAlpha = false;              // the format stores colours that are not multiplied by alpha
    NumberFormat numbers = NumberFormat::uint8; // in the file
    int tileSize = 0; // pixels a side, a multiple of 16, of a file that is divided into tiles; 0: it has rows
    // The values of a row, pixel by pixel and with all channels, counted from 0 at `top`, as std::uint8_t, as
    // std::uint16_t, or, for half and float32, as float; valid until the next call.
    std::function<const void *(int index)> row;
    std::vector<std::pair<std::string, std::string>> texts; // metadata: names and texts

    bool isFloat() const { return numbers == NumberFormat::half || numbers == NumberFormat::float32; }
};

// What the shared library offers. [interface thread, and the processes in which files are read]
class ImageLibrary {
  public:
    // Opens the file at `path` by OpenImageIO's reader of that name, whatever the file is called. Colours that the file
    // does not multiply by alpha stay so. If it cannot be opened, returns null and sets `error`, which may be empty.
    // To be called in a process of its own (see readApart): it starts OpenEXR's threads.
    virtual std::unique_ptr<ImageFile> open(const char *reader, const std::string &path, std::string &error) const = 0;

    // Puts the whole file in `bytes`. If that fails, returns false and sets `error`. Equal images give equal files.
    virtual bool write(const NewImage &image, std::vector<unsigned char> &bytes, std::string &error) const = 0;

  protected:
    ~ImageLibrary() = default;
};

// The type of the library's function: the library, which lives as long as the process, or null if the caller has
// another version of this header.
using ImageLibraryFunction = const ImageLibrary *(int version);

// The image library, opened by the first call. Only the file beside the program is opened: neither the environment nor
// the working directory can name another one. Processes that are forked later share the opened library. Throws
// MachineError if it cannot be opened. [interface thread]
const ImageLibrary &imageLibrary();

} // namespace velm::host

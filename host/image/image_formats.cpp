#include "host/image/image_formats.h"

#include "host/base/error.h"
#include "host/io/embedded_images.h"
#include "host/io/file_ends.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace velm::host {

namespace {

using std::string_view_literals::operator""sv;

bool isPng(const FileEnds &file) { return file.startsWith("\x89PNG\r\n\x1a\n"); }
bool isJpeg(const FileEnds &file) { return file.startsWith("\xff\xd8\xff"); }
bool isExr(const FileEnds &file) { return file.startsWith("\x76\x2f\x31\x01"); }
bool isHdr(const FileEnds &file) { return file.startsWith("#?"); }
bool isBmp(const FileEnds &file) { return file.startsWith("BM"); }
bool isGif(const FileEnds &file) { return file.startsWith("GIF87a") || file.startsWith("GIF89a"); }
bool isPsd(const FileEnds &file) { return file.startsWith("8BPS"); }

bool isTiff(const FileEnds &file) { // also BigTIFF
    constexpr std::string_view kStarts[] = {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv};
    return std::any_of(std::begin(kStarts), std::end(kStarts),
                       [&](std::string_view start) { return file.startsWith(start); });
}

// Newer files end with a signature. For older ones, every field of the header has to make sense.
bool isTga(const FileEnds &file) {
    constexpr std::size_t kHeader = 18;
    if (std::string_view(file.tail).ends_with("TRUEVISION-XFILE.\0"sv)) return true;
    if (file.size <= kHeader) return false;
    const std::uint32_t hasPalette = file.number(1, 1), type = file.number(2, 1), entries = file.number(5, 2),
                        entryBits = file.number(7, 1), bits = file.number(16, 1), flags = file.number(17, 1);
    const std::uint32_t kind = type & ~8u; // without the flag of run-length encoding
    const bool isPaletteSane = hasPalette == 0
                                   ? entries == 0 && kind != 1
                                   : hasPalette == 1 && entries > 0 &&
                                         (entryBits == 15 || entryBits == 16 || entryBits == 24 || entryBits == 32);
    const bool areBitsSane = kind == 2 ? bits == 15 || bits == 16 || bits == 24 || bits == 32 : bits == 8 || bits == 16;
    return isPaletteSane && kind >= 1 && kind <= 3 && areBitsSane && file.number(12, 2) > 0 && file.number(14, 2) > 0 &&
           flags < 64; // no interleaving
}

struct ImageFormat {
    const char *name;
    const char *reader; // OpenImageIO's name of it
    bool (*recognises)(const FileEnds &file);
};

// TGA comes last: it has no signature at its beginning.
constexpr ImageFormat kImageFormats[] = {
    {.name = "PNG", .reader = "png", .recognises = isPng},    {.name = "JPEG", .reader = "jpeg", .recognises = isJpeg},
    {.name = "TIFF", .reader = "tiff", .recognises = isTiff}, {.name = "EXR", .reader = "openexr", .recognises = isExr},
    {.name = "HDR", .reader = "hdr", .recognises = isHdr},    {.name = "BMP", .reader = "bmp", .recognises = isBmp},
    {.name = "GIF", .reader = "gif", .recognises = isGif},    {.name = "PSD", .reader = "psd", .recognises = isPsd},
    {.name = "TGA", .reader = "targa", .recognises = isTga},
};

// Writes the image inside of a file to a file in memory, and returns a path to it. The library reads the image from
// there, with any of its readers. The file lives as long as this process.
std::string extracted(const EmbeddedImage &image, const std::string &name) {
    const auto fail = [&name](const std::string &why) {
        throw InputError({.file = name}, "cannot read the image: " + why);
    };
    const std::string bytes = readEmbeddedImage(image);
    if (bytes.empty()) fail("there is no such image inside of the file");
    std::string_view rest = bytes;
    const int file = memfd_create("image", MFD_CLOEXEC);
    if (file < 0) fail(std::strerror(errno));
    while (!rest.empty()) {
        const ssize_t count = write(file, rest.data(), rest.size());
        if (count <= 0) fail(std::strerror(errno));
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
    return "/proc/self/fd/" + std::to_string(file);
}

// The path by which the library opens the image of that name.
std::string pathOf(const std::string &name) {
    const auto image = embeddedImage(name);
    return image && fileToOpen(name) == image->file ? extracted(*image, name) : name;
}

} // namespace

std::string imageFormats() {
    std::string list;
    for (const ImageFormat &format : kImageFormats) list += (list.empty() ? "" : ", ") + std::string(format.name);
    return list;
}

std::unique_ptr<ImageFile> openImage(const std::string &file) {
    const ImageLibrary &library = imageLibrary();
    const auto fail = [&file](const std::string &why) {
        throw InputError({.file = file}, "cannot read the image: " + why);
    };
    const std::string path = pathOf(file);
    const FileEnds ends = readFileEnds(path);
    if (ends.size == 0) fail("it is empty");
    const auto *const format = std::find_if(std::begin(kImageFormats), std::end(kImageFormats),
                                            [&](const ImageFormat &one) { return one.recognises(ends); });
    if (format == std::end(kImageFormats)) fail("it has none of the formats that are read: " + imageFormats());
    std::string error;
    std::unique_ptr<ImageFile> opened = library.open(format->reader, path, error);
    if (!opened) fail(error);
    return opened;
}

void setUpImageLibrary() { imageLibrary(); }

} // namespace velm::host

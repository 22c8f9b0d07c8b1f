#include "host/image/picture.h"

#include "host/base/error.h"
#include "host/image/library/image_library.h"
#include "host/image/metadata_headers.h"
#include "host/image/png_file.h"
#include "host/image/transfer.h"
#include "host/io/files.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <utility>
#include <vector>

namespace velm::host {
namespace {

struct PictureFormat {
    const char *ending;
    bool isFloat;
    int channels;
    bool hasDigest;
    const char *compression; // as the library names it; null: the default of the format
};

constexpr std::array<PictureFormat, 7> kFormats = {{
    {.ending = ".png", .isFloat = false, .channels = 3, .hasDigest = true, .compression = nullptr},
    {.ending = ".jpg", .isFloat = false, .channels = 3, .hasDigest = false, .compression = "jpeg:95"},
    {.ending = ".jpeg", .isFloat = false, .channels = 3, .hasDigest = false, .compression = "jpeg:95"},
    {.ending = ".exr", .isFloat = true, .channels = 4, .hasDigest = true, .compression = "zip"},
    {.ending = ".tif", .isFloat = false, .channels = 3, .hasDigest = true, .compression = "zip"},
    {.ending = ".tiff", .isFloat = false, .channels = 3, .hasDigest = true, .compression = "zip"},
    {.ending = ".hdr", .isFloat = true, .channels = 3, .hasDigest = false, .compression = nullptr},
}};

bool isExr(const PictureFormat &format) { return std::strcmp(format.ending, ".exr") == 0; }
bool isPng(const PictureFormat &format) { return std::strcmp(format.ending, ".png") == 0; }

const PictureFormat &formatOf(const std::string &file) {
    std::string ending = std::filesystem::path(file).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    std::string known;
    for (const PictureFormat &format : kFormats) {
        if (ending == format.ending) return format;
        known += (known.empty() ? "" : ", ") + std::string(format.ending);
    }
    const std::string found = ending.empty() ? "has no ending" : "ends in \"" + ending + "\"";
    throw InputError("the picture file " + file + " " + found + "; known endings are " + known);
}

// EXR files hold the data window alone; files of the other formats hold the whole picture.
Region storedWindow(const Picture &picture, const PictureFormat &format) {
    return isExr(format) ? picture.window()
                         : Region{.left = 0, .top = 0, .right = picture.width(), .bottom = picture.height()};
}

bool isOfDisplayValues(const PictureMetadata &metadata) { return metadata.workflow == workflowText(Workflow::classic); }

using Texts = std::vector<std::pair<std::string, std::string>>;

Texts textsOf(const PictureMetadata &metadata, const PictureFormat &format) {
    Texts texts;
    for (const MetadataHeader &header : kMetadataHeaders)
        if (const std::string &text = metadata.*header.member; !text.empty()) texts.emplace_back(header.name, text);
    // The only text that the format's library writes to TIFF files.
    if (format.hasDigest && !metadata.digest.empty())
        texts.emplace_back("ImageDescription", std::string(kDigestPrefix) + metadata.digest);
    return texts;
}

// Converts one row of the picture to the number format of the file, in `row`, whose memory later calls use again.
template <typename Value, typename Convert>
const void *fillRow(const Picture &picture, const Region &window, int y, int channels, Convert convert,
                    std::vector<Value> &row) {
    row.clear();
    row.reserve(static_cast<std::size_t>(window.width()) * static_cast<std::size_t>(channels));
    for (int x = window.left; x < window.right; ++x)
        for (int channel = 0; channel < channels; ++channel) row.push_back(convert(picture.pixel(x, y)[channel]));
    return row.data();
}

std::uint8_t toByte(double display) { return static_cast<std::uint8_t>(std::lround(display * 255)); }
std::uint8_t byteOfLight(float light) { return toByte(linearToSrgb(light)); }
std::uint8_t byteOfDisplayValue(float value) { return value > 0 ? toByte(std::min(1.0F, value)) : std::uint8_t{0}; }

// A function that returns a row of the picture as the file stores it; see NewImage::row.
std::function<const void *(int)> rowsOf(const Picture &picture, const PictureFormat &format, bool displayValues) {
    const Region window = storedWindow(picture, format);
    if (format.isFloat)
        return [&picture, &format, window, row = std::vector<float>()](int index) mutable {
            return fillRow(picture, window, window.top + index, format.channels, std::identity(), row);
        };
    const auto convert = displayValues ? byteOfDisplayValue : byteOfLight;
    return [&picture, &format, window, convert, row = std::vector<std::uint8_t>()](int index) mutable {
        return fillRow(picture, window, window.top + index, format.channels, convert, row);
    };
}

NewImage describe(const Picture &picture, const PictureFormat &format, const PictureMetadata &metadata) {
    const Region window = storedWindow(picture, format);
    return {.format = format.ending + 1,
            .compression = format.compression,
            .left = window.left,
            .top = window.top,
            .width = window.width(),
            .height = window.height(),
            .fullWidth = picture.width(),
            .fullHeight = picture.height(),
            .channels = format.channels,
            .isFloat = format.isFloat,
            .row = rowsOf(picture, format, isOfDisplayValues(metadata)),
            .texts = textsOf(metadata, format)};
}

// The whole file of an image. MachineError, naming the file, if it cannot be made.
std::vector<unsigned char> bytesOf(const NewImage &image, const std::string &file) {
    std::vector<unsigned char> bytes;
    std::string error;
    const bool isMade =
        image.format == "png" ? makePng(image, bytes, error) : imageLibrary().write(image, bytes, error);
    if (!isMade) throw MachineError("cannot write " + file + ": " + error);
    return bytes;
}

} // namespace

Picture::Picture(const Picture &other) : Picture(other.width_, other.height_, other.window_) {
    std::copy_n(other.pixels_.data(), pixels_.size(), pixels_.data());
}

void checkPictureEnding(const std::string &file) {
    if (!isPng(formatOf(file))) imageLibrary();
}

bool hasDigest(const std::string &file) { return formatOf(file).hasDigest; }
bool holdsParts(const std::string &file) { return isExr(formatOf(file)); }

void writePicture(const Picture &picture, const std::string &file, const PictureMetadata &metadata) {
    const PictureFormat &format = formatOf(file);
    const std::vector<unsigned char> bytes = bytesOf(describe(picture, format, metadata), file);
    writeFileAtomically(file, {reinterpret_cast<const char *>(bytes.data()), bytes.size()});
}

} // namespace velm::host

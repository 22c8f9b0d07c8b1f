#include "host/image/picture.h"

#include "host/base/error.h"
#include "host/image/image_formats.h"
#include "host/image/metadata_headers.h"
#include "host/image/transfer.h"
#include "host/io/files.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>

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

void addMetadata(const PictureMetadata &metadata, const PictureFormat &format, OIIO::ImageSpec &spec) {
    for (const MetadataHeader &header : kMetadataHeaders)
        if (const std::string &text = metadata.*header.member; !text.empty()) spec.attribute(header.name, text);
    // The only text that the format's library writes to TIFF files.
    if (format.hasDigest && !metadata.digest.empty())
        spec.attribute("ImageDescription", std::string(kDigestPrefix) + metadata.digest);
}

OIIO::ImageSpec describe(const Picture &picture, const PictureFormat &format, const PictureMetadata &metadata) {
    const Region window = storedWindow(picture, format);
    OIIO::ImageSpec spec(window.width(), window.height(), format.channels,
                         format.isFloat ? OIIO::TypeDesc::FLOAT : OIIO::TypeDesc::UINT8);
    spec.x = window.left;
    spec.y = window.top;
    spec.full_width = picture.width();
    spec.full_height = picture.height();
    spec.attribute("oiio:ColorSpace", format.isFloat ? "Linear" : "sRGB");
    spec.attribute("jpeg:subsampling", "4:4:4");
    spec.attribute("tiff:write_exif", 0); // cannot be written to memory, and would be empty
    spec.attribute("DateTime", ""); // otherwise the library adds the time, and equal pictures would not be equal files
    if (format.compression) spec.attribute("Compression", format.compression);
    addMetadata(metadata, format, spec);
    return spec;
}

// One row, in the number format of the file.
template <typename Value, typename Convert>
std::vector<Value> convertRow(const Picture &picture, const Region &window, int y, int channels, Convert convert) {
    std::vector<Value> row;
    row.reserve(static_cast<std::size_t>(window.width()) * static_cast<std::size_t>(channels));
    for (int x = window.left; x < window.right; ++x)
        for (int channel = 0; channel < channels; ++channel) row.push_back(convert(picture.pixel(x, y)[channel]));
    return row;
}

std::uint8_t toByte(double display) { return static_cast<std::uint8_t>(std::lround(display * 255)); }
std::uint8_t byteOfLight(float light) { return toByte(linearToSrgb(light)); }
std::uint8_t byteOfDisplayValue(float value) { return value > 0 ? toByte(std::min(1.0F, value)) : std::uint8_t{0}; }

bool writeRows(OIIO::ImageOutput &output, const Picture &picture, const PictureFormat &format, bool displayValues) {
    const Region window = storedWindow(picture, format);
    const auto convert = displayValues ? byteOfDisplayValue : byteOfLight;
    for (int y = window.top; y < window.bottom; ++y) {
        const bool written =
            format.isFloat
                ? output.write_scanline(
                      y, 0, OIIO::TypeDesc::FLOAT,
                      convertRow<float>(picture, window, y, format.channels, [](float value) { return value; }).data())
                : output.write_scanline(y, 0, OIIO::TypeDesc::UINT8,
                                        convertRow<std::uint8_t>(picture, window, y, format.channels, convert).data());
        if (!written) return false;
    }
    return true;
}

} // namespace

Picture::Picture(const Picture &other) : Picture(other.width_, other.height_, other.window_) {
    std::copy_n(other.pixels_.data(), pixels_.size(), pixels_.data());
}

void checkPictureEnding(const std::string &file) { formatOf(file); }

bool hasDigest(const std::string &file) { return formatOf(file).hasDigest; }
bool holdsParts(const std::string &file) { return isExr(formatOf(file)); }

void writePicture(const Picture &picture, const std::string &file, const PictureMetadata &metadata) {
    const PictureFormat &format = formatOf(file);
    const auto fail = [&](const std::string &why) { throw MachineError("cannot write " + file + ": " + why); };

    // Written to memory first: some format libraries do not report a full disk, and one ends the program.
    std::vector<unsigned char> bytes;
    OIIO::Filesystem::IOVecOutput memory(bytes);
    setUpImageLibrary();
    const char *formatName = format.ending + 1;
    const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(formatName);
    if (!output) fail(OIIO::geterror());
    if (!output->set_ioproxy(&memory)) fail("the format cannot be made in memory");
    if (!output->open(file, describe(picture, format, metadata))) fail(output->geterror());
    if (!writeRows(*output, picture, format, isOfDisplayValues(metadata))) fail(output->geterror());
    if (!output->close()) fail(output->geterror());
    writeFileAtomically(file, {reinterpret_cast<const char *>(bytes.data()), bytes.size()});
}

} // namespace velm::host

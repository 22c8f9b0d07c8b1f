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
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace velm::host {
namespace {

constexpr int kTileSide = 64;

enum class AlphaInFile { none, straight, associated };

struct PictureFormat {
    const char *ending;
    NumberFormat numbers;                  // unless the settings say otherwise
    std::span<const NumberFormat> choices; // empty: there is no choice
    AlphaInFile alpha;
    bool hasDigest, canBeTiled;
    const char *compression; // as the library names it, as are the others; null: the default of the format
    std::span<const char *const> compressions;
};

constexpr NumberFormat kNumbersOfJpeg[] = {NumberFormat::uint8};
constexpr NumberFormat kNumbersOfPng[] = {NumberFormat::uint8, NumberFormat::uint16};
constexpr NumberFormat kNumbersOfTiff[] = {NumberFormat::uint8, NumberFormat::uint16, NumberFormat::float32};
constexpr NumberFormat kNumbersOfExr[] = {NumberFormat::half, NumberFormat::float32};
constexpr const char *kCompressionsOfTiff[] = {"none", "lzw", "zip"};
constexpr const char *kCompressionsOfExr[] = {"none",  "rle", "zips", "zip",  "piz",
                                              "pxr24", "b44", "b44a", "dwaa", "dwab"};

constexpr PictureFormat jpegFormat(const char *ending) {
    return {.ending = ending,
            .numbers = NumberFormat::uint8,
            .choices = kNumbersOfJpeg,
            .alpha = AlphaInFile::none,
            .hasDigest = false,
            .canBeTiled = false,
            .compression = "jpeg:95",
            .compressions = {}};
}
constexpr PictureFormat tiffFormat(const char *ending) {
    return {.ending = ending,
            .numbers = NumberFormat::uint8,
            .choices = kNumbersOfTiff,
            .alpha = AlphaInFile::straight,
            .hasDigest = true,
            .canBeTiled = true,
            .compression = "zip",
            .compressions = kCompressionsOfTiff};
}

constexpr std::array<PictureFormat, 7> kFormats = {{
    {.ending = ".png",
     .numbers = NumberFormat::uint8,
     .choices = kNumbersOfPng,
     .alpha = AlphaInFile::straight,
     .hasDigest = true,
     .canBeTiled = false,
     .compression = nullptr,
     .compressions = {}},
    jpegFormat(".jpg"),
    jpegFormat(".jpeg"),
    {.ending = ".exr",
     .numbers = NumberFormat::float32,
     .choices = kNumbersOfExr,
     .alpha = AlphaInFile::associated,
     .hasDigest = true,
     .canBeTiled = true,
     .compression = "zip",
     .compressions = kCompressionsOfExr},
    tiffFormat(".tif"),
    tiffFormat(".tiff"),
    {.ending = ".hdr",
     .numbers = NumberFormat::float32,
     .choices = {},
     .alpha = AlphaInFile::none,
     .hasDigest = false,
     .canBeTiled = false,
     .compression = nullptr,
     .compressions = {}},
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

bool needsNoCurve(const PictureMetadata &metadata) {
    return metadata.isData || metadata.workflow == workflowText(Workflow::classic);
}

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

// What is written of a picture, and how.
struct WrittenPicture {
    const Picture &picture;
    const PictureFormat &format;
    NumberFormat numbers;
    Region window;
    int channels;
    bool isDivided;     // colours by alpha
    bool displayValues; // no curve is applied
    ViewTransform view;

    WrittenPicture(const Picture &pictureToWrite, const PictureFormat &formatOfFile, const PictureMetadata &metadata,
                   const FileSettings &settings)
        : picture(pictureToWrite), format(formatOfFile), numbers(settings.numbers.value_or(format.numbers)),
          window(storedWindow(picture, format)),
          isDivided(format.alpha == AlphaInFile::straight && metadata.backdrop == kBackdropLeftOut),
          displayValues(needsNoCurve(metadata)), view(settings.view) {
        channels = isDivided || format.alpha == AlphaInFile::associated ? 4 : 3;
    }

    bool hasLayers() const { return isExr(format) && !picture.layerChannels().empty(); }
};

// Converts one row of the picture to the numbers of the file, in `row`, whose memory later calls use again. `alpha`
// converts alpha, and `colour` the other components.
template <typename Value, typename Colour, typename Alpha>
const void *fillRow(const WrittenPicture &written, int y, Colour colour, Alpha alpha, std::vector<Value> &row) {
    row.clear();
    row.reserve(static_cast<std::size_t>(written.window.width()) * static_cast<std::size_t>(written.channels));
    for (int x = written.window.left; x < written.window.right; ++x) {
        const float *const pixel = written.picture.pixel(x, y);
        const float coverage = pixel[3];
        for (int i = 0; i < 3; ++i) {
            float value = pixel[i];
            if (written.isDivided) value = coverage > 0 ? value / coverage : 0;
            row.push_back(colour(value));
        }
        if (written.channels == 4) row.push_back(alpha(coverage));
    }
    return row.data();
}

double displayOfDisplayValue(float value) { return value > 0 ? std::min(1.0, static_cast<double>(value)) : 0; }

// Converts light to display values of 0 to 1.
class LightToDisplay {
  public:
    explicit LightToDisplay(const ViewTransform &view)
        : gain_(std::exp2(view.exposure)), isFilmic_(view.curve == ViewTransform::Curve::filmic) {}

    double operator()(float light) const {
        const double exposed = gain_ * static_cast<double>(light);
        return linearToSrgb(isFilmic_ ? filmicCurve(exposed) : exposed);
    }

  private:
    double gain_;
    bool isFilmic_;
};

template <typename Integer>
Integer toInteger(double display) {
    return static_cast<Integer>(std::lround(display * std::numeric_limits<Integer>::max()));
}

// Functions that return a row of the picture as the file stores it; see NewImage::row.
using Rows = std::function<const void *(int)>;

template <typename Integer>
Rows integerRowsOf(const WrittenPicture &written) {
    const auto same = [](float value) { return toInteger<Integer>(displayOfDisplayValue(value)); };
    if (written.displayValues)
        return [written, same, row = std::vector<Integer>()](int index) mutable {
            return fillRow(written, written.window.top + index, same, same, row);
        };
    const auto colour = [toDisplay = LightToDisplay(written.view)](float light) {
        return toInteger<Integer>(toDisplay(light));
    };
    return [written, colour, same, row = std::vector<Integer>()](int index) mutable {
        return fillRow(written, written.window.top + index, colour, same, row);
    };
}

// Puts the layers of each pixel of a row behind its other values.
const float *addLayers(const WrittenPicture &written, int y, const std::vector<float> &row,
                       std::vector<float> &withLayers) {
    const auto channels = static_cast<std::ptrdiff_t>(written.channels);
    const std::size_t layers = written.picture.layerChannels().size();
    withLayers.clear();
    auto values = row.begin();
    for (int x = written.window.left; x < written.window.right; ++x, values += channels) {
        withLayers.insert(withLayers.end(), values, values + channels);
        const float *const pixel = written.picture.layers(x, y);
        withLayers.insert(withLayers.end(), pixel, pixel + layers);
    }
    return withLayers.data();
}

template <typename Convert>
Rows floatRowsOf(const WrittenPicture &written, Convert convert) {
    return [written, convert, row = std::vector<float>(), withLayers = std::vector<float>()](int index) mutable {
        const int y = written.window.top + index;
        fillRow(written, y, convert, convert, row);
        return written.hasLayers() ? addLayers(written, y, row, withLayers) : row.data();
    };
}

float withinHalf(float value) {
    constexpr float kLargestHalf = 65504;
    return std::isfinite(value) ? std::clamp(value, -kLargestHalf, kLargestHalf) : value;
}

Rows rowsOf(const WrittenPicture &written) {
    switch (written.numbers) {
    case NumberFormat::uint8: return integerRowsOf<std::uint8_t>(written);
    case NumberFormat::uint16: return integerRowsOf<std::uint16_t>(written);
    case NumberFormat::half: return floatRowsOf(written, withinHalf);
    case NumberFormat::float32: return floatRowsOf(written, std::identity());
    }
    return {};
}

NewImage describe(const WrittenPicture &written, const PictureMetadata &metadata, const FileSettings &settings) {
    const Region &window = written.window;
    return {.format = written.format.ending + 1,
            .compression = settings.compression.empty() ? written.format.compression : settings.compression.c_str(),
            .left = window.left,
            .top = window.top,
            .width = window.width(),
            .height = window.height(),
            .fullWidth = written.picture.width(),
            .fullHeight = written.picture.height(),
            .channels = written.channels,
            .layers = written.hasLayers() ? written.picture.layerChannels() : std::vector<std::string>(),
            .hasStraightAlpha = written.isDivided,
            .numbers = written.numbers,
            .tileSize = settings.isTiled ? kTileSide : 0,
            .row = rowsOf(written),
            .texts = textsOf(metadata, written.format)};
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

Picture::Picture(const Picture &other) : Picture(other.width_, other.height_, other.window_, other.layerChannels_) {
    std::copy_n(other.pixels_.data(), pixels_.size(), pixels_.data());
    std::copy_n(other.layers_.data(), layers_.size(), layers_.data());
}

void checkPictureEnding(const std::string &file) {
    if (!isPng(formatOf(file))) imageLibrary();
}

bool hasDigest(const std::string &file) { return formatOf(file).hasDigest; }
bool holdsParts(const std::string &file) { return isExr(formatOf(file)); }

FileChoices fileChoices(const std::string &file) {
    const PictureFormat &format = formatOf(file);
    return {.usualNumbers = format.numbers,
            .numbers = format.choices,
            .compressions = format.compressions,
            .canBeTiled = format.canBeTiled,
            .hasAlpha = format.alpha != AlphaInFile::none,
            .hasLayers = isExr(format)};
}

void writePicture(const Picture &picture, const std::string &file, const PictureMetadata &metadata,
                  const FileSettings &settings) {
    const WrittenPicture written(picture, formatOf(file), metadata, settings);
    const std::vector<unsigned char> bytes = bytesOf(describe(written, metadata, settings), file);
    writeFileAtomically(file, {reinterpret_cast<const char *>(bytes.data()), bytes.size()});
}

} // namespace velm::host

// The image library, libvelm-images.so: the only use of OpenImageIO. See image_library.h.
#include "host/image/library/image_library.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <thread>

namespace velm::host {
namespace {

// Hides an environment variable for as long as it lives.
class HiddenVariable {
  public:
    explicit HiddenVariable(const char *name) : name_(name) {
        if (const char *value = std::getenv(name)) value_ = value;
        unsetenv(name);
    }
    ~HiddenVariable() {
        if (value_) setenv(name_, value_->c_str(), 1);
    }
    HiddenVariable(const HiddenVariable &) = delete;
    HiddenVariable &operator=(const HiddenVariable &) = delete;

  private:
    const char *name_;
    std::optional<std::string> value_;
};

StoredNumbers numbersOf(const OIIO::TypeDesc &format) {
    switch (format.basetype) {
    case OIIO::TypeDesc::UINT8:
    case OIIO::TypeDesc::INT8:
    case OIIO::TypeDesc::UINT16:
    case OIIO::TypeDesc::INT16: return StoredNumbers::shortIntegers;
    case OIIO::TypeDesc::HALF:
    case OIIO::TypeDesc::FLOAT:
    case OIIO::TypeDesc::DOUBLE: return StoredNumbers::floats;
    default: return StoredNumbers::longIntegers;
    }
}

// The index of the channel for alpha; -1 if there is none. Readers may give an index outside of the image, as
// OpenImageIO's for GIF does; it is ignored, and alpha is then looked for by its name.
int alphaChannelOf(const OIIO::ImageSpec &spec) {
    if (spec.alpha_channel < spec.nchannels) return std::max(spec.alpha_channel, -1);
    for (const char *name : {"A", "Alpha", "alpha"})
        if (const int index = spec.channelindex(name); index >= 0) return index;
    return -1;
}

ImageHeader headerOf(const OIIO::ImageSpec &spec, std::string_view format) {
    ImageHeader header{.width = spec.width,
                       .height = spec.height,
                       .depth = spec.depth,
                       .left = spec.x,
                       .top = spec.y,
                       .fullWidth = spec.full_width,
                       .fullHeight = spec.full_height,
                       .isDeep = spec.deep,
                       .numbers = numbersOf(spec.format),
                       .channels = {},
                       .alpha = alphaChannelOf(spec),
                       .depthChannel = spec.z_channel < spec.nchannels ? std::max(spec.z_channel, -1) : -1,
                       .isExr = format == "openexr"};
    for (int channel = 0; channel < spec.nchannels; ++channel) header.channels.emplace_back(spec.channel_name(channel));
    return header;
}

class OpenedFile final : public ImageFile {
  public:
    explicit OpenedFile(std::unique_ptr<OIIO::ImageInput> input)
        : input_(std::move(input)), header_(headerOf(input_->spec(), input_->format_name())) {}

    const ImageHeader &header() const override { return header_; }
    std::string text(const char *name) const override { return std::string(input_->spec().get_string_attribute(name)); }
    bool read(float *values) override {
        return input_->read_image(0, 0, 0, input_->spec().nchannels, OIIO::TypeDesc::FLOAT, values);
    }
    std::string error() const override { return input_->geterror(); }

  private:
    std::unique_ptr<OIIO::ImageInput> input_;
    ImageHeader header_;
};

OIIO::TypeDesc typeOf(NumberFormat numbers) {
    switch (numbers) {
    case NumberFormat::uint8: return OIIO::TypeDesc::UINT8;
    case NumberFormat::uint16: return OIIO::TypeDesc::UINT16;
    case NumberFormat::half: return OIIO::TypeDesc::HALF;
    case NumberFormat::float32: return OIIO::TypeDesc::FLOAT;
    }
    return {};
}

int channelsOf(const NewImage &image) { return image.channels + static_cast<int>(image.layers.size()); }

OIIO::ImageSpec describe(const NewImage &image) {
    OIIO::ImageSpec spec(image.width, image.height, channelsOf(image), typeOf(image.numbers));
    for (std::size_t i = 0; i < image.layers.size(); ++i)
        spec.channelnames[static_cast<std::size_t>(image.channels) + i] = image.layers[i];
    if (!image.layers.empty()) {
        spec.channelformats.assign(static_cast<std::size_t>(image.channels), typeOf(image.numbers));
        spec.channelformats.resize(static_cast<std::size_t>(channelsOf(image)), OIIO::TypeDesc::FLOAT);
    }
    spec.x = image.left;
    spec.y = image.top;
    spec.full_width = image.fullWidth;
    spec.full_height = image.fullHeight;
    spec.tile_width = spec.tile_height = image.tileSize;
    if (image.hasStraightAlpha) spec.attribute("oiio:UnassociatedAlpha", 1);
    spec.attribute("oiio:ColorSpace", image.isFloat() ? "Linear" : "sRGB");
    spec.attribute("jpeg:subsampling", "4:4:4");
    spec.attribute("tiff:write_exif", 0); // cannot be written to memory, and would be empty
    spec.attribute("DateTime", ""); // otherwise the library adds the time, and equal pictures would not be equal files
    if (image.compression) spec.attribute("Compression", image.compression);
    for (const auto &[name, text] : image.texts) spec.attribute(name, text);
    return spec;
}

// The type of the values that `NewImage::row` returns.
OIIO::TypeDesc typeOfRows(const NewImage &image) {
    return image.isFloat() ? OIIO::TypeDesc(OIIO::TypeDesc::FLOAT) : typeOf(image.numbers);
}

bool writeRows(OIIO::ImageOutput &output, const NewImage &image) {
    const OIIO::TypeDesc type = typeOfRows(image);
    for (int index = 0; index < image.height; ++index)
        if (!output.write_scanline(image.top + index, 0, type, image.row(index))) return false;
    return true;
}

// Writes one row of tiles after the other.
bool writeTiles(OIIO::ImageOutput &output, const NewImage &image) {
    const OIIO::TypeDesc type = typeOfRows(image);
    const std::size_t rowBytes =
        static_cast<std::size_t>(image.width) * static_cast<std::size_t>(channelsOf(image)) * type.size();
    std::vector<unsigned char> rows;
    for (int first = 0; first < image.height; first += image.tileSize) {
        const int end = std::min(first + image.tileSize, image.height);
        rows.clear();
        for (int index = first; index < end; ++index) {
            const auto *row = static_cast<const unsigned char *>(image.row(index));
            rows.insert(rows.end(), row, row + rowBytes);
        }
        if (!output.write_tiles(image.left, image.left + image.width, image.top + first, image.top + end, 0, 1, type,
                                rows.data()))
            return false;
    }
    return true;
}

class Library final : public ImageLibrary {
  public:
    // Without readers and writers from other files, which environment variables may name, and without threads of
    // OpenEXR, which a process that is forked later could not use.
    Library() {
        // OpenImageIO adds the directories in these variables to the path when it makes its list of formats, which is
        // when the first reader or writer is made.
        const HiddenVariable ours("OIIO_LIBRARY_PATH"), linker("LD_LIBRARY_PATH");
        OIIO::attribute("plugin_searchpath", "");
        OIIO::attribute("exr_threads", -1);
        OIIO::ImageInput::create("png");
    }

    std::unique_ptr<ImageFile> open(const char *reader, const std::string &path, std::string &error) const override {
        std::unique_ptr<OIIO::ImageInput> input = OIIO::ImageInput::create(reader);
        if (!input) {
            error = OIIO::geterror();
            return nullptr;
        }
        OIIO::attribute("exr_threads", static_cast<int>(std::thread::hardware_concurrency()));
        OIIO::ImageSpec found, wishes;
        wishes.attribute("oiio:UnassociatedAlpha", 1);
        if (!input->open(path, found, wishes)) {
            error = input->geterror();
            return nullptr;
        }
        return std::make_unique<OpenedFile>(std::move(input));
    }

    // To memory: some format libraries do not report a full disk, and one ends the program.
    bool write(const NewImage &image, std::vector<unsigned char> &bytes, std::string &error) const override {
        OIIO::Filesystem::IOVecOutput memory(bytes);
        const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(image.format);
        if (!output) {
            error = OIIO::geterror();
            return false;
        }
        if (!output->set_ioproxy(&memory)) {
            error = "the format cannot be made in memory";
            return false;
        }
        const auto writePixels = image.tileSize > 0 ? writeTiles : writeRows;
        const bool isWritten =
            output->open("picture." + image.format, describe(image)) && writePixels(*output, image) && output->close();
        if (!isWritten) error = output->geterror();
        return isWritten;
    }
};

} // namespace
} // namespace velm::host

// The one function that is exported.
extern "C" [[gnu::visibility("default")]] const velm::host::ImageLibrary *velmImageLibrary(int version);

const velm::host::ImageLibrary *velmImageLibrary(int version) {
    static const velm::host::Library library;
    return version == velm::host::kImageLibraryVersion ? &library : nullptr;
}

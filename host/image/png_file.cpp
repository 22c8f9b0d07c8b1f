#include "host/image/png_file.h"

#include <bit>
#include <cstddef>
#include <new>
#include <png.h>
#include <stdexcept>
#include <string>
#include <zlib.h>

namespace velm::host {
namespace {

// libpng calls this for an error, and requires that it does not return.
[[noreturn]] void fail(png_structp, png_const_charp why) { throw std::runtime_error(why); }
void ignore(png_structp, png_const_charp) {}

void append(png_structp png, png_bytep data, std::size_t size) {
    auto &bytes = *static_cast<std::vector<unsigned char> *>(png_get_io_ptr(png));
    bytes.insert(bytes.end(), data, data + size);
}
void flush(png_structp) {}

// Owns libpng's structures for one file.
class PngWriter {
  public:
    explicit PngWriter(std::vector<unsigned char> &bytes)
        : png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, ignore)),
          info_(png_ ? png_create_info_struct(png_) : nullptr) {
        if (!info_) {
            png_destroy_write_struct(&png_, nullptr);
            throw std::bad_alloc();
        }
        png_set_write_fn(png_, &bytes, append, flush);
    }
    ~PngWriter() { png_destroy_write_struct(&png_, &info_); }
    PngWriter(const PngWriter &) = delete;
    PngWriter &operator=(const PngWriter &) = delete;

    // Uses the settings, and begins with the texts, of the files that the image library writes.
    void write(const NewImage &image) {
        const bool hasWords = image.numbers == NumberFormat::uint16;
        png_set_IHDR(png_, info_, static_cast<png_uint_32>(image.width), static_cast<png_uint_32>(image.height),
                     hasWords ? 16 : 8, image.channels == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_compression_level(png_, 6);
        png_set_compression_strategy(png_, Z_DEFAULT_STRATEGY); // not the default, Z_FILTERED
        png_set_oFFs(png_, info_, image.left, image.top, PNG_OFFSET_PIXEL);
        png_set_sRGB_gAMA_and_cHRM(png_, info_, PNG_sRGB_INTENT_ABSOLUTE);
        addText("oiio:ColorSpace", "sRGB");
        addText("jpeg:subsampling", "4:4:4");
        for (const auto &[name, text] : image.texts) addText(name == "ImageDescription" ? "Description" : name, text);
        png_write_info(png_, info_);
        if (hasWords && std::endian::native == std::endian::little) png_set_swap(png_);
        for (int index = 0; index < image.height; ++index)
            png_write_row(png_, static_cast<png_const_bytep>(image.row(index)));
        png_write_end(png_, nullptr);
    }

  private:
    // libpng copies the name and the text.
    void addText(std::string name, std::string text) {
        png_text entry{};
        entry.compression = PNG_TEXT_COMPRESSION_NONE;
        entry.key = name.data();
        entry.text = text.data();
        png_set_text(png_, info_, &entry, 1);
    }

    png_structp png_;
    png_infop info_;
};

} // namespace

bool makePng(const NewImage &image, std::vector<unsigned char> &bytes, std::string &error) {
    try {
        PngWriter(bytes).write(image);
        return true;
    } catch (const std::runtime_error &failure) {
        error = failure.what();
        return false;
    }
}

} // namespace velm::host

#include "host/io/embedded_images.h"

#include "host/base/error.h"
#include "host/io/files.h"

#include <charconv>
#include <cstdint>
#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace velm::host {

namespace {

using nlohmann::json;

constexpr std::string_view kMark = "#image/";

[[noreturn]] void failToExtract(const std::string &file, const std::string &why) {
    throw InputError({.file = file}, "cannot read the images inside: " + why);
}

std::uint32_t littleEndian(std::string_view bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = at + 4; i-- > at;) value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
}

// The contents of a glTF file.
struct GltfParts {
    std::string_view text, binary; // JSON, and the bytes of the first buffer
};

// The chunks of a GLB file (glTF 2.0, chapter 4): a header of 12 bytes, then chunks of a length, a type and contents.
GltfParts chunksOf(std::string_view bytes, const std::string &file) {
    constexpr std::uint32_t kVersion = 2, kText = 0x4e4f534a, kBinary = 0x004e4942;
    constexpr std::size_t kHeader = 12, kChunkHeader = 8;
    if (bytes.size() < kHeader || littleEndian(bytes, 4) != kVersion)
        failToExtract(file, "it is not of version 2 of the format");
    GltfParts parts;
    for (std::size_t at = kHeader; at + kChunkHeader <= bytes.size();) {
        const std::size_t length = littleEndian(bytes, at);
        const std::uint32_t type = littleEndian(bytes, at + 4);
        at += kChunkHeader;
        if (length > bytes.size() - at) failToExtract(file, "it ends too early");
        const std::string_view contents = bytes.substr(at, length);
        if (type == kText && parts.text.empty()) parts.text = contents;
        if (type == kBinary && parts.binary.empty()) parts.binary = contents;
        at += length;
    }
    return parts;
}

int valueOfBase64(char digit) {
    if (digit >= 'A' && digit <= 'Z') return digit - 'A';
    if (digit >= 'a' && digit <= 'z') return digit - 'a' + 26;
    if (digit >= '0' && digit <= '9') return digit - '0' + 52;
    if (digit == '+') return 62;
    return digit == '/' ? 63 : -1;
}

// The bytes of a data URI in base 64, up to the first character that is not a digit; nothing for any other URI.
std::optional<std::string> bytesOfDataUri(std::string_view uri) {
    constexpr std::string_view kBase64 = ";base64,";
    const std::size_t start = uri.find(kBase64);
    if (!uri.starts_with("data:") || start == std::string_view::npos) return std::nullopt;
    std::string bytes;
    bytes.reserve((uri.size() - start) / 4 * 3);
    std::uint32_t bits = 0;
    int count = 0;
    for (const char digit : uri.substr(start + kBase64.size())) {
        const int value = valueOfBase64(digit);
        if (value < 0) break;
        bits = bits << 6 | static_cast<std::uint32_t>(value);
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes += static_cast<char>(bits >> count & 0xff);
    }
    return bytes;
}

// The images of one file. All members throw json::exception if the document lacks something or has another type there.
class GltfImages {
  public:
    GltfImages(const json &document, std::string_view binary, const std::string &file)
        : document_(document), binary_(binary), file_(file), images_(document.value("images", json::array())),
          buffers_(document.value("buffers", json::array()).size()) {}

    std::size_t count() const { return images_.size(); }

    std::string bytesOf(std::size_t index) {
        const json &image = images_.at(index);
        if (image.contains("uri")) return bytesOfDataUri(image.at("uri").get_ref<const std::string &>()).value_or("");
        if (!image.contains("bufferView")) return {};
        const json &view = document_.at("bufferViews").at(image.at("bufferView").get<std::size_t>());
        const std::string_view buffer = bufferAt(view.at("buffer").get<std::size_t>());
        const auto offset = view.value("byteOffset", std::size_t{0}), length = view.at("byteLength").get<std::size_t>();
        if (offset > buffer.size() || length > buffer.size() - offset)
            failToExtract(file_, "an image ends outside of its buffer");
        return std::string(buffer.substr(offset, length));
    }

  private:
    std::string_view bufferAt(std::size_t index) {
        const json &buffer = document_.at("buffers").at(index);
        if (!buffer.contains("uri")) return binary_;
        std::optional<std::string> &read = buffers_.at(index);
        if (read) return *read;
        const auto &uri = buffer.at("uri").get_ref<const std::string &>();
        read = bytesOfDataUri(uri);
        // The mesh library also appends the URI to the directory, even if it begins with a slash, and decodes no "%20".
        if (!read) read = readFile(file_.substr(0, file_.rfind('/') + 1) + uri);
        return *read;
    }

    const json &document_;
    const std::string_view binary_;
    const std::string &file_;
    const json images_;
    std::vector<std::optional<std::string>> buffers_; // those that are not `binary_`, once they have been read
};

// Reads a file and returns what `use` does of its images.
template <class Use>
auto fromImagesOf(const std::string &file, const Use &use) {
    const std::string bytes = readFile(file);
    const GltfParts parts = bytes.starts_with("glTF") ? chunksOf(bytes, file) : GltfParts{.text = bytes, .binary = {}};
    try {
        const json document = json::parse(parts.text);
        GltfImages images(document, parts.binary, file);
        return use(images);
    } catch (const json::exception &) {
        failToExtract(file, "its description in JSON is damaged");
    }
}

} // namespace

std::string embeddedName(const std::string &file, std::size_t index) {
    return fmt::format("{}{}{}", file, kMark, index);
}

std::optional<EmbeddedImage> embeddedImage(std::string_view name) {
    const std::size_t mark = name.rfind(kMark);
    if (mark == std::string_view::npos || mark == 0) return std::nullopt;
    EmbeddedImage image{.file = std::string(name.substr(0, mark))};
    const std::string_view digits = name.substr(mark + kMark.size());
    const char *const end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, image.index);
    if (error != std::errc() || rest != end) return std::nullopt;
    return image;
}

std::string fileToOpen(const std::string &name) {
    std::error_code error;
    const auto image = embeddedImage(name);
    return image && !std::filesystem::exists(name, error) ? image->file : name;
}

std::vector<std::string> readEmbeddedImages(const std::string &file) {
    return fromImagesOf(file, [](GltfImages &images) {
        std::vector<std::string> all;
        for (std::size_t i = 0; i < images.count(); ++i) all.push_back(images.bytesOf(i));
        return all;
    });
}

std::string readEmbeddedImage(const EmbeddedImage &image) {
    return fromImagesOf(image.file, [&image](GltfImages &images) {
        return image.index < images.count() ? images.bytesOf(image.index) : std::string();
    });
}

} // namespace velm::host

#include "host/io/embedded_images.h"

#include "host/base/error.h"
#include "host/io/base64.h"
#include "host/io/fbx_images.h"
#include "host/io/files.h"
#include "host/io/named_files.h"

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

// The bytes of a data URI in base 64, up to the first character that is not a digit; nothing for any other URI.
std::optional<std::string> bytesOfDataUri(std::string_view uri) {
    constexpr std::string_view kBase64 = ";base64,";
    const std::size_t start = uri.find(kBase64);
    if (!uri.starts_with("data:") || start == std::string_view::npos) return std::nullopt;
    return bytesOfBase64(uri.substr(start + kBase64.size()));
}

// The images of a glTF file. All members throw json::exception for values that are missing or of another type.
class GltfImages {
  public:
    GltfImages(const json &document, std::string_view binary, const std::string &file)
        : document_(document), binary_(binary), file_(file), images_(imagesIn(document)),
          buffers_(document.value("buffers", json::array()).size()) {}

    std::size_t count() const { return images_.size(); }

    // The paths of the buffers that are files of their own.
    std::vector<std::string> bufferFiles() const {
        std::vector<std::string> files;
        for (const json &buffer : document_.value("buffers", json::array())) {
            const std::string uri = buffer.value("uri", "");
            if (!uri.empty() && !uri.starts_with("data:")) files.push_back(fileOfUri(uri));
        }
        return files;
    }

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
    // The images in the order in which the mesh library numbers them. Version 1 of glTF has an object of images by name
    // instead of a list; if it has several, their order is unknown, and they are replaced by null, which has no bytes.
    static json imagesIn(const json &document) {
        json images = document.value("images", json());
        if (!images.is_object()) return images;
        json listed = json::array();
        for (const json &image : images) listed.push_back(images.size() == 1 ? image : json());
        return listed;
    }

    // The mesh library also appends the URI to the directory, even if it begins with a slash.
    std::string fileOfUri(const std::string &uri) const {
        return namedFile(file_.substr(0, file_.rfind('/') + 1), uri);
    }

    std::string_view bufferAt(std::size_t index) {
        const json &buffer = document_.at("buffers").at(index);
        if (!buffer.contains("uri")) return binary_;
        std::optional<std::string> &read = buffers_.at(index);
        if (read) return *read;
        const auto &uri = buffer.at("uri").get_ref<const std::string &>();
        read = bytesOfDataUri(uri);
        if (!read) read = readFile(fileOfUri(uri));
        return *read;
    }

    const json &document_;
    const std::string_view binary_;
    const std::string &file_;
    const json images_;
    std::vector<std::optional<std::string>> buffers_; // those that are not `binary_`, once they have been read
};

// The images of an FBX file.
class FbxImages {
  public:
    FbxImages(std::string_view bytes, const std::string &file) : images_(imagesOfFbx(bytes, file)) {}

    std::size_t count() const { return images_.size(); }
    std::string bytesOf(std::size_t index) const { return images_.at(index).bytes(); }
    static std::vector<std::string> bufferFiles() { return {}; }

  private:
    std::vector<FbxImage> images_;
};

// Reads a file and returns what `use` makes of its images.
template <class Use>
auto fromImagesOf(const std::string &file, const Use &use) {
    const std::string bytes = readFile(file);
    if (isFbx(bytes)) {
        const FbxImages images(bytes, file);
        return use(images);
    }
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
    return fromImagesOf(file, [](auto &images) {
        std::vector<std::string> all;
        for (std::size_t i = 0; i < images.count(); ++i) all.push_back(images.bytesOf(i));
        return all;
    });
}

std::vector<std::string> filesOfEmbeddedImages(const std::string &file) {
    return namesReadApart(file, "the image", [&file] {
        std::vector<std::string> files = fromImagesOf(file, [](const auto &images) { return images.bufferFiles(); });
        std::erase_if(files, [](const std::string &one) { return whyUnreadable(one).has_value(); });
        files.insert(files.begin(), file);
        return files;
    });
}

std::string readEmbeddedImage(const EmbeddedImage &image) {
    return fromImagesOf(image.file, [&image](auto &images) {
        return image.index < images.count() ? images.bytesOf(image.index) : std::string();
    });
}

} // namespace velm::host

#include "host/bake/files/gltf_document.h"

#include "host/bake/files/little_endian.h"
#include "host/base/error.h"
#include "host/base/names.h"
#include "host/io/base64.h"
#include "host/io/files.h"
#include "host/io/named_files.h"
#include "host/render/geometry/mesh_words.h"

#include <algorithm>
#include <cstdint>
#include <fmt/format.h>
#include <limits>

namespace velm::host {
namespace {

using nlohmann::ordered_json;

constexpr std::uint32_t kVersion = 2, kJsonChunk = 0x4e4f534a, kBinaryChunk = 0x004e4942;
constexpr std::size_t kHeader = 12, kChunkHeader = 8;
constexpr int kByte = 5121, kShort = 5123, kInteger = 5125, kFloat = 5126, kVertices = 34962; // codes of glTF

std::uint32_t numberAt(std::string_view bytes, std::size_t at) {
    return binaryNumber<std::uint32_t>(bytes.data() + at);
}

std::size_t componentSize(int type) { return type == kByte ? 1 : type == kShort ? 2 : 4; }

void padTo4(std::string &bytes, char padding) { bytes.resize((bytes.size() + 3) / 4 * 4, padding); }

std::string chunkOf(std::uint32_t type, const std::string &contents) {
    return littleEndianBytes(static_cast<std::uint32_t>(contents.size())) + littleEndianBytes(type) + contents;
}

// An array of the document; empty if it is not there.
const ordered_json &listOf(const ordered_json &json, const char *name) {
    static const ordered_json kNone = ordered_json::array();
    return json.contains(name) ? json.at(name) : kNone;
}

std::size_t valueOf(const ordered_json &json, const char *name, std::size_t otherwise) {
    return json.contains(name) ? json.at(name).get<std::size_t>() : otherwise;
}

const char *typeName(std::size_t size) {
    constexpr const char *kNames[] = {"", "SCALAR", "VEC2", "VEC3", "VEC4"};
    return kNames[size];
}

} // namespace

void GltfDocument::fail(const std::string &what) const { throw InputError({.file = file_}, what); }

GltfDocument::GltfDocument(const std::string &file) : file_(file) {
    const std::string bytes = readFile(file);
    guarded([&] {
        json = ordered_json::parse(bytes.starts_with("glTF") ? readChunks(bytes) : std::string_view(bytes));
        if (!json.at("asset").at("version").get<std::string>().starts_with("2."))
            fail("it is not of version 2 of glTF");
        for (const ordered_json &name : listOf(json, "extensionsRequired"))
            if (name.get<std::string>().find("compression") != std::string::npos)
                fail(fmt::format("it is compressed ({}), so that values cannot be added to it",
                                 name.get<std::string>()));
        joinBuffers();
    });
}

// Takes the chunks of a GLB file apart, and gives that of the JSON.
std::string_view GltfDocument::readChunks(std::string_view bytes) {
    if (bytes.size() < kHeader || numberAt(bytes, 4) != kVersion) fail("it is not of version 2 of glTF");
    std::string_view text;
    for (std::size_t at = kHeader; at + kChunkHeader <= bytes.size();) {
        const std::size_t size = numberAt(bytes, at);
        const std::uint32_t type = numberAt(bytes, at + 4);
        if (size > bytes.size() - at - kChunkHeader) fail("it ends too early");
        const std::string_view contents = bytes.substr(at + kChunkHeader, size);
        if (type == kJsonChunk && text.empty())
            text = contents;
        else if (type == kBinaryChunk && buffer_.empty())
            buffer_ = contents;
        else
            otherChunks_ += bytes.substr(at, kChunkHeader + size);
        at += kChunkHeader + size;
    }
    return text;
}

std::string GltfDocument::bytesOfBuffer(const ordered_json &buffer) const {
    if (!buffer.contains("uri")) return buffer_;
    const auto uri = buffer.at("uri").get<std::string>();
    constexpr std::string_view kBase64 = ";base64,";
    const std::size_t start = uri.find(kBase64);
    if (uri.starts_with("data:") && start != std::string::npos)
        return bytesOfBase64(std::string_view(uri).substr(start + kBase64.size()));
    return readFile(namedFile(file_.substr(0, file_.rfind('/') + 1), uri));
}

// Makes one buffer of all, unless there is only one inside of the file.
void GltfDocument::joinBuffers() {
    const ordered_json &buffers = listOf(json, "buffers");
    if (buffers.size() == 1 && !buffers.at(0).contains("uri")) return;
    std::string joined;
    std::vector<std::size_t> starts;
    for (const ordered_json &buffer : buffers) {
        padTo4(joined, '\0');
        starts.push_back(joined.size());
        joined += bytesOfBuffer(buffer);
    }
    if (starts.empty()) return;
    for (ordered_json &view : json.at("bufferViews")) {
        const auto buffer = view.at("buffer").get<std::size_t>();
        if (buffer >= starts.size()) fail(fmt::format("there is no buffer {}", buffer));
        const std::size_t start = starts[buffer] + valueOf(view, "byteOffset", 0);
        view["buffer"] = 0;
        if (start > 0) view["byteOffset"] = start;
    }
    json["buffers"] = ordered_json::array({{{"byteLength", joined.size()}}});
    buffer_ = std::move(joined);
}

std::vector<std::string> GltfDocument::otherFiles() const {
    return guarded([&] {
        std::vector<std::string> names;
        for (const ordered_json &image : listOf(json, "images"))
            if (image.contains("uri") && !image.at("uri").get<std::string>().starts_with("data:"))
                names.push_back(image.at("uri").get<std::string>());
        return names;
    });
}

std::size_t GltfDocument::countOf(std::size_t accessor) const {
    return json.at("accessors").at(accessor).at("count").get<std::size_t>();
}

GltfDocument::Elements GltfDocument::elementsOf(std::size_t index, const char *type, std::size_t size) const {
    const ordered_json &accessor = json.at("accessors").at(index);
    if (accessor.contains("sparse") || !accessor.contains("bufferView"))
        fail(fmt::format("accessor {} is sparse, so that values cannot be added to the file", index));
    if (accessor.at("type") != type)
        fail(fmt::format("accessor {} has the type {}; {} is expected", index,
                         inQuotes(accessor.at("type").get<std::string>()), type));
    const ordered_json &view = json.at("bufferViews").at(accessor.at("bufferView").get<std::size_t>());
    Elements elements{.first = valueOf(view, "byteOffset", 0) + valueOf(accessor, "byteOffset", 0),
                      .stride = valueOf(view, "byteStride", 0),
                      .count = accessor.at("count").get<std::size_t>(),
                      .type = accessor.at("componentType").get<int>()};
    const std::size_t element = size * componentSize(elements.type);
    if (elements.stride == 0) elements.stride = element;
    const std::size_t left = elements.first <= buffer_.size() ? buffer_.size() - elements.first : 0;
    if (elements.count > 0 && (left < element || (left - element) / elements.stride < elements.count - 1))
        fail(fmt::format("accessor {} ends outside of its buffer", index));
    return elements;
}

std::vector<float> GltfDocument::vectors(std::size_t accessor, std::size_t size) const {
    const Elements elements = elementsOf(accessor, typeName(size), size);
    if (elements.type != kFloat)
        fail(fmt::format("the numbers of accessor {} are not floating-point numbers", accessor));
    std::vector<float> numbers;
    numbers.reserve(elements.count * size);
    for (std::size_t i = 0; i < elements.count; ++i)
        for (std::size_t k = 0; k < size; ++k)
            numbers.push_back(binaryNumber<float>(buffer_.data() + elements.first + i * elements.stride + 4 * k));
    return numbers;
}

std::vector<std::size_t> GltfDocument::integers(std::size_t accessor) const {
    const Elements elements = elementsOf(accessor, typeName(1), 1);
    std::vector<std::size_t> numbers;
    numbers.reserve(elements.count);
    for (std::size_t i = 0; i < elements.count; ++i) {
        const char *at = buffer_.data() + elements.first + i * elements.stride;
        switch (elements.type) {
        case kByte: numbers.push_back(static_cast<unsigned char>(*at)); break;
        case kShort: numbers.push_back(binaryNumber<std::uint16_t>(at)); break;
        case kInteger: numbers.push_back(binaryNumber<std::uint32_t>(at)); break;
        default: fail(fmt::format("the numbers of accessor {} are not integers without a sign", accessor));
        }
    }
    return numbers;
}

std::size_t GltfDocument::addVectors(std::span<const float> numbers, std::size_t size) {
    padTo4(buffer_, '\0');
    const std::size_t start = buffer_.size();
    for (const float number : numbers) buffer_ += littleEndianBytes(number);
    ordered_json &views = json.at("bufferViews"), &accessors = json.at("accessors");
    views.push_back({{"buffer", 0}, {"byteOffset", start}, {"byteLength", 4 * numbers.size()}, {"target", kVertices}});
    accessors.push_back({{"bufferView", views.size() - 1},
                         {"componentType", kFloat},
                         {"count", numbers.size() / size},
                         {"type", typeName(size)}});
    json.at("buffers").at(0)["byteLength"] = buffer_.size();
    return accessors.size() - 1;
}

bool GltfDocument::replaceVectors(std::size_t index, std::span<const float> numbers, std::size_t size) {
    const ordered_json &accessor = json.at("accessors").at(index);
    if (accessor.contains("sparse") || accessor.contains("min") || accessor.contains("max") ||
        valueOf(accessor, "byteOffset", 0) != 0 || accessor.at("componentType") != kFloat ||
        accessor.at("type") != typeName(size) || countOf(index) != numbers.size() / size ||
        !accessor.contains("bufferView"))
        return false;
    const auto view = accessor.at("bufferView").get<std::size_t>();
    if (json.at("bufferViews").at(view).contains("byteStride") ||
        std::ranges::count_if(json.at("accessors"), [view](const ordered_json &other) {
            return valueOf(other, "bufferView", view + 1) == view;
        }) != 1)
        return false;
    const Elements elements = elementsOf(index, typeName(size), size);
    std::string bytes;
    for (const float number : numbers) bytes += littleEndianBytes(number);
    buffer_.replace(elements.first, bytes.size(), bytes);
    return true;
}

std::string GltfDocument::bytes() const {
    std::string text = guarded([&] { return json.dump(); }), buffer = buffer_;
    padTo4(text, ' ');
    padTo4(buffer, '\0');
    const std::string chunks = chunkOf(kJsonChunk, text) + chunkOf(kBinaryChunk, buffer) + otherChunks_;
    if (chunks.size() > std::numeric_limits<std::uint32_t>::max() - kHeader)
        fail(fmt::format("the result has {} bytes; a GLB file holds at most 4 GB", chunks.size() + kHeader));
    return "glTF" + littleEndianBytes(kVersion) +
           littleEndianBytes(static_cast<std::uint32_t>(chunks.size() + kHeader)) + chunks;
}

} // namespace velm::host

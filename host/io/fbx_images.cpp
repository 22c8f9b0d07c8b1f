#include "host/io/fbx_images.h"

#include "host/base/error.h"
#include "host/io/base64.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace velm::host {

namespace {

constexpr std::string_view kBinary = "Kaydara FBX Binary  ", kBlanks = " \t\r\n";

// A node of a binary file. It consists of a head, its properties, and the nodes inside of it. The head has the offset
// of the node's end, the number of the properties, their size in bytes, and the node's name. These numbers have eight
// bytes from version 7.5 on, and four before.
struct BinaryNode {
    std::string_view properties, inside;
};

class BinaryFile {
  public:
    BinaryFile(std::string_view bytes, const std::string &file)
        : bytes_(bytes), file_(file), wide_(number(kVersionAt, 4) >= kWideVersion) {}

    std::vector<FbxImage> images() const {
        std::vector<FbxImage> found;
        for (const BinaryNode &objects : nodes(bytes_.substr(kHeader), "Objects"))
            for (const BinaryNode &video : nodes(objects.inside, "Video"))
                for (const BinaryNode &content : nodes(video.inside, "Content"))
                    if (const std::string_view data = rawData(content.properties); !data.empty())
                        found.push_back({.parts = {data}});
        return found;
    }

  private:
    static constexpr std::size_t kVersionAt = 23, kHeader = 27;
    static constexpr std::uint64_t kWideVersion = 7500;

    [[noreturn]] void fail() const {
        throw InputError({.file = file_}, "cannot read the images inside: the file ends too early, or is damaged");
    }

    // A little-endian number at an offset in the file.
    std::uint64_t number(std::size_t at, std::size_t size) const {
        if (at > bytes_.size() || bytes_.size() - at < size) fail();
        std::uint64_t value = 0;
        for (std::size_t i = size; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes_[at + i]);
        return value;
    }

    std::size_t offsetOf(std::string_view part) const { return static_cast<std::size_t>(part.data() - bytes_.data()); }

    // The nodes of that name in a list of nodes, which ends with an empty one or where the part of the file ends.
    std::vector<BinaryNode> nodes(std::string_view list, std::string_view name) const {
        const std::size_t width = wide_ ? 8 : 4, head = 3 * width + 1, end = offsetOf(list) + list.size();
        std::vector<BinaryNode> found;
        for (std::size_t at = offsetOf(list); at < end;) {
            const std::uint64_t next = number(at, width), properties = number(at + 2 * width, width);
            const std::uint64_t nameSize = number(at + 3 * width, 1);
            if (next == 0) break;
            if (next <= at || next > end || next - at < head + nameSize || next - at - head - nameSize < properties)
                fail();
            const std::string_view node = bytes_.substr(at, next - at), rest = node.substr(head + nameSize);
            if (node.substr(head, nameSize) == name)
                found.push_back({.properties = rest.substr(0, properties), .inside = rest.substr(properties)});
            at = next;
        }
        return found;
    }

    // The data of a property of raw bytes: the letter R, their number in four bytes, and the bytes. Empty for others.
    std::string_view rawData(std::string_view property) const {
        constexpr std::size_t kSize = 4;
        if (!property.starts_with('R')) return {};
        const std::uint64_t size = number(offsetOf(property) + 1, kSize);
        if (property.size() - 1 < kSize || size > property.size() - 1 - kSize) fail();
        return property.substr(1 + kSize, size);
    }

    const std::string_view bytes_;
    const std::string &file_;
    const bool wide_;
};

// The quoted texts, separated by commas, at the beginning of `text`. Empty ones are left out.
std::vector<std::string_view> quotedTexts(std::string_view text) {
    std::vector<std::string_view> found;
    for (std::size_t at = 0;
         (at = text.find_first_not_of(" \t\r\n,", at)) != std::string_view::npos && text[at] == '"';) {
        const std::size_t end = text.find('"', at + 1);
        if (end == std::string_view::npos) break;
        if (end > at + 1) found.push_back(text.substr(at + 1, end - at - 1));
        at = end + 1;
    }
    return found;
}

// Text: lines such as 'Content: , "iVBORw0KGgo..."'.
std::vector<FbxImage> imagesOfText(std::string_view text) {
    constexpr std::string_view kKey = "Content:";
    std::vector<FbxImage> found;
    for (std::size_t at = 0; (at = text.find(kKey, at)) != std::string_view::npos;) {
        const std::size_t before = text.substr(0, at).find_last_not_of(" \t");
        const bool startsLine = before == std::string_view::npos || text[before] == '\n' || text[before] == '\r';
        at += kKey.size();
        if (!startsLine) continue;
        if (auto parts = quotedTexts(text.substr(at)); !parts.empty())
            found.push_back({.parts = std::move(parts), .isBase64 = true});
    }
    return found;
}

} // namespace

std::string FbxImage::bytes() const {
    std::string all;
    for (const std::string_view part : parts) all += isBase64 ? bytesOfBase64(part) : std::string(part);
    return all;
}

bool isFbx(std::string_view bytes) {
    if (bytes.starts_with(kBinary)) return true;
    const std::size_t first = bytes.find_first_not_of(kBlanks);
    return first != std::string_view::npos && bytes[first] != '{' && !bytes.starts_with("glTF") &&
           bytes.find("FBXHeaderExtension") != std::string_view::npos;
}

std::vector<FbxImage> imagesOfFbx(std::string_view bytes, const std::string &file) {
    return bytes.starts_with(kBinary) ? BinaryFile(bytes, file).images() : imagesOfText(bytes);
}

} // namespace velm::host

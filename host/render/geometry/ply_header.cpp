#include "host/render/geometry/ply_header.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/render/geometry/mesh_words.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace velm::host {
namespace {

constexpr std::pair<std::string_view, PlyType> kTypes[] = {
    {"char", PlyType::int8},      {"uchar", PlyType::uint8},    {"short", PlyType::int16},
    {"ushort", PlyType::uint16},  {"int", PlyType::int32},      {"uint", PlyType::uint32},
    {"float", PlyType::float32},  {"double", PlyType::float64}, {"int8", PlyType::int8},
    {"uint8", PlyType::uint8},    {"int16", PlyType::int16},    {"uint16", PlyType::uint16},
    {"int32", PlyType::int32},    {"uint32", PlyType::uint32},  {"float32", PlyType::float32},
    {"float64", PlyType::float64}};

constexpr std::pair<std::string_view, PlyEncoding> kEncodings[] = {{"ascii", PlyEncoding::text},
                                                                   {"binary_little_endian", PlyEncoding::littleEndian},
                                                                   {"binary_big_endian", PlyEncoding::bigEndian}};

class HeaderReader {
  public:
    HeaderReader(std::string_view bytes, const std::string &file) : bytes_(bytes), file_(file) {}

    PlyHeader read() {
        requireEnd();
        bool hasEncoding = false;
        nextLine(); // "ply"
        for (;;) {
            std::string_view line = nextLine();
            const std::string_view keyword = takeWord(line);
            if (keyword == "end_header") break;
            if (keyword == "format") {
                header_.encoding = valueOf(kEncodings, takeWord(line), "a format");
                hasEncoding = true;
            } else if (keyword == "element") {
                readElement(line);
            } else if (keyword == "property") {
                readProperty(line);
            } else if (keyword == "comment") {
                header_.namesTexture = header_.namesTexture || takeWord(line) == "TextureFile";
            } // all others are ignored: some programs write comments without the keyword
        }
        if (!hasEncoding) fail("its header names no format");
        return std::move(header_);
    }

  private:
    // Checked first: if the end is missing, the lines that follow may be anything.
    void requireEnd() const {
        for (std::string_view rest = bytes_; takeLine(rest) != "end_header";)
            if (rest.empty())
                throw InputError({.file = file_},
                                 "cannot read the mesh: its header does not end; a line \"end_header\" is expected");
    }

    std::string_view nextLine() {
        std::string_view rest = bytes_.substr(header_.size);
        const std::string_view line = takeLine(rest);
        header_.size = bytes_.size() - rest.size();
        ++header_.lines;
        return line;
    }

    [[noreturn]] void fail(const std::string &what) const {
        throw InputError({.file = file_}, fmt::format("cannot read the mesh: line {}: {}", header_.lines, what));
    }

    template <class Value, std::size_t n>
    Value valueOf(const std::pair<std::string_view, Value> (&table)[n], std::string_view word, const char *what) const {
        const auto *const found =
            std::find_if(std::begin(table), std::end(table), [word](const auto &row) { return row.first == word; });
        if (found == std::end(table)) fail(fmt::format("{} is not {} of PLY files", inQuotes(std::string(word)), what));
        return found->second;
    }

    PlyType takeType(std::string_view &line) const { return valueOf(kTypes, takeWord(line), "a type"); }

    void readElement(std::string_view line) {
        PlyElement element{.name = std::string(takeWord(line)), .count = 0, .properties = {}};
        const std::string word(takeWord(line));
        const auto count = integerOf<std::uint64_t>(word);
        if (!count) fail(fmt::format("the element {} has the number {}", inQuotes(element.name), inQuotes(word)));
        element.count = *count;
        header_.elements.push_back(std::move(element));
    }

    void readProperty(std::string_view line) {
        if (header_.elements.empty()) fail("a property without an element");
        PlyProperty property;
        std::string_view rest = line;
        if (takeWord(rest) == "list") {
            line = rest;
            property.countType = takeType(line);
            if (*property.countType >= PlyType::float32) fail("the length of a list is not an integer");
        }
        property.type = takeType(line);
        property.name = takeWord(line);
        if (property.name.empty()) fail("a property without a name");
        header_.elements.back().properties.push_back(std::move(property));
    }

    const std::string_view bytes_;
    const std::string &file_;
    PlyHeader header_;
};

} // namespace

std::optional<std::size_t> PlyElement::find(std::span<const std::string_view> names) const {
    for (std::size_t i = 0; i < properties.size(); ++i)
        if (std::find(names.begin(), names.end(), properties[i].name) != names.end()) return i;
    return std::nullopt;
}

const PlyElement *PlyHeader::find(std::string_view name) const {
    const auto found =
        std::find_if(elements.begin(), elements.end(), [name](const PlyElement &one) { return one.name == name; });
    return found == elements.end() ? nullptr : &*found;
}

PlyHeader readPlyHeader(std::string_view bytes, const std::string &file) { return HeaderReader(bytes, file).read(); }

} // namespace velm::host

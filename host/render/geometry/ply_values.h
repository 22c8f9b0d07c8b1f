// Read the values of PLY files one after the other. Both classes have the same members, for templates.
#pragma once

#include "host/render/geometry/mesh_words.h"
#include "host/render/geometry/ply_header.h"

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velm::host {

// Thrown if the file ends before the values do.
struct PlyEndsEarly {};
// Thrown for a word that is not a number of the expected type.
struct PlyBadWord {
    int line;
    std::string word; // empty: the line has too few words
};

// An index or a length that is a real number in the file; -1 for a number that cannot be one.
inline std::int64_t indexFrom(double value) {
    return value >= 0 && value < 1e18 ? static_cast<std::int64_t>(value) : std::int64_t{-1};
}

// The values of binary files.
template <std::endian order>
class BinaryPlyValues {
  public:
    static constexpr const char *kUnit = "elements";

    // `bytes` follow the header.
    explicit BinaryPlyValues(std::string_view bytes) : bytes_(bytes) {}

    // The most elements of a kind for which the file has enough bytes.
    std::uint64_t mostOf(const PlyElement &element) const {
        std::size_t size = 0;
        for (const PlyProperty &property : element.properties)
            size += sizeOf(property.countType.value_or(property.type));
        return bytes_.size() / std::max<std::size_t>(size, 1);
    }

    void beginElement() {}

    float real(PlyType type) {
        return value(type, [](auto number) { return static_cast<float>(number); });
    }
    std::int64_t integer(PlyType type) {
        return value(type, [](auto number) {
            if constexpr (std::integral<decltype(number)>)
                return static_cast<std::int64_t>(number);
            else
                return indexFrom(static_cast<double>(number));
        });
    }

  private:
    template <class Use>
    auto value(PlyType type, const Use &use) {
        switch (type) {
        case PlyType::int8: return use(take<std::int8_t>());
        case PlyType::uint8: return use(take<std::uint8_t>());
        case PlyType::int16: return use(take<std::int16_t>());
        case PlyType::uint16: return use(take<std::uint16_t>());
        case PlyType::int32: return use(take<std::int32_t>());
        case PlyType::uint32: return use(take<std::uint32_t>());
        case PlyType::float32: return use(take<float>());
        default: return use(take<double>());
        }
    }

    template <class Number>
    Number take() {
        if (bytes_.size() < sizeof(Number)) throw PlyEndsEarly();
        const auto number = binaryNumber<Number, order>(bytes_.data());
        bytes_.remove_prefix(sizeof(Number));
        return number;
    }

    std::string_view bytes_;
};

// The values of text files: each element is on a line of its own.
class TextPlyValues {
  public:
    static constexpr const char *kUnit = "lines";

    // `bytes` follow the header, which has `lines` lines.
    TextPlyValues(std::string_view bytes, int lines) : bytes_(bytes), lineNumber_(lines) {}

    // The same: each number takes a digit and a separator.
    std::uint64_t mostOf(const PlyElement &element) const {
        return bytes_.size() / std::max<std::size_t>(2 * element.properties.size(), 1) + 1;
    }

    // Goes to the next line that is not blank.
    void beginElement() {
        do {
            if (bytes_.empty()) throw PlyEndsEarly();
            line_ = takeLine(bytes_);
            ++lineNumber_;
        } while (line_.find_first_not_of(" \t") == std::string_view::npos);
    }

    float real(PlyType) { return static_cast<float>(take(realOf)); }
    std::int64_t integer(PlyType type) {
        return type >= PlyType::float32 ? indexFrom(take(realOf)) : take(integerOf<std::int64_t>);
    }

  private:
    // Takes the next word, as a number.
    template <class Number>
    Number take(std::optional<Number> (&parse)(std::string_view)) {
        const std::string_view word = takeWord(line_);
        const std::optional<Number> number = parse(word);
        if (!number) throw PlyBadWord{.line = lineNumber_, .word = std::string(word)};
        return *number;
    }

    std::string_view bytes_, line_;
    int lineNumber_;
};

} // namespace velm::host

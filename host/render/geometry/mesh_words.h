// The words and numbers in mesh files.
#pragma once

#include <algorithm>
#include <bit>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace velm::host {

// The number in the bytes of a binary file. [any thread]
template <class Number, std::endian order = std::endian::little>
Number binaryNumber(const char *bytes) {
    char raw[sizeof(Number)];
    std::memcpy(raw, bytes, sizeof raw);
    if constexpr (order != std::endian::native) std::reverse(raw, raw + sizeof raw);
    return std::bit_cast<Number>(raw);
}

// Whether this character separates words. The ends of lines do so, too.
constexpr bool isBlank(char letter) { return letter == ' ' || (letter >= '\t' && letter <= '\r'); }

// The word with ASCII capitals as small letters. [any thread]
inline std::string inLowerCase(std::string_view word) {
    std::string lower(word);
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

// Takes the first word off a text, with the blanks before it; empty if there is none. [any thread]
inline std::string_view takeWord(std::string_view &text) {
    std::size_t begin = 0;
    while (begin < text.size() && isBlank(text[begin])) ++begin;
    std::size_t end = begin;
    while (end < text.size() && !isBlank(text[end])) ++end;
    const std::string_view word = text.substr(begin, end - begin);
    text.remove_prefix(end);
    return word;
}

// Takes the first line off a text, without its end. [any thread]
inline std::string_view takeLine(std::string_view &text) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line.substr(0, line.size() - line.ends_with('\r'));
}

// The integer that a word spells; nothing for any other word, or if the type cannot hold the integer. [any thread]
template <class Integer>
std::optional<Integer> integerOf(std::string_view word) {
    if (word.starts_with('+')) word.remove_prefix(1);
    Integer number{};
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size()) return std::nullopt;
    return number;
}

// The same for a real number. Those that are too small or too large for the type are 0 or infinite. [any thread]
inline std::optional<double> realOf(std::string_view word) {
    if (word.starts_with('+')) word.remove_prefix(1);
    double number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (end != word.data() + word.size() || error == std::errc::invalid_argument) return std::nullopt;
    return error == std::errc() ? number : std::strtod(std::string(word).c_str(), nullptr);
}

} // namespace velm::host

#include "host/lws/scene_lines.h"

#include "host/base/error.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <utility>

namespace velm::host::lws {

namespace {

constexpr std::string_view kBlanks = " \t\r\f\v";
constexpr std::size_t kHexDigits = 8;
constexpr double kLargest = 1e30; // far beyond anything in a scene, and safe to calculate with

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// A number that fills the whole text.
template <class Number, class... Form>
std::optional<Number> parsed(std::string_view text, Form... form) {
    Number value{};
    const char *const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, value, form...);
    if (error != std::errc() || last != end) return std::nullopt;
    return value;
}

} // namespace

// The next word, and what follows it.
std::string_view Words::nextWord(std::string_view &after) const {
    const std::string_view text = trimmed(rest_);
    const std::size_t end = std::min(text.find_first_of(kBlanks), text.size());
    after = text.substr(end);
    return text.substr(0, end);
}

std::optional<std::string_view> Words::word() {
    std::string_view after;
    const std::string_view text = nextWord(after);
    if (text.empty()) return std::nullopt;
    rest_ = after;
    return text;
}

std::optional<double> Words::number() {
    std::string_view after;
    std::string_view text = nextWord(after);
    if (text.starts_with('+')) text.remove_prefix(1);
    double value = 0;
    const char *const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, value);
    if (last != end || text.empty()) return std::nullopt;
    // The library reports a number that is too small for a double as out of range; it counts as 0.
    const std::size_t exponent = text.find_first_of("eE");
    const bool isTiny = error == std::errc::result_out_of_range && exponent != std::string_view::npos &&
                        text.substr(exponent + 1).starts_with('-');
    if (isTiny) value = 0;
    if ((error != std::errc() && !isTiny) || !(std::abs(value) <= kLargest)) return std::nullopt;
    rest_ = after;
    return value;
}

std::optional<int> Words::integer() {
    std::string_view after;
    const std::optional<int> value = parsed<int>(nextWord(after));
    if (value) rest_ = after;
    return value;
}

std::optional<std::uint32_t> Words::hex() {
    std::string_view after;
    const std::string_view text = nextWord(after);
    if (text.size() != kHexDigits) return std::nullopt;
    const std::optional<std::uint32_t> value = parsed<std::uint32_t>(text, 16);
    if (value) rest_ = after;
    return value;
}

std::string_view Words::rest() const { return trimmed(rest_); }

Lines::Lines(std::string_view bytes, std::string file) : bytes_(bytes), file_(std::move(file)) {
    const std::optional<Line> first = next();
    if (!first || first->text != "LWSC") fail(1, "this is no LightWave scene: its first line is not LWSC");
    const std::optional<Line> second = next();
    if (!second) fail(2, "the version is missing");
    const std::optional<int> version = Words(second->text).integer();
    if (!version || *version < 1) fail(second->number, "expected the version, a whole number from 1");
    version_ = *version;
}

// The first line from that offset on that is neither empty nor a comment. Advances `at` and `number` past it.
std::optional<Line> Lines::lineAt(std::size_t &at, int &number) const {
    while (at < bytes_.size()) {
        const std::size_t end = std::min(bytes_.find('\n', at), bytes_.size());
        const Line line{.text = trimmed(bytes_.substr(at, end - at)), .number = number};
        at = end + 1;
        ++number;
        if (!line.text.empty() && !line.text.starts_with("//")) return line;
    }
    return std::nullopt;
}

std::optional<Line> Lines::next() { return lineAt(at_, number_); }

std::optional<Line> Lines::peek() const {
    std::size_t at = at_;
    int number = number_;
    return lineAt(at, number);
}

void Lines::skipBlock(const Line &opening) {
    for (std::size_t depth = 1; depth > 0;) {
        const std::optional<Line> line = next();
        if (!line) fail(opening.number, fmt::format("the block \"{}\" is not closed", opening.text));
        if (line->opensBlock()) ++depth;
        if (line->closesBlock()) --depth;
    }
}

std::optional<Line> Lines::nextInBlock(const Line &opening) {
    for (;;) {
        const std::optional<Line> line = next();
        if (!line) fail(opening.number, fmt::format("the block \"{}\" is not closed", opening.text));
        if (line->closesBlock()) return std::nullopt;
        if (!line->opensBlock()) return line;
        skipBlock(*line);
    }
}

void Lines::skipPlugin(const Line &opening) {
    for (;;) {
        const std::optional<Line> line = next();
        if (!line) fail(opening.number, "there is no EndPlugin for this Plugin");
        if (line->text == "EndPlugin") return;
    }
}

void Lines::failAtEnd(const std::string &what) const { fail(number_ - 1, what); }

void Lines::fail(int line, const std::string &what) const { throw InputError({.file = file_, .line = line}, what); }

} // namespace velm::host::lws

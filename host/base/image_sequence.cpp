#include "host/base/image_sequence.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <system_error>

namespace velm::host {

namespace {

// A pattern without its number.
struct PatternParts {
    std::string_view before, after;
    std::size_t width = 0; // of the number, in characters; 0: this is not a pattern
};

PatternParts partsOf(std::string_view pattern) {
    const std::size_t end = pattern.rfind('#') + 1; // 0 if there is no '#'
    if (end == 0 || pattern.find('/', end) != std::string_view::npos) return {};
    const std::size_t before = pattern.find_last_not_of('#', end - 1);
    const std::size_t start = before == std::string_view::npos ? 0 : before + 1;
    return {.before = pattern.substr(0, start), .after = pattern.substr(end), .width = end - start};
}

} // namespace

int ImageSequence::numberAt(int frame) const {
    const std::int64_t wanted = std::int64_t{frame} + offset, count = std::int64_t{last} - first + 1;
    if (!loop) return static_cast<int>(std::clamp(wanted, std::int64_t{first}, std::int64_t{last}));
    const std::int64_t steps = (wanted - first) % count;
    return static_cast<int>(first + (steps < 0 ? steps + count : steps));
}

bool isSequencePattern(std::string_view pattern) { return partsOf(pattern).width > 0; }

std::string numberedFile(std::string_view pattern, int number) {
    const PatternParts parts = partsOf(pattern);
    const std::string sign = number < 0 ? "-" : "", digits = std::to_string(std::abs(std::int64_t{number}));
    const std::size_t present = sign.size() + digits.size();
    const std::string zeros(parts.width > present ? parts.width - present : 0, '0');
    return std::string(parts.before) + sign + zeros + digits + std::string(parts.after);
}

std::optional<int> numberOfFile(std::string_view pattern, std::string_view file) {
    const PatternParts parts = partsOf(pattern);
    if (parts.width == 0 || !file.starts_with(parts.before) || !file.ends_with(parts.after)) return std::nullopt;
    if (file.size() <= parts.before.size() + parts.after.size()) return std::nullopt;
    const char *const start = file.data() + parts.before.size();
    const char *const end = file.data() + file.size() - parts.after.size();
    int number = 0;
    const auto [rest, error] = std::from_chars(start, end, number);
    if (error != std::errc() || rest != end || numberedFile(pattern, number) != file) return std::nullopt;
    return number;
}

} // namespace velm::host

#include "host/io/named_files.h"

#include "host/io/files.h"
#include "host/io/reader_process.h"

#include <algorithm>
#include <charconv>
#include <memory_resource>
#include <system_error>

namespace velm::host {

namespace {

struct ReadNames {
    explicit ReadNames(std::pmr::memory_resource *memory) : names(memory) {}

    bool isWithin(const SharedArena &arena) const {
        return arena.holds(names) &&
               std::all_of(names.begin(), names.end(), [&](const std::pmr::string &name) { return arena.holds(name); });
    }

    std::pmr::vector<std::pmr::string> names;
};

} // namespace

std::string withoutEscapes(std::string_view text) {
    constexpr std::size_t kEscape = 3; // characters
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        unsigned code = 0;
        const char *const digits = text.data() + at + 1;
        const bool isEscape = text[at] == '%' && text.size() - at >= kEscape &&
                              std::from_chars(digits, digits + 2, code, 16).ptr == digits + 2 && code != 0;
        result += isEscape ? static_cast<char>(code) : text[at];
        if (isEscape) at += kEscape - 1;
    }
    return result;
}

std::string namedFile(const std::string &directory, const std::string &name) {
    const std::string unescaped = withoutEscapes(name);
    for (std::string spelling : {name, unescaped}) {
        if (!whyUnreadable(directory + spelling)) return directory + spelling;
        std::ranges::replace(spelling, '\\', '/');
        if (!whyUnreadable(directory + spelling)) return directory + spelling;
    }
    return directory + name;
}

std::vector<std::string> namesReadApart(const std::string &file, const char *what,
                                        const std::function<std::vector<std::string>()> &work) {
    const auto read = readApart<ReadNames>(file, what, [&](ReadNames &result) {
        for (const std::string &name : work()) result.names.emplace_back(name);
    });
    return {read->names.begin(), read->names.end()};
}

} // namespace velm::host

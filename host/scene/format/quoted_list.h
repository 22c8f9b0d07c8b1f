// Lists of texts in messages.
#pragma once

#include <span>
#include <string>

namespace velm::host {

// `"mesh", "plane", "box"`.
inline std::string quotedList(std::span<const char *const> texts) {
    std::string list;
    for (const char *text : texts) {
        list += list.empty() ? "\"" : ", \"";
        list += text;
        list += '"';
    }
    return list;
}

} // namespace velm::host

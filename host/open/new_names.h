// Names for parts of an opened file, as a scene file can hold them.
#pragma once

#include "host/render/geometry/unused_names.h"

#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// The name of a part of a file, changed where a scene file cannot hold it. [any thread]
inline std::string writableName(std::string_view name) {
    std::string result;
    for (const char c : name)
        if (c != '>' || !result.ends_with('-')) result += c; // "->" separates the ends of connections
    const std::size_t first = result.find_first_not_of(' ');
    if (first == std::string::npos) return "Unnamed";
    return result.substr(first, result.find_last_not_of(' ') - first + 1);
}

// Returns a source of names that none of `all` has. `before` and `after` enclose the number of a repeated name: by
// default, a second "Lid" becomes "Lid (2)". [any thread]
template <class T>
UnusedNames unusedNamesBeside(const std::vector<T> &all, const char *before = " (", const char *after = ")") {
    UnusedNames names(before, after);
    for (const T &one : all) names.add(one.name);
    return names;
}

} // namespace velm::host

// Names for parts of an opened file, as a scene file can hold them.
#pragma once

#include "host/render/geometry/unused_names.h"

#include <string>
#include <vector>

namespace velm::host {

// The name of a part of a file, changed where a scene file cannot hold it. [any thread]
inline std::string writableName(std::string name) {
    for (std::size_t at = 0; (at = name.find("->", at)) != std::string::npos;) name.replace(at, 2, "-");
    const std::size_t first = name.find_first_not_of(' ');
    if (first == std::string::npos) return "Unnamed";
    return name.substr(first, name.find_last_not_of(' ') - first + 1);
}

// Gives names that none of these has: a second "Lid" becomes "Lid (2)". [any thread]
template <class T>
UnusedNames unusedNamesBeside(const std::vector<T> &all) {
    UnusedNames names(" (", ")");
    for (const T &one : all) names.add(one.name);
    return names;
}

} // namespace velm::host

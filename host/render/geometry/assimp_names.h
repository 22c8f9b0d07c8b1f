// Names of the parts of a file that assimp reads, for messages.
#pragma once

#include "host/base/names.h"

#include <assimp/types.h>
#include <fmt/format.h>

#include <string>

namespace velm::host {

// The name that the part has, in quotes, or its number, counted from 1. `index` counts from 0.
inline std::string nameOrNumber(const aiString &name, unsigned index) {
    return name.length > 0 ? inQuotes(name.C_Str()) : fmt::format("number {}", index + 1);
}

} // namespace velm::host

// Names of the parts of a file that assimp reads, for messages.
#pragma once

#include "host/base/names.h"

#include <assimp/types.h>
#include <fmt/format.h>

#include <string>

namespace velm::host {

// The name of a part in quotes, or, if that is empty, its number: `index` counted from 1.
inline std::string nameOrNumber(const aiString &name, unsigned index) {
    return name.length > 0 ? inQuotes(name.C_Str()) : fmt::format("number {}", index + 1);
}

} // namespace velm::host

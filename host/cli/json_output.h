// Results as JSON, for scripts.
#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>

namespace velm::host {

using Json = nlohmann::ordered_json;

// Prints the value over several lines, with a line break at the end. Text that is not UTF-8, such as names of files,
// gets U+FFFD in place of what cannot be read.
void printJson(const Json &value, std::ostream &out);

// JSON has no number for NaN and the infinities: they become the texts "NaN", "Infinity" and "-Infinity".
Json jsonNumber(double number);

// The option --json.
inline constexpr const char *kJsonHelp = "Print the result as JSON";

} // namespace velm::host

// How the host says that a name is wrong.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velm {

// A name between double quotes.
std::string quoted(std::string_view name);

// What to add to `no output "Colr"`: `, did you mean "Color"?`, or where nothing is near, `, there are "A" and "B"` for
// a short list, `, there are none` for an empty one, and nothing for a long one.
std::string suggestion(std::string_view wanted, const std::vector<std::string> &known);

} // namespace velm

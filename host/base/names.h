// Names in messages: quoting them, and finding the right one for a misspelt one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// A name between double quotes.
std::string inQuotes(std::string_view name);

// The known name that differs from `wanted` by the fewest typing errors (a character too many, missing, wrong, or two
// swapped; case does not count). Empty when even that one differs in more than a third of its characters. Of equally
// near ones the first wins.
std::string nearest(std::string_view wanted, const std::vector<std::string> &known);

// ", did you mean \"name\"?" for the end of a message; empty when nothing is near.
std::string didYouMean(std::string_view wanted, const std::vector<std::string> &known);

// What to add to `no output "Colr"`: `, did you mean "Color"?`, or where nothing is near, `, there are "A" and "B"` for
// a short list, `, there are none` for an empty one, and nothing for a long one.
std::string suggestion(std::string_view wanted, const std::vector<std::string> &known);

} // namespace velm::host

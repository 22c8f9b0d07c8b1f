// The nearest right name for a misspelt one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velm {

// The known name that differs from `wanted` by the fewest typing slips (a character too many, missing, wrong, or two
// swapped; capitals and small letters are alike). Empty when even that one differs in more than a third of its
// characters. Of equally near ones the first wins.
std::string nearest(std::string_view wanted, const std::vector<std::string> &known);

// ", did you mean \"name\"?" for the end of a message; empty when nothing is near.
std::string didYouMean(std::string_view wanted, const std::vector<std::string> &known);

} // namespace velm

#include "host/graph/names.h"

#include "host/suggest.h"

namespace velm {

std::string quoted(std::string_view name) { return '"' + std::string(name) + '"'; }

std::string suggestion(std::string_view wanted, const std::vector<std::string> &known) {
    constexpr std::size_t kShortList = 12;
    std::string near = didYouMean(wanted, known);
    if (!near.empty()) return near;
    if (known.empty()) return ", there are none";
    if (known.size() > kShortList) return {};
    std::string text = known.size() == 1 ? ", there is only " : ", there are ";
    for (std::size_t i = 0; i < known.size(); ++i) {
        if (i > 0) text += i + 1 == known.size() ? " and " : ", ";
        text += quoted(known[i]);
    }
    return text;
}

} // namespace velm

#include "host/base/names.h"

#include <algorithm>
#include <cctype>

namespace velm::host {

namespace {

char lower(char character) { return static_cast<char>(std::tolower(static_cast<unsigned char>(character))); }

// The optimal string alignment distance: a pair of letters is swapped at most once.
std::size_t slips(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before, previous(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) previous[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool same = lower(a[i - 1]) == lower(b[j - 1]);
            row[j] = std::min({previous[j] + 1, row[j - 1] + 1, previous[j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) && lower(a[i - 2]) == lower(b[j - 1]))
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before = previous;
        previous = row;
    }
    return previous[b.size()];
}

} // namespace

std::string nearest(std::string_view wanted, const std::vector<std::string> &known) {
    std::string best;
    std::size_t fewest = 0;
    for (const std::string &name : known) {
        const std::size_t longest = std::max(wanted.size(), name.size());
        const std::size_t count = slips(wanted, name);
        if (3 * count <= longest && (best.empty() || count < fewest)) {
            best = name;
            fewest = count;
        }
    }
    return best;
}

std::string didYouMean(std::string_view wanted, const std::vector<std::string> &known) {
    const std::string name = nearest(wanted, known);
    return name.empty() ? "" : ", did you mean \"" + name + "\"?";
}

std::string inQuotes(std::string_view name) { return '"' + std::string(name) + '"'; }

std::string suggestion(std::string_view wanted, const std::vector<std::string> &known) {
    constexpr std::size_t kShortList = 12;
    std::string near = didYouMean(wanted, known);
    if (!near.empty()) return near;
    if (known.empty()) return ", there are none";
    if (known.size() > kShortList) return {};
    std::string text = known.size() == 1 ? ", there is only " : ", there are ";
    for (std::size_t i = 0; i < known.size(); ++i) {
        if (i > 0) text += i + 1 == known.size() ? " and " : ", ";
        text += inQuotes(known[i]);
    }
    return text;
}

} // namespace velm::host

#include "host/base/loss_counts.h"

namespace velm::host {

std::string lossText(const char *one, const char *many, std::size_t count) {
    if (count == 1) return one;
    std::string text = many;
    return text.replace(text.find("{}"), 2, std::to_string(count));
}

} // namespace velm::host

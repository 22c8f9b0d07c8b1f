#include "host/cli/json_output.h"

#include "host/base/one_line.h"

#include <cmath>
#include <ostream>

namespace velm::host {

void printJson(const Json &value, std::ostream &out) {
    constexpr int kSpaces = 2;
    out << escapedJson(value.dump(kSpaces, ' ', false, Json::error_handler_t::replace)) << '\n';
}

Json jsonNumber(double number) {
    if (std::isnan(number)) return "NaN";
    if (std::isinf(number)) return number > 0 ? "Infinity" : "-Infinity";
    return number;
}

} // namespace velm::host

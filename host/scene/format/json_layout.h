// JSON as people lay it out.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace velm::host {

// The text of a JSON value, without a final line break. A list or object is on one line if it fits and is nested deep
// enough; the outermost two levels always have a line for each member. Bytes that are not UTF-8, as in names from
// another system, become replacement characters.
std::string layOut(const nlohmann::ordered_json &json);

} // namespace velm::host

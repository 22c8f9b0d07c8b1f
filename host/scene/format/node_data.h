// "data" of a node: bytes as hexadecimal digits, two for each.
#pragma once

#include "host/scene/format/fields.h"

#include <nlohmann/json.hpp>

namespace velm::host {

void readNodeData(const ReadContext &context, const JsonMember &found, NodeDescription &node);
std::optional<nlohmann::ordered_json> writeNodeData(const WriteContext &context, const NodeDescription &node);
nlohmann::ordered_json nodeDataSchema();

} // namespace velm::host

#include "host/scene/format/node_data.h"

#include <charconv>
#include <fmt/format.h>

namespace velm::host {

void readNodeData(const ReadContext &context, const JsonMember &found, NodeDescription &node) {
    const std::string text = readText(context, found.key, found.value, textRule());
    const auto fail = [&] {
        context.fail(found.value.line, "\"data\" must be bytes as hexadecimal digits, two for each, such as \"00ff\"");
    };
    if (text.size() % 2 != 0) fail();
    for (std::size_t i = 0; i < text.size(); i += 2) {
        unsigned char byte = 0;
        const char *const from = text.data() + i;
        const auto [end, error] = std::from_chars(from, from + 2, byte, 16);
        if (error != std::errc() || end != from + 2) fail();
        node.data += static_cast<char>(byte);
    }
}

std::optional<nlohmann::ordered_json> writeNodeData(const WriteContext &, const NodeDescription &node) {
    if (node.data.empty()) return std::nullopt;
    std::string text;
    for (const char byte : node.data) text += fmt::format("{:02x}", static_cast<unsigned char>(byte));
    return text;
}

nlohmann::ordered_json nodeDataSchema() { return {{"type", "string"}, {"pattern", "^([0-9a-fA-F]{2})+$"}}; }

} // namespace velm::host

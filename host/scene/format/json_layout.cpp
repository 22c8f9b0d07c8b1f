#include "host/scene/format/json_layout.h"

#include "host/base/one_line.h"

#include <nlohmann/json.hpp>

namespace velm::host {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kLongestLine = 110, kStep = 2; // columns

std::string onOneLine(const Json &json) {
    if (json.is_object() || json.is_array()) {
        std::string text;
        for (const auto &[key, value] : json.items()) {
            text += text.empty() ? "" : ", ";
            if (json.is_object()) text += onOneLine(Json(key)) + ": ";
            text += onOneLine(value);
        }
        return json.is_object() ? '{' + text + '}' : '[' + text + ']';
    }
    return escapedJson(json.dump(-1, ' ', false, Json::error_handler_t::replace));
}

std::string layOut(const Json &json, std::size_t indent) {
    std::string line = onOneLine(json);
    const bool canSplit = !json.empty() && (json.is_object() || json.is_array());
    if (!canSplit || (indent > kStep && indent + line.size() <= kLongestLine)) return line;
    const std::string inner(indent + kStep, ' ');
    std::string text;
    for (const auto &[key, value] : json.items()) {
        text += text.empty() ? "\n" : ",\n";
        text += inner + (json.is_object() ? onOneLine(Json(key)) + ": " : "") + layOut(value, indent + kStep);
    }
    text += '\n' + std::string(indent, ' ');
    return json.is_object() ? '{' + text + '}' : '[' + text + ']';
}

} // namespace

std::string layOut(const Json &json) { return layOut(json, 0); }

} // namespace velm::host

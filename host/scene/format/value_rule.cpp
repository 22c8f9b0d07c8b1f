#include "host/scene/format/value_rule.h"

#include "host/scene/format/quoted_list.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace velm::host {

namespace {

using Json = nlohmann::ordered_json;
using Kind = ValueRule::Kind;

// " from 1 to 16", " above 0", " of at least 1" or nothing.
std::string limitsText(const ValueRule &rule) {
    const bool low = std::isfinite(rule.minimum), high = std::isfinite(rule.maximum);
    if (low && high && !rule.exclusiveMinimum && !rule.exclusiveMaximum)
        return fmt::format(" from {} to {}", rule.minimum, rule.maximum);
    std::string text;
    if (low) text += fmt::format("{} {}", rule.exclusiveMinimum ? " above" : " of at least", rule.minimum);
    if (low && high) text += " and";
    if (high) text += fmt::format("{} {}", rule.exclusiveMaximum ? " below" : " of at most", rule.maximum);
    return text;
}

// "a whole number from 1 to 16".
std::string listOf(const char *count, const ValueRule &rule) {
    const std::string limits = limitsText(rule);
    return fmt::format("a list of {} numbers{}{}", count, limits.empty() ? "" : ", each", limits);
}

std::string expected(const ValueRule &rule) {
    switch (rule.kind) {
    case Kind::boolean: return "true or false";
    case Kind::integer: return "a whole number" + limitsText(rule);
    case Kind::number: return "a number" + limitsText(rule);
    case Kind::int2: return "a list of two whole numbers";
    case Kind::vec3: return listOf("three", rule);
    case Kind::scale: return "a number or a list of three, none of them 0";
    case Kind::vec4: return listOf("four", rule);
    case Kind::text: return "a text";
    case Kind::choice: return "one of " + quotedList(rule.choices);
    }
    return {};
}

[[noreturn]] void failWrong(const ReadContext &context, std::string_view key, const JsonValue &value,
                            const ValueRule &rule) {
    context.fail(value.line, fmt::format("\"{}\" must be {}; found {}", key, expected(rule), value.shown()));
}

bool isWithin(double number, const ValueRule &rule) {
    if (rule.exclusiveMinimum ? number <= rule.minimum : number < rule.minimum) return false;
    return rule.exclusiveMaximum ? number < rule.maximum : number <= rule.maximum;
}

bool isNumber(const JsonValue &value, const ValueRule &rule) {
    const bool needsInteger = rule.kind == Kind::integer || rule.kind == Kind::int2;
    return value.kind == JsonValue::Kind::number && isWithin(value.number, rule) &&
           (!needsInteger || value.number == std::floor(value.number));
}

template <class Number, std::size_t n>
std::array<Number, n> readList(const ReadContext &context, std::string_view key, const JsonValue &value,
                               const ValueRule &rule) {
    if (value.kind != JsonValue::Kind::list || value.list.size() != n) failWrong(context, key, value, rule);
    std::array<Number, n> result{};
    for (std::size_t i = 0; i < n; ++i) {
        const JsonValue &element = value.list[i];
        if (!isNumber(element, rule))
            context.fail(element.line,
                         fmt::format("\"{}\" must be {}; its {} is {}", key, expected(rule),
                                     std::array{"first", "second", "third", "fourth"}[i], element.shown()));
        result[i] = static_cast<Number>(element.number);
    }
    return result;
}

template <class List>
Json numbersJson(const List &numbers) {
    Json list = Json::array();
    for (const double number : numbers) list.push_back(writePlain(numberRule(), number));
    return list;
}

void addLimits(Json &schema, const ValueRule &rule) {
    if (std::isfinite(rule.minimum)) schema[rule.exclusiveMinimum ? "exclusiveMinimum" : "minimum"] = rule.minimum;
    if (std::isfinite(rule.maximum)) schema[rule.exclusiveMaximum ? "exclusiveMaximum" : "maximum"] = rule.maximum;
}

Json integerSchema(const ValueRule &rule) {
    return {
        {"type", "integer"}, {"minimum", static_cast<int>(rule.minimum)}, {"maximum", static_cast<int>(rule.maximum)}};
}

Json numberSchema(const ValueRule &rule) {
    Json schema = {{"type", "number"}};
    addLimits(schema, rule);
    return schema;
}

Json listSchema(const Json &item, int count) {
    return {{"type", "array"}, {"items", item}, {"minItems", count}, {"maxItems", count}};
}

} // namespace

// ---- Reading ----

bool readBool(const ReadContext &context, std::string_view key, const JsonValue &value) {
    if (value.kind != JsonValue::Kind::boolean) failWrong(context, key, value, boolRule());
    return value.boolean;
}

int readInteger(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule) {
    if (!isNumber(value, rule)) failWrong(context, key, value, rule);
    return static_cast<int>(value.number);
}

double readNumber(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule) {
    if (!isNumber(value, rule)) failWrong(context, key, value, rule);
    return value.number;
}

std::array<int, 2> readInt2(const ReadContext &context, std::string_view key, const JsonValue &value,
                            const ValueRule &rule) {
    return readList<int, 2>(context, key, value, rule);
}

Double3 readVec3(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule) {
    if (rule.kind != Kind::scale) return readList<double, 3>(context, key, value, rule);
    const Double3 scale = value.kind == JsonValue::Kind::number ? Double3{value.number, value.number, value.number}
                                                                : readList<double, 3>(context, key, value, rule);
    if (std::ranges::count(scale, 0.0) > 0) failWrong(context, key, value, rule);
    return scale;
}

std::array<double, 4> readVec4(const ReadContext &context, std::string_view key, const JsonValue &value,
                               const ValueRule &rule) {
    return readList<double, 4>(context, key, value, rule);
}

std::string readText(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule) {
    if (value.kind != JsonValue::Kind::text) failWrong(context, key, value, rule);
    if (value.text.empty()) context.fail(value.line, fmt::format("\"{}\" is empty", key));
    return value.text;
}

int readChoice(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule) {
    if (value.kind != JsonValue::Kind::text) failWrong(context, key, value, rule);
    for (std::size_t i = 0; i < rule.choices.size(); ++i)
        if (value.text == rule.choices[i]) return static_cast<int>(i);
    failWrong(context, key, value, rule);
}

void readPlain(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &,
               bool &result) {
    result = readBool(context, key, value);
}
void readPlain(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule,
               int &result) {
    result = rule.kind == Kind::choice ? readChoice(context, key, value, rule) : readInteger(context, key, value, rule);
}
void readPlain(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule,
               double &result) {
    result = readNumber(context, key, value, rule);
}
void readPlain(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule,
               std::array<int, 2> &result) {
    result = readInt2(context, key, value, rule);
}
void readPlain(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule,
               Double3 &result) {
    result = readVec3(context, key, value, rule);
}
void readPlain(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule,
               std::array<double, 4> &result) {
    result = readVec4(context, key, value, rule);
}
void readPlain(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule,
               std::string &result) {
    result = readText(context, key, value, rule);
}

// ---- Writing ----

Json writePlain(const ValueRule &, const bool &value) { return value; }

Json writePlain(const ValueRule &rule, const int &value) {
    if (rule.kind == Kind::choice) return rule.choices[static_cast<std::size_t>(value)];
    return value;
}

Json writePlain(const ValueRule &, const double &value) {
    constexpr double kExact = 9007199254740992.0; // 2^53
    const auto whole = static_cast<long long>(std::clamp(value, -kExact, kExact));
    if (static_cast<double>(whole) == value) return whole;
    return value;
}

Json writePlain(const ValueRule &, const std::array<int, 2> &value) { return value; }

Json writePlain(const ValueRule &rule, const Double3 &value) {
    const bool isUniform = value[0] == value[1] && value[0] == value[2];
    if (rule.kind == Kind::scale && isUniform) return writePlain(numberRule(), value[0]);
    return numbersJson(value);
}

Json writePlain(const ValueRule &, const std::array<double, 4> &value) { return numbersJson(value); }

Json writePlain(const ValueRule &, const std::string &value) { return value; }

// ---- Schema ----

Json ruleSchema(const ValueRule &rule) {
    switch (rule.kind) {
    case Kind::boolean: return {{"type", "boolean"}};
    case Kind::integer: return integerSchema(rule);
    case Kind::number: return numberSchema(rule);
    case Kind::int2: return listSchema(integerSchema(rule), 2);
    case Kind::vec3: return listSchema(numberSchema(rule), 3);
    case Kind::scale: {
        const Json component = {{"type", "number"}, {"not", {{"const", 0}}}};
        return {{"anyOf", Json::array({component, listSchema(component, 3)})}};
    }
    case Kind::vec4: return listSchema(numberSchema(rule), 4);
    case Kind::text: return {{"type", "string"}, {"minLength", 1}};
    case Kind::choice: return {{"enum", Json(std::vector<std::string>(rule.choices.begin(), rule.choices.end()))}};
    }
    return {};
}

} // namespace velm::host

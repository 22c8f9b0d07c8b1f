#include "host/scene/format/fields.h"

#include "host/base/names.h"

#include <cmath>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

namespace velm::host {

namespace {

std::string quotedList(std::span<const char *const> texts) {
    std::vector<std::string> quoted;
    for (const char *text : texts) quoted.push_back(fmt::format("\"{}\"", text));
    return fmt::format("{}", fmt::join(quoted, ", "));
}

// " from 1 to 16", " above 0", " of at least 1" or nothing.
std::string limitsText(const Form &form) {
    const bool low = std::isfinite(form.least), high = std::isfinite(form.most);
    if (low && high && !form.aboveLeast && !form.belowMost) return fmt::format(" from {} to {}", form.least, form.most);
    std::string text;
    if (low) text += fmt::format("{} {}", form.aboveLeast ? " above" : " of at least", form.least);
    if (low && high) text += " and";
    if (high) text += fmt::format("{} {}", form.belowMost ? " below" : " of at most", form.most);
    return text;
}

// "a whole number from 1 to 16".
std::string wanted(const Form &form) {
    switch (form.kind) {
    case Form::Kind::truth: return "true or false";
    case Form::Kind::whole: return "a whole number" + limitsText(form);
    case Form::Kind::number: return "a number" + limitsText(form);
    case Form::Kind::triple: {
        const std::string limits = limitsText(form);
        return limits.empty() ? "a list of three numbers" : "a list of three numbers, each" + limits;
    }
    case Form::Kind::scale: return "a number or a list of three, none of them 0";
    case Form::Kind::numbers: return "a list of four numbers";
    case Form::Kind::text: return "a text";
    case Form::Kind::choice: return "one of " + quotedList(form.choices);
    }
    return {};
}

[[noreturn]] void failWrong(const ReadContext &context, std::string_view key, const JsonValue &value,
                            const Form &form) {
    context.fail(value.line, fmt::format("\"{}\" must be {}; found {}", key, wanted(form), value.shown()));
}

bool within(double number, const Form &form) {
    if (form.aboveLeast ? number <= form.least : number < form.least) return false;
    return form.belowMost ? number < form.most : number <= form.most;
}

bool isNumber(const JsonValue &value, const Form &form) {
    return value.kind == JsonValue::Kind::number && within(value.number, form);
}

template <std::size_t n>
std::array<double, n> readList(const ReadContext &context, std::string_view key, const JsonValue &value,
                               const Form &form) {
    if (value.kind != JsonValue::Kind::list || value.list.size() != n) failWrong(context, key, value, form);
    std::array<double, n> result{};
    for (std::size_t i = 0; i < n; ++i) {
        const JsonValue &element = value.list[i];
        if (!isNumber(element, form))
            context.fail(element.line,
                         fmt::format("\"{}\" must be {}; its {} is {}", key, wanted(form),
                                     std::array{"first", "second", "third", "fourth"}[i], element.shown()));
        result[i] = element.number;
    }
    return result;
}

bool isScale(const Double3 &scale) { return scale[0] != 0 && scale[1] != 0 && scale[2] != 0; }

void addLimits(nlohmann::ordered_json &schema, const Form &form) {
    if (std::isfinite(form.least)) schema[form.aboveLeast ? "exclusiveMinimum" : "minimum"] = form.least;
    if (std::isfinite(form.most)) schema[form.belowMost ? "exclusiveMaximum" : "maximum"] = form.most;
}

nlohmann::ordered_json listSchema(const Form &form, int count) {
    nlohmann::ordered_json item = {{"type", "number"}};
    addLimits(item, form);
    return {{"type", "array"}, {"items", item}, {"minItems", count}, {"maxItems", count}};
}

} // namespace

bool readTruth(const ReadContext &context, std::string_view key, const JsonValue &value) {
    if (value.kind != JsonValue::Kind::truth) failWrong(context, key, value, truthForm());
    return value.truth;
}

int readWhole(const ReadContext &context, std::string_view key, const JsonValue &value, const Form &form) {
    if (!isNumber(value, form) || value.number != std::floor(value.number)) failWrong(context, key, value, form);
    return static_cast<int>(value.number);
}

double readNumber(const ReadContext &context, std::string_view key, const JsonValue &value, const Form &form) {
    if (!isNumber(value, form)) failWrong(context, key, value, form);
    return value.number;
}

Double3 readTriple(const ReadContext &context, std::string_view key, const JsonValue &value, const Form &form) {
    if (form.kind != Form::Kind::scale) return readList<3>(context, key, value, form);
    const Double3 scale = value.kind == JsonValue::Kind::number ? Double3{value.number, value.number, value.number}
                                                                : readList<3>(context, key, value, form);
    if (!isScale(scale)) failWrong(context, key, value, form);
    return scale;
}

std::array<double, 4> readFour(const ReadContext &context, std::string_view key, const JsonValue &value,
                               const Form &form) {
    return readList<4>(context, key, value, form);
}

std::string readText(const ReadContext &context, std::string_view key, const JsonValue &value, const Form &form) {
    if (value.kind != JsonValue::Kind::text) failWrong(context, key, value, form);
    if (value.text.empty()) context.fail(value.line, fmt::format("\"{}\" is empty", key));
    return value.text;
}

int readChoice(const ReadContext &context, std::string_view key, const JsonValue &value, const Form &form) {
    if (value.kind != JsonValue::Kind::text) failWrong(context, key, value, form);
    for (std::size_t i = 0; i < form.choices.size(); ++i)
        if (value.text == form.choices[i]) return static_cast<int>(i);
    failWrong(context, key, value, form);
}

void wantObject(const ReadContext &context, std::string_view what, const JsonValue &value) {
    if (value.kind != JsonValue::Kind::object)
        context.fail(value.line, fmt::format("{} must be an object in braces; found {}", what, value.shown()));
}

void failUnknownKey(const ReadContext &context, const JsonMember &member, std::string_view what,
                    const std::vector<std::string> &known) {
    context.fail(member.line, fmt::format("{} has no key {}{}", what, velm::host::quoted(member.key),
                                          suggestion(member.key, known)));
}

void wantOneOf(const ReadContext &context, std::string_view what, const JsonValue &object,
               std::span<const char *const> oneOf) {
    const char *first = nullptr;
    for (const JsonMember &member : object.members)
        for (const char *key : oneOf) {
            if (member.key != key) continue;
            if (first) context.fail(member.line, fmt::format("{} cannot be both \"{}\" and \"{}\"", what, first, key));
            first = key;
        }
    if (!first) context.fail(object.line, fmt::format("{} needs one of {}", what, quotedList(oneOf)));
}

void checkName(const ReadContext &context, const JsonMember &member, std::string_view what) {
    const auto &name = member.key;
    if (name.empty()) context.fail(member.line, fmt::format("{} has an empty name", what));
    if (name.front() == ' ' || name.back() == ' ')
        context.fail(member.line, fmt::format("the name \"{}\" starts or ends with a blank", name));
    if (name.find("->") != std::string::npos)
        context.fail(member.line,
                     fmt::format("the name \"{}\" contains \"->\", which parts the ends of connections", name));
}

nlohmann::ordered_json formSchema(const Form &form) {
    using Json = nlohmann::ordered_json;
    switch (form.kind) {
    case Form::Kind::truth: return {{"type", "boolean"}};
    case Form::Kind::whole: {
        Json schema = {{"type", "integer"}};
        schema["minimum"] = static_cast<int>(form.least);
        schema["maximum"] = static_cast<int>(form.most);
        return schema;
    }
    case Form::Kind::number: {
        Json schema = {{"type", "number"}};
        addLimits(schema, form);
        return schema;
    }
    case Form::Kind::triple: return listSchema(form, 3);
    case Form::Kind::scale: {
        const Json component = {{"type", "number"}, {"not", {{"const", 0}}}};
        return {
            {"anyOf", Json::array({component,
                                   Json{{"type", "array"}, {"items", component}, {"minItems", 3}, {"maxItems", 3}}})}};
    }
    case Form::Kind::numbers: return listSchema(form, 4);
    case Form::Kind::text: return {{"type", "string"}, {"minLength", 1}};
    case Form::Kind::choice:
        return {{"enum", Json(std::vector<std::string>(form.choices.begin(), form.choices.end()))}};
    }
    return {};
}

} // namespace velm::host

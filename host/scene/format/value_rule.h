// Plain values of the scene format: numbers, texts, booleans, small lists. A rule says what a value may be. The value's
// reader, its writer and its JSON Schema all follow the rule.
#pragma once

#include "host/base/double3.h"
#include "host/scene/format/json.h"
#include "host/scene/format/search_path.h"

#include <array>
#include <limits>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <string_view>

namespace velm::host {

struct ValueRule {
    enum class Kind {
        boolean,
        integer,
        number,
        int2,  // a list of two integers
        vec3,  // a list of three numbers, each within the limits
        scale, // a list of three numbers, or one number for all three; none of them 0
        vec4,  // a list of four numbers
        text,  // never empty
        choice // one of the texts in `choices`; the value is its index there
    };
    Kind kind = Kind::number;
    double minimum = -std::numeric_limits<double>::infinity();
    double maximum = std::numeric_limits<double>::infinity();
    bool exclusiveMinimum = false; // the minimum itself is not allowed
    bool exclusiveMaximum = false;
    std::span<const char *const> choices{};
};

constexpr ValueRule boolRule() { return {.kind = ValueRule::Kind::boolean}; }
constexpr ValueRule textRule() { return {.kind = ValueRule::Kind::text}; }
constexpr ValueRule integerRule(int minimum = std::numeric_limits<int>::min(),
                                int maximum = std::numeric_limits<int>::max()) {
    return {.kind = ValueRule::Kind::integer, .minimum = double(minimum), .maximum = double(maximum)};
}
constexpr ValueRule int2Rule() {
    return {.kind = ValueRule::Kind::int2,
            .minimum = std::numeric_limits<int>::min(),
            .maximum = std::numeric_limits<int>::max()};
}
constexpr ValueRule numberRule() { return {.kind = ValueRule::Kind::number}; }
constexpr ValueRule positiveRule() { return {.kind = ValueRule::Kind::number, .minimum = 0, .exclusiveMinimum = true}; }
constexpr ValueRule atLeastRule(double minimum) { return {.kind = ValueRule::Kind::number, .minimum = minimum}; }
constexpr ValueRule vec3Rule() { return {.kind = ValueRule::Kind::vec3}; }
constexpr ValueRule vec4Rule() { return {.kind = ValueRule::Kind::vec4}; }
constexpr ValueRule scaleRule() { return {.kind = ValueRule::Kind::scale}; }
constexpr ValueRule colourRule() { return {.kind = ValueRule::Kind::vec3, .minimum = 0}; }
constexpr ValueRule choiceRule(std::span<const char *const> choices) {
    return {.kind = ValueRule::Kind::choice, .choices = choices};
}

// What readers know of the file: its name, for errors, and where to look for the files that it names.
struct ReadContext {
    std::string file;
    std::string directory; // of the file
    SearchPath path;

    SourceLocation at(int line) const { return {.file = file, .line = line}; }
    [[noreturn]] void fail(int line, const std::string &message) const { throw InputError(at(line), message); }
};

// Each reads a plain value; `key` is for messages. All throw InputError, with the value's line, for a value that does
// not obey the rule.
bool readBool(const ReadContext &context, std::string_view key, const JsonValue &value);
int readInteger(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule);
double readNumber(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule);
std::array<int, 2> readInt2(const ReadContext &context, std::string_view key, const JsonValue &value,
                            const ValueRule &rule);
Double3 readVec3(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule);
std::array<double, 4> readVec4(const ReadContext &context, std::string_view key, const JsonValue &value,
                               const ValueRule &rule);
std::string readText(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule);
int readChoice(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule);

// The same by the type of the result: an int is a choice or an integer, as the rule says.
void readPlain(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule,
               bool &result);
void readPlain(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule,
               int &result);
void readPlain(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule,
               double &result);
void readPlain(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule,
               std::array<int, 2> &result);
void readPlain(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule,
               Double3 &result);
void readPlain(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule,
               std::array<double, 4> &result);
void readPlain(const ReadContext &context, std::string_view key, const JsonValue &value, const ValueRule &rule,
               std::string &result);

// The JSON of a plain value, which reads back as the same value. Numbers, which must be finite, become the shortest
// text that reads back as the same double, without a decimal point where they are whole; -0 becomes 0.
nlohmann::ordered_json writePlain(const ValueRule &rule, const bool &value);
nlohmann::ordered_json writePlain(const ValueRule &rule, const int &value);
nlohmann::ordered_json writePlain(const ValueRule &rule, const double &value);
nlohmann::ordered_json writePlain(const ValueRule &rule, const std::array<int, 2> &value);
nlohmann::ordered_json writePlain(const ValueRule &rule, const Double3 &value);
nlohmann::ordered_json writePlain(const ValueRule &rule, const std::array<double, 4> &value);
nlohmann::ordered_json writePlain(const ValueRule &rule, const std::string &value);

// The JSON Schema of a plain value.
nlohmann::ordered_json ruleSchema(const ValueRule &rule);

} // namespace velm::host

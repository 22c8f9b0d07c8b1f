#include "host/lws/keywords.h"

namespace velm::host::lws {

namespace {

constexpr double kOldFullColour = 255; // in versions 1 and 2

double colourFactor(const Statement &statement) { return statement.isOld() ? 1 / kOldFullColour : 1; }

bool readNumbers(Statement &statement, double factor, std::span<Value> values) {
    Words words = statement.words;
    for (Value &value : values) {
        const std::optional<double> number = words.number();
        if (!number) return false;
        value = {.constant = *number * factor, .keys = {}};
    }
    return true;
}

// Numbers in the line, or keys after it.
bool readValues(Statement &statement, double factor, double keyFactor, std::span<Value> values) {
    if (!isEnvelope(statement.lines, statement.words.rest())) return readNumbers(statement, factor, values);
    if (statement.isOld()) {
        const std::array<double, 3> factors{factor, factor, factor};
        readKeyList(statement.lines, statement.framesPerSecond, factors, values);
        return true;
    }
    readNumbers(statement, factor, values); // some lines have constants besides the keys
    std::size_t read = 0;
    while (read < values.size() && readEnvelope(statement.lines, keyFactor, values[read], statement.losses)) ++read;
    return read == values.size();
}

} // namespace

bool readValue(Statement &statement, Value &value, double factor, double keyFactor) {
    return readValues(statement, factor, keyFactor, std::span(&value, 1));
}

bool readColour(Statement &statement, std::array<Value, 3> &colour) {
    const double factor = colourFactor(statement);
    return readValues(statement, factor, factor, colour);
}

bool readConstant(Statement &statement, double &value) {
    Value read{.constant = value, .keys = {}};
    if (!readValue(statement, read)) return false;
    if (read.isAnimated()) statement.lose(Loss::animatedValue);
    value = read.first();
    return true;
}

bool readConstant(Statement &statement, Double3 &colour) {
    std::array<Value, 3> read{};
    if (!readColour(statement, read)) return false;
    bool isAnimated = false;
    for (std::size_t i = 0; i < colour.size(); ++i) {
        isAnimated |= read[i].isAnimated();
        colour[i] = read[i].first();
    }
    if (isAnimated) statement.lose(Loss::animatedValue);
    return true;
}

} // namespace velm::host::lws

#include "host/lws/scene_keys.h"

#include "module/host.h"

#include "host/base/names.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <vector>

namespace velm::host::lws {

namespace {

constexpr int kMostChannels = 64; // far more than a motion has
constexpr int kOldLinear = 1;     // the number of a key of version 1 whose span is straight
constexpr int kOldSpline = 2;     // the shape code of TCB keys in version 2
constexpr const char *kDamaged = "the keys are damaged: expected ";

KeyDescription makeKey(double time, double value) {
    KeyDescription key;
    key.time = time;
    key.value[0] = value;
    return key;
}

// Whether the keys give the same value at all times.
bool isFlat(const KeysDescription &keys) {
    if (keys.before == kBehaveReset || keys.after == kBehaveReset) return false;
    return std::ranges::all_of(keys.keys, [&keys](const KeyDescription &key) {
        return key.value[0] == keys.keys.front().value[0] && (key.shape == kShapeTcb || key.shape == kShapeLinear);
    });
}

// Orders keys by time; of several at the same time, the last one in the file counts. Keys that give the same value
// at all times become the constant.
void settle(Value &value) {
    std::vector<KeyDescription> &keys = value.keys.keys;
    std::ranges::stable_sort(keys, {}, &KeyDescription::time);
    const auto last = std::unique(keys.rbegin(), keys.rend(),
                                  [](const KeyDescription &a, const KeyDescription &b) { return a.time == b.time; });
    keys.erase(keys.begin(), last.base());
    if (keys.empty() || (keys.size() > 1 && !isFlat(value.keys))) return;
    value.constant = keys.front().value[0];
    value.keys = {};
}

double requireNumber(const Lines &lines, const Line &line, Words &words, const char *what) {
    const std::optional<double> number = words.number();
    if (!number) lines.fail(line.number, fmt::format("{}{} in {}", kDamaged, what, inQuotes(line.text)));
    return *number;
}

Line requireLine(Lines &lines, const char *what) {
    const std::optional<Line> line = lines.next();
    if (!line) lines.failAtEnd(fmt::format("the file ends where {} was expected", what));
    return *line;
}

// ---- Blocks ----

// "value time shape p1 ... p6", of which the parameters may be missing.
KeyDescription blockKey(const Lines &lines, const Line &line, Words &words, double factor) {
    const double value = requireNumber(lines, line, words, "the value of a key");
    KeyDescription key = makeKey(requireNumber(lines, line, words, "the time of a key"), value * factor);
    const double shape = words.number().value_or(double{kShapeTcb});
    key.shape = shape >= double{kShapeTcb} && shape <= double{kShapeBezier2} ? static_cast<int>(shape) : kShapeLinear;
    std::array<double, 6> p{};
    for (double &one : p) one = words.number().value_or(0);
    switch (key.shape) {
    case kShapeTcb:
        key.tension = p[0];
        key.continuity = p[1];
        key.bias = p[2];
        break;
    case kShapeHermite:
    case kShapeBezier1: key.parameters = {p[3] * factor, p[4] * factor, 0, 0}; break;
    case kShapeBezier2: key.parameters = {p[0], p[1] * factor, p[2], p[3] * factor}; break;
    default: break;
    }
    return key;
}

int behaviour(Words &words) {
    const int code = words.integer().value_or(kBehaveConstant);
    return code >= kBehaveReset && code <= kBehaveLinear ? code : kBehaveConstant;
}

// ---- Lists ----

// A line that has to hold one whole number.
int requireCount(Lines &lines, const char *what, int least, int most) {
    const Line line = requireLine(lines, what);
    const std::optional<int> count = Words(line.text).integer();
    if (!count || *count < least || *count > most)
        lines.fail(line.number, fmt::format("{}{}, {} to {}", kDamaged, what, least, most));
    return *count;
}

constexpr int kMostKeys = 1 << 30;

struct ChannelSet {
    std::span<const double> factors;
    std::span<Value> values;

    void add(int channel, const KeyDescription &key, double raw) const {
        const auto index = static_cast<std::size_t>(channel);
        if (index >= values.size()) return;
        KeyDescription &added = values[index].keys.keys.emplace_back(key);
        added.value[0] = raw * factors[index];
    }
    void setBehaviours(int channel, int before, int after) const {
        const auto index = static_cast<std::size_t>(channel);
        if (index >= values.size()) return;
        values[index].keys.before = before;
        values[index].keys.after = after;
    }
};

// Version 1: for each key, the values of all channels, then "frame linear tension continuity bias".
void readSharedKeys(Lines &lines, double framesPerSecond, int channels, const ChannelSet &set) {
    const int keys = requireCount(lines, "the number of keys", 1, kMostKeys);
    for (int i = 0; i < keys; ++i) {
        const Line line = requireLine(lines, "a key");
        const Line timing = requireLine(lines, "the time of a key");
        Words words(timing.text);
        KeyDescription key = makeKey(requireNumber(lines, timing, words, "a frame") / framesPerSecond, 0);
        key.shape = words.number().value_or(0) == kOldLinear ? kShapeLinear : kShapeTcb;
        key.tension = words.number().value_or(0);
        key.continuity = words.number().value_or(0);
        key.bias = words.number().value_or(0);
        Words numbers(line.text);
        for (int channel = 0; channel < channels; ++channel)
            set.add(channel, key, requireNumber(lines, line, numbers, "the value of a channel"));
    }
    const std::optional<Line> line = lines.peek();
    if (!line || !line->text.starts_with("EndBehavior")) return;
    lines.next();
    Words words(line->text.substr(std::string_view("EndBehavior").size()));
    const int code = words.integer().value_or(kBehaveConstant);
    const int after = code == kBehaveReset || code == kBehaveRepeat ? code : kBehaveConstant;
    for (int channel = 0; channel < channels; ++channel) set.setBehaviours(channel, kBehaveConstant, after);
}

// Version 2: for each channel, its keys "value time shape tension continuity bias"; then the behaviours of all.
void readSeparateKeys(Lines &lines, int channels, const ChannelSet &set) {
    for (int channel = 0; channel < channels; ++channel) {
        const int keys = requireCount(lines, "the number of keys", 1, kMostKeys);
        for (int i = 0; i < keys; ++i) {
            const Line line = requireLine(lines, "a key");
            Words words(line.text);
            const double value = requireNumber(lines, line, words, "the value of a key");
            KeyDescription key = makeKey(requireNumber(lines, line, words, "the time of a key"), 0);
            key.shape = words.number().value_or(kOldSpline) == kOldSpline ? kShapeTcb : kShapeLinear;
            key.tension = words.number().value_or(0);
            key.continuity = words.number().value_or(0);
            key.bias = words.number().value_or(0);
            set.add(channel, key, value);
        }
    }
    constexpr std::string_view kBehaviours = "Pre/PostBehavior";
    const std::optional<Line> line = lines.peek();
    if (!line || !line->text.starts_with(kBehaviours)) return;
    lines.next();
    Words words(line->text.substr(kBehaviours.size()));
    for (int channel = 0; channel < channels; ++channel) {
        const int before = behaviour(words);
        set.setBehaviours(channel, before, behaviour(words));
    }
}

} // namespace

bool isEnvelope(const Lines &lines, std::string_view arguments) {
    if (arguments.starts_with("(envelope)")) return true;
    const std::optional<Line> line = lines.peek();
    return line && line->opensBlock() && Words(line->text.substr(1)).word() == "Envelope";
}

bool readEnvelope(Lines &lines, double factor, Value &value, Losses &losses) {
    const std::optional<Line> opening = lines.peek();
    if (!opening || !opening->opensBlock() || Words(opening->text.substr(1)).word() != "Envelope") return false;
    lines.next();
    value.keys = {};
    while (const std::optional<Line> line = lines.nextInBlock(*opening)) {
        Words words(line->text);
        const std::string_view keyword = words.word().value_or("");
        if (keyword == "Key") {
            value.keys.keys.push_back(blockKey(lines, *line, words, factor));
        } else if (keyword == "Behaviors") {
            value.keys.before = behaviour(words);
            value.keys.after = behaviour(words);
        } else if (keyword == "ChannelHandler" || keyword == "Plugin") {
            losses.add(Loss::motionModifier, line->number);
        }
    }
    if (value.keys.keys.empty()) lines.fail(opening->number, "the envelope has no keys");
    settle(value);
    return true;
}

void readKeyList(Lines &lines, double framesPerSecond, std::span<const double> factors, std::span<Value> values) {
    const int channels = requireCount(lines, "the number of channels", 1, kMostChannels);
    const ChannelSet set{.factors = factors, .values = values};
    for (Value &value : values) value.keys = {};
    if (lines.version() == 1)
        readSharedKeys(lines, framesPerSecond, channels, set);
    else
        readSeparateKeys(lines, channels, set);
    for (Value &value : values) settle(value);
}

} // namespace velm::host::lws

// The tables of animated settings and their keys.
#include "host/scene/format/key_texts.h"
#include "host/scene/format/nested.h"
#include "host/scene/format/tables.h"

#include <fmt/format.h>

namespace velm::host {

namespace {

using Json = nlohmann::ordered_json;

constexpr unsigned kTcbBit = 1u << kShapeTcb;
constexpr unsigned kCurveBits = 1u << kShapeHermite | 1u << kShapeBezier1 | 1u << kShapeBezier2;

// A key, and the number of components of its value: 1 or 3.
struct KeyInFile {
    KeyDescription key;
    int components = 1;
};

void readKeyValue(const ReadContext &context, const JsonMember &found, KeyInFile &result) {
    if (found.value.kind == JsonValue::Kind::number) {
        result.components = 1;
        result.key.value[0] = found.value.number;
        return;
    }
    if (found.value.kind != JsonValue::Kind::list)
        context.fail(found.value.line,
                     fmt::format("\"value\" must be a number or a list of three; found {}", found.value.shown()));
    result.components = 3;
    result.key.value = readVec3(context, found.key, found.value, vec3Rule());
}

std::optional<Json> writeKeyValue(const WriteContext &, const KeyInFile &key) {
    if (key.components == 1) return writePlain(numberRule(), key.key.value[0]);
    return writePlain(vec3Rule(), key.key.value);
}

Json keyValueSchema() { return {{"anyOf", Json::array({ruleSchema(numberRule()), ruleSchema(vec3Rule())})}}; }

constexpr Field<KeyInFile> kKeyFields[] = {
    {.key = "time",
     .help = "Time of the key, in seconds.",
     .rule = numberRule(),
     .target = inside<&KeyInFile::key, &KeyDescription::time>,
     .required = true},
    {.key = "value",
     .help = "Value of the setting at that time, in the unit that the panel shows.",
     .target = CustomValue<KeyInFile>{.read = readKeyValue, .write = writeKeyValue, .schema = keyValueSchema},
     .required = true},
    {.key = "shape",
     .help = "Shape of the curve from the previous key to this one; \"tcb\" by default.",
     .rule = choiceRule(kShapeTexts),
     .target = kindIn<&KeyInFile::key, &KeyDescription::shape>},
    {.key = "tension",
     .help = "Tension of the TCB spline, -1 to 1.",
     .rule = numberRule(),
     .target = inside<&KeyInFile::key, &KeyDescription::tension>,
     .kinds = kTcbBit},
    {.key = "continuity",
     .help = "Continuity of the TCB spline, -1 to 1.",
     .rule = numberRule(),
     .target = inside<&KeyInFile::key, &KeyDescription::continuity>,
     .kinds = kTcbBit},
    {.key = "bias",
     .help = "Bias of the TCB spline, -1 to 1.",
     .rule = numberRule(),
     .target = inside<&KeyInFile::key, &KeyDescription::bias>,
     .kinds = kTcbBit},
    {.key = "parameters",
     .help = "The four numbers of a curve: tangents in and out (Hermite, Bezier), or time and value of the handles in "
             "and out (Bezier2).",
     .rule = vec4Rule(),
     .target = inside<&KeyInFile::key, &KeyDescription::parameters>,
     .kinds = kCurveBits},
};

constexpr Table<KeyInFile> kKeyTable{.what = "a key", .fields = kKeyFields};

void readKeys(const ReadContext &context, const JsonMember &found, KeysDescription &keys) {
    const JsonValue &list = found.value;
    if (list.kind != JsonValue::Kind::list || list.list.empty())
        context.fail(list.line, fmt::format("\"keys\" must be a list of at least one key; found {}", list.shown()));
    for (const JsonValue &element : list.list) {
        KeyInFile one;
        readObject(context, kKeyTable, element, one);
        if (!keys.keys.empty() && one.components != keys.components)
            context.fail(element.line, "all keys must have values of one kind: a number, or a list of three");
        if (!keys.keys.empty() && one.key.time <= keys.keys.back().time)
            context.fail(element.line, fmt::format("keys must follow one another in time; {} s comes after {} s",
                                                   one.key.time, keys.keys.back().time));
        keys.components = one.components;
        keys.keys.push_back(one.key);
    }
}

std::optional<Json> writeKeys(const WriteContext &context, const KeysDescription &keys) {
    Json list = Json::array();
    for (const KeyDescription &key : keys.keys)
        list.push_back(writeObject(context, kKeyTable, {.key = key, .components = keys.components}));
    return list;
}

Json keysSchema() { return {{"type", "array"}, {"items", objectSchema(kKeyTable)}, {"minItems", 1}}; }

constexpr Field<KeysDescription> kKeysFields[] = {
    {.key = "keys",
     .help = "The keys, in order of time.",
     .target = CustomValue<KeysDescription>{.read = readKeys, .write = writeKeys, .schema = keysSchema},
     .required = true},
    {.key = "before",
     .help = "Behaviour of the value before the first key; \"constant\" by default.",
     .rule = choiceRule(kBehaviourTexts),
     .target = &KeysDescription::before},
    {.key = "after",
     .help = "Behaviour of the value after the last key; \"constant\" by default.",
     .rule = choiceRule(kBehaviourTexts),
     .target = &KeysDescription::after},
};

} // namespace

const Table<KeysDescription> &keysTable() {
    static constexpr Table<KeysDescription> table{.what = "an animated setting", .fields = kKeysFields};
    return table;
}

} // namespace velm::host

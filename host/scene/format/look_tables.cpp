#include "host/scene/format/look_tables.h"

#include <charconv>
#include <fmt/format.h>

namespace velm::host {

namespace {

using Json = nlohmann::ordered_json;

constexpr Form kCoordinate = wholeForm(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
constexpr Form kDisabled = wholeForm(0, 0xffff);

constexpr Field<NetworkView> kViewFields[] = {
    {.key = "location",
     .help = "What the editor's window shows, in its own units.",
     .target = ReadField<NetworkView>([](const ReadContext &context, const JsonMember &found, NetworkView &view) {
         readPlaceInEditor(context, found, view.location);
     }),
     .schema = placeInEditorSchema},
    {.key = "zoom", .help = "How large the editor shows it.", .form = numberForm(), .target = &NetworkView::zoom},
    {.key = "disabled",
     .help = "Other than 0: the network is switched off, and the surface goes by its settings alone.",
     .form = kDisabled,
     .target = &NetworkView::disabled},
    kAtField<NetworkView>,
    kModeField<NetworkView>,
    kPreviewField<NetworkView>,
    kCommentField<NetworkView>,
};

} // namespace

void readPlaceInEditor(const ReadContext &context, const JsonMember &found, std::array<int, 2> &location) {
    const JsonValue &value = found.value;
    if (value.kind != JsonValue::Kind::list || value.list.size() != 2)
        context.fail(value.line,
                     fmt::format("\"{}\" must be a list of two whole numbers; found {}", found.key, value.shown()));
    for (std::size_t i = 0; i < 2; ++i) location[i] = readWhole(context, found.key, value.list[i], kCoordinate);
}

Json placeInEditorSchema() {
    return {{"type", "array"}, {"items", formSchema(kCoordinate)}, {"minItems", 2}, {"maxItems", 2}};
}

const Table<NetworkView> &viewTable() {
    static constexpr Table<NetworkView> table{.what = "a view", .fields = kViewFields};
    return table;
}

void readNodeData(const ReadContext &context, const JsonMember &found, NodeDescription &node) {
    const std::string text = readText(context, found.key, found.value, textForm());
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

Json nodeDataSchema() { return {{"type", "string"}, {"pattern", "^([0-9a-fA-F]{2})+$"}}; }

void readOtherInputs(const ReadContext &context, const JsonMember &found, NetworkDescription &network) {
    if (found.value.kind != JsonValue::Kind::list)
        context.fail(found.value.line,
                     fmt::format("\"{}\" must be a list of names; found {}", found.key, found.value.shown()));
    for (const JsonValue &name : found.value.list)
        network.otherInputs.push_back(readText(context, found.key, name, textForm()));
}

Json otherInputsSchema() { return {{"type", "array"}, {"items", formSchema(textForm())}}; }

} // namespace velm::host

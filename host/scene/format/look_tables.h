// Rows of nodes and networks for what panels do not hold: how an editor shows them, and what is kept for other
// programs.
#pragma once

#include "host/scene/format/nested.h"

namespace velm::host {

// [x, y] in an editor.
void readPlaceInEditor(const ReadContext &context, const JsonMember &found, std::array<int, 2> &location);
nlohmann::ordered_json placeInEditorSchema();

constexpr Form kModeForm = wholeForm(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());

inline NodeLook &lookOf(NodeDescription &node) { return node.look; }
inline NodeLook &lookOf(NetworkView &view) { return view.root; }

// The rows that a node and the root of a network have in common.
template <class T>
constexpr Field<T> kAtField{.key = "at",
                            .help = "Where an editor shows it; [0, 0] when there is no word of it.",
                            .target = ReadField<T>([](const ReadContext &context, const JsonMember &found, T &result) {
                                readPlaceInEditor(context, found, lookOf(result).at);
                            }),
                            .schema = placeInEditorSchema};
template <class T>
constexpr Field<T> kModeField{.key = "mode",
                              .help = "How an editor shows it: 1, drawn open, when there is no word of it.",
                              .target =
                                  ReadField<T>([](const ReadContext &context, const JsonMember &found, T &result) {
                                      lookOf(result).mode = readWhole(context, found.key, found.value, kModeForm);
                                  }),
                              .schema = [] { return formSchema(kModeForm); }};
template <class T>
constexpr Field<T> kPreviewField{.key = "preview",
                                 .help = "Name of the output that an editor previews.",
                                 .target =
                                     ReadField<T>([](const ReadContext &context, const JsonMember &found, T &result) {
                                         lookOf(result).preview = readText(context, found.key, found.value, textForm());
                                     }),
                                 .schema = [] { return formSchema(textForm()); }};
template <class T>
constexpr Field<T> kCommentField{.key = "comment",
                                 .help = "A remark for people.",
                                 .target =
                                     ReadField<T>([](const ReadContext &context, const JsonMember &found, T &result) {
                                         lookOf(result).comment = readText(context, found.key, found.value, textForm());
                                     }),
                                 .schema = [] { return formSchema(textForm()); }};

// "view" of a surface or of a network in a node.
const Table<NetworkView> &viewTable();

// "data" of a node: bytes as hexadecimal digits, two for each.
void readNodeData(const ReadContext &context, const JsonMember &found, NodeDescription &node);
nlohmann::ordered_json nodeDataSchema();

// "otherInputs" of a surface or a network.
void readOtherInputs(const ReadContext &context, const JsonMember &found, NetworkDescription &network);
nlohmann::ordered_json otherInputsSchema();

} // namespace velm::host

// The panels of the host's own nodes, derived from the same tables.
#include "host/graph/builtin/frame.h"
#include "host/graph/builtin/kinds.h"

#include <cstring>
#include <vector>

namespace velm::host::builtin {

namespace {

constexpr unsigned int kFirstId = 0x8001; // of the first control and its value; the others follow in the table's order

const HostImageList &images() { return *services().images; }

Instance *viewed(HostPanel *panel) { return static_cast<Instance *>(services().panels->getData(panel, 0)); }

// The row and index of the parameter with an identifier; null when there is none.
const Parameter *rowOf(const Instance &instance, unsigned int id, std::size_t &index) {
    index = id - kFirstId;
    if (id < kFirstId || index >= kMaxParameters || !instance.definition->parameters[index].label) return nullptr;
    return &instance.definition->parameters[index];
}

// The image popup: "(none)", then the images of the list in its present order.
int imageCount(void *) {
    int count = 1;
    for (HostImage *image = images().first(); image; image = images().next(image)) ++count;
    return count;
}

HostImage *imageAt(int index) {
    if (index < 1) return nullptr;
    HostImage *image = images().first();
    while (image && --index > 0) image = images().next(image);
    return image;
}

const char *imageName(void *, int index) { return index == 0 ? "(none)" : images().name(imageAt(index)); }

// The popup's index of an image; 0 for null and for an image that is not in the list.
int indexOf(const HostImage *chosen) {
    int index = 1;
    for (HostImage *image = images().first(); image; image = images().next(image), ++index)
        if (image == chosen) return index;
    return 0;
}

void *get(void *instance, unsigned int id) {
    auto &node = *static_cast<Instance *>(instance);
    std::size_t index = 0;
    const Parameter *row = rowOf(node, id, index);
    if (!row) return nullptr;
    if (node.inputs[index] && services().inputs->isConnected(node.inputs[index])) return nullptr;
    if (row->kind == Kind::text) return node.text.data();
    if (row->kind == Kind::image) node.integers[index] = indexOf(node.image);
    if (node.parms[index]) return node.parms[index];
    return &node.integers[index];
}

int set(void *instance, unsigned int id, void *value) {
    auto &node = *static_cast<Instance *>(instance);
    std::size_t index = 0;
    const Parameter *row = rowOf(node, id, index);
    if (!row) return kSetUnknown;
    if (row->kind == Kind::text) {
        std::strncpy(node.text.data(), static_cast<const char *>(value), kTextSize - 1);
        node.text.back() = '\0';
    } else if (row->kind == Kind::image) {
        node.image = imageAt(*static_cast<const int *>(value));
    } else if (node.parms[index]) {
        node.readParameters(node.time); // the panel has already changed the parameter
    } else {
        node.integers[index] = *static_cast<const int *>(value);
    }
    return kSetDefault;
}

int changed(HostPanel *panel, unsigned int, unsigned int, int event) {
    Instance *instance = viewed(panel);
    if (event == kEventChanging) services().nodes->updatePreview(instance->node);
    if (event == kEventSet) services().update(HOST_CLASS_NODE_HANDLER, instance);
    return 0;
}

HostHint word(HostWord value) {
    HostHint hint{};
    hint.word = value;
    return hint;
}

HostHint text(const char *value) {
    HostHint hint{};
    hint.text = value;
    return hint;
}

void addHints(std::vector<HostHint> &hints, const Parameter &row, unsigned int id) {
    const KindFacts facts = factsOf(row.kind);
    hints.insert(hints.end(), {word(kHintAddControl), word(id), text(facts.control), word(id)});
    hints.insert(hints.end(), {word(kHintLabel), word(id), text(row.label), word(0)});
    if (row.kind == Kind::choice) {
        HostHint texts{};
        texts.texts = row.texts;
        hints.insert(hints.end(), {word(kHintStringList), word(id), texts, word(0)});
    }
    if (row.kind == Kind::image) {
        HostHint count{}, name{};
        count.popupCount = imageCount;
        name.popupName = imageName;
        hints.insert(hints.end(), {word(kHintPopupFunctions), word(id), count, name});
    }
}

} // namespace

HostPanel *panelOf(Instance &instance) {
    if (instance.panel) return instance.panel;
    const HostPanelFuncs &panels = *services().panels;
    HostPanel *panel = panels.create(kPanelForm, nullptr);
    if (!panel) return nullptr;
    HostHint change{};
    change.change = changed;
    std::vector<HostHint> hints{word(kHintChangeNotify), change};
    std::vector<HostPanelValue> values;
    unsigned int id = kFirstId;
    for (const Parameter &row : instance.definition->parameters) {
        if (!row.label) break;
        addHints(hints, row, id);
        values.push_back({.id = id++, .label = row.label, .type = factsOf(row.kind).value});
    }
    hints.push_back(word(kHintEnd));
    values.push_back({.id = 0, .label = nullptr, .type = nullptr});
    panels.hint(panel, 0, hints.data());
    panels.describe(panel, values.data(), get, set);
    panels.viewInstance(panel, &instance);
    panels.setData(panel, 0, &instance);
    return instance.panel = panel;
}

} // namespace velm::host::builtin

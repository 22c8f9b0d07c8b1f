// A plug-in for tests, whose panel has every kind of control, and helpers for its hints.
#pragma once

#include "host/animation/vparm.h"
#include "host/panel/panel.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace velm::host {

inline HostHint word(HostWord value) { return {.word = value}; }
inline HostHint text(const char *value) { return {.text = value}; }
using Hints = std::vector<HostHint>;

inline Hints control(unsigned int id, const char *type, const char *label, unsigned int valueId) {
    return {word(kHintAddControl), word(id), text(type),  word(valueId),
            word(kHintLabel),      word(id), text(label), word(0)};
}
inline Hints control(unsigned int id, const char *type, const char *label) { return control(id, type, label, id); }
inline Hints list(HostWord tag, const std::vector<HostWord> &words) {
    Hints hints = {word(tag)};
    for (const HostWord each : words) hints.push_back(word(each));
    hints.push_back(word(0));
    return hints;
}
inline Hints number(HostWord tag, unsigned int id, int value) {
    return {word(tag), word(id), word(static_cast<HostWord>(static_cast<std::intptr_t>(value)))};
}
inline Hints texts(unsigned int id, const char *const *entries) {
    return {word(kHintStringList), word(id), {.texts = entries}, word(0)};
}
inline Hints enable(unsigned int valueId, const char *message, const int *map, const std::vector<HostWord> &ids) {
    Hints hints = {word(kHintEnable), word(valueId), text(message), word(0), {.numbers = map}};
    for (const HostWord id : ids) hints.push_back(word(id));
    hints.push_back(word(0));
    return hints;
}
inline Hints operator+(Hints first, const Hints &second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// The instance of the panels in these tests.
struct Plug {
    enum Id : unsigned int {
        kMode = 0x8001,
        kCount,
        kSwitch,
        kShape,
        kName,
        kPicture,
        kSize,
        kOpacity,
        kTurn,
        kTint,
        kWhere,
        kPress,
        kThumb,
        kSwitch2
    };

    int mode = 0, count = 1, on = 0, shape = 10, picture = 0, on2 = 0;
    char name[260] = "first";
    HostVParm size{kParmFloat}, opacity{kParmPercent}, turn{kParmAngle}, tint{kParmColour}, where{kParmDistanceTriple};
    HostPanel *panel = nullptr;
    unsigned int connected = 0; // the value that a connection feeds; 0 for none
    bool refuses = false;       // the setter returns kSetUnknown
    int setterResult = kSetDefault;
    std::vector<std::string> heard; // the calls of setter, change, button and destroy callbacks, in order
    std::vector<std::string> pictures = {"(none)", "moon.png"};

    static void *get(void *instance, unsigned int id);
    static int set(void *instance, unsigned int id, void *value);
    static int change(HostPanel *panel, unsigned int control, unsigned int value, int event);
    static void destroyed(void *userData);
    static void press(HostPanel *panel, int control);
    static int pictureCount(void *userData);
    static const char *pictureName(void *userData, int index);
    static void draw(HostPanel *panel, unsigned int control, HostDrawArea *area, int width, int height);
};

inline void *Plug::get(void *instance, unsigned int id) {
    auto &plug = *static_cast<Plug *>(instance);
    if (id == plug.connected) return nullptr;
    switch (id) {
    case kMode: return &plug.mode;
    case kCount: return &plug.count;
    case kSwitch: return &plug.on;
    case kSwitch2: return &plug.on2;
    case kShape: return &plug.shape;
    case kName: return plug.name;
    case kPicture: return &plug.picture;
    case kSize: return &plug.size;
    case kOpacity: return &plug.opacity;
    case kTurn: return &plug.turn;
    case kTint: return &plug.tint;
    case kWhere: return &plug.where;
    default: return nullptr;
    }
}

inline int Plug::set(void *instance, unsigned int id, void *value) {
    auto &plug = *static_cast<Plug *>(instance);
    plug.heard.push_back("set " + std::to_string(id - 0x8000));
    if (plug.refuses) return kSetUnknown;
    const auto whole = [value] { return *static_cast<const int *>(value); };
    switch (id) {
    case kMode: plug.mode = whole(); break;
    case kCount: plug.count = whole(); break;
    case kSwitch: plug.on = whole(); break;
    case kSwitch2: plug.on2 = whole(); break;
    case kShape: plug.shape = whole(); break;
    case kPicture: plug.picture = whole(); break;
    // Reads the control instead of the value, as some plug-ins do.
    case kName: std::strcpy(plug.name, static_cast<const char *>(panelFuncs()->getValue(plug.panel, kName))); break;
    default: break;
    }
    return plug.setterResult;
}

inline int Plug::change(HostPanel *panel, unsigned int control, unsigned int value, int event) {
    auto &plug = *static_cast<Plug *>(panelFuncs()->getData(panel, 0));
    plug.heard.push_back("change " + std::to_string(control - 0x8000) + " " + std::to_string(value - 0x8000) + " " +
                         std::to_string(event));
    return 0;
}

inline void Plug::destroyed(void *userData) {
    if (userData) static_cast<Plug *>(userData)->heard.emplace_back("destroyed");
}

inline void Plug::press(HostPanel *panel, int control) {
    static_cast<Plug *>(panelFuncs()->getData(panel, 0))->heard.push_back("press " + std::to_string(control - 0x8000));
}

inline int Plug::pictureCount(void *userData) {
    return static_cast<int>(static_cast<Plug *>(userData)->pictures.size());
}

inline const char *Plug::pictureName(void *userData, int index) {
    return static_cast<Plug *>(userData)->pictures[static_cast<std::size_t>(index)].c_str();
}

inline void Plug::draw(HostPanel *panel, unsigned int, HostDrawArea *area, int width, int height) {
    panelFuncs()->draw->rgbBox(area, 10, 20, 30, 0, 0, width, height);
    panelFuncs()->draw->rgbPixel(area, 300, -5, panel ? 7 : 0, width - 1, height - 1);
}

inline constexpr const char *kModes[] = {" Plain ", "Odd", "Even", nullptr};
inline constexpr const char *kShapes[] = {"Ball", "Box", nullptr};
inline constexpr int kShapeValues[] = {10, 20};

inline constexpr HostPanelValue kPlugValues[] = {
    {Plug::kMode, "Mode", "integer"},
    {Plug::kCount, "Count", "integer"},
    {Plug::kSwitch, "Switch", "integer"},
    {Plug::kShape, "Shape", "integer"},
    {Plug::kName, "Name", "string"},
    {Plug::kPicture, "Picture", "integer"},
    {Plug::kSize, "Size", "float-env"},
    {Plug::kOpacity, "Opacity", "percent-env"},
    {Plug::kTurn, "Turn", "angle-env"},
    {Plug::kTint, "Tint", "color-env"},
    {Plug::kWhere, "Where", "distance3-env"},
    {Plug::kSwitch2, "Switch", "integer"},
    {0, nullptr, nullptr},
};

inline Hints plugControls() {
    using Id = Plug::Id;
    return Hints{word(kHintChangeNotify), {.change = Plug::change}} + control(Id::kMode, "iPopChoice", "Mode") +
           texts(Id::kMode, kModes) + control(Id::kCount, "integer", "Count") +
           control(Id::kSwitch, "iBoolean", "Switch") + control(Id::kShape, "iPopTransform", "Shape") +
           texts(Id::kShape, kShapes) +
           Hints{word(kHintValueTransform), word(Id::kShape), word(2), {.numbers = kShapeValues}} +
           control(Id::kName, "string", "Name") + control(Id::kPicture, "iPopChoice", "Picture") +
           Hints{word(kHintPopupFunctions),
                 word(Id::kPicture),
                 {.popupCount = Plug::pictureCount},
                 {.popupName = Plug::pictureName}} +
           control(Id::kSize, "float-env", "Size") + control(Id::kOpacity, "percent-env", "Opacity") +
           control(Id::kTurn, "angle-env", "Turn") + control(Id::kTint, "color-env", "Tint") +
           control(Id::kWhere, "distance3-env", "Where") + control(Id::kPress, "vButton", "Press", 0) +
           Hints{word(kHintButton),
                 word(Id::kPress),
                 {.button = Plug::press},
                 word(kHintAddControl),
                 word(Id::kThumb),
                 text("dThumbnail"),
                 word(0),
                 word(kHintDraw),
                 word(Id::kThumb),
                 {.draw = Plug::draw}} +
           control(Id::kSwitch2, "iBoolean", "Switch") +
           Hints{word(kHintDestroyNotify), {.destroyed = Plug::destroyed}, word(0)};
}

struct PanelDestroyer {
    void operator()(HostPanel *panel) const { panelFuncs()->destroy(panel); }
};
using PanelOwner = std::unique_ptr<HostPanel, PanelDestroyer>;

// Builds the panel through the service, as plug-ins do: hints before the description.
inline PanelOwner makePanel(Plug &plug, const Hints &more = {}) {
    const HostPanelFuncs &funcs = *panelFuncs();
    PanelOwner panel(funcs.create(kPanelForm, nullptr));
    Hints hints = plugControls() + more;
    hints.push_back(word(kHintEnd));
    funcs.hint(panel.get(), 0, hints.data());
    funcs.describe(panel.get(), kPlugValues, Plug::get, Plug::set);
    funcs.viewInstance(panel.get(), &plug);
    funcs.setData(panel.get(), 0, &plug);
    plug.panel = panel.get();
    return panel;
}

} // namespace velm::host

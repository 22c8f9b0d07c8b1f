// The rows of a parameter table: each function here makes the row of one kind of control, from the offset of the
// parameter's field and its label. The steps after it, by name, state what differs from the kind's defaults:
//
//     angle(offsetof(Cone, angle), "Cone Angle").starting(0.5).input(),
#pragma once

#include "module/node.h"

namespace velm::plugin {

struct Row : Parameter {
    // The default; a colour's is the same in each component.
    constexpr Row starting(double value) const { return starting(value, value, value); }
    constexpr Row starting(double x, double y, double z) const {
        Row row = *this;
        row.initial[0] = x;
        row.initial[1] = y;
        row.initial[2] = z;
        return row;
    }
    // The host parameter and the input are created after those of the rows without this.
    constexpr Row createdLast() const {
        Row row = *this;
        row.Parameter::createdLast = true;
        return row;
    }
    // Copying an instance leaves the value of the copy as it is.
    constexpr Row notCopied() const {
        Row row = *this;
        row.copied = false;
        return row;
    }
    // Saved in a tagged block, for a class that saves blocks.
    constexpr Row inBlock(unsigned int blockId, const char *token) const {
        Row row = *this;
        row.block = {.id = blockId, .token = token};
        return row;
    }
    // A popup that stores, for each entry, a value other than its index.
    constexpr Row storing(std::span<const int> values) const {
        Row row = *this;
        row.control = "iPopTransform";
        row.transform = values;
        return row;
    }
    // The parameter has an input, of the parameter's own connection type, named like its label or as given.
    constexpr Row input(const char *name = nullptr) const {
        Row row = *this;
        row.Parameter::input = inputType(holds, parmType);
        row.inputName = name;
        return row;
    }
    // A popup whose entries are made at run time.
    constexpr Row entries(HostPopupCount *count, HostPopupName *name) const {
        Row row = *this;
        row.popupCount = count;
        row.popupName = name;
        return row;
    }
    // The channel has another name than the label.
    constexpr Row named(const char *channelName) const {
        Row row = *this;
        row.channel = channelName;
        return row;
    }

  private:
    static constexpr int inputType(Holds holds, int parmType) {
        if (holds == Holds::integer) return kConnectInteger;
        if (holds == Holds::scalar) return kConnectScalar;
        return parmType == kParmColour ? kConnectColour : kConnectVector;
    }
};

constexpr Row makeRow(size_t field, const char *label, const char *control, Holds holds, int parmType = 0) {
    Row row{};
    row.field = field;
    row.label = label;
    row.control = control;
    row.holds = holds;
    row.parmType = parmType;
    return row;
}

// Integers.
constexpr Row integer(size_t field, const char *label) { return makeRow(field, label, "integer", Holds::integer); }
constexpr Row checkBox(size_t field, const char *label) { return makeRow(field, label, "iBoolean", Holds::integer); }
constexpr Row popup(size_t field, const char *label, const char *const *texts = nullptr) {
    Row row = makeRow(field, label, "iPopChoice", Holds::integer);
    row.texts = texts;
    return row;
}
constexpr Row choice(size_t field, const char *label, const char *const *texts) { // a row of buttons
    Row row = popup(field, label, texts);
    row.control = "iChoice";
    return row;
}

// Animated parameters. Angles are in radians, and percentages are fractions; the panel shows degrees and per cent.
constexpr Row number(size_t field, const char *label) {
    return makeRow(field, label, "float-env", Holds::scalar, kParmFloat);
}
constexpr Row percent(size_t field, const char *label) {
    return makeRow(field, label, "percent-env", Holds::scalar, kParmPercent);
}
constexpr Row distance(size_t field, const char *label) {
    return makeRow(field, label, "distance-env", Holds::scalar, kParmDistance);
}
constexpr Row angle(size_t field, const char *label) {
    return makeRow(field, label, "angle-env", Holds::scalar, kParmAngle);
}
constexpr Row colour(size_t field, const char *label) {
    return makeRow(field, label, "color-env", Holds::vec3, kParmColour);
}
constexpr Row position(size_t field, const char *label) { // shown as lengths, stored as plain numbers
    return makeRow(field, label, "distance3-env", Holds::vec3, kParmFloatTriple);
}
constexpr Row direction(size_t field, const char *label) {
    return makeRow(field, label, "float3-env", Holds::vec3, kParmFloatTriple);
}
// An animated parameter that is created and otherwise left alone; it is not on the panel. See Holds::bareVec3.
constexpr Row bareVec3(size_t field, const char *name, int parmType) {
    return makeRow(field, name, nullptr, Holds::bareVec3, parmType);
}

// A text of `size` bytes with its terminator.
constexpr Row text(size_t field, const char *label, size_t size) {
    Row row = makeRow(field, label, "string", Holds::text);
    row.textSize = size;
    return row;
}

// An integer that is saved and copied but not on the panel.
constexpr Row hiddenInteger(size_t field) { return makeRow(field, nullptr, nullptr, Holds::integer); }

// Controls without a value.
constexpr Row button(const char *label, HostPanelButton *pressed) {
    Row row = makeRow(kNowhere, label, "vButton", Holds::nothing);
    row.button = pressed;
    return row;
}
constexpr Row thumbnail(HostPanelDraw *draw) {
    Row row = makeRow(kNowhere, nullptr, "dThumbnail", Holds::nothing);
    row.draw = draw;
    return row;
}

// An input without a parameter; `handle` is the offset of its HostInput * in the connections.
constexpr Row plainInput(const char *name, int type, size_t handle) {
    Row row{};
    row.label = name;
    row.Parameter::input = type;
    row.inputField = handle;
    return row;
}

} // namespace velm::plugin

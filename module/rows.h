// How a unit writes its parameter rows: the kind of control first, then, by name, what differs from its kind. Each
// function gives a row for the panel; the steps after it fill in the rest:
//
//     angle(kCone, "Cone Angle").at(offsetof(Node, cone)).starting(0.5).input(offsetof(Node, coneInput)),
#pragma once

#include "module/node.h"

namespace velm::plugin {

struct Row : Parameter {
    // Where the row's field sits in the instance.
    constexpr Row at(size_t offset) const {
        Row row = *this;
        row.field = offset;
        return row;
    }
    // Its default; a colour's is the same in each component.
    constexpr Row starting(double value) const {
        Row row = *this;
        for (double &component : row.initial) component = value;
        return row;
    }
    constexpr Row starting(double x, double y, double z) const {
        Row row = *this;
        row.initial[0] = x;
        row.initial[1] = y;
        row.initial[2] = z;
        return row;
    }
    // Created after the parameters and inputs of the other rows.
    constexpr Row createdLast() const {
        Row row = *this;
        row.Parameter::createdLast = true;
        return row;
    }
    // A copy keeps its own.
    constexpr Row notCopied() const {
        Row row = *this;
        row.copied = false;
        return row;
    }
    // Saved in a block of its own.
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
    // It has an input, of the kind's own connection type, and named like the label unless a name is given.
    constexpr Row input(size_t offset, const char *name = nullptr) const {
        Row row = *this;
        row.Parameter::input = inputType(holds, parmType);
        row.inputField = offset;
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
    // The channel is not named like the label.
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

constexpr Row makeRow(unsigned int id, const char *label, const char *control, Holds holds, int parmType = 0) {
    Row row{};
    row.id = id;
    row.label = label;
    row.control = control;
    row.holds = holds;
    row.parmType = parmType;
    return row;
}

// Integers.
constexpr Row integer(unsigned int id, const char *label) { return makeRow(id, label, "integer", Holds::integer); }
constexpr Row checkBox(unsigned int id, const char *label) { return makeRow(id, label, "iBoolean", Holds::integer); }
constexpr Row popup(unsigned int id, const char *label, const char *const *texts = nullptr) {
    Row row = makeRow(id, label, "iPopChoice", Holds::integer);
    row.texts = texts;
    return row;
}
constexpr Row choice(unsigned int id, const char *label, const char *const *texts) { // a row of buttons
    Row row = popup(id, label, texts);
    row.control = "iChoice";
    return row;
}

// Animated parameters.
constexpr Row number(unsigned int id, const char *label) {
    return makeRow(id, label, "float-env", Holds::scalar, kParmFloat);
}
constexpr Row percent(unsigned int id, const char *label) {
    return makeRow(id, label, "percent-env", Holds::scalar, kParmPercent);
}
constexpr Row distance(unsigned int id, const char *label) {
    return makeRow(id, label, "distance-env", Holds::scalar, kParmDistance);
}
constexpr Row angle(unsigned int id, const char *label) {
    return makeRow(id, label, "angle-env", Holds::scalar, kParmAngle);
}
constexpr Row colour(unsigned int id, const char *label) {
    return makeRow(id, label, "color-env", Holds::vec3, kParmColour);
}
constexpr Row position(unsigned int id, const char *label) { // shown as lengths, kept as plain numbers
    return makeRow(id, label, "distance3-env", Holds::vec3, kParmFloatTriple);
}
constexpr Row direction(unsigned int id, const char *label) {
    return makeRow(id, label, "float3-env", Holds::vec3, kParmFloatTriple);
}

// Controls without a value, and a text.
constexpr Row button(unsigned int id, const char *label, HostPanelButton *pressed) {
    Row row = makeRow(id, label, "vButton", Holds::nothing);
    row.button = pressed;
    return row;
}
constexpr Row thumbnail(unsigned int id, HostPanelDraw *draw) {
    Row row = makeRow(id, nullptr, "dThumbnail", Holds::nothing);
    row.draw = draw;
    return row;
}
constexpr Row text(unsigned int id, const char *label, size_t size) {
    Row row = makeRow(id, label, "string", Holds::text);
    row.textSize = size;
    return row;
}

// Fields that are saved and copied, but are not on the panel; a parameter that is created and left alone.
constexpr Row hiddenInteger(size_t offset) { return makeRow(0, nullptr, nullptr, Holds::integer).at(offset); }
constexpr Row bareVec3(const char *name, int parmType) { return makeRow(0, name, nullptr, Holds::bareVec3, parmType); }

// An input that has no value of its own and is not on the panel.
constexpr Row plainInput(const char *name, int type, size_t offset) {
    Row row{};
    row.label = name;
    row.Parameter::input = type;
    row.inputField = offset;
    return row;
}

} // namespace velm::plugin

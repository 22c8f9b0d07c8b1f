// How a unit writes its parameter rows: the kind of control first, then, by name, what differs from its kind. Each
// function gives a row for the panel; the steps after it fill in the rest:
//
//     angle(kCone, "Cone Angle").at(offsetof(Node, cone)).starting(0.5).input(offsetof(Node, coneInput)),
#pragma once

#include "module/node.h"

namespace velm {

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
constexpr Row wholeNumber(unsigned int id, const char *label) { return makeRow(id, label, "integer", Holds::integer); }
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
    return makeRow(id, label, "color-env", Holds::triple, kParmColour);
}

// An input that has no value of its own and is not on the panel.
constexpr Row plainInput(const char *name, int type, size_t offset) {
    Row row{};
    row.label = name;
    row.Parameter::input = type;
    row.inputField = offset;
    return row;
}

} // namespace velm

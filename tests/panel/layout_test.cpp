// The layout of controls, and the facts about each.

#include "host/panel/layout.h"

#include "tests/panel/panel_fixture.h"

#include "host/base/error.h"

#include <gtest/gtest.h>

using namespace velm::host;

namespace {

// "1 2 group:Label(3 4) stack(5 tabs(6 7))" with identifiers less 0x8000 and 0x9000.
std::string drawn(const LayoutItem &item) {
    if (item.kind == ItemKind::control) return std::to_string(item.id - 0x8000);
    std::string text;
    for (const LayoutItem &inner : item.items) text += (text.empty() ? "" : " ") + drawn(inner);
    if (item.id == 0) return text;
    const char *kind = item.kind == ItemKind::group ? "group" : item.kind == ItemKind::stack ? "stack" : "tabs";
    return kind + (item.label.empty() ? "" : ":" + item.label) + "(" + text + ")";
}

Hints label(unsigned int id, const char *name) { return {word(kHintLabel), word(id), text(name), word(0)}; }

TEST(Layout, GroupsAreAtTheirFirstMember) {
    constexpr unsigned int a = 0x9001, b = 0x9002, c = 0x9003;
    const Hints labels = label(a, "A") + label(b, "B");
    const struct {
        Hints hints;
        const char *layout;
    } rows[] = {
        {{}, "1 2 3 4 5 6 7 8 9 10 11 12 13 14"},
        {list(kHintGroup, {a, 0x8003, 0x8004}), "1 2 group(3 4) 5 6 7 8 9 10 11 12 13 14"},
        {labels + list(kHintGroup, {a, 0x8005, 0x8003}) + list(kHintGroup, {b, 0x8001, a}),
         "group:B(1 group:A(5 3)) 2 4 6 7 8 9 10 11 12 13 14"},
        // The outer group is declared first.
        {labels + list(kHintGroup, {b, 0x8001, a}) + list(kHintGroup, {a, 0x8005, 0x8003}),
         "group:B(1 group:A(5 3)) 2 4 6 7 8 9 10 11 12 13 14"},
        // A group of members of another group is nested in it.
        {labels + list(kHintGroup, {b, 0x8001, 0x8002, 0x8003, 0x8004}) + list(kHintGroup, {a, 0x8002, 0x8003}),
         "group:B(1 group:A(2 3) 4) 5 6 7 8 9 10 11 12 13 14"},
        // A member that is in another group brings that group.
        {labels + list(kHintGroup, {a, 0x8002, 0x8003}) + list(kHintGroup, {b, 0x8001, 0x8002, 0x8003, 0x8004}),
         "group:B(1 group:A(2 3) 4) 5 6 7 8 9 10 11 12 13 14"},
        // A group without a label whose members are not adjacent is ignored.
        {list(kHintGroup, {a, 0x8002, 0x8004, 0x8006}), "1 2 3 4 5 6 7 8 9 10 11 12 13 14"},
        {list(kHintGroup, {a, 0x8003, 0x8004}) + list(kHintStack, {c, 0x8001, 0, 0x8002, a}),
         "1 stack(2 group(3 4)) 5 6 7 8 9 10 11 12 13 14"},
        {labels + list(kHintGroup, {a, 0x8001, 0x8002, 0x8003}) + list(kHintGroup, {b, 0x8004, 0x8005}) +
             list(kHintTabs, {c, a, b}),
         "tabs(group:A(1 2 3) group:B(4 5)) 6 7 8 9 10 11 12 13 14"},
        // The members of tabs stay together.
        {labels + list(kHintGroup, {a, 0x8001, 0x8002}) + list(kHintGroup, {b, 0x8003, 0x8004}) +
             list(kHintTabs, {c, a, b}) + list(kHintGroup, {0x9004, 0x8001, 0x8003}),
         "tabs(group:A(1 2) group:B(3 4)) 5 6 7 8 9 10 11 12 13 14"},
        {list(kHintGroup, {a}), "1 2 3 4 5 6 7 8 9 10 11 12 13 14"},
    };
    for (const auto &row : rows) {
        Plug plug;
        const PanelOwner panel = makePanel(plug, row.hints);
        EXPECT_EQ(drawn(layout(*panel)), row.layout);
    }
}

TEST(Layout, RefusesPanelsWithMistakes) {
    Plug plug;
    const PanelOwner panel = makePanel(plug, {word(12345)});
    EXPECT_THROW(layout(*panel), InputError);
    EXPECT_THROW(describeControls(*panel), InputError);
}

const ControlInfo &infoOf(const std::vector<ControlInfo> &all, unsigned int id) {
    for (const ControlInfo &each : all)
        if (each.id == id) return each;
    throw std::runtime_error("no such control");
}

TEST(Layout, DescribesEveryControl) {
    static const int oddOnly[] = {0, 1, 0};
    const char *const axes[] = {"East", "Up", "North", nullptr};
    Plug plug;
    const PanelOwner panel = makePanel(
        plug, number(kHintMinimum, Plug::kOpacity, 0) +
                  Hints{word(kHintRange), word(Plug::kTurn), word(0), word(90), word(5)} +
                  Hints{word(kHintEnforceLimits), word(Plug::kTurn), word(1), word(1)} +
                  number(kHintSensitivity, Plug::kTurn, 3) +
                  Hints{word(kHintVectorLabels), word(Plug::kWhere), {.texts = axes}} +
                  list(kHintNarrow, {Plug::kSwitch}) + list(kHintLeftAlign, {Plug::kSize}) +
                  list(kHintDividerAfter, {Plug::kTint}) + enable(Plug::kMode, "only odd", oddOnly, {Plug::kTint}) +
                  list(kHintGroup, {0x9001, Plug::kSize, Plug::kOpacity}) +
                  list(kHintStack, {0x9002, Plug::kMode, 0, Plug::kTurn, 0x9001}) +
                  list(kHintGroup, {0x9003, Plug::kMode, 0x9002}) + label(0x9003, "Settings"));
    const double half = 0.5, quarterTurn = 1.5707963267948966;
    plug.opacity.setConstant(&half);
    plug.turn.setConstant(&quarterTurn);
    plug.connected = Plug::kName;
    plug.where.createEnvelopes();
    const std::vector<ControlInfo> all = describeControls(*panel);
    ASSERT_EQ(all.size(), 14U);
    EXPECT_EQ(all.front().id, static_cast<unsigned int>(Plug::kMode)) << "in the order of the layout";
    EXPECT_EQ(all[1].id, static_cast<unsigned int>(Plug::kTurn));

    const ControlInfo &mode = infoOf(all, Plug::kMode);
    EXPECT_EQ(mode.type, "iPopChoice");
    EXPECT_EQ(mode.value, "Plain");
    EXPECT_EQ(mode.entries.size(), 3U);
    EXPECT_EQ(mode.groups, std::vector<std::string>{"Settings"});
    EXPECT_TRUE(mode.stacks.empty());

    const ControlInfo &turn = infoOf(all, Plug::kTurn);
    EXPECT_EQ(turn.unit, "degrees");
    EXPECT_EQ(turn.value, "90");
    EXPECT_EQ(turn.minimum, 0);
    EXPECT_EQ(turn.maximum, 90);
    EXPECT_EQ(turn.step, 5);
    EXPECT_TRUE(turn.limitsEnforced);
    EXPECT_EQ(turn.sensitivity, 3);
    EXPECT_TRUE(turn.shown);
    ASSERT_EQ(turn.stacks.size(), 1U);
    EXPECT_EQ(turn.stacks[0].drivenBy, "Mode");
    EXPECT_EQ(turn.stacks[0].shownFor, std::vector<std::string>{" Plain "});

    const ControlInfo &opacity = infoOf(all, Plug::kOpacity);
    EXPECT_EQ(opacity.value, "50");
    EXPECT_EQ(opacity.unit, "%");
    EXPECT_FALSE(opacity.limitsEnforced);
    EXPECT_FALSE(opacity.shown) << "the stack shows its other member";
    EXPECT_EQ(opacity.stacks[0].shownFor, std::vector<std::string>{"Odd"});

    const ControlInfo &tint = infoOf(all, Plug::kTint);
    EXPECT_FALSE(tint.enabled);
    EXPECT_TRUE(tint.available);
    EXPECT_EQ(tint.message, "only odd");
    EXPECT_EQ(tint.enabledBy, std::vector<std::string>{"Mode"});
    EXPECT_TRUE(tint.dividerAfter);

    const ControlInfo &name = infoOf(all, Plug::kName);
    EXPECT_FALSE(name.available);
    EXPECT_FALSE(name.enabled);
    EXPECT_EQ(name.value, "");

    EXPECT_EQ(infoOf(all, Plug::kWhere).value, "1 key");
    EXPECT_EQ(infoOf(all, Plug::kWhere).componentLabels, (std::vector<std::string>{"East", "Up", "North"}));
    EXPECT_EQ(infoOf(all, Plug::kSwitch2).name, "Switch 2");
    EXPECT_EQ(infoOf(all, Plug::kSwitch2).label, "Switch");
    EXPECT_TRUE(infoOf(all, Plug::kSwitch).narrow);
    EXPECT_TRUE(infoOf(all, Plug::kSize).leftAligned);
}

} // namespace

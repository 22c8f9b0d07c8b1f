// Every hint, and invalid lists.

#include "tests/panel/panel_fixture.h"

#include "host/base/error.h"

#include <gtest/gtest.h>

using namespace velm::host;

namespace {

std::string mistake(HostPanel &panel) {
    try {
        panel.check();
    } catch (const InputError &error) {
        return error.what();
    }
    return "";
}

TEST(Hints, AWholePanelIsRead) {
    Plug plug;
    const PanelOwner panel = makePanel(plug);
    EXPECT_EQ(mistake(*panel), "");
    EXPECT_EQ(panel->controls().size(), 14U);
    EXPECT_EQ(panel->find(Plug::kMode)->label, "Mode");
    EXPECT_STREQ(panel->find(Plug::kTint)->type->name, "color-env");
    EXPECT_EQ(panel->find(Plug::kPress)->valueId, 0U);
    EXPECT_EQ(panel->find(0x9999), nullptr);
}

TEST(Hints, LimitsAndMarks) {
    Plug plug;
    const char *const axes[] = {"East", "Up", "North", nullptr};
    const PanelOwner panel = makePanel(
        plug, number(kHintMinimum, Plug::kCount, -3) + number(kHintMaximum, Plug::kCount, 40) +
                  number(kHintStep, Plug::kCount, 2) + number(kHintSensitivity, Plug::kCount, 5) +
                  Hints{word(kHintRange), word(Plug::kTurn), word(0), word(90), word(1)} +
                  Hints{word(kHintEnforceLimits), word(Plug::kCount), word(1), word(0)} +
                  Hints{word(kHintVectorLabels), word(Plug::kWhere), {.texts = axes}} +
                  Hints{word(kHintControlOptions), word(Plug::kThumb), word(0), word(kThumbLarge | kThumbWide)} +
                  list(kHintLeftAlign, {Plug::kSize, Plug::kTurn}) + list(kHintNarrow, {Plug::kSwitch}) +
                  list(kHintDividerAfter, {Plug::kCount, Plug::kTint}));
    ASSERT_EQ(mistake(*panel), "");
    const PanelItem &count = *panel->find(Plug::kCount);
    EXPECT_EQ(count.minimum, -3);
    EXPECT_EQ(count.maximum, 40);
    EXPECT_EQ(count.step, 2);
    EXPECT_EQ(count.sensitivity, 5);
    EXPECT_TRUE(count.minimumEnforced);
    EXPECT_FALSE(count.maximumEnforced);
    EXPECT_TRUE(count.dividerAfter);
    EXPECT_FALSE(count.leftAligned);
    const PanelItem &turn = *panel->find(Plug::kTurn);
    EXPECT_EQ(turn.minimum, 0);
    EXPECT_EQ(turn.maximum, 90);
    EXPECT_EQ(turn.step, 1);
    EXPECT_TRUE(turn.leftAligned);
    EXPECT_TRUE(panel->find(Plug::kSize)->leftAligned);
    EXPECT_TRUE(panel->find(Plug::kSwitch)->narrow);
    EXPECT_TRUE(panel->find(Plug::kTint)->dividerAfter);
    EXPECT_EQ(panel->find(Plug::kWhere)->vectorLabels, (std::vector<std::string>{"East", "Up", "North"}));
    EXPECT_EQ(panel->find(Plug::kThumb)->options, static_cast<unsigned int>(kThumbLarge | kThumbWide));
}

TEST(Hints, ThirtyTwoBitLimitsMayBeUnsigned) {
    Plug plug;
    const PanelOwner panel = makePanel(plug, {word(kHintMinimum), word(Plug::kCount), word(0xfffffffeU)});
    EXPECT_EQ(panel->find(Plug::kCount)->minimum, -2);
}

TEST(Hints, ListsContinueAfterNestedLists) {
    Plug plug;
    const Hints inner = number(kHintMinimum, Plug::kCount, 3) + Hints{word(kHintEnd)};
    const Hints middle = Hints{word(kHintNestedList), word(0), {.list = inner.data()}} +
                         number(kHintStep, Plug::kCount, 4) + Hints{word(kHintEnd)};
    const PanelOwner panel = makePanel(plug, Hints{word(kHintNestedList), word(0), {.list = middle.data()}} +
                                                 number(kHintMaximum, Plug::kCount, 5));
    EXPECT_EQ(mistake(*panel), "");
    EXPECT_EQ(panel->find(Plug::kCount)->minimum, 3);
    EXPECT_EQ(panel->find(Plug::kCount)->step, 4);
    EXPECT_EQ(panel->find(Plug::kCount)->maximum, 5);
}

TEST(Hints, MistakesAreReported) {
    static const int map[] = {1, 0, 1};
    Hints endless = {word(kHintNestedList), word(0), {.list = nullptr}, word(kHintEnd)};
    endless[2].list = endless.data();
    const struct {
        Hints hints;
        const char *message;
    } rows[] = {
        {{word(0x3D00FFFF)}, "the panel is wrong: the hint list has an unknown tag, 0x3D00FFFF"},
        {control(0x8100, "slider", "x"), "the panel is wrong: the control 0x8100 has the unknown type \"slider\""},
        {control(0x8100, nullptr, "x"), "the panel is wrong: the control 0x8100 has the unknown type \"\""},
        {control(Plug::kMode, "integer", "x"), "the panel is wrong: 0x8001 is added to the panel twice"},
        {list(kHintGroup, {Plug::kMode, Plug::kCount}), "the panel is wrong: 0x8001 is added to the panel twice"},
        {endless, "the panel is wrong: hint lists are nested too deeply"},
        {{word(kHintValueTransform), word(Plug::kShape), word(9), {.numbers = nullptr}},
         "the panel is wrong: the control 0x8004 has no list of values"},
        {number(kHintMinimum, 0x8100, 1), "the panel has a hint for 0x8100, which is not on it"},
        {control(0x8100, "integer", "x"), "the panel's control 0x8100 has the value 0x8100, which is not described"},
        {control(0x8100, "float-env", "x", Plug::kMode),
         "the panel's control 0x8100 of type \"float-env\" cannot show a value of type \"integer\""},
        {control(0x8100, "iChoice", "x", Plug::kMode), "the panel's control 0x8100 has no entries"},
        {control(0x8100, "iPopTransform", "x", Plug::kMode) + texts(0x8100, kModes),
         "the panel's control 0x8100 does not have a value for each entry"},
        {enable(Plug::kSize, nullptr, nullptr, {Plug::kCount}),
         "a rule of the panel is driven by 0x8007, which is not an integer value of the panel"},
        {enable(0x8200, nullptr, nullptr, {Plug::kCount}),
         "a rule of the panel is driven by 0x8200, which is not an integer value of the panel"},
        {enable(Plug::kCount, nullptr, map, {Plug::kSize}),
         "a rule of the panel has a map over 0x8002, whose number of entries is unknown"},
        {enable(Plug::kMode, nullptr, map, {0x8300}), "the panel enables 0x8300, which is not on it"},
        {list(kHintGroup, {0x9001, 0x8300}), "the panel groups 0x8300, which is not on it"},
        {list(kHintGroup, {0x9001, 0x9002}) + list(kHintGroup, {0x9002, 0x9001}),
         "the panel's group 0x9001 contains itself"},
        {list(kHintStack, {0x9001, Plug::kSize, 0, Plug::kCount}),
         "a rule of the panel is driven by 0x8007, which is not an integer value of the panel"},
    };
    for (const auto &row : rows) {
        Plug plug;
        const PanelOwner panel = makePanel(plug, row.hints);
        EXPECT_EQ(mistake(*panel), row.message);
    }
}

TEST(Hints, ListsWithoutAnEndAreMistakes) {
    Plug plug;
    Hints hints(70000, word(Plug::kCount));
    hints.insert(hints.begin(), word(kHintNarrow));
    EXPECT_EQ(mistake(*makePanel(plug, hints)), "the panel is wrong: a hint list has no end");
    std::vector<const char *> entries(5000, "x");
    entries.push_back(nullptr);
    EXPECT_EQ(mistake(*makePanel(plug, texts(Plug::kMode, entries.data()))),
              "the panel is wrong: a list of texts has no end");
}

TEST(Hints, DescriptionsAreChecked) {
    static constexpr HostPanelValue unknown[] = {{1, "x", "colour"}, {0, nullptr, nullptr}};
    const PanelOwner panel(panelFuncs()->create(kPanelForm, nullptr));
    panelFuncs()->describe(panel.get(), unknown, Plug::get, Plug::set);
    EXPECT_EQ(mistake(*panel), "the panel is wrong: the value 0x1 has the unknown type \"colour\"");
    const int controls = 0;
    const PanelOwner listed(panelFuncs()->create(kPanelForm, &controls));
    EXPECT_NE(mistake(*listed), "");
    EXPECT_EQ(panelFuncs()->create(3, nullptr), nullptr);
    Plug plug;
    const PanelOwner bare = makePanel(plug);
    panelFuncs()->describe(bare.get(), nullptr, nullptr, nullptr);
    EXPECT_EQ(mistake(*bare), "the panel's control 0x8001 has no getter");
}

} // namespace

// Values, rules and notifications of panels. Where a plug-in uses the service's table, so do the tests.

#include "tests/panel/panel_fixture.h"

#include "host/base/error.h"
#include "host/load/dialogs.h"

#include <gtest/gtest.h>

using namespace velm::host;

namespace {

const HostPanelFuncs &funcs() { return *panelFuncs(); }

TEST(Panel, ValuesAreThoseOfTheInstance) {
    Plug plug;
    const PanelOwner panel = makePanel(plug);
    EXPECT_EQ(funcs().getValue(panel.get(), Plug::kMode), &plug.mode);
    EXPECT_EQ(funcs().getValue(panel.get(), Plug::kName), plug.name);
    EXPECT_EQ(funcs().getValue(panel.get(), Plug::kSize), &plug.size);
    EXPECT_EQ(funcs().getValue(panel.get(), Plug::kPress), nullptr);
    EXPECT_EQ(funcs().getValue(panel.get(), 0x8888), nullptr);
    funcs().viewInstance(panel.get(), nullptr);
    EXPECT_EQ(funcs().getValue(panel.get(), Plug::kMode), nullptr);
}

TEST(Panel, AnEditCallsTheSetterAndThenTheChangeCallback) {
    Plug plug;
    const PanelOwner panel = makePanel(plug);
    int two = 2;
    EXPECT_TRUE(panel->edit(*panel->find(Plug::kMode), &two));
    EXPECT_EQ(plug.mode, 2);
    EXPECT_EQ(plug.heard, (std::vector<std::string>{"set 1", "change 1 1 2"}));
    plug.refuses = true;
    EXPECT_FALSE(panel->edit(*panel->find(Plug::kMode), &two));
    EXPECT_EQ(plug.heard.size(), 3U) << "no change without a setting";
    EXPECT_FALSE(panel->edit(*panel->find(Plug::kPress), &two));
    EXPECT_FALSE(panel->edit(*panel->find(Plug::kMode), nullptr));
}

TEST(Panel, TheSetterMayReadTheControl) {
    Plug plug;
    const PanelOwner panel = makePanel(plug);
    std::string wanted = "second";
    EXPECT_TRUE(panel->edit(*panel->find(Plug::kName), wanted.data()));
    EXPECT_STREQ(plug.name, "second");
    EXPECT_EQ(funcs().getValue(panel.get(), Plug::kName), plug.name) << "only while it is being set";
    std::string most(HostPanel::kLongestText, 'x'), more(HostPanel::kLongestText + 1, 'y');
    EXPECT_TRUE(panel->edit(*panel->find(Plug::kName), most.data()));
    EXPECT_FALSE(panel->edit(*panel->find(Plug::kName), more.data()));
    EXPECT_EQ(plug.name, most);
}

TEST(Panel, SetValueDoesNotCallTheChangeCallback) {
    Plug plug;
    const PanelOwner panel = makePanel(plug);
    int one = 1;
    funcs().setValue(panel.get(), Plug::kPicture, &one);
    EXPECT_EQ(plug.picture, 1);
    HostVParm other(kParmFloat);
    const double three = 3;
    other.setConstant(&three);
    funcs().setValue(panel.get(), Plug::kSize, &other);
    double read[3];
    EXPECT_EQ(plug.size.value(0, read), 3);
    EXPECT_EQ(plug.heard, (std::vector<std::string>{"set 6", "set 7"}));
    funcs().setValue(panel.get(), Plug::kPress, &one);
    funcs().setValue(panel.get(), Plug::kMode, nullptr);
    funcs().setValue(panel.get(), 0x8888, &one);
    funcs().setValue(panel.get(), Plug::kTint, &other); // of another number of components
    EXPECT_EQ(plug.heard.size(), 2U);
}

TEST(Panel, AControlThatAConnectionFeedsIsUnavailable) {
    Plug plug;
    const PanelOwner panel = makePanel(plug);
    const PanelItem &mode = *panel->find(Plug::kMode);
    EXPECT_TRUE(panel->isAvailable(mode));
    plug.connected = Plug::kMode;
    EXPECT_FALSE(panel->isAvailable(mode));
    int two = 2;
    EXPECT_FALSE(panel->edit(mode, &two));
    EXPECT_TRUE(plug.heard.empty());
    EXPECT_FALSE(panel->chosenEntry(mode).has_value());
    EXPECT_TRUE(panel->isAvailable(*panel->find(Plug::kPress)));
}

TEST(Panel, RulesEnableByValueAndByMap) {
    static const int oddOnly[] = {0, 1, 0};
    Plug plug;
    const PanelOwner panel = makePanel(plug, enable(Plug::kSwitch, "switch it on", nullptr, {Plug::kSize, 0x9001}) +
                                                 enable(Plug::kMode, "only odd", oddOnly, {Plug::kSize, Plug::kTint}) +
                                                 list(kHintGroup, {0x9001, Plug::kTurn}));
    ASSERT_NO_THROW(panel->check());
    const struct {
        int on, mode;
        bool size, tint, turn;
        const char *message; // why "Size" is disabled
    } rows[] = {{0, 0, false, false, false, "switch it on"}, {1, 0, false, false, true, "only odd"},
                {0, 1, false, true, false, "switch it on"},  {1, 1, true, true, true, ""},
                {1, 2, false, false, true, "only odd"},      {1, 3, false, false, true, "only odd"},
                {-1, -1, false, false, true, "only odd"}};
    for (const auto &row : rows) {
        plug.on = row.on;
        plug.mode = row.mode;
        std::string message;
        EXPECT_EQ(panel->isEnabled(*panel->find(Plug::kSize), &message), row.size);
        EXPECT_EQ(message, row.message);
        EXPECT_EQ(panel->isEnabled(*panel->find(Plug::kTint)), row.tint);
        EXPECT_EQ(panel->isEnabled(*panel->find(Plug::kTurn)), row.turn) << "its group is enabled or not";
        EXPECT_TRUE(panel->isEnabled(*panel->find(Plug::kCount)));
    }
    plug.on = 0;
    plug.mode = 1;
    plug.connected = Plug::kSwitch;
    EXPECT_TRUE(panel->isEnabled(*panel->find(Plug::kSize))) << "nobody knows what the connection brings";
}

TEST(Panel, MapsOverPopupsAndLimitedNumbersHaveALength) {
    static const int map[] = {0, 1};
    Plug plug;
    const PanelOwner panel =
        makePanel(plug, enable(Plug::kPicture, nullptr, map, {Plug::kSize}) + number(kHintMaximum, Plug::kCount, 1) +
                            enable(Plug::kCount, nullptr, map, {Plug::kTint}));
    ASSERT_NO_THROW(panel->check());
    plug.picture = 1;
    EXPECT_TRUE(panel->isEnabled(*panel->find(Plug::kSize)));
    plug.picture = 2; // beyond the two entries, and beyond the map
    EXPECT_FALSE(panel->isEnabled(*panel->find(Plug::kSize)));
    EXPECT_TRUE(panel->isEnabled(*panel->find(Plug::kTint)));
    plug.count = 2;
    EXPECT_FALSE(panel->isEnabled(*panel->find(Plug::kTint)));
}

TEST(Panel, StacksShowAMemberByIndexOrMap) {
    static const int map[] = {1, -1, 7};
    Plug plug;
    Hints stacks = list(kHintStack, {0x9001, Plug::kMode, 0, Plug::kSize, Plug::kTint});
    Hints mapped = list(kHintStack, {0x9002, Plug::kMode, 0, Plug::kTurn, Plug::kWhere});
    mapped[3] = {.numbers = map};
    const PanelOwner panel = makePanel(plug, stacks + mapped);
    ASSERT_NO_THROW(panel->check());
    const PanelItem &plain = *panel->item(0x9001);
    const PanelItem &withMap = *panel->item(0x9002);
    const struct { int mode, plain, mapped; } rows[] = {{0, 0, 1}, {1, 1, -1}, {2, -1, -1}, {3, -1, -1}, {-1, -1, -1}};
    for (const auto &row : rows) {
        plug.mode = row.mode;
        EXPECT_EQ(panel->shownMember(plain), row.plain) << row.mode;
        EXPECT_EQ(panel->shownMember(withMap), row.mapped) << row.mode;
    }
    plug.connected = Plug::kMode;
    EXPECT_FALSE(panel->shownMember(plain).has_value());
}

TEST(Panel, EntriesAreFixedOrFromPopupFunctions) {
    Plug plug;
    const PanelOwner panel = makePanel(plug);
    EXPECT_EQ(panel->entries(*panel->find(Plug::kMode)), (std::vector<std::string>{" Plain ", "Odd", "Even"}));
    EXPECT_EQ(panel->entries(*panel->find(Plug::kPicture)), plug.pictures);
    plug.pictures.emplace_back("sun.png");
    plug.picture = 2;
    EXPECT_EQ(panel->chosenEntry(*panel->find(Plug::kPicture)), 2);
    EXPECT_EQ(panel->chosenEntry(*panel->find(Plug::kShape)), 0);
    plug.shape = 20;
    EXPECT_EQ(panel->chosenEntry(*panel->find(Plug::kShape)), 1);
    plug.shape = 1;
    EXPECT_EQ(panel->chosenEntry(*panel->find(Plug::kShape)), -1);
    plug.mode = 3;
    EXPECT_EQ(panel->chosenEntry(*panel->find(Plug::kMode)), -1);
}

TEST(Panel, LabelsAreNumberedFromTheSecondOn) {
    Plug plug;
    const PanelOwner panel = makePanel(plug);
    EXPECT_EQ(panel->uniqueLabel(*panel->find(Plug::kSwitch)), "Switch");
    EXPECT_EQ(panel->uniqueLabel(*panel->find(Plug::kSwitch2)), "Switch 2");
    EXPECT_EQ(panel->uniqueLabel(*panel->find(Plug::kThumb)), "");
}

TEST(Panel, ALabelCanComeFromTheDescription) {
    static constexpr HostPanelValue values[] = {{5, "Described", "integer"}, {0, nullptr, nullptr}};
    const PanelOwner panel(funcs().create(kPanelOwn, nullptr));
    const HostHint hints[] = {word(kHintAddControl), word(9), text("integer"), word(5), word(kHintEnd)};
    funcs().hint(panel.get(), 9, hints);
    funcs().describe(panel.get(), values, nullptr, nullptr);
    EXPECT_EQ(panel->label(*panel->find(9)), "Described");
}

TEST(Panel, MayStoreItsOwnValues) {
    static constexpr HostPanelValue values[] = {{1, "Whole", "integer"},
                                                {2, "Angle", "angle"},
                                                {3, "Tint", "color"},
                                                {4, "Text", "string"},
                                                {0, nullptr, nullptr}};
    const PanelOwner panel(funcs().create(kPanelOwn, nullptr));
    Hints hints = control(1, "integer", "Whole") + control(2, "angle", "Angle") + control(3, "color", "Tint") +
                  control(4, "string", "Text") + Hints{word(kHintEnd)};
    funcs().hint(panel.get(), 0, hints.data());
    funcs().describe(panel.get(), values, nullptr, nullptr);
    ASSERT_NO_THROW(panel->check());
    int whole = 5;
    const double tint[] = {1, 2, 3};
    funcs().setValue(panel.get(), 1, &whole);
    funcs().setValue(panel.get(), 3, const_cast<double *>(tint));
    std::string words = "words";
    funcs().setValue(panel.get(), 4, words.data());
    whole = 6;
    EXPECT_EQ(*static_cast<int *>(funcs().getValue(panel.get(), 1)), 5);
    EXPECT_EQ(*static_cast<double *>(funcs().getValue(panel.get(), 2)), 0);
    EXPECT_EQ(static_cast<double *>(funcs().getValue(panel.get(), 3))[2], 3);
    EXPECT_STREQ(static_cast<char *>(funcs().getValue(panel.get(), 4)), "words");
    Hints animated = control(6, "float-env", "x") + Hints{word(kHintEnd)};
    static constexpr HostPanelValue more[] = {{6, "x", "float-env"}, {0, nullptr, nullptr}};
    funcs().hint(panel.get(), 0, animated.data());
    funcs().describe(panel.get(), more, nullptr, nullptr);
    EXPECT_THROW(panel->check(), InputError);
}

TEST(Panel, StoresDataById) {
    Plug plug;
    const PanelOwner panel = makePanel(plug);
    int other = 0;
    funcs().setData(panel.get(), 7, &other);
    EXPECT_EQ(funcs().getData(panel.get(), 0), &plug);
    EXPECT_EQ(funcs().getData(panel.get(), 7), &other);
    EXPECT_EQ(funcs().getData(panel.get(), 8), nullptr);
}

// Records what a panel tells its observers.
struct Recorder final : PanelObserver {
    explicit Recorder(HostPanel &panel) : watching(panel.observers(), *this) {}
    void redraw(HostPanel &) override { told.push_back("redraw"); }
    void rebuild(HostPanel &) override { told.push_back("rebuild"); }
    void panelDestroyed(HostPanel &) override { told.push_back("destroyed"); }
    std::vector<std::string> told;
    const Observation<PanelObserver> watching;
};

TEST(Panel, TellsObserversToRedrawOrRebuild) {
    Plug plug;
    PanelOwner panel = makePanel(plug);
    const Recorder recorder(*panel);
    int one = 1;
    const PanelItem &mode = *panel->find(Plug::kMode);
    panel->edit(mode, &one);
    EXPECT_EQ(recorder.told, std::vector<std::string>{});
    funcs().refresh(panel.get());
    EXPECT_EQ(recorder.told, (std::vector<std::string>{"redraw"}));
    plug.setterResult = kSetRedraw;
    panel->edit(mode, &one);
    EXPECT_EQ(recorder.told, (std::vector<std::string>{"redraw", "redraw"}));
    plug.setterResult = kSetRebuild;
    panel->edit(mode, &one);
    EXPECT_EQ(recorder.told, (std::vector<std::string>{"redraw", "redraw", "rebuild"}));
    panel.reset();
    EXPECT_EQ(recorder.told.back(), "destroyed");
}

// A user interface that shows one panel.
struct OnePanel final : Dialogs {
    bool openPanel(HostPanel &panel) override {
        opened = &panel;
        return true;
    }
    bool postPanel(HostPanel &panel) override {
        posted = &panel;
        return true;
    }
    HostPanel *opened = nullptr, *posted = nullptr;
};

TEST(Panel, OpensThroughTheDialogs) {
    Plug plug;
    const PanelOwner panel = makePanel(plug);
    EXPECT_EQ(funcs().open(panel.get()), 0);
    EXPECT_EQ(funcs().post(panel.get()), 0);
    OnePanel dialogs;
    setDialogs(&dialogs);
    EXPECT_EQ(funcs().open(panel.get()), 1);
    EXPECT_EQ(dialogs.opened, panel.get());
    EXPECT_EQ(dialogs.posted, nullptr);
    EXPECT_EQ(funcs().post(panel.get()), 1);
    EXPECT_EQ(dialogs.posted, panel.get());
    setDialogs(nullptr);
}

TEST(Panel, ButtonsArePressed) {
    Plug plug;
    const PanelOwner panel = makePanel(plug);
    panel->press(*panel->find(Plug::kPress));
    panel->press(*panel->find(Plug::kMode));
    EXPECT_EQ(plug.heard, (std::vector<std::string>{"press 12"}));
}

TEST(Panel, CallsTheDestroyCallback) {
    Plug plug;
    makePanel(plug).reset();
    EXPECT_EQ(plug.heard, (std::vector<std::string>{"destroyed"}));
}

TEST(Panel, NullPanelsAreHarmless) {
    funcs().destroy(nullptr);
    funcs().describe(nullptr, kPlugValues, Plug::get, Plug::set);
    funcs().hint(nullptr, 0, nullptr);
    EXPECT_EQ(funcs().getData(nullptr, 0), nullptr);
    funcs().setData(nullptr, 0, nullptr);
    EXPECT_EQ(funcs().getValue(nullptr, 1), nullptr);
    funcs().setValue(nullptr, 1, nullptr);
    funcs().viewInstance(nullptr, nullptr);
    funcs().refresh(nullptr);
    EXPECT_EQ(funcs().post(nullptr), 0);
    EXPECT_EQ(funcs().open(nullptr), 0);
    Plug plug;
    const PanelOwner panel = makePanel(plug);
    funcs().hint(panel.get(), 0, nullptr);
    EXPECT_NO_THROW(panel->check());
}

} // namespace

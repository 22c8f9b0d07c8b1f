// The value tables and hint lists of panels, which are made from the parameter rows, and the hints of Counter word by
// word.
#include "tests/module/hint_list.h"
#include "tests/module/test_node.h"
#include "tests/module/test_nodes.h"

#include <gtest/gtest.h>

extern "C" {
extern const HostModuleDescriptor _mod_descrip;
}

namespace velm::plugin {
namespace {

using Lines = std::vector<std::string>;
using Ids = std::vector<unsigned int>;

class PanelHints : public testing::Test {
  protected:
    FakeHost host;
};

// ---- Counter ----

TEST_F(PanelHints, CounterShowsFiveControls) {
    TestNode node(host, "Velm Counter");
    constexpr Control expected[] = {
        {.id = 0x8001, .label = "Mode", .value = "integer", .control = "iPopChoice"},
        {.id = 0x8002, .label = "Start Value", .value = "float-env", .control = "float-env"},
        {.id = 0x8003, .label = "Increase Value", .value = "float-env", .control = "float-env"},
        {.id = 0x8004, .label = "A", .value = "float-env", .control = "float-env"},
        {.id = 0x8005, .label = "B", .value = "float-env", .control = "float-env"},
    };
    expectControls(*node.panel(), expected);
    EXPECT_EQ(entriesOf(*node.panel(), 0x8001),
              (Lines{"Counter Equal To A", "Counter Greater Than A", "Counter Less Than A",
                     "Counter Greater Than Or Equal To A", "Counter Less Than Or Equal To A", "A Does Change",
                     "A Does Not Change", "A Equal To B", "A Not Equal To B", "A Greater Than B", "A Less Than B",
                     "A Greater Than Or Equal To B", "A Less Than Or Equal To B"}));
}

// Reads a hint list word by word.
class Words {
  public:
    explicit Words(const HostHint *first) : next_(first) {}
    Words &is(HostWord expected) {
        EXPECT_EQ(next_->word, expected) << "word " << count_;
        return step();
    }
    Words &text(const char *expected) {
        EXPECT_STREQ(next_->text, expected) << "word " << count_;
        return step();
    }
    const HostHint &any() {
        step();
        return next_[-1];
    }

  private:
    const HostHint *next_;
    int count_ = 0;
    Words &step() {
        ++next_;
        ++count_;
        return *this;
    }
};

TEST_F(PanelHints, CounterWordByWord) {
    TestNode node(host, "Velm Counter");
    Words words(node.panel()->hints);
    words.is(0x3D000F01);
    EXPECT_NE(words.any().change, nullptr);
    words.is(0x3D000D03).is(0x8001).text("iPopChoice").is(0x8001);
    words.is(0x3D000B03).is(0x8001).text("Mode").is(0);
    words.is(0x3D014503).is(0x8001);
    EXPECT_STREQ(words.any().texts[0], "Counter Equal To A");
    words.is(0);
    words.is(0x3D000D03).is(0x8002).text("float-env").is(0x8002);
    words.is(0x3D000B03).is(0x8002).text("Start Value").is(0);
    words.is(0x3D000D03).is(0x8003).text("float-env").is(0x8003);
    words.is(0x3D000B03).is(0x8003).text("Increase Value").is(0);
    words.is(0x3D000D03).is(0x8004).text("float-env").is(0x8004);
    words.is(0x3D000B03).is(0x8004).text("A").is(0);
    words.is(0x3D000D03).is(0x8005).text("float-env").is(0x8005);
    words.is(0x3D000B03).is(0x8005).text("B").is(0);
    words.is(0x3D01F984).is(0x8001).is(0).is(0);
    const int *map = words.any().numbers;
    for (int mode = 0; mode <= 12; ++mode) EXPECT_EQ(map[mode], mode >= 7 ? 1 : 0) << "\"B\" in mode " << mode;
    for (int mode = 13; mode < 16; ++mode) EXPECT_EQ(map[mode], 0) << "padded";
    words.is(0x8005).is(0);
    words.is(0x3D001302);
    EXPECT_NE(words.any().destroyed, nullptr);
    words.is(0).is(0);
}

// ---- Every kind of row ----

TEST_F(PanelHints, RowsBecomeControls) {
    TestNode node(host, Everything_Activate, Everything_Interface);
    constexpr Control expected[] = {
        {.id = 0x8001, .label = "Kind", .value = "integer", .control = "iPopChoice"},
        {.id = 0x8002, .label = "Count", .value = "integer", .control = "integer"},
        {.id = 0x8003, .label = "Switch", .value = "integer", .control = "iBoolean"},
        {.id = 0x8004, .label = "Name", .value = "string", .control = "string"},
        {.id = 0x8005, .label = "Level", .value = "float-env", .control = "float-env"},
        {.id = 0x8006, .label = "Last", .value = "percent-env", .control = "percent-env"},
        {.id = 0x8007, .label = "Place", .value = "float3-env", .control = "float3-env"},
        {.id = 0x8008, .label = "Tint", .value = "color-env", .control = "color-env"},
        {.id = 0x8009, .label = "Image", .value = "integer", .control = "iPopChoice"},
        {.id = 0x800a, .label = "Ray", .value = "integer", .control = "iPopTransform"},
        {.id = 0x800b, .label = "Open", .value = nullptr, .control = "vButton"},
        {.id = 0x800c, .label = nullptr, .value = nullptr, .control = "dThumbnail"},
    };
    expectControls(*node.panel(), expected);
}

TEST_F(PanelHints, RowsBringWhatTheirControlsNeed) {
    TestNode node(host, Everything_Activate, Everything_Interface);
    const HostPanel &panel = *node.panel();
    EXPECT_EQ(entriesOf(panel, 0x8001), (Lines{"First", "Second"}));
    EXPECT_EQ(entriesOf(panel, 0x800a), (Lines{"First", "Second"}));
    EXPECT_EQ(hintsWith(kHintStringList, panel.hints).size(), 2u);

    const std::vector<Hint> popups = hintsWith(kHintPopupFunctions, panel.hints);
    ASSERT_EQ(popups.size(), 1u);
    EXPECT_EQ(popups[0].arguments[0].word, 0x8009u);
    EXPECT_EQ(popups[0].arguments[1].popupCount, everythingImageCount);
    EXPECT_EQ(popups[0].arguments[2].popupName, everythingImageName);

    const std::vector<Hint> transforms = hintsWith(kHintValueTransform, panel.hints);
    ASSERT_EQ(transforms.size(), 1u);
    EXPECT_EQ(transforms[0].arguments[0].word, 0x800au);
    EXPECT_EQ(transforms[0].arguments[1].word, 3u);
    EXPECT_EQ(transforms[0].arguments[2].numbers, everythingRays);

    const std::vector<Hint> buttons = hintsWith(kHintButton, panel.hints);
    ASSERT_EQ(buttons.size(), 1u);
    EXPECT_EQ(buttons[0].arguments[0].word, 0x800bu);
    EXPECT_EQ(buttons[0].arguments[1].button, everythingButton);

    const std::vector<Hint> drawings = hintsWith(kHintDraw, panel.hints);
    ASSERT_EQ(drawings.size(), 1u);
    EXPECT_EQ(drawings[0].arguments[0].word, 0x800cu);
    EXPECT_EQ(drawings[0].arguments[1].draw, everythingDraw);
}

TEST_F(PanelHints, NotificationsStandAroundRowsAndLayout) {
    TestNode node(host, Everything_Activate, Everything_Interface);
    const std::vector<Hint> hints = hintsOf(node.panel()->hints);
    ASSERT_GE(hints.size(), 4u);
    EXPECT_EQ(hints.front().tag, kHintChangeNotify);
    EXPECT_EQ(hints.front().arguments[0].change, Everything_ui_chgnotify);
    EXPECT_EQ(hints[hints.size() - 3].tag, kHintMinimum);
    EXPECT_EQ(hints[hints.size() - 2].tag, kHintDividerAfter);
    EXPECT_EQ(hints[hints.size() - 2].ids, (Ids{0x8008}));
    EXPECT_EQ(hints.back().tag, kHintDestroyNotify);
    EXPECT_EQ(hints.back().arguments[1].word, 0u);
}

// The servers whose panels need only the fake host. The Group Node needs node editors, and its panel has no enable
// hint.
std::vector<const char *> serversWithPanels() {
    std::vector<const char *> names;
    for (const HostServer *server = _mod_descrip.servers; server->className; ++server)
        if (server->className == std::string(HOST_CLASS_NODE_INTERFACE) && server->activate &&
            server->name != std::string("Velm Group Node"))
            names.push_back(server->name);
    return names;
}

TEST_F(PanelHints, MapsOfWhatIsEnabledGoOnWithZerosBeyondTheirLists) {
    int maps = 0;
    for (const char *server : serversWithPanels()) {
        TestNode node(host, server);
        for (const Hint &hint : hintsWith(kHintEnable, node.panel()->hints)) {
            const int *map = hint.arguments[3].numbers;
            if (!map) continue;
            ++maps;
            const auto controlling = static_cast<unsigned int>(hint.arguments[0].word);
            const size_t entries = entriesOf(*node.panel(), controlling).size();
            ASSERT_GE(entries, 1u) << server;
            for (size_t i = entries; i < std::size(EnableStates{}); ++i) EXPECT_EQ(map[i], 0) << server << ", " << i;
        }
    }
    EXPECT_EQ(maps, 6) << "Counter's, Hold Value's, and Ambient Occlusion's four";
}

TEST_F(PanelHints, ALimitBelowZeroKeepsItsSign) {
    EXPECT_EQ(static_cast<intptr_t>(minimumHint(0x8001, -90)[2].word), -90);
    EXPECT_EQ(static_cast<intptr_t>(rangeHint(0x8001, -5, 5, 1)[2].word), -5);
}

} // namespace
} // namespace velm::plugin

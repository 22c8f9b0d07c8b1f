// The panel of Ambient Occlusion: controls, limits, enabling and layout.
#include "tests/module/hint_list.h"
#include "tests/module/test_node.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

namespace velm::plugin {
namespace {

using Lines = std::vector<std::string>;
using Ids = std::vector<unsigned int>;

constexpr Control kOcclusionControls[] = {
    {.id = 0x8001, .label = "Mode", .value = "integer", .control = "iChoice"},
    {.id = 0x8002, .label = "Samples", .value = "integer", .control = "integer"},
    {.id = 0x8003, .label = "Polar Samples 1", .value = "integer", .control = "integer"},
    {.id = 0x8004, .label = "Polar Samples 2", .value = "integer", .control = "integer"},
    {.id = 0x8005, .label = "Jitter Angle", .value = "angle-env", .control = "angle-env"},
    {.id = 0x8006, .label = "Cone Angle", .value = "angle-env", .control = "angle-env"},
    {.id = 0x8007, .label = "Ranged", .value = "integer", .control = "iBoolean"},
    {.id = 0x8008, .label = "Max", .value = "distance-env", .control = "distance-env"},
    {.id = 0x8009, .label = "Shift", .value = "float-env", .control = "float-env"},
    {.id = 0x800a, .label = "Clamp", .value = "integer", .control = "iBoolean"},
    {.id = 0x800b, .label = "Low", .value = "float-env", .control = "float-env"},
    {.id = 0x800c, .label = "Clamp", .value = "integer", .control = "iBoolean"},
    {.id = 0x800d, .label = "High", .value = "float-env", .control = "float-env"},
    {.id = 0x800e, .label = "Offset", .value = "distance-env", .control = "distance-env"},
    {.id = 0x800f, .label = "Sample Depth", .value = "integer", .control = "integer"},
    {.id = 0x8010, .label = "Color Mode", .value = "integer", .control = "iChoice"},
    {.id = 0x8011, .label = "Srf Color", .value = "color-env", .control = "color-env"},
    {.id = 0x8012, .label = "Brightness", .value = "percent-env", .control = "percent-env"},
    {.id = 0x8013, .label = "Color Mode", .value = "integer", .control = "iChoice"},
    {.id = 0x8014, .label = "Bg Color", .value = "color-env", .control = "color-env"},
    {.id = 0x8015, .label = "Brightness", .value = "percent-env", .control = "percent-env"},
    {.id = 0x8016, .label = "Color Mode", .value = "integer", .control = "iChoice"},
    {.id = 0x8017, .label = "Occ Color", .value = "color-env", .control = "color-env"},
    {.id = 0x8018, .label = "Brightness", .value = "percent-env", .control = "percent-env"},
    {.id = 0x8019, .label = "Color Mode", .value = "integer", .control = "iChoice"},
    {.id = 0x801a, .label = "Limit Color", .value = "color-env", .control = "color-env"},
    {.id = 0x801b, .label = "Brightness", .value = "percent-env", .control = "percent-env"},
};

class OcclusionPanel : public testing::Test {
  protected:
    FakeHost host;
    TestNode node{host, "Velm Ambient Occlusion"};
    const HostPanel &panel = *node.panel();

    // The group, stack or tabs with this identifier.
    Hint container(unsigned int id) const {
        for (const Hint &hint : hintsOf(panel.hints))
            if ((hint.tag == kHintGroup || hint.tag == kHintStack || hint.tag == kHintTabs) &&
                hint.arguments[0].word == id)
                return hint;
        return {};
    }
    // The controls of a group, including those in nested groups and stacks.
    std::set<unsigned int> controlsOf(unsigned int id) const {
        if (id < 0x9000) return {id};
        std::set<unsigned int> controls;
        for (const unsigned int member : container(id).ids) controls.merge(controlsOf(member));
        return controls;
    }
    std::string labelOf(unsigned int id) const {
        for (const Hint &hint : hintsWith(kHintLabel, panel.hints))
            if (hint.arguments[0].word == id) return hint.arguments[1].text;
        return {};
    }
    bool hasGroupOf(const Ids &members) const {
        const std::vector<Hint> groups = hintsWith(kHintGroup, panel.hints);
        return std::any_of(groups.begin(), groups.end(), [&](const Hint &hint) { return hint.ids == members; });
    }
};

std::set<unsigned int> idsFromTo(unsigned int first, unsigned int last) {
    std::set<unsigned int> ids;
    for (unsigned int id = first; id <= last; ++id) ids.insert(id);
    return ids;
}

TEST_F(OcclusionPanel, ShowsItsControls) { expectControls(panel, kOcclusionControls); }

TEST_F(OcclusionPanel, ListsItsChoices) {
    EXPECT_EQ(entriesOf(panel, 0x8001), (Lines{"Random", "Polar"}));
    EXPECT_EQ(entriesOf(panel, 0x8010), (Lines{"Custom", "Backdrop", "Trace"}));
    EXPECT_EQ(entriesOf(panel, 0x8013), (Lines{"Custom", "Backdrop"}));
    EXPECT_EQ(entriesOf(panel, 0x8016), (Lines{"Custom", "Backdrop", "Trace"}));
    EXPECT_EQ(entriesOf(panel, 0x8019), (Lines{"Custom", "Backdrop"}));
}

TEST_F(OcclusionPanel, LimitsItsNumbers) {
    Lines limits = limitsOf(panel.hints);
    std::sort(limits.begin(), limits.end());
    EXPECT_EQ(limits,
              (Lines{"8002 enforce 1 0", "8002 minimum 1", "8003 enforce 1 0", "8003 minimum 1", "8004 enforce 1 0",
                     "8004 minimum 1", "8005 range 0 90 1", "8006 range 0 90 1", "8008 minimum 0", "8009 step 1",
                     "800b step 1", "800d step 1", "800f enforce 1 0", "800f minimum 0", "8012 minimum 0",
                     "8015 minimum 0", "8018 minimum 0", "801b minimum 0"}));
}

TEST_F(OcclusionPanel, ShowsTheSettingsOfTheChosenModeOnly) {
    const std::vector<Hint> stacks = hintsWith(kHintStack, panel.hints);
    ASSERT_EQ(stacks.size(), 1u);
    EXPECT_EQ(stacks[0].arguments[1].word, 0x8001u);
    EXPECT_EQ(stacks[0].arguments[2].numbers, nullptr) << "by position";
    ASSERT_EQ(stacks[0].ids.size(), 2u);
    EXPECT_EQ(stacks[0].ids[0], 0x8002u);
    EXPECT_EQ(container(stacks[0].ids[1]).ids, (Ids{0x8003, 0x8004, 0x8005}));
}

TEST_F(OcclusionPanel, EnablesWhatMatters) {
    struct Row {
        HostWord controlling;
        bool custom; // enabled by the map for the custom colour
        const char *message;
        Ids ids;
    };
    const Row rows[] = {
        {.controlling = 0x8007, .custom = false, .message = nullptr, .ids = {0x8008}},
        {.controlling = 0x800a, .custom = false, .message = nullptr, .ids = {0x800b}},
        {.controlling = 0x800c, .custom = false, .message = nullptr, .ids = {0x800d}},
        {.controlling = 0x8010, .custom = true, .message = nullptr, .ids = {0x8011}},
        {.controlling = 0x8013, .custom = true, .message = nullptr, .ids = {0x8014}},
        {.controlling = 0x8016, .custom = true, .message = nullptr, .ids = {0x8017}},
        {.controlling = 0x8019, .custom = true, .message = nullptr, .ids = {0x801a}},
        {.controlling = 0x8007,
         .custom = false,
         .message = "This control is only enabled in ranged mode",
         .ids = {0x8010, 0x8011, 0x8012}},
    };
    const std::vector<Hint> enables = hintsWith(kHintEnable, panel.hints);
    EXPECT_EQ(enables.size(), std::size(rows));
    for (const Row &row : rows) {
        const auto found = std::find_if(enables.begin(), enables.end(), [&](const Hint &hint) {
            return hint.arguments[0].word == row.controlling && hint.ids == row.ids;
        });
        ASSERT_NE(found, enables.end()) << row.controlling;
        EXPECT_STREQ(found->arguments[1].text, row.message);
        EXPECT_EQ(found->arguments[2].word, 0u);
        const int *map = found->arguments[3].numbers;
        ASSERT_EQ(map != nullptr, row.custom);
        if (map) {
            EXPECT_EQ((std::vector<int>(map, map + 3)), (std::vector<int>{1, 0, 0}));
        }
    }
}

TEST_F(OcclusionPanel, HasATabOfSamplingAndOneOfColours) {
    const std::vector<Hint> tabs = hintsWith(kHintTabs, panel.hints);
    ASSERT_EQ(tabs.size(), 1u);
    ASSERT_EQ(tabs[0].ids.size(), 2u);
    EXPECT_EQ(labelOf(tabs[0].ids[0]), "Sample Settings");
    EXPECT_EQ(controlsOf(tabs[0].ids[0]), idsFromTo(0x8001, 0x800f));
    EXPECT_EQ(labelOf(tabs[0].ids[1]), "Color Settings");
    EXPECT_EQ(controlsOf(tabs[0].ids[1]), idsFromTo(0x8010, 0x801b));
}

TEST_F(OcclusionPanel, LaysItsRowsOut) {
    const std::vector<Hint> narrow = hintsWith(kHintNarrow, panel.hints);
    ASSERT_EQ(narrow.size(), 1u);
    EXPECT_EQ(narrow[0].ids, (Ids{0x8007, 0x800a, 0x800c}));
    const std::vector<Hint> aligned = hintsWith(kHintLeftAlign, panel.hints);
    ASSERT_EQ(aligned.size(), 1u);
    EXPECT_EQ(aligned[0].ids, (Ids{0x8008, 0x8009, 0x800b, 0x800d}));
    EXPECT_TRUE(hasGroupOf({0x8012, 0x8015, 0x8018}));
}

TEST_F(OcclusionPanel, GivesEachContainerAnIdOfItsOwn) {
    std::set<HostWord> ids;
    for (const Hint &hint : hintsOf(panel.hints))
        if (hint.tag == kHintGroup || hint.tag == kHintStack || hint.tag == kHintTabs) {
            EXPECT_TRUE(ids.insert(hint.arguments[0].word).second) << hint.arguments[0].word;
        }
}

TEST_F(OcclusionPanel, TellsOfAContainerBeforeWhatHoldsOrNamesIt) {
    std::set<HostWord> told;
    for (const Hint &hint : hintsOf(panel.hints)) {
        const bool isContainer = hint.tag == kHintGroup || hint.tag == kHintStack || hint.tag == kHintTabs;
        if (hint.tag == kHintLabel && hint.arguments[0].word >= 0x9000) {
            EXPECT_EQ(told.count(hint.arguments[0].word), 1u) << hint.arguments[0].word;
        }
        if (!isContainer) continue;
        for (const unsigned int member : hint.ids)
            if (member >= 0x9000) {
                EXPECT_EQ(told.count(member), 1u) << member;
            }
        told.insert(hint.arguments[0].word);
    }
    EXPECT_EQ(told.size(), 6u);
}

TEST_F(OcclusionPanel, GreysWhatIsConnected) {
    struct Row {
        unsigned int id;
        const char *input;
    };
    const Row rows[] = {
        {0x8002, "Samples"},
        {0x8003, "Polar 1"},
        {0x8004, "Polar 2"},
        {0x8005, "Jitter Angle"},
        {0x8006, "Cone Angle"},
        {0x8008, "Max"},
        {0x8009, "Shift"},
        {0x800b, "Low"},
        {0x800d, "High"},
        {0x800e, "Offset"},
        {0x800f, "Sample Depth"},
        {0x8011, "Srf Color"},
        {0x8012, "Srf Brightness"},
        {0x8014, "Bg Color"},
        {0x8015, "Bg Brightness"},
        {0x8017, "Occ Color"},
        {0x8018, "Occ Brightness"},
        {0x801a, "Limit Color"},
        {0x801b, "Limit Brightness"},
    };
    for (const Row &row : rows) {
        EXPECT_NE(panel.get(node.instance, row.id), nullptr) << row.input;
        node.connect(row.input, 1);
        EXPECT_EQ(panel.get(node.instance, row.id), nullptr) << row.input;
    }
    for (const unsigned int id : {0x8001u, 0x8007u, 0x800au, 0x800cu, 0x8010u, 0x8013u, 0x8016u, 0x8019u})
        EXPECT_NE(panel.get(node.instance, id), nullptr) << id << " has no input";
    EXPECT_EQ(panel.get(node.instance, 0x801c), nullptr);
}

} // namespace
} // namespace velm::plugin

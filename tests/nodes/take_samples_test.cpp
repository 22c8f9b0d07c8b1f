// Take Samples: the class, and its modes against a simple reference.
#include "tests/nodes/node_frame.h"

#include "module/panel.h"
#include "module/servers.h"
#include "tests/module/hint_list.h"
#include "tests/module/recorded_state.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velm::plugin {
namespace {

#define CHANNEL_PARMS(c)                                                                                               \
    {c " Shift", 16, {0}}, {c " Low", 16, {0}}, {                                                                      \
        c " High", 16, { 1 }                                                                                           \
    }
#define CHANNEL_INPUTS(c) c " Shift 2", c " Low 2", c " High 2"
#define CHANNEL_CONTROLS(c, first)                                                                                     \
    {first, c " Shift", "float-env", "float-env", c " Shift", c " Shift"},                                             \
        {first + 1, "Clamp", "iBoolean", "integer"},                                                                   \
        {first + 2, c " Low", "float-env", "float-env", c " Low", c " Low"},                                           \
        {first + 3, "Clamp", "iBoolean", "integer"}, {                                                                 \
        first + 4, c " High", "float-env", "float-env", c " High", c " High"                                           \
    }
#define CHANNEL_SAVED(c) "parm " c " Shift", "parm " c " Low", "parm " c " High"

const NodeFacts kFacts = {
    .name = "Take Samples",
    .menu = "Velm's Nodes/Surfacing",
    .activate = TakeSamples_Activate,
    .interface = TakeSamples_Interface,
    .setsPreview = false,
    .parms = {CHANNEL_PARMS("R"), CHANNEL_PARMS("G"), CHANNEL_PARMS("B")},
    .inputs = {"Mode 4", "Samples 4", "Color 1", CHANNEL_INPUTS("R"), CHANNEL_INPUTS("G"), CHANNEL_INPUTS("B")},
    .outputs = {"Color 1"},
    .panel = {{0x8001, "Mode", "iPopChoice", "integer", nullptr, "Mode", 0},
              {0x8002, "Samples", "integer", "integer", nullptr, "Samples", 12},
              CHANNEL_CONTROLS("R", 0x8003),
              CHANNEL_CONTROLS("G", 0x8008),
              CHANNEL_CONTROLS("B", 0x800d)},
    .saved = {"I2 0", "I2 12", "I2 0", "I2 0", "I2 0", "I2 0", "I2 0", "I2 0", CHANNEL_SAVED("R"), CHANNEL_SAVED("G"),
              CHANNEL_SAVED("B")},
};
VELM_NODE_WITH_PANEL(TakeSamples, kFacts);

using Colour = std::array<double, 3>;

struct ChannelSettings {
    double shift = 0, low = 0, high = 1;
    bool clampLow = false, clampHigh = false;
};

// The expected result, computed as simply as possible.
Colour reference(int mode, const std::vector<Colour> &script, const std::array<ChannelSettings, 3> &channels = {}) {
    std::vector<Colour> samples = script;
    for (Colour &colour : samples)
        for (size_t i = 0; i < 3; ++i) {
            colour[i] = channels[i].shift + colour[i];
            if (channels[i].clampLow) colour[i] = std::max(colour[i], channels[i].low);
            if (channels[i].clampHigh) colour[i] = std::min(colour[i], channels[i].high);
        }
    const auto light = [](const Colour &a) { return (a[0] + a[1] + a[2]) * 0.3333333333333333; };
    const auto darker = [&](const Colour &a, const Colour &b) { return light(a) < light(b); };
    // Both algorithms of the library return the first of equal elements.
    if (mode == 3) return *std::min_element(samples.begin(), samples.end(), darker);
    if (mode == 4) return *std::max_element(samples.begin(), samples.end(), darker);
    Colour all = mode == 1 || mode == 2 ? samples[0] : Colour{};
    for (const Colour &colour : samples)
        for (size_t i = 0; i < 3; ++i)
            all[i] = mode == 1   ? std::min(all[i], colour[i])
                     : mode == 2 ? std::max(all[i], colour[i])
                                 : all[i] + colour[i];
    if (mode == 0)
        for (double &component : all) component *= 1.0 / static_cast<double>(samples.size());
    return all;
}

const std::vector<Colour> kScript = {{0.5, 0.25, 0.75}, {0.1, 0.9, 0.3},  {1.5, -0.25, 0.0}, {0.4, 0.4, 0.4},
                                     {0.2, 0.7, 0.6},   {-1, 0.125, 0.5}, {0.0, 0.0, 2.5},   {0.3, 0.3, 0.1}};

class TakeSamples : public testing::Test {
  protected:
    FakeHost host;
    TestNode node{host, "Velm Take Samples"};
    ShadingSample sample = plainSample();
    int evaluations = 0;
    std::vector<Colour> started; // the colour before each evaluation

    // Connects "Color" to these colours in turn, repeatedly, and sets as many samples.
    void feed(const std::vector<Colour> &script) {
        evaluations = 0;
        node.input("Color").source = [this, script](ShadingSample *, void *value) {
            auto *colour = static_cast<double *>(value);
            started.push_back({colour[0], colour[1], colour[2]});
            const Colour &next = script[static_cast<size_t>(evaluations++) % script.size()];
            std::copy(next.begin(), next.end(), colour);
        };
        node.set(0x8002, static_cast<int>(script.size()));
    }
    Colour result() {
        const HostNodeValue value = node.evaluate("Color", sample);
        EXPECT_EQ(value.timesSet, 1);
        return {value.numbers[0], value.numbers[1], value.numbers[2]};
    }
    void setChannel(const std::string &letter, unsigned int first, const ChannelSettings &channel) {
        node.set(letter + " Shift", channel.shift);
        node.set(letter + " Low", channel.low);
        node.set(letter + " High", channel.high);
        node.set(first + 1, channel.clampLow);
        node.set(first + 3, channel.clampHigh);
    }
    void setChannels(const std::array<ChannelSettings, 3> &channels) {
        setChannel("R", 0x8003, channels[0]);
        setChannel("G", 0x8008, channels[1]);
        setChannel("B", 0x800d, channels[2]);
    }
};

TEST_F(TakeSamples, CombinesAsItsModeSays) {
    for (int mode = 0; mode < 8; ++mode) {
        SCOPED_TRACE(mode);
        feed(kScript);
        node.set(0x8001, mode);
        EXPECT_EQ(result(), reference(mode, kScript));
        EXPECT_EQ(evaluations, 8);
    }
}

TEST_F(TakeSamples, CombinesAnyNumberOfSamples) {
    for (int mode = 0; mode < 6; ++mode)
        for (size_t count = 1; count <= kScript.size(); ++count) {
            SCOPED_TRACE(testing::Message() << "mode " << mode << ", " << count);
            const std::vector<Colour> script(kScript.end() - static_cast<std::ptrdiff_t>(count), kScript.end());
            feed(script);
            node.set(0x8001, mode);
            EXPECT_EQ(result(), reference(mode, script));
            EXPECT_EQ(evaluations, static_cast<int>(count));
        }
}

TEST_F(TakeSamples, ShiftsAndClampsEachSampleBeforeItCombines) {
    const std::array<ChannelSettings, 3> settings[] = {
        {{{.shift = 0.25}, {.shift = -0.5}, {.shift = 1}}},
        {{{.low = 0.3, .clampLow = true}, {.low = 0.2, .clampLow = true}, {.low = 0.4, .clampLow = true}}},
        {{{.high = 0.3, .clampHigh = true}, {.high = 0.2, .clampHigh = true}, {.high = 0.4, .clampHigh = true}}},
        {{{.shift = 0.1, .low = 0.2, .high = 0.6, .clampLow = true, .clampHigh = true},
          {.shift = -0.1, .low = 0, .high = 0.5, .clampLow = false, .clampHigh = true},
          {.shift = 0.3, .low = 0.5, .high = 1, .clampLow = true, .clampHigh = false}}},
        {{{.low = 0.4, .high = 0.6}, {.low = 0.4, .high = 0.6}, {.low = 0.4, .high = 0.6}}},
    };
    for (const auto &channels : settings)
        for (int mode = 0; mode < 6; ++mode) {
            SCOPED_TRACE(mode);
            setChannels(channels);
            feed(kScript);
            node.set(0x8001, mode);
            EXPECT_EQ(result(), reference(mode, kScript, channels));
        }
}

TEST_F(TakeSamples, WhereTheClampsCrossTheHighOneWins) {
    node.set(0x8004, 1);
    node.set("R Low", 0.5);
    feed(kScript);
    node.set(0x8001, 1);
    EXPECT_EQ(result()[0], 0.5) << "lifted";
    node.set(0x8006, 1);
    node.set("R High", 0.2);
    for (const int mode : {1, 2, 3, 4}) {
        node.set(0x8001, mode);
        EXPECT_EQ(result()[0], 0.2) << "for every sample, mode " << mode;
    }
}

TEST_F(TakeSamples, AnyClampBoxThatIsNotZeroIsOn) {
    node.set("G High", 0.125);
    node.set(0x800b, -8);
    feed({{1, 1, 1}});
    EXPECT_EQ(result(), (Colour{1, 0.125, 1}));
}

TEST_F(TakeSamples, AModeBeyondTheSumIsTheSumAndOneBelowTheAverage) {
    struct Case {
        int asked, done;
    };
    for (const Case row : {Case{6, 5}, Case{7, 5}, Case{100, 5}, Case{2147483647, 5}, Case{-1, 0}, Case{-1000, 0}}) {
        feed(kScript);
        node.connect("Mode", row.asked);
        EXPECT_EQ(result(), reference(row.done, kScript)) << row.asked;
        node.disconnect("Mode");
        node.set(0x8001, row.asked);
        EXPECT_EQ(result(), reference(row.done, kScript)) << row.asked << " as the panel or a file has it";
    }
}

TEST_F(TakeSamples, TakesOneSampleAtLeastAndAsManyAsAreAsked) {
    for (int mode = 0; mode < 8; ++mode) {
        node.set(0x8001, mode);
        for (const auto &[asked, taken] : {std::pair{0, 1}, {-1, 1}, {-70000, 1}, {1, 1}, {2, 2}, {40000, 40000}}) {
            feed({{0.5, 0.25, 2}});
            node.set(0x8002, asked);
            result();
            EXPECT_EQ(evaluations, taken) << "mode " << mode;
            evaluations = 0;
            node.set(0x8002, 3);
            node.connect("Samples", asked);
            result();
            EXPECT_EQ(evaluations, taken) << "connected, mode " << mode;
            node.disconnect("Samples");
        }
    }
}

TEST_F(TakeSamples, OneColourComesThroughAsItIs) {
    const Colour colour = {0.1, 0.7, 1.3};
    for (const int mode : {1, 2, 3, 4}) {
        feed({colour});
        node.set(0x8002, 12);
        node.set(0x8001, mode);
        EXPECT_EQ(result(), colour) << mode;
    }
    node.set(0x8001, 0);
    for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(result()[i], colour[i], 1e-15);
    node.set(0x8001, 5);
    for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(result()[i], 12 * colour[i], 1e-14);
}

TEST_F(TakeSamples, AveragesByTheReciprocal) {
    // For some sums, the sum times 1/49 differs from the sum divided by 49 in the last bit.
    feed(std::vector<Colour>(49, {1, 1, 1}));
    EXPECT_EQ(result()[0], 49 * (1.0 / 49));
    EXPECT_NE(result()[0], 1.0);
}

TEST_F(TakeSamples, SumsStartAtZeroAndTheRestAtTheFirstSample) {
    for (int mode = 0; mode < 8; ++mode) { // a negative zero distinguishes the modes
        feed({{-0.0, -0.0, -0.0}});
        node.set(0x8001, mode);
        node.set("R Shift", -0.0);
        EXPECT_EQ(std::signbit(result()[0]), mode >= 1 && mode <= 4) << mode;
    }
}

TEST_F(TakeSamples, EqualBrightnessKeepsTheEarlierSample) {
    const std::vector<Colour> script = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    for (const int mode : {3, 4}) {
        feed(script);
        node.set(0x8001, mode);
        EXPECT_EQ(result(), script[0]) << mode;
    }
}

TEST_F(TakeSamples, TheBrightnessKeptIsThatOfTheSampleKept) {
    for (const int mode : {3, 4}) {
        const double sign = mode == 3 ? -1 : 1;
        const std::vector<Colour> script = {{0, 0, 0}, {3 * sign, 0, 0}, {0, 2 * sign, 0}};
        feed(script);
        node.set(0x8001, mode);
        EXPECT_EQ(result(), script[1]) << mode;
    }
}

TEST_F(TakeSamples, BrightnessIsAThirdAsItIsRounded) {
    // Two adjacent sums whose thirds are equal by multiplication and differ by division: the tie shows which is used.
    double low = 1.5, high = std::nextafter(low, 2.0);
    while (low * 0.3333333333333333 != high * 0.3333333333333333 || low / 3 == high / 3)
        low = high, high = std::nextafter(low, 2.0);
    ASSERT_LT(high, 2);
    for (const int mode : {3, 4}) {
        const std::vector<Colour> script = {{mode == 3 ? high : low, 0, 0}, {mode == 3 ? low : high, 0, 0}};
        feed(script);
        node.set(0x8001, mode);
        EXPECT_EQ(result(), script[0]) << mode;
    }
}

TEST_F(TakeSamples, WithNothingConnectedItTakesBlack) {
    EXPECT_EQ(result(), (Colour{0, 0, 0}));
    setChannels({{{.shift = 0.5}, {.low = 0.25, .clampLow = true}, {.high = -1, .clampHigh = true}}});
    node.set(0x8001, 2);
    EXPECT_EQ(result(), (Colour{0.5, 0.25, -1}));
}

TEST_F(TakeSamples, EachEvaluationStartsBlack) {
    for (int mode = 0; mode < 6; ++mode) {
        feed(kScript);
        node.set(0x8001, mode);
        result();
    }
    EXPECT_EQ(started, std::vector<Colour>(48));
}

TEST_F(TakeSamples, ReadsItsSettingsOnceInOrderBeforeTheSamples) {
    node.set(0x8002, 3);
    Lines expected = {"evaluate Mode", "evaluate Samples"};
    for (const std::string channel : {"R", "G", "B"})
        for (const std::string setting : {" Shift", " Low", " High"})
            expected.push_back("evaluate " + channel + setting);
    expected.insert(expected.end(), 3, "evaluate Color");
    expected.emplace_back("setValue");
    host.logsEvaluation = true;
    for (int mode = 0; mode < 8; ++mode) {
        node.set(0x8001, mode);
        result();
        EXPECT_EQ(host.takeLog(), expected);
    }
}

TEST_F(TakeSamples, ConnectionsCountForTheirSampleOnly) {
    feed({{0.5, 0.5, 0.5}});
    for (const unsigned int clamp : {0x8004u, 0x8009u, 0x800bu, 0x8010u}) node.set(clamp, 1);
    node.connect("R Shift", -2.0);
    node.connect("R Low", 0.25);
    node.connect("G Low", 0.75);
    node.connect("G High", 0.7);
    node.connect("B Shift", 3.0);
    node.connect("B High", 2.0);
    EXPECT_EQ(result(), (Colour{0.25, 0.7, 2}));
    for (const char *input : {"R Shift", "R Low", "G Low", "G High", "B Shift", "B High"}) node.disconnect(input);
    EXPECT_EQ(result(), (Colour{0.5, 0.5, 0.5}));
}

TEST_F(TakeSamples, FollowsItsFrames) {
    feed({{0, 0, 0}});
    for (const char *shift : {"R Shift", "G Shift", "B Shift"})
        node.parm(shift).overTime = [](double time, double *value) { *value = time; };
    node.render.newTime(node.instance, 1, 2.5);
    EXPECT_EQ(result(), (Colour{2.5, 2.5, 2.5}));
    TakeSamples_get_vpValues(node.instance, 3.5);
    EXPECT_EQ(result(), (Colour{3.5, 3.5, 3.5}));
}

TEST_F(TakeSamples, LoadingReadsTheValuesAtTheStart) {
    RecordedState state;
    for (const int value : {5, 2, 1, 0, 0, 1, 0, 0}) state.integer(value);
    for (const double value : {0.0, 0.5, 9.0, 1.0, 9.0, 0.75, 2.0, 9.0, 9.0}) state.parm({value});
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    EXPECT_EQ(result(), (Colour{1, 1.5, 4})) << "two of (0.5, 0.75, 2)";
}

// ---- The panel ----

TEST_F(TakeSamples, ThePopupOffersTwoModesThatAddLikeTheSixth) {
    const std::vector<Hint> lists = hintsWith(kHintStringList, node.panel()->hints);
    ASSERT_EQ(lists.size(), 1u);
    EXPECT_EQ(lists[0].arguments[0].word, 0x8001u);
    const char *const *text = lists[0].arguments[1].texts;
    for (const char *name :
         {"Average", "Minimum", "Maximum", "Darkest", "Brightest", "Additive", "Subtractive", "Multiply"})
        EXPECT_STREQ(*text++, name);
    EXPECT_EQ(*text, nullptr);
}

TEST_F(TakeSamples, ThePanelKeepsSamplesAtOneAtLeast) {
    EXPECT_EQ(limitsOf(node.panel()->hints), (Lines{"8002 minimum 1", "8002 enforce 1 0"}));
}

TEST_F(TakeSamples, EachBoxEnablesTheLimitBesideIt) {
    const std::vector<Hint> enabling = hintsWith(kHintEnable, node.panel()->hints);
    const unsigned int boxes[] = {0x8004, 0x8006, 0x8009, 0x800b, 0x800e, 0x8010};
    ASSERT_EQ(enabling.size(), std::size(boxes));
    for (size_t i = 0; i < enabling.size(); ++i) {
        EXPECT_EQ(enabling[i].arguments[0].word, boxes[i]);
        EXPECT_EQ(enabling[i].arguments[1].text, nullptr);
        EXPECT_EQ(enabling[i].arguments[3].numbers, nullptr) << "while it is on";
        EXPECT_EQ(enabling[i].ids, (std::vector<unsigned int>{boxes[i] + 1}));
    }
}

TEST_F(TakeSamples, ThePanelIsLaidOutByChannel) {
    using Ids = std::vector<unsigned int>;
    const HostHint *hints = node.panel()->hints;
    ASSERT_EQ(hintsWith(kHintNarrow, hints).size(), 1u);
    EXPECT_EQ(hintsWith(kHintNarrow, hints)[0].ids, (Ids{0x8004, 0x8006, 0x8009, 0x800b, 0x800e, 0x8010}));
    ASSERT_EQ(hintsWith(kHintLeftAlign, hints).size(), 1u);
    EXPECT_EQ(hintsWith(kHintLeftAlign, hints)[0].ids, (Ids{0x8005, 0x8007, 0x800a, 0x800c, 0x800f, 0x8011}));
    ASSERT_EQ(hintsWith(kHintDividerAfter, hints).size(), 1u);
    EXPECT_EQ(hintsWith(kHintDividerAfter, hints)[0].ids, (Ids{0x8002, 0x8007, 0x800c}));
}

} // namespace
} // namespace velm::plugin

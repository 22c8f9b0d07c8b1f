// Saving and loading nodes: the order and width of what is written, and the effects of errors.
#include "tests/module/recorded_state.h"
#include "tests/module/test_node.h"
#include "tests/module/test_nodes.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

namespace velm::plugin {
namespace {

using Lines = std::vector<std::string>;

class SaveLoad : public testing::Test {
  protected:
    FakeHost host;

    SaveLoad() { hookAnswers = {}; }
    static Everything &everything(TestNode &node) { return *static_cast<Everything *>(node.instance); }
    static Blocks &blocks(TestNode &node) { return *static_cast<Blocks *>(node.instance); }
    // Whether a line of the log since the last call starts with this text.
    bool logged(const char *start) {
        const Lines log = host.takeLog();
        return std::any_of(log.begin(), log.end(), [&](const std::string &line) { return line.rfind(start, 0) == 0; });
    }
};

TEST_F(SaveLoad, CounterWritesItsModeAndItsParameters) {
    TestNode node(host, "Velm Counter");
    node.set(0x8001, 7);
    RecordedState state;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
    EXPECT_EQ(state.lines(), (Lines{"I2 7", "parm Start Value", "parm Increase Value", "parm A", "parm B"}));
}

TEST_F(SaveLoad, CounterReadsBackWhatItWrote) {
    TestNode from(host, "Velm Counter", "from"), to(host, "Velm Counter", "to");
    from.set(0x8001, 5);
    from.set("Start Value", -2.5);
    from.set("B", 11);
    RecordedState state;
    ASSERT_EQ(from.ops.save(from.instance, state.save()), nullptr);
    host.takeLog();
    EXPECT_EQ(to.ops.load(to.instance, state.load()), nullptr);
    EXPECT_EQ(host.takeLog(),
              (Lines{"loadParm Start Value", "loadParm Increase Value", "loadParm A", "loadParm B",
                     "getParm Start Value at 0", "getParm Increase Value at 0", "getParm A at 0", "getParm B at 0"}));
    EXPECT_EQ(to.integer(0x8001), 5);
    EXPECT_EQ(to.parm("Start Value").value[0], -2.5);
    EXPECT_EQ(to.parm("B").value[0], 11);
}

struct Width {
    int stored;
    int readBack;
};

class IntegerWidth : public SaveLoad, public testing::WithParamInterface<Width> {};

INSTANTIATE_TEST_SUITE_P(Values, IntegerWidth,
                         testing::Values(Width{0, 0}, Width{12, 12}, Width{-1, -1}, Width{32767, 32767},
                                         Width{-32768, -32768}, Width{32768, -32768}, Width{40000, -25536},
                                         Width{70000, 4464}, Width{65535, -1}, Width{-40000, 25536}),
                         [](const auto &row) {
                             const int stored = row.param.stored;
                             return stored < 0 ? "Minus" + std::to_string(-stored) : std::to_string(stored);
                         });

TEST_P(IntegerWidth, KeepsTheLowSixteenBitsWithTheirSign) {
    TestNode from(host, "Velm Counter", "from"), to(host, "Velm Counter", "to");
    from.set(0x8001, GetParam().stored);
    RecordedState state;
    ASSERT_EQ(from.ops.save(from.instance, state.save()), nullptr);
    EXPECT_EQ(from.integer(0x8001), GetParam().stored) << "saving changes nothing";
    ASSERT_EQ(to.ops.load(to.instance, state.load()), nullptr);
    EXPECT_EQ(to.integer(0x8001), GetParam().readBack);
}

TEST_F(SaveLoad, SavingStopsAtTheFirstError) {
    TestNode node(host, "Velm Counter");
    RecordedState state;
    host.failingSave = 1;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), FakeHost::kSaveError);
    EXPECT_EQ(state.lines(), (Lines{"I2 0", "parm Start Value"}));
    EXPECT_EQ(host.takeLog(), (Lines{"saveParm Start Value", "saveParm Increase Value"}));
}

TEST_F(SaveLoad, SavingGivesTheLastError) {
    TestNode node(host, "Velm Counter");
    RecordedState state;
    host.failingSave = 3;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), FakeHost::kSaveError);
    EXPECT_EQ(state.lines().size(), 4u);
}

TEST_F(SaveLoad, LoadingStopsAtTheFirstErrorAndReadsNoValues) {
    TestNode node(host, "Velm Counter");
    const RecordedState::Entry parm = {.kind = RecordedState::Entry::Kind::parm, .values = {9}};
    for (const int failing : {0, 2, 3}) {
        RecordedState state;
        state.integer(6);
        for (int i = 0; i < 4; ++i) state.entries.push_back(parm);
        host.parmsLoaded = 0;
        host.failingLoad = failing;
        host.takeLog();
        EXPECT_EQ(node.ops.load(node.instance, state.load()), FakeHost::kLoadError);
        EXPECT_EQ(host.takeLog().size(), static_cast<size_t>(failing + 1)) << "nothing after the error";
    }
    ShadingSample sample = plainSample();
    EXPECT_EQ(node.scalar("Out", sample), 0) << "the stored start value is the old one";
}

TEST_F(SaveLoad, HandsAParameterThatThereIsNotOnAsItIs) {
    host.failingParms = {2};
    TestNode node(host, "Velm Counter");
    RecordedState state;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
    EXPECT_EQ(host.takeLog(),
              (Lines{"saveParm Start Value", "saveParm Increase Value", "saveParm null", "saveParm B"}));
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    EXPECT_TRUE(logged("loadParm null"));
}

TEST_F(SaveLoad, AFileThatEndsEarlyLeavesTheRestAsItIs) {
    TestNode node(host, "Velm Counter");
    node.set(0x8001, 3);
    RecordedState empty;
    EXPECT_EQ(node.ops.load(node.instance, empty.load()), nullptr);
    EXPECT_EQ(node.integer(0x8001), 3);
    EXPECT_EQ(node.parm("Increase Value").value[0], 1);
}

// ---- Everything: integers, texts, the hook of the class, parameters ----

TEST_F(SaveLoad, WritesIntegersThenTextsThenTheUnitsOwnThenParameters) {
    TestNode node(host, Everything_Activate, nullptr);
    std::strcpy(everything(node).name, "Oak");
    everything(node).ray = 9;
    everything(node).serial = -6;
    RecordedState state;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
    EXPECT_EQ(state.lines(), (Lines{"I2 0", "I2 12", "I2 1", "I2 0", "I2 9", "I2 -6", "text Oak", "I2 4242",
                                    "parm Level Channel", "parm Last", "parm Place", "parm Tint"}));
}

TEST_F(SaveLoad, ReadsTheSameAndThenItsValues) {
    TestNode from(host, Everything_Activate, nullptr, "from"), to(host, Everything_Activate, nullptr, "to");
    everything(from).kind = 1;
    everything(from).on = 0;
    std::strcpy(everything(from).name, "Oak");
    from.set("Tint", 0.1, 0.2, 0.3);
    RecordedState state;
    ASSERT_EQ(from.ops.save(from.instance, state.save()), nullptr);
    host.takeLog();
    EXPECT_EQ(to.ops.load(to.instance, state.load()), nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"hook loadMore 4242", "loadParm Level Channel", "loadParm Last", "loadParm Place",
                                     "loadParm Tint", "getParm Level Channel at 0", "getParm Last at 0",
                                     "getParm Place at 0", "getParm Tint at 0", "hook loaded"}));
    EXPECT_EQ(everything(to).kind, 1);
    EXPECT_EQ(everything(to).on, 0);
    EXPECT_STREQ(everything(to).name, "Oak");
    EXPECT_EQ(everything(to).tint.value[2], 0.3);
}

TEST_F(SaveLoad, TheUnitsOwnErrorStopsItBeforeTheParameters) {
    TestNode node(host, Everything_Activate, nullptr);
    RecordedState state;
    hookAnswers.saveMore = "cannot save more";
    EXPECT_STREQ(node.ops.save(node.instance, state.save()), "cannot save more");
    EXPECT_FALSE(logged("saveParm"));
    hookAnswers.loadMore = "cannot load more";
    EXPECT_STREQ(node.ops.load(node.instance, state.load()), "cannot load more");
    EXPECT_FALSE(logged("loadParm"));
}

TEST_F(SaveLoad, AnErrorKeepsTheUnitFromHearingThatItIsLoaded) {
    TestNode node(host, Everything_Activate, nullptr);
    RecordedState state;
    host.failingLoad = 3;
    EXPECT_EQ(node.ops.load(node.instance, state.load()), FakeHost::kLoadError);
    const Lines log = host.takeLog();
    EXPECT_EQ(log.back(), "loadParm Tint");
}

TEST_F(SaveLoad, ATextIsSavedWholeAndReadBackWithinItsRoom) {
    TestNode from(host, Everything_Activate, nullptr, "from"), to(host, Everything_Activate, nullptr, "to");
    const std::string longest(sizeof(Everything::name) - 1, 'x');
    std::strcpy(everything(from).name, longest.c_str());
    RecordedState state;
    ASSERT_EQ(from.ops.save(from.instance, state.save()), nullptr);
    EXPECT_EQ(state.lines()[6], "text " + longest);
    ASSERT_EQ(to.ops.load(to.instance, state.load()), nullptr);
    EXPECT_EQ(std::string(everything(to).name), std::string(255, 'x'));
}

TEST_F(SaveLoad, ANodeWithoutSettingsWritesNothing) {
    TestNode node(host, Bare_Activate, nullptr);
    RecordedState state;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    EXPECT_EQ(state.lines(), Lines{});
    EXPECT_EQ(host.takeLog(), Lines{});
}

// ---- Blocks ----

constexpr unsigned int kPosition = 0x52504f53, kMode = 0x4d4f4445, kLevel = 0x4c45564c, kSwitch = 0x53574954,
                       kName = 0x4e414d45, kUnknown = 0x5a5a5a5a;

TEST_F(SaveLoad, WritesEachRowInALeafBlockOfItsOwn) {
    TestNode node(host, Blocks_Activate, nullptr);
    blocks(node).mode = 40000;
    std::strcpy(blocks(node).name, "Elm");
    RecordedState state;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
    EXPECT_EQ(state.lines(),
              (Lines{"begin RPOS Position leaf", "parm Place", "end", "begin MODE Mode leaf", "I2 -25536", "end",
                     "begin LEVL Level leaf", "parm Level", "end", "begin SWIT Switch leaf", "I2 0", "end",
                     "begin NAME Name leaf", "text Elm", "end"}));
}

TEST_F(SaveLoad, AFailingParameterLeavesItsBlockOpen) {
    TestNode node(host, Blocks_Activate, nullptr);
    RecordedState state;
    host.failingSave = 1;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), FakeHost::kSaveError);
    EXPECT_EQ(state.lines(), (Lines{"begin RPOS Position leaf", "parm Place", "end", "begin MODE Mode leaf", "I2 0",
                                    "end", "begin LEVL Level leaf"}));
}

TEST_F(SaveLoad, ReadsBlocksInAnyOrder) {
    TestNode node(host, Blocks_Activate, nullptr);
    RecordedState state;
    state.begin(kName).text("Fir").end();
    state.begin(kSwitch).integer(1).end();
    state.begin(kLevel).parm({2.5}).end();
    state.begin(kMode).integer(-25536).end();
    state.begin(kPosition).parm({1, 2, 3}).end();
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"loadParm Level", "loadParm Place", "getParm Place at 0", "getParm Level at 0"}));
    EXPECT_STREQ(blocks(node).name, "Fir");
    EXPECT_EQ(blocks(node).on, 1);
    EXPECT_EQ(blocks(node).mode, -25536);
    EXPECT_EQ(blocks(node).level.value, 2.5);
    EXPECT_EQ(blocks(node).place.value[2], 3);
}

TEST_F(SaveLoad, ReadsAnySubsetAndKeepsTheRest) {
    TestNode node(host, Blocks_Activate, nullptr);
    blocks(node).on = 1;
    node.set("Level", 4.0);
    RecordedState state;
    state.begin(kMode).integer(2).end();
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    EXPECT_EQ(blocks(node).mode, 2);
    EXPECT_EQ(blocks(node).on, 1);
    EXPECT_EQ(blocks(node).level.value, 4.0);
    RecordedState empty;
    EXPECT_EQ(node.ops.load(node.instance, empty.load()), nullptr);
    EXPECT_EQ(blocks(node).mode, 2);
}

TEST_F(SaveLoad, PassesOverBlocksItDoesNotKnowAndWhatIsLeftInThoseItDoes) {
    TestNode node(host, Blocks_Activate, nullptr);
    RecordedState state;
    state.begin(kUnknown).begin(kMode).integer(9).end().integer(8).end();
    state.begin(kMode).integer(1).integer(7).text("later").end();
    state.begin(kUnknown).end();
    state.begin(kSwitch).integer(1).end();
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    EXPECT_EQ(blocks(node).mode, 1);
    EXPECT_EQ(blocks(node).on, 1);
}

TEST_F(SaveLoad, ARowWithoutABlockIsNotWritten) {
    TestNode node(host, FullBlocks_Activate, nullptr);
    RecordedState state;
    EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
    EXPECT_EQ(state.lines().size(), 3 * kMostBlocks); // begin, number, end
}

TEST_F(SaveLoad, ReadsAsManyBlocksAsThereMayBe) {
    TestNode node(host, FullBlocks_Activate, nullptr);
    RecordedState state;
    for (unsigned int i = 0; i < kMostBlocks; ++i)
        state.begin(kUnknown).integer(99).end().begin(kFirstFullBlock + i).integer(static_cast<int>(i) + 1).end();
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    const auto &read = *static_cast<FullBlocks *>(node.instance);
    EXPECT_EQ(read.unsaved, 0);
    for (int i = 0; i < static_cast<int>(kMostBlocks); ++i) EXPECT_EQ(read.values[i], i + 1);
}

TEST_F(SaveLoad, AnErrorInABlockStopsAtOnce) {
    TestNode node(host, Blocks_Activate, nullptr);
    RecordedState state;
    state.begin(kLevel).parm({2.5}).end();
    state.begin(kSwitch).integer(1).end();
    host.failingLoad = 0;
    EXPECT_EQ(node.ops.load(node.instance, state.load()), FakeHost::kLoadError);
    EXPECT_EQ(host.takeLog(), (Lines{"loadParm Level"})) << "values are not read anew";
    EXPECT_EQ(blocks(node).on, 0);
}

} // namespace
} // namespace velm::plugin

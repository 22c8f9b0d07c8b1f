// Modules that fall: the program names them, and what stood before stands.
#include "tests/cli/program.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace velm::host {
namespace {

using test::runProgram;
using test::Workplace;

// A wall that fills the picture, coloured by a chain of all nodes of the module. Some tiles for either of two threads.
constexpr const char *kScene = R"({
    "render": {"width": 64, "height": 64, "lastFrame": 1},
    "cameras": {"Main": {"position": [0, 0, -5]}},
    "surfaces": {"Wall": {
        "nodes": {"First": {"server": "Sound Node"}, "Middle": {"server": "Faulty Node"},
                  "Tail": {"server": "Tail Node"}, "Last": {"server": "Sound Node"}},
        "connections": ["First.Out -> Middle.In", "Middle.Out -> Tail.In", "Tail.Out -> Last.In",
                        "Last.Out -> Wall.Color"]
    }},
    "objects": {"Wall": {"box": {"size": [20, 20, 1]}, "surface": "Wall"}}
})";

std::vector<std::string> renderWords(const Workplace &place) {
    return {"render",    place.write("scene.json", kScene),
            "-o",        place.picture(),
            "--module",  VELM_FAULTY_MODULE,
            "--threads", "2",
            "--quiet",   "--call-limit",
            "1"};
}

struct FaultCase {
    const char *name;
    const char *fault;   // for the module
    const char *message; // what comes behind the module's file
};

const FaultCase kFaults[] = {
    {"CrashAtLoad", "crash loading", "the module crashed (segmentation fault) in loading the module"},
    {"CrashAtStartup", "crash startup", "the module crashed (segmentation fault) in startup"},
    {"CrashAtActivate", "crash activate", "server \"Faulty Node\" crashed (segmentation fault) in activate"},
    {"CrashAtCreate", "crash create", "server \"Faulty Node\" crashed (segmentation fault) in create"},
    {"CrashAtInit", "crash init", "server \"Faulty Node\" crashed (segmentation fault) in init"},
    {"CrashAtNewTime", "crash newTime", "server \"Faulty Node\" crashed (segmentation fault) in newTime"},
    {"CrashAtEvaluate", "crash evaluate", "server \"Faulty Node\" crashed (segmentation fault) in evaluate, thread 1"},
    {"CrashInTail", "crash tail", "server \"Tail Node\" crashed (segmentation fault) in evaluate, thread 1"},
    {"NullCallAtEvaluate", "null evaluate",
     "server \"Faulty Node\" crashed (segmentation fault) in evaluate, thread 1"},
    {"NullCallAtCreate", "null create", "server \"Faulty Node\" crashed (segmentation fault) in create"},
    {"RecursionAtCreate", "recursion create", "server \"Faulty Node\" crashed (segmentation fault) in create"},
    {"RecursionAtEvaluate", "recursion evaluate",
     "server \"Faulty Node\" crashed (segmentation fault) in evaluate, thread 1"},
    {"DivisionAtEvaluate", "division evaluate",
     "server \"Faulty Node\" crashed (floating point exception) in evaluate, thread 1"},
    {"IllegalAtEvaluate", "illegal evaluate",
     "server \"Faulty Node\" crashed (illegal instruction) in evaluate, thread 1"},
    {"BusAtEvaluate", "bus evaluate", "server \"Faulty Node\" crashed (bus error) in evaluate, thread 1"},
    {"AbortAtCreate", "abort create", "server \"Faulty Node\" crashed (aborted) in create"},
    {"AbortAtEvaluate", "abort evaluate", "server \"Faulty Node\" crashed (aborted) in evaluate, thread 1"},
    {"AbortInTail", "abort tail", "server \"Tail Node\" crashed (aborted) in evaluate, thread 1"},
    {"ExitAtCreate", "exit create", "server \"Faulty Node\" ended the process by exit in create"},
    {"ExitAtEvaluate", "exit evaluate", "server \"Faulty Node\" ended the process by exit in evaluate, thread 1"},
    {"BareExitAtCreate", "_exit create", "server \"Faulty Node\" ended the process with status 0 in create"},
    // Of a process that is gone only its notes are left, and evaluations are not noted.
    {"BareExitAtEvaluate", "_exit evaluate",
     "one of the servers \"Faulty Node\", \"Sound Node\", \"Tail Node\" ended the process with status 0 in evaluate"},
    {"CrashAtCleanup", "crash cleanup", "server \"Faulty Node\" crashed (segmentation fault) in cleanup"},
    {"CrashAtDestroy", "crash destroy", "server \"Faulty Node\" crashed (segmentation fault) in destroy"},
    {"CrashAtShutdown", "crash shutdown", "the module crashed (segmentation fault) in shutdown"},
    {"HangAtLoad", "hang loading", "the module hangs in loading the module: nothing came of it for 1 s"},
    {"HangAtCreate", "hang create", "server \"Faulty Node\" hangs in create: nothing came of it for 1 s"},
    {"HangAtNewTime", "hang newTime", "server \"Faulty Node\" hangs in newTime: nothing came of it for 1 s"},
    {"BusyAtInit", "busy init", "server \"Faulty Node\" hangs in init: nothing came of it for 1 s"},
    {"HangAtDestroy", "hang destroy", "server \"Faulty Node\" hangs in destroy: nothing came of it for 1 s"},
    {"ThrowAtLoad", "throw loading", "the module threw std::runtime_error: no luck in loading the module"},
    {"ThrowAtCreate", "throw create", "server \"Faulty Node\" threw std::runtime_error: no luck in create"},
    {"ThrowAtEvaluate", "throw evaluate",
     "server \"Faulty Node\" threw std::runtime_error: no luck in evaluate, thread 1"},
    {"ThrowInTail", "throw tail", "server \"Tail Node\" threw std::runtime_error: no luck in evaluate, thread 1"},
    {"ThrowAtCleanup", "throw cleanup", "server \"Faulty Node\" threw std::runtime_error: no luck in cleanup"},
    {"ThrowAtDestroy", "throw destroy", "server \"Faulty Node\" threw std::runtime_error: no luck in destroy"},
};

// Frames that are written before the module falls are whole, and stay: from here on the picture is the new one.
bool isAfterThePicture(const std::string &fault) {
    return fault.ends_with("cleanup") || fault.ends_with("destroy") || fault.ends_with("shutdown");
}

class FaultyModule : public testing::TestWithParam<FaultCase> {};

TEST_P(FaultyModule, IsNamedAndLeavesWhatStoodBefore) {
    const FaultCase &one = GetParam();
    const Workplace place;
    const test::Outcome outcome = runProgram(place, renderWords(place), [&] { setenv("VELM_FAULT", one.fault, 1); });
    EXPECT_EQ(outcome.status, kExitMachine);
    const std::string told = "velm: " VELM_FAULTY_MODULE ": " + std::string(one.message) + "\n";
    EXPECT_NE(outcome.err.find(told), std::string::npos) << outcome.err << "does not have\n" << told;
    EXPECT_EQ(place.pictureIsUnharmed(), !isAfterThePicture(one.fault));
    EXPECT_EQ(place.files(), (std::vector<std::string>{"old.png", "scene.json"}));
}

INSTANTIATE_TEST_SUITE_P(All, FaultyModule, testing::ValuesIn(kFaults),
                         [](const auto &row) { return std::string(row.param.name); });

// Both threads may be the ones that are found in the module: one hangs, the other may wait or be done.
TEST(FaultyModuleHang, WhileRenderingIsNamed) {
    for (const std::string fault : {"hang", "busy"}) {
        const Workplace place;
        const test::Outcome outcome =
            runProgram(place, renderWords(place), [&] { setenv("VELM_FAULT", (fault + " evaluate").c_str(), 1); });
        EXPECT_EQ(outcome.status, kExitMachine);
        EXPECT_NE(
            outcome.err.find(": server \"Faulty Node\" hangs in evaluate, thread 1: nothing came of it for 1 s\n"),
            std::string::npos)
            << outcome.err;
        EXPECT_TRUE(place.pictureIsUnharmed());
        EXPECT_EQ(place.files(), (std::vector<std::string>{"old.png", "scene.json"}));
    }
}

TEST(SoundModule, RendersUnderTheGuardAndWithoutIt) {
    const Workplace place;
    std::vector<std::string> words = renderWords(place);
    ASSERT_EQ(runProgram(place, words).status, kExitDone);
    EXPECT_FALSE(place.pictureIsUnharmed());
    words.emplace_back("--unguarded");
    words[3] = place.file("new.png");
    const test::Outcome outcome = runProgram(place, words);
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(runProgram(place, {"compare", "old.png", "new.png"}).status, kCompareSame);
}

TEST(FaultyModuleElsewhere, IsNamedByTheOtherCommands) {
    const Workplace place;
    for (const std::vector<std::string> &words : {std::vector<std::string>{"nodes"}, {"show", "Faulty Node"}}) {
        std::vector<std::string> all = words;
        all.insert(all.end(), {"--module", VELM_FAULTY_MODULE});
        const test::Outcome outcome = runProgram(place, all, [] { setenv("VELM_FAULT", "crash create", 1); });
        EXPECT_EQ(outcome.status, kExitMachine);
        EXPECT_NE(outcome.err.find("server \"Faulty Node\" crashed (segmentation fault) in create\n"),
                  std::string::npos)
            << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
}

TEST(FaultyModuleElsewhere, IsShownWithoutHelp) {
    const Workplace place;
    const test::Outcome outcome = runProgram(place, {"show", "Faulty Node", "--module", VELM_FAULTY_MODULE});
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_NE(outcome.out.find("faulty.p\n\nInputs\n  In  colour\n\nOutputs\n  Out  colour\n\nPanel\n"),
              std::string::npos)
        << outcome.out;
}

TEST(Guard, PassesStatusesAndErrorsOn) {
    const Workplace place;
    const test::Outcome input = runProgram(place, {"render", place.file("none.json")});
    EXPECT_EQ(input.status, kExitInput);
    EXPECT_EQ(std::count(input.err.begin(), input.err.end(), '\n'), 1) << input.err;
    EXPECT_EQ(runProgram(place, {"render"}).status, kExitUsage);
    EXPECT_EQ(runProgram(place, {"nodes", "--call-limit", "-1"}).status, kExitUsage);
    std::vector<std::string> words = renderWords(place);
    words[3] = "/dev/null/a.png";
    EXPECT_EQ(runProgram(place, words).status, kExitMachine);
}

} // namespace
} // namespace velm::host

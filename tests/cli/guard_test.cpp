// When a module crashes, hangs or throws, the program names the server and the call, and existing files stay unchanged.
#include "tests/cli/program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

namespace velm::host {
namespace {

using test::runProgram;
using test::WorkDirectory;

// A wall that fills the picture, coloured by a chain of all nodes of the module. Large enough for two threads to get
// several tiles each.
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

std::vector<std::string> renderWords(const WorkDirectory &directory) {
    return {"render",    directory.write("scene.json", kScene),
            "-o",        directory.picture(),
            "--module",  VELM_FAULTY_MODULE,
            "--threads", "2",
            "--quiet",   "--call-limit",
            "1"};
}

struct FaultCase {
    const char *name;
    const char *fault;   // the value of VELM_FAULT
    const char *message; // without the module's file in front
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
    // Once a process has ended, only its call record is left, and evaluations are not noted there.
    {"BareExitAtEvaluate", "_exit evaluate",
     "one of the servers \"Faulty Node\", \"Sound Node\", \"Tail Node\" ended the process with status 0 in evaluate"},
    {"CrashAtCleanup", "crash cleanup", "server \"Faulty Node\" crashed (segmentation fault) in cleanup"},
    {"CrashAtDestroy", "crash destroy", "server \"Faulty Node\" crashed (segmentation fault) in destroy"},
    {"CrashAtShutdown", "crash shutdown", "the module crashed (segmentation fault) in shutdown"},
    {"HangAtLoad", "hang loading", "the module hangs in loading the module: no progress for 1 s"},
    {"HangAtCreate", "hang create", "server \"Faulty Node\" hangs in create: no progress for 1 s"},
    {"HangAtNewTime", "hang newTime", "server \"Faulty Node\" hangs in newTime: no progress for 1 s"},
    {"BusyAtInit", "busy init", "server \"Faulty Node\" hangs in init: no progress for 1 s"},
    {"HangAtDestroy", "hang destroy", "server \"Faulty Node\" hangs in destroy: no progress for 1 s"},
    {"ThrowAtLoad", "throw loading", "the module threw std::runtime_error: no luck in loading the module"},
    {"ThrowAtCreate", "throw create", "server \"Faulty Node\" threw std::runtime_error: no luck in create"},
    {"ThrowAtEvaluate", "throw evaluate",
     "server \"Faulty Node\" threw std::runtime_error: no luck in evaluate, thread 1"},
    {"ThrowInTail", "throw tail", "server \"Tail Node\" threw std::runtime_error: no luck in evaluate, thread 1"},
    {"ThrowAtCleanup", "throw cleanup", "server \"Faulty Node\" threw std::runtime_error: no luck in cleanup"},
    {"ThrowAtShutdown", "throw shutdown", "the module threw std::runtime_error: no luck in shutdown"},
    {"TerminateAtCreate", "terminate create", "server \"Faulty Node\" ended the process by std::terminate in create"},
    {"TerminateAtEvaluate", "terminate evaluate",
     "server \"Faulty Node\" ended the process by std::terminate in evaluate, thread 1"},
    {"LeaveAtCreate", "leave create", "server \"Faulty Node\" ended the thread by pthread_exit in create"},
    {"LeaveAtEvaluate", "leave evaluate",
     "one of the servers \"Faulty Node\", \"Sound Node\", \"Tail Node\" ended the thread by pthread_exit in evaluate, "
     "thread 1"},
    {"StopAtCreate", "stop create", "server \"Faulty Node\" was stopped by SIGSTOP in create: not continued for 1 s"},
    {"WildTags", "tags", "the module crashed (segmentation fault) in the table of its servers"},
    {"WildName", "name", "the module crashed (segmentation fault) in the table of its servers"},
    {"WildClass", "class", "the module crashed (segmentation fault) in the table of its servers"},
    {"TableWithoutEnd", "end", "the module crashed (segmentation fault) in the table of its servers"},
    {"WildErrorOfCreate", "wild create", "server \"Faulty Node\" crashed (segmentation fault) in create"},
    {"WildErrorOfInit", "wild init", "server \"Faulty Node\" crashed (segmentation fault) in init"},
    {"WildErrorOfNewTime", "wild newTime", "server \"Faulty Node\" crashed (segmentation fault) in newTime"},
    {"TrapAtEvaluate", "trap evaluate",
     "one of the servers \"Faulty Node\", \"Sound Node\", \"Tail Node\" turned on floating-point traps, one of which "
     "ended the process, in evaluate, thread 1"},
    {"ThrowAtDestroy", "throw destroy", "server \"Faulty Node\" threw std::runtime_error: no luck in destroy"},
};

// Whether the fault comes after the frame was written. The new picture is complete then, and stays.
bool isAfterThePicture(const std::string &fault) {
    return fault.ends_with("cleanup") || fault.ends_with("destroy") || fault.ends_with("shutdown");
}

class FaultyModule : public testing::TestWithParam<FaultCase> {};

TEST_P(FaultyModule, IsNamedAndLeavesExistingFilesUnchanged) {
    const FaultCase &one = GetParam();
    const WorkDirectory directory;
    const test::Outcome outcome =
        runProgram(directory, renderWords(directory), [&] { setenv("VELM_FAULT", one.fault, 1); });
    EXPECT_EQ(outcome.status, kExitMachine);
    const std::string expected = "velm: " VELM_FAULTY_MODULE ": " + std::string(one.message) + "\n";
    EXPECT_NE(outcome.err.find(expected), std::string::npos) << outcome.err << "does not have\n" << expected;
    EXPECT_EQ(directory.pictureIsUnchanged(), !isAfterThePicture(one.fault));
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"old.png", "scene.json"}));
}

INSTANTIATE_TEST_SUITE_P(All, FaultyModule, testing::ValuesIn(kFaults),
                         [](const auto &row) { return std::string(row.param.name); });

// Only thread 1 hangs in the module; thread 0 goes on rendering.
TEST(FaultyModuleHang, WhileRenderingIsNamed) {
    for (const std::string fault : {"hang", "busy"}) {
        const WorkDirectory directory;
        const test::Outcome outcome = runProgram(directory, renderWords(directory),
                                                 [&] { setenv("VELM_FAULT", (fault + " evaluate").c_str(), 1); });
        EXPECT_EQ(outcome.status, kExitMachine);
        EXPECT_NE(outcome.err.find(": server \"Faulty Node\" hangs in evaluate, thread 1: no progress for 1 s\n"),
                  std::string::npos)
            << outcome.err;
        EXPECT_TRUE(directory.pictureIsUnchanged());
        EXPECT_EQ(directory.names(), (std::vector<std::string>{"old.png", "scene.json"}));
    }
}

TEST(SoundModule, RendersUnderTheGuardAndWithoutIt) {
    const WorkDirectory directory;
    std::vector<std::string> words = renderWords(directory);
    ASSERT_EQ(runProgram(directory, words).status, kExitDone);
    EXPECT_FALSE(directory.pictureIsUnchanged());
    words.emplace_back("--unguarded");
    words[3] = directory / "new.png";
    const test::Outcome outcome = runProgram(directory, words);
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_EQ(runProgram(directory, {"compare", "old.png", "new.png"}).status, kCompareSame);
}

// What a module does to the whole process is put back, or kept away from what the host does.
TEST(MeddlingModule, ChangesNothingOutside) {
    for (const char *what : {"move", "mask", "ignore", "silence"})
        for (const char *callback : {"loading", "startup", "activate", "create", "init", "newTime", "evaluate"}) {
            const WorkDirectory directory;
            std::vector<std::string> words = renderWords(directory);
            words[1] = "scene.json"; // relative, as is the picture
            words[3] = "new.png";
            const test::Outcome outcome = runProgram(directory, words, [&] {
                umask(022);
                setenv("VELM_FAULT", (std::string(what) + ' ' + callback).c_str(), 1);
            });
            EXPECT_EQ(outcome.status, kExitDone) << what << ' ' << callback << ": " << outcome.err;
            EXPECT_EQ(directory.names(), (std::vector<std::string>{"new.png", "old.png", "scene.json"}));
            EXPECT_EQ(std::filesystem::status(directory / "new.png").permissions(), std::filesystem::perms{0644})
                << what << ' ' << callback;
        }
}

TEST(MeddlingModule, SilencesNoMessage) {
    for (const char *callback : {"loading", "startup", "activate", "create"}) {
        const WorkDirectory directory;
        const auto silence = [&] { setenv("VELM_FAULT", (std::string("silence ") + callback).c_str(), 1); };
        const test::Outcome listed = runProgram(directory, {"nodes", "--module", VELM_FAULTY_MODULE}, silence);
        EXPECT_EQ(listed.status, kExitDone) << callback << ": " << listed.err;
        EXPECT_NE(listed.out.find("Tail Node"), std::string::npos) << callback;
        std::vector<std::string> words = renderWords(directory);
        directory.write("scene.json", std::string(kScene).replace(std::string(kScene).find("Tail.In"), 7, "Tail.No"));
        const test::Outcome failed = runProgram(directory, words, silence);
        EXPECT_EQ(failed.status, kExitInput);
        EXPECT_NE(failed.err.find("scene.json:"), std::string::npos) << callback << ": " << failed.err;
    }
}

// The process that the module is in cannot write its messages then, since they go to a file.
TEST(MeddlingModule, IsNamedWhenItLimitsTheSizeOfFiles) {
    for (const char *callback : {"activate", "create", "newTime"}) {
        const WorkDirectory directory;
        const std::string messages = directory / "messages";
        const test::Outcome outcome = runProgram(directory, renderWords(directory), [&] {
            setenv("VELM_FAULT", (std::string("limit ") + callback).c_str(), 1);
            dup2(open(messages.c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO);
        });
        EXPECT_EQ(outcome.status, kExitMachine) << callback;
        EXPECT_TRUE(directory.pictureIsUnchanged()) << callback;
        std::ifstream stream(messages);
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        EXPECT_NE(text.find("velm: " VELM_FAULTY_MODULE ": the command failed"), std::string::npos) << callback << text;
    }
}

TEST(HangingModule, TakesAsLongAsACheckMay) {
    const WorkDirectory directory;
    const test::Outcome outcome = runProgram(directory,
                                             {"check", VELM_FAULTY_MODULE, "--check-limit", "0.5", "--level", "3",
                                              "--filter", "life.connectors/Faulty Node"},
                                             [] { setenv("VELM_FAULT", "hang create", 1); });
    EXPECT_EQ(outcome.status, kExitInput) << outcome.err;
    EXPECT_NE(outcome.out.find("HANG  Faulty Node: not done after 0.5 s: node \"Faulty Node\", create"),
              std::string::npos)
        << outcome.out;
}

// The module has not caused this, and is not blamed for it.
TEST(Program, KeepsItsStatusWhenItsMessagesCannotBeWritten) {
    const WorkDirectory directory;
    const test::Outcome outcome = runProgram(directory, {"render", directory / "none.json"},
                                             [] { dup2(open("/dev/full", O_WRONLY), STDERR_FILENO); });
    EXPECT_EQ(outcome.status, kExitInput);
}

// Without a descriptor of its own, a stream would write into the first file that is opened.
TEST(Program, WritesNoMessagesIntoFilesWhenItsStreamsAreClosed) {
    const WorkDirectory directory;
    std::vector<std::string> words = renderWords(directory);
    words[3] = "new.png";
    words.insert(words.end(), {"--log", "velm.log"});
    std::erase(words, "--quiet");
    const test::Outcome outcome = runProgram(directory, words, [] {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) close(stream);
    });
    EXPECT_EQ(outcome.status, kExitDone);
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"new.png", "old.png", "scene.json", "velm.log"}));
    const std::string log = directory.read("velm.log");
    EXPECT_EQ(log.find(" %"), std::string::npos) << log;
    EXPECT_EQ(runProgram(directory, {"compare", "new.png", "new.png"}).status, kCompareSame);
}

TEST(MeddlingModule, HasItsTrapsTurnedOff) {
    for (const char *callback : {"loading", "startup", "activate", "create", "init", "newTime"}) {
        const WorkDirectory directory;
        const test::Outcome outcome = runProgram(directory, renderWords(directory), [&] {
            setenv("VELM_FAULT", (std::string("trap ") + callback).c_str(), 1);
        });
        EXPECT_EQ(outcome.status, kExitDone) << callback << ": " << outcome.err;
    }
}

TEST(TalkativeModule, HasItsErrorsCut) {
    for (const char *callback : {"create", "init", "newTime"}) {
        const WorkDirectory directory;
        const test::Outcome outcome = runProgram(directory, renderWords(directory), [&] {
            setenv("VELM_FAULT", (std::string("long ") + callback).c_str(), 1);
        });
        EXPECT_EQ(outcome.status, kExitInput);
        EXPECT_LT(outcome.err.size(), 2000U);
        EXPECT_NE(outcome.err.find("xxx...\n"), std::string::npos) << outcome.err;
        EXPECT_TRUE(directory.pictureIsUnchanged());
    }
}

bool controlsTerminals(const std::string &text) {
    return text.find('\x1b') != std::string::npos || text.find("\xc2\x9b") != std::string::npos;
}

TEST(TalkativeModule, ControlsNoTerminal) {
    struct Row {
        std::vector<std::string> words; // without the module
        const char *fault;
    };
    const Row rows[] = {
        {{"nodes"}, "terminal"},
        {{"nodes", "--json"}, "terminal"},
        {{"show", "Red\x1b[2J\xc2\x9b"
                  "31m"},
         "terminal"},
        {{"nodes"}, "terminal create"},
        {{"render", "scene.json", "-o", "new.png", "--log", "velm.log"}, "terminal create"},
        {{"check", "--filter", "identity.repeats", "--json", "a.json", "--junit", "a.xml"}, "terminal create"},
    };
    const WorkDirectory directory;
    directory.write("scene.json", kScene);
    for (const Row &row : rows) {
        std::vector<std::string> words = row.words;
        if (words[0] != "check") words.push_back("--module"); // there, it is no option
        words.push_back(VELM_FAULTY_MODULE);
        const test::Outcome outcome = runProgram(directory, words, [&] { setenv("VELM_FAULT", row.fault, 1); });
        const std::string text = outcome.out + outcome.err;
        EXPECT_FALSE(controlsTerminals(text)) << words[0] << ": " << text;
        EXPECT_NE(text.find("Red\\"), std::string::npos) << words[0] << ": " << text;
    }
    for (const char *file : {"a.json", "a.xml", "velm.log"}) {
        EXPECT_NE(directory.read(file).find("Red\\"), std::string::npos) << file;
        EXPECT_FALSE(controlsTerminals(directory.read(file))) << file;
    }
}

TEST(FaultyModuleElsewhere, IsNamedByOtherCommands) {
    const WorkDirectory directory;
    for (const std::vector<std::string> &words : {std::vector<std::string>{"nodes"}, {"show", "Faulty Node"}}) {
        std::vector<std::string> all = words;
        all.insert(all.end(), {"--module", VELM_FAULTY_MODULE});
        const test::Outcome outcome = runProgram(directory, all, [] { setenv("VELM_FAULT", "crash create", 1); });
        EXPECT_EQ(outcome.status, kExitMachine);
        EXPECT_NE(outcome.err.find("server \"Faulty Node\" crashed (segmentation fault) in create\n"),
                  std::string::npos)
            << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
}

TEST(FaultyModuleElsewhere, IsShownWithoutHelp) {
    const WorkDirectory directory;
    const test::Outcome outcome = runProgram(directory, {"show", "Faulty Node", "--module", VELM_FAULTY_MODULE});
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_NE(outcome.out.find("faulty.p\n\nInputs\n  In  colour\n\nOutputs\n  Out  colour\n\nPanel\n"),
              std::string::npos)
        << outcome.out;
}

TEST(Guard, PassesStatusesAndErrorsOn) {
    const WorkDirectory directory;
    const test::Outcome input = runProgram(directory, {"render", directory / "none.json"});
    EXPECT_EQ(input.status, kExitInput);
    EXPECT_EQ(std::count(input.err.begin(), input.err.end(), '\n'), 1) << input.err;
    EXPECT_EQ(runProgram(directory, {"render"}).status, kExitUsage);
    EXPECT_EQ(runProgram(directory, {"nodes", "--call-limit", "-1"}).status, kExitUsage);
    std::vector<std::string> words = renderWords(directory);
    words[3] = "/dev/null/a.png";
    EXPECT_EQ(runProgram(directory, words).status, kExitMachine);
}

} // namespace
} // namespace velm::host

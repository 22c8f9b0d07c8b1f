// Each check detects the fault that it exists for, and none reports the module without a fault.
#include "tests/check/check_test.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velm::host::test {
namespace {

struct Mutant {
    const char *file;
    const char *check; // that has to detect it
    Outcome outcome;
    const char *message; // a part of it
};

const Mutant kMutants[] = {
    {"crashes_at_load", "file.loads", Outcome::crash, "loading the module, interface thread"},
    {"refuses_blanks", "file.loads", Outcome::fail, "it refuses to start"},
    {"shows_more", "file.symbols", Outcome::warn, "it exports more than its descriptor: shown_too"},
    {"flushes_to_zero_at_start", "file.trace", Outcome::fail, "the floating-point mode"},
    {"leaves_file_open", "file.trace", Outcome::warn, "/dev/null"},
    {"leaks_at_start", "file.reloads", Outcome::warn, "bytes are leaked at each load"},
    {"two_of_a_name", "identity.table", Outcome::fail, "are called \"Mutant Sum\""},
    {"named_by_address", "identity.processes", Outcome::fail, "finds another server table"},
    {"takes_any_version", "identity.versions", Outcome::fail, "it accepts version 0 of NodeHandler"},
    {"fills_before_refusing", "identity.versions", Outcome::fail, "that refuses has filled in its record"},
    {"wrong_refusal", "identity.services", Outcome::fail, "returns 3 instead of 2"},
    {"fills_without_services", "identity.services", Outcome::fail, "that refuses has filled in its record"},
    {"fills_in_turns", "identity.repeats", Outcome::fail, "activation 2 fills in another record"},
    {"touches_items", "identity.repeats", Outcome::fail, "writes to memory that it must leave alone"},
    {"leaks_instance", "life.balance", Outcome::fail, "1000 blocks of memory are left behind"},
    {"leaks_parameter", "life.balance", Outcome::warn, "1000 parameters are left behind"},
    {"sets_colour_while_rendering", "life.calls", Outcome::fail, "set colour by three while rendering"},
    {"destroys_twice", "life.calls", Outcome::fail, "a handle that was destroyed"},
    {"throws", "life.calls", Outcome::fail, "an exception left the callback newTime"},
    {"calls_from_own_thread", "life.calls", Outcome::fail, "on a thread that the host did not call"},
    {"hangs_in_new_time", "life.calls", Outcome::hang, "newTime, interface thread"},
    {"names_in_turns", "life.connectors", Outcome::fail, "instance 2 has other inputs or outputs"},
    {"shared_by_all", "life.order", Outcome::crash, "newTime"},
    {"sets_nothing", "evaluate.sets", Outcome::warn, "output \"Tint\" is not always set"},
    {"sets_other", "evaluate.sets", Outcome::fail, "the value of another evaluation"},
    {"writes_sample", "evaluate.sample", Outcome::fail, "it writes to the sample"},
    {"reads_beyond_sample", "evaluate.sample", Outcome::crash, "evaluate, interface thread"},
    {"gives_nan", "evaluate.finite", Outcome::warn, "\"Sum\" is not finite"},
    {"remembers_others", "evaluate.slots", Outcome::fail, "depend on the samples of others"},
    {"changes_rounding", "evaluate.process", Outcome::fail, "changes the floating-point mode"},
    {"sets_locale", "evaluate.process", Outcome::fail, "the locale is"},
    {"opens_file", "evaluate.process", Outcome::warn, "requests a file (fopen)"},
    {"starts_thread", "evaluate.process", Outcome::warn, "requests a thread (pthread_create)"},
    {"allocates", "evaluate.process", Outcome::warn, "requests memory (calloc)"},
    {"exits", "evaluate.sets", Outcome::crash, "ended the process by exit: node \"Mutant Sum\", evaluate"},
    {"exits", "threads.one", Outcome::crash, "ended the process by exit: node \"Mutant Sum\", evaluate"},
    {"ends_its_thread", "threads.one", Outcome::fail, "the callback evaluate ends its thread"},
    {"overwrites_record", "evaluate.sets", Outcome::crash, "it has overwritten the host's record of its calls"},
    {"forgets_mode", "settings.saved", Outcome::fail, "saving again in the binary form it is not the same"},
    {"saves_process", "settings.saved", Outcome::fail, "saving again in the binary form it is not the same"},
    {"changes_on_save", "settings.save", Outcome::fail, "saving twice does not give the same data"},
    {"ties_copies", "settings.copy", Outcome::fail, "a change of the original changes its copy"},
    {"changes_original", "settings.copy", Outcome::fail, "copying changes the original"},
    {"keeps_old_mode", "settings.reload", Outcome::fail, "it saves something else"},
    {"follows_locale", "settings.locales", Outcome::fail, "it saves something else"},
    {"trusts_length", "settings.short", Outcome::crash, "load, interface thread"},
    {"changes_on_read", "settings.read", Outcome::fail, "reading the panel changes the settings"},
    {"counts_for_all", "threads.one", Outcome::fail, "other results than each alone"},
    {"knows_one_instance", "threads.many", Outcome::fail, "other results than each alone"},
    {"needs_its_thread", "threads.new", Outcome::fail, "other results than each alone"},
    {"forgets_with_others", "threads.others", Outcome::fail, "other results than each alone"},
    {"fills_late", "threads.first", Outcome::crash, "evaluate, render thread"},
    {"counts_for_nobody", "threads.globals", Outcome::warn, "without a lock: faults::countForNobody"},
    {"counts_for_all", "threads.globals", Outcome::warn, "without a lock: faults::countForAll"},
    {"fills_late", "threads.globals", Outcome::warn, "without a lock: faults::filled"},
    {"trusts_mode", "inputs.ends", Outcome::crash, "evaluate, interface thread"},
    {"trusts_settings", "inputs.settings", Outcome::crash, "evaluate, interface thread"},
    {"trusts_numbers", "inputs.values", Outcome::crash, "evaluate, interface thread"},
    {"trusts_rays", "inputs.samples", Outcome::crash, "evaluate, interface thread"},
    {"trusts_inputs", "inputs.wirings", Outcome::crash, "node \"Mutant Sum\", evaluate"},
    {"trusts_time", "inputs.times", Outcome::crash, "newTime, interface thread"},
    {"trusts_data", "data.mutations", Outcome::crash, "load, interface thread"},
    {"trusts_text", "data.cuts", Outcome::crash, "load, interface thread"},
    {"trusts_length", "data.reads", Outcome::crash, "load, interface thread"},
    {"trusts_blocks", "data.writes", Outcome::crash, "save, interface thread"},
    {"changes_on_save", "data.writes", Outcome::fail, "after failed writes does not give the same data"},
    {"leaves_no_message", "resources.create", Outcome::fail, "leaves no message"},
    {"needs_room_to_copy", "resources.copy", Outcome::crash, "copy, interface thread"},
    {"grows_by_frame", "resources.frames", Outcome::warn, "998 blocks of memory more after 1000 frames"},
    {"grows_by_load", "resources.cycles", Outcome::warn, "9900 blocks of memory more"},
    {"grows_by_start", "resources.starts", Outcome::warn, "1000 blocks of memory more"},
    {"reads_original", "together.one", Outcome::crash, "evaluate, interface thread"},
    {"keeps_mode_once_copied", "together.one", Outcome::fail, "than one that is rebuilt from its saved data"},
    {"counts_starts", "together.one", Outcome::fail, "gives other results than"},
    {"ends_for_all", "together.all", Outcome::fail, "than one that is rebuilt from its saved data"},
    {"counts_for_all", "together.all", Outcome::fail, "gives other results than with one"},
    {"leaks_instance", "together.one", Outcome::fail, "blocks of memory are left behind after everything is destroyed"},
    {"leaks_parameter", "together.one", Outcome::warn, "parameters are left behind after everything is destroyed"},
    {"reads_on", "data.unknown", Outcome::fail, "after the data changes the loaded settings"},
};

class MutantTest : public ::testing::TestWithParam<Mutant> {};

bool isDetected(const CheckResult &one, const Mutant &mutant) {
    return one.outcome == mutant.outcome && one.message.find(mutant.message) != std::string::npos;
}

TEST_P(MutantTest, IsDetected) {
    const Mutant &mutant = GetParam();
    CheckOptions options = optionsFor(mutantFile(mutant.file), mutant.check);
    if (mutant.outcome == Outcome::hang) options.limit = 1;
    const std::vector<CheckResult> results = resultsOf(options);
    std::string all;
    for (const CheckResult &one : results)
        all += one.fullName() + ": " + outcomeName(one.outcome) + " " + one.message + "\n" + one.printed;
    if (results[0].outcome == Outcome::skip) GTEST_SKIP() << all;
    EXPECT_TRUE(std::any_of(results.begin(), results.end(), [&](const auto &one) { return isDetected(one, mutant); }))
        << all;
}

INSTANTIATE_TEST_SUITE_P(Table, MutantTest, ::testing::ValuesIn(kMutants), [](const auto &row) {
    std::string name = std::string(row.param.file) + "_" + row.param.check;
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
});

// Every check passes, or cannot run here, apart from the one of that name.
void expectOnly(const char *mutant, const std::string &check) {
    for (const CheckResult &one : resultsOf(optionsFor(mutantFile(mutant))))
        EXPECT_TRUE(one.check->name == check || one.outcome == Outcome::pass || one.outcome == Outcome::skip)
            << one.fullName() << ": " << outcomeName(one.outcome) << ' ' << one.message << '\n'
            << one.printed;
}

TEST(CleanModule, PassesEveryCheck) { expectOnly("clean", ""); }

// It needs the C++ library to initialise a local variable once.
TEST(CleanModule, MayGuardWhatItsThreadsShare) { expectOnly("counts_properly", "file.symbols"); }

TEST(SharedVariable, OnlyItsCheckDetectsIt) { expectOnly("counts_for_nobody", "threads.globals"); }

// Faults that only level 10 can detect.
class OnlyTogether : public ::testing::TestWithParam<const char *> {};

TEST_P(OnlyTogether, IsItDetected) {
    CheckOptions options = optionsFor(mutantFile(GetParam()));
    options.level = kHighestLevel - 1;
    for (const CheckResult &one : resultsOf(options))
        EXPECT_TRUE(one.outcome == Outcome::pass || one.outcome == Outcome::skip)
            << one.fullName() << ": " << outcomeName(one.outcome) << ' ' << one.message;
}

INSTANTIATE_TEST_SUITE_P(Table, OnlyTogether,
                         ::testing::Values("reads_original", "keeps_mode_once_copied", "counts_starts", "ends_for_all"),
                         [](const auto &row) { return std::string(row.param); });

TEST(Mutants, EveryCheckHasOne) {
    for (const Check &check : allChecks())
        EXPECT_TRUE(std::any_of(std::begin(kMutants), std::end(kMutants), [&](const Mutant &mutant) {
            return std::string(mutant.check) == check.name;
        })) << check.name;
}

} // namespace
} // namespace velm::host::test

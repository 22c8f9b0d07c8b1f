// Level 5: settings, as panels set them, files keep them and copies take them over.
#include "host/base/error.h"
#include "host/check/process/check_record.h"
#include "host/check/process/child.h"
#include "host/check/levels/levels.h"
#include "host/check/process/shared_strings.h"
#include "host/check/fixture/fixture.h"

#include <clocale>

namespace velm::host {

namespace {

constexpr int kRounds = 6, kSamples = 8, kProbes = 3;
constexpr int kModes[] = {kStateBinary, kStateText};
const char *modeName(int mode) { return mode == kStateBinary ? "binary" : "text"; }

std::vector<ShadingSample> probeSamples(std::uint64_t seed) {
    Dice dice(seed);
    std::vector<ShadingSample> samples;
    for (int i = 0; i < kSamples; ++i) samples.push_back(makeSample(dice, i));
    return samples;
}

std::vector<Result> renderOnce(Stage &stage, const std::vector<ShadingSample> &samples) {
    stage.start();
    stage.frame(3, 0.25);
    std::vector<Result> results = stage.evaluate(samples);
    stage.end();
    return results;
}

// What it gives for some samples, as bytes; empty when that is not the same each time, as for a node that draws
// numbers.
std::string steadyResults(Stage &stage, std::uint64_t seed) {
    const std::vector<ShadingSample> samples = probeSamples(seed);
    const std::vector<Result> first = renderOnce(stage, samples);
    for (int i = 1; i < kProbes; ++i)
        if (renderOnce(stage, samples) != first) return {};
    std::string bytes;
    for (const Result &result : first) bytes += result.bytes();
    return bytes;
}

void mustBeSame(const std::string &one, const std::string &other, const std::string &what) {
    if (one != other) failCheck(what + ": " + difference(one, other));
}

void mustLoad(Stage &stage, const std::string &bytes, int mode) {
    if (const HostError error = stage.load(bytes, mode))
        failCheck(std::string("loading what was saved in the ") + modeName(mode) + " form gives the error: " + error);
}

// In a process of its own: makes settings, and leaves what they save and what they give.
void writeSettings(const CheckTask &task, PassedOn &passed) {
    shiftAddresses(task.seed);
    WatchedModule module(task.module);
    Dice dice(task.seed);
    for (int round = 0; round < kRounds; ++round) {
        Stage stage(module, task.server);
        stage.randomSettings(dice);
        for (const int mode : kModes) passed.add(stage.save(mode));
        passed.add(steadyResults(stage, task.seed));
    }
}

void comesBackInAnotherProcess(const CheckTask &task) {
    PassedOn passed;
    Child writer(
        blackboard(), [&] { writeSettings(task, passed); }, kOtherProcessSeconds);
    const ChildEnd end = waitFor(writer);
    if (end.outcome != Outcome::pass) failCheck("in the process that saves: " + end.message);
    const std::vector<std::string> texts = passed.all();
    WatchedModule module(task.module);
    for (std::size_t round = 0; round + 2 < texts.size(); round += 3) {
        noteRound(round / 3);
        for (const int mode : kModes) {
            Stage stage(module, task.server);
            const std::string &saved = texts[round + static_cast<std::size_t>(mode)];
            mustLoad(stage, saved, mode);
            mustBeSame(saved, stage.save(mode),
                       std::string("loaded and saved again in the ") + modeName(mode) + " form it is not the same");
            const std::string &expected = texts[round + 2];
            const std::string given = expected.empty() ? expected : steadyResults(stage, task.seed);
            mustBeSame(expected, given, "what was saved and loaded gives other results");
        }
    }
}

void savingChangesNothing(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    for (int round = 0; round < kRounds; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        Stage stage(module, task.server);
        if (round > 0) stage.randomSettings(dice);
        const std::string results = steadyResults(stage, task.seed);
        for (const int mode : kModes) {
            const std::string saved = stage.save(mode);
            mustBeSame(saved, stage.save(mode), "saved twice it is not the same");
        }
        if (!results.empty())
            mustBeSame(results, steadyResults(stage, task.seed), "after it was saved it gives other results");
    }
}

void copiesAreIndependent(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    for (int round = 0; round < kRounds; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        Stage from(module, task.server), to(module, task.server);
        from.randomSettings(dice);
        const std::string original = from.save();
        if (const HostError error = to.copyFrom(from)) failCheck(std::string("copying gives the error: ") + error);
        mustBeSame(original, from.save(), "being copied changes an instance");
        const std::string copied = to.save();
        if (copied != original) warnCheck("a copy does not save what its original saves");
        from.randomSettings(dice);
        mustBeSame(copied, to.save(), "a change of the original changes its copy");
        const std::string changed = from.save();
        to.randomSettings(dice);
        mustBeSame(changed, from.save(), "a change of the copy changes its original");
    }
}

void loadingForgetsWhatWas(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    for (int round = 0; round < kRounds; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        Stage source(module, task.server), used(module, task.server), fresh(module, task.server);
        if (round > 0) source.randomSettings(dice);
        used.randomSettings(dice);
        renderOnce(used, probeSamples(task.seed));
        const int mode = kModes[round % 2];
        const std::string saved = source.save(mode);
        mustLoad(used, saved, mode);
        mustLoad(fresh, saved, mode);
        mustBeSame(fresh.save(), used.save(), "loaded into an instance that was used it saves something else");
        const std::string results = steadyResults(fresh, task.seed);
        if (!results.empty())
            mustBeSame(results, steadyResults(used, task.seed),
                       "loaded into an instance that was used it gives other results");
    }
}

void keepsItsNumbersInAllLocales(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    Stage stage(module, task.server);
    stage.randomSettings(dice);
    const std::string saved = stage.save(kStateText), results = steadyResults(stage, task.seed);
    int tried = 0;
    for (const char *locale : {"de_DE.UTF-8", "fr_FR.UTF-8", "tr_TR.UTF-8"}) {
        if (!std::setlocale(LC_ALL, locale)) continue;
        ++tried;
        mustBeSame(saved, stage.save(kStateText), std::string("in the locale ") + locale + " it saves something else");
        Stage loaded(module, task.server);
        mustLoad(loaded, saved, kStateText);
        if (!results.empty())
            mustBeSame(results, steadyResults(loaded, task.seed),
                       std::string("in the locale ") + locale + " it loads something else");
    }
    if (tried == 0) skipCheck("none of the locales de_DE, fr_FR and tr_TR is installed");
}

void standsMissingValues(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    Stage source(module, task.server);
    source.randomSettings(dice);
    for (const int mode : kModes) {
        const std::string saved = source.save(mode);
        for (std::size_t length = 0; length < saved.size(); ++length) {
            noteRound(length);
            Stage stage(module, task.server);
            stage.load(std::string_view(saved).substr(0, length), mode); // an error is an answer, too
            try {
                renderOnce(stage, probeSamples(task.seed));
            } catch (const InputError &) { // told by a node that holds a network, of what it could not load
            }
            stage.save(mode);
        }
    }
}

void readingChangesNothing(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    Stage stage(module, task.server);
    for (int round = 0; round < kRounds; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        if (round > 0) stage.randomSettings(dice);
        const std::string saved = stage.save();
        readPanel(stage.node(), stage.server());
        mustBeSame(saved, stage.save(), "reading the panel changes the settings");
    }
}

constexpr Check kChecks[] = {
    {"settings.saved", 5, CheckScope::node, "what is saved comes back in another process", comesBackInAnotherProcess},
    {"settings.save", 5, CheckScope::node, "saving changes nothing", savingChangesNothing},
    {"settings.copy", 5, CheckScope::node, "a copy and its original do not touch each other", copiesAreIndependent},
    {"settings.reload", 5, CheckScope::node, "loading leaves nothing of what was set before", loadingForgetsWhatWas},
    {"settings.locales", 5, CheckScope::node, "settings do not depend on the locale", keepsItsNumbersInAllLocales},
    {"settings.short", 5, CheckScope::node, "values that are missing at the end do no harm", standsMissingValues},
    {"settings.read", 5, CheckScope::node, "reading the panel changes nothing", readingChangesNothing},
};

} // namespace

std::span<const Check> settingsChecks() { return kChecks; }

} // namespace velm::host

// Level 5: settings, set through panels, saved, loaded and copied.
#include "host/base/error.h"
#include "host/check/fixture/fixture.h"
#include "host/check/levels/levels.h"
#include "host/check/process/check_record.h"
#include "host/check/process/child.h"
#include "host/check/process/shared_strings.h"

#include <fmt/format.h>

#include <clocale>

namespace velm::host {

namespace {

constexpr int kRounds = 6, kSamples = 8, kProbes = 3;
constexpr int kModes[] = {kStateBinary, kStateText};
const char *modeName(int mode) { return mode == kStateBinary ? "binary" : "text"; }

std::vector<ShadingSample> probeSamples(std::uint64_t seed) {
    Generator random(seed);
    std::vector<ShadingSample> samples;
    for (int i = 0; i < kSamples; ++i) samples.push_back(makeSample(random, i));
    return samples;
}

std::vector<Result> renderOnce(Fixture &fixture, const std::vector<ShadingSample> &samples) {
    fixture.start();
    fixture.frame(3, 0.25);
    std::vector<Result> results = fixture.evaluate(samples);
    fixture.end();
    return results;
}

// The results for some samples as bytes; empty if they differ from time to time, as those of a node that draws random
// numbers.
std::string deterministicResults(Fixture &fixture, std::uint64_t seed) {
    const std::vector<ShadingSample> samples = probeSamples(seed);
    const std::vector<Result> first = renderOnce(fixture, samples);
    for (int i = 1; i < kProbes; ++i)
        if (renderOnce(fixture, samples) != first) return {};
    std::string bytes;
    for (const Result &result : first) bytes += result.bytes();
    return bytes;
}

void requireSame(const std::string &one, const std::string &other, const std::string &message) {
    if (one != other) failCheck(fmt::format("{}: {}", message, difference(one, other)));
}

void requireLoad(Fixture &fixture, const std::string &bytes, int mode) {
    if (const HostError error = fixture.load(bytes, mode))
        failCheck(fmt::format("loading data saved in the {} form reports the error: {}", modeName(mode), error));
}

// In another process: makes random settings and hands over their saved data in both forms and their results.
void writeSettings(const CheckTask &task, SharedStrings &strings) {
    shiftAddresses(task.seed);
    WatchedModule module(task.module);
    Generator random(task.seed);
    for (int round = 0; round < kRounds; ++round) {
        Fixture fixture(module, task.server);
        fixture.randomSettings(random);
        for (const int mode : kModes) strings.add(fixture.save(mode));
        strings.add(deterministicResults(fixture, task.seed));
    }
}

void comesBackInAnotherProcess(const CheckTask &task) {
    SharedStrings strings;
    Child writer(
        checkRecord(), [&] { writeSettings(task, strings); }, kOtherProcessSeconds);
    const ChildEnd end = waitFor(writer);
    if (end.outcome != Outcome::pass) failCheck("in the process that saves: " + end.message);
    const std::vector<std::string> texts = strings.all();
    WatchedModule module(task.module);
    for (std::size_t round = 0; round + 2 < texts.size(); round += 3) {
        noteRound(round / 3);
        for (const int mode : kModes) {
            Fixture fixture(module, task.server);
            const std::string &saved = texts[round + static_cast<std::size_t>(mode)];
            requireLoad(fixture, saved, mode);
            requireSame(
                saved, fixture.save(mode),
                fmt::format("after loading and saving again in the {} form it is not the same", modeName(mode)));
            const std::string &expected = texts[round + 2];
            const std::string results = expected.empty() ? expected : deterministicResults(fixture, task.seed);
            requireSame(expected, results, "after saving and loading it gives other results");
        }
    }
}

void savingChangesNothing(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    for (int round = 0; round < kRounds; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        Fixture fixture(module, task.server);
        if (round > 0) fixture.randomSettings(random);
        const std::string results = deterministicResults(fixture, task.seed);
        for (const int mode : kModes) {
            const std::string saved = fixture.save(mode);
            requireSame(saved, fixture.save(mode), "saving twice does not give the same data");
        }
        if (!results.empty())
            requireSame(results, deterministicResults(fixture, task.seed), "after saving it gives other results");
    }
}

void copiesAreIndependent(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    for (int round = 0; round < kRounds; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        Fixture from(module, task.server), to(module, task.server);
        from.randomSettings(random);
        const std::string original = from.save();
        if (const HostError error = to.copyFrom(from)) failCheck(std::string("copying reports the error: ") + error);
        requireSame(original, from.save(), "copying changes the original");
        const std::string copied = to.save();
        if (copied != original) warnCheck("a copy does not save the same data as its original");
        from.randomSettings(random);
        requireSame(copied, to.save(), "a change of the original changes its copy");
        const std::string changed = from.save();
        to.randomSettings(random);
        requireSame(changed, from.save(), "a change of the copy changes its original");
    }
}

void loadingReplacesAllSettings(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    for (int round = 0; round < kRounds; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        Fixture source(module, task.server), used(module, task.server), fresh(module, task.server);
        if (round > 0) source.randomSettings(random);
        used.randomSettings(random);
        renderOnce(used, probeSamples(task.seed));
        const int mode = kModes[round % 2];
        const std::string saved = source.save(mode);
        requireLoad(used, saved, mode);
        requireLoad(fresh, saved, mode);
        requireSame(fresh.save(), used.save(), "loaded into a used instance it saves something else");
        const std::string results = deterministicResults(fresh, task.seed);
        if (!results.empty())
            requireSame(results, deterministicResults(used, task.seed),
                        "loaded into a used instance it gives other results");
    }
}

void ignoresTheLocale(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    Fixture fixture(module, task.server);
    fixture.randomSettings(random);
    const std::string saved = fixture.save(kStateText), results = deterministicResults(fixture, task.seed);
    int tried = 0;
    for (const char *locale : {"de_DE.UTF-8", "fr_FR.UTF-8", "tr_TR.UTF-8"}) {
        if (!std::setlocale(LC_ALL, locale)) continue;
        ++tried;
        requireSame(saved, fixture.save(kStateText), fmt::format("in the locale {} it saves something else", locale));
        Fixture loaded(module, task.server);
        requireLoad(loaded, saved, kStateText);
        if (!results.empty())
            requireSame(results, deterministicResults(loaded, task.seed),
                        fmt::format("in the locale {} it loads something else", locale));
    }
    if (tried == 0) skipCheck("none of the locales de_DE, fr_FR and tr_TR is installed");
}

void survivesMissingValues(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    Fixture source(module, task.server);
    source.randomSettings(random);
    for (const int mode : kModes) {
        const std::string saved = source.save(mode);
        for (std::size_t length = 0; length < saved.size(); ++length) {
            noteRound(length);
            Fixture fixture(module, task.server);
            fixture.load(std::string_view(saved).substr(0, length), mode); // an error is a valid response
            try {
                renderOnce(fixture, probeSamples(task.seed));
            } catch (const InputError &) { // from a node whose nested network could not be loaded
            }
            fixture.save(mode);
        }
    }
}

void readingChangesNothing(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    Fixture fixture(module, task.server);
    for (int round = 0; round < kRounds; ++round) {
        noteRound(static_cast<std::uint64_t>(round));
        if (round > 0) fixture.randomSettings(random);
        const std::string saved = fixture.save();
        readPanel(fixture.node(), fixture.server());
        requireSame(saved, fixture.save(), "reading the panel changes the settings");
    }
}

constexpr Check kChecks[] = {
    {"settings.saved", 5, CheckScope::node, "saved settings come back in another process", comesBackInAnotherProcess},
    {"settings.save", 5, CheckScope::node, "saving changes nothing", savingChangesNothing},
    {"settings.copy", 5, CheckScope::node, "a copy and its original are independent", copiesAreIndependent},
    {"settings.reload", 5, CheckScope::node, "loading replaces all settings", loadingReplacesAllSettings},
    {"settings.locales", 5, CheckScope::node, "settings do not depend on the locale", ignoresTheLocale},
    {"settings.short", 5, CheckScope::node, "data that ends early does no harm", survivesMissingValues},
    {"settings.read", 5, CheckScope::node, "reading the panel changes nothing", readingChangesNothing},
};

} // namespace

std::span<const Check> settingsChecks() { return kChecks; }

} // namespace velm::host

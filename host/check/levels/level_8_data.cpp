// Level 8: damaged saved data. Loading may refuse it, but must not crash or hang.
#include "host/base/error.h"
#include "host/check/fixture/fixture.h"
#include "host/check/levels/failing_state.h"
#include "host/check/levels/levels.h"
#include "host/check/process/check_record.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

#include <algorithm>

namespace velm::host {

namespace {

constexpr int kMutations = 10000, kOneInstance = 50, kSeeds = 20;
constexpr int kModes[] = {kStateBinary, kStateText};
constexpr int kLongest = 1000; // larger integers may be sample counts, with which an evaluation is legitimately slow

struct Saved {
    int mode;
    std::string bytes;
};

std::vector<Saved> makeSaved(WatchedModule &module, const std::string &server, Generator &random) {
    std::vector<Saved> all;
    for (int i = 0; i < kSeeds; ++i) {
        Fixture fixture(module, server);
        if (i > 0) fixture.randomSettings(random);
        const int mode = kModes[i % 2];
        all.push_back({mode, fixture.save(mode)});
    }
    return all;
}

std::string oddToken(Generator &random) {
    static const char *const kTokens[] = {"",      "-1",     "0",   "32767", "-32768",     "65536", "2147483648",
                                          "1e999", "-1e999", "nan", "inf",   "1e-320",     "\"",    "\"\"",
                                          "{",     "}",      "%n",  "\\",    "{ Envelope", "VPRM",  "ffffffff"};
    return kTokens[random.below(std::size(kTokens))];
}

// Replaces a token of the text form, which separates them by blanks.
void replaceToken(std::string &text, Generator &random) {
    if (text.empty()) return;
    const auto at = static_cast<std::size_t>(random.below(text.size()));
    const std::size_t from = text.find_last_of(" \n", at) + 1;
    const std::size_t end = std::min(text.find_first_of(" \n", std::max(at, from)), text.size());
    text.replace(from, std::max(end, from) - from, oddToken(random));
}

// Overwrites two or four bytes of the binary form, which are its numbers.
void replaceNumber(std::string &bytes, Generator &random) {
    static constexpr unsigned int kNumbers[] = {0,          1,          0xffffffff, 0x7fffffff, 0x80000000,
                                                0x7fff7fff, 0x80008000, 0x7f800000, 0x7fc00000, 0xff800000,
                                                0x00000001, 0x0000ffff, 0xffff0000};
    if (bytes.empty()) return;
    const unsigned int number = kNumbers[random.below(std::size(kNumbers))];
    const std::size_t width = random.chance(0.5) ? 2 : 4, at = static_cast<std::size_t>(random.below(bytes.size()));
    for (std::size_t i = 0; i < width && at + i < bytes.size(); ++i)
        bytes[at + i] = static_cast<char>(number >> (24 - 8 * i) & 0xff);
}

void mutate(Saved &saved, Generator &random) {
    std::string &bytes = saved.bytes;
    for (int left = random.between(1, 4); left > 0; --left) {
        const auto at = static_cast<std::size_t>(bytes.empty() ? 0 : random.below(bytes.size()));
        switch (random.below(5)) {
        case 0:
            if (!bytes.empty()) bytes[at] = static_cast<char>(random.below(256));
            break;
        case 1: bytes.erase(at, static_cast<std::size_t>(random.between(1, 8))); break;
        case 2: bytes.insert(at, bytes.substr(at, static_cast<std::size_t>(random.between(1, 40)))); break;
        default:
            if (saved.mode == kStateText)
                replaceToken(bytes, random);
            else
                replaceNumber(bytes, random);
        }
    }
}

// Whether all integer settings are small, so that evaluating is fast.
bool isFast(Fixture &fixture) {
    HostPanel *panel = fixture.panel();
    if (!panel) return true;
    return std::all_of(panel->controls().begin(), panel->controls().end(), [&](unsigned int id) {
        const PanelItem &control = *panel->find(id);
        if (!control.type || control.type->kind != ControlKind::integer) return true;
        const auto *value = static_cast<const int *>(panel->value(control.valueId));
        return !value || (*value >= -kLongest && *value <= kLongest);
    });
}

// Saves and renders a node, as a host does after loading.
void use(Fixture &fixture, Generator &random) {
    fixture.save(kStateBinary);
    if (!isFast(fixture)) return;
    try {
        fixture.start();
        fixture.frame(1, 0.04);
        fixture.evaluate({makeSample(random)});
        fixture.end();
    } catch (const InputError &) { // from a node whose nested network could not be loaded
    }
}

void survivesMutations(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    const std::vector<Saved> originals = makeSaved(module, task.server, random);
    for (int round = 0; round < kMutations; round += kOneInstance) {
        Fixture fixture(module, task.server);
        for (int i = 0; i < kOneInstance; ++i) {
            noteRound(static_cast<std::uint64_t>(round) + static_cast<std::uint64_t>(i));
            Saved damaged = originals[static_cast<std::size_t>(random.below(originals.size()))];
            mutate(damaged, random);
            fixture.load(damaged.bytes, damaged.mode);
            if (i % 5 == 0) use(fixture, random);
        }
        use(fixture, random);
    }
}

void survivesCuts(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    std::vector<Saved> originals = makeSaved(module, task.server, random);
    originals.resize(6);
    Fixture fixture(module, task.server);
    for (const Saved &original : originals)
        for (std::size_t from = 0; from < original.bytes.size(); ++from) {
            noteRound(from);
            // Without its beginning.
            fixture.load(std::string_view(original.bytes).substr(from), original.mode);
            // Without a piece.
            std::string cut = original.bytes;
            cut.erase(from, static_cast<std::size_t>(random.between(1, 6)));
            fixture.load(cut, original.mode);
            if (from % 16 == 0) use(fixture, random);
        }
}

void survivesFailingReads(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    for (const Saved &original : makeSaved(module, task.server, random)) {
        bool hasFailed = true;
        for (long reads = 0; hasFailed; ++reads) {
            noteRound(static_cast<std::uint64_t>(reads));
            Fixture fixture(module, task.server);
            const auto load = fixture.node().handler->instance->load;
            if (!load) return;
            StateReader reader(original.mode, original.bytes, "saved");
            const FailingLoadState failing(reader.state(), reads);
            load(fixture.node().instance, failing.state());
            hasFailed = failing.hasFailed();
            use(fixture, random);
        }
    }
}

// Saves with the first `writes` writes succeeding. False if all succeeded.
bool saveFailingAfter(Fixture &fixture, int mode, long writes) {
    StateWriter writer(mode);
    const FailingSaveState failing(writer.state(), writes);
    fixture.node().handler->instance->save(fixture.node().instance, failing.state());
    return failing.hasFailed();
}

void survivesFailingWrites(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    Fixture fixture(module, task.server);
    if (!fixture.node().handler->instance->save) return;
    for (int i = 0; i < kSeeds; ++i) {
        if (i > 0) fixture.randomSettings(random);
        const int mode = kModes[i % 2];
        const std::string expected = fixture.save(mode);
        for (long writes = 0; saveFailingAfter(fixture, mode, writes); ++writes) {
            noteRound(static_cast<std::uint64_t>(writes));
            if (const std::string again = fixture.save(mode); again != expected)
                failCheck("saving again after failed writes does not give the same data: " +
                          difference(expected, again));
        }
        use(fixture, random);
    }
}

// A block that the module does not know, as a later version of the host may write.
std::string unknownBlock(int mode) {
    using namespace std::string_literals;
    return mode == kStateBinary ? "ZZZZ\0\4\1\2\3\4"s : "{ StrangeBlock\n  Strange 1 2 3\n}\n"s;
}

void skipsUnknownBlocks(const CheckTask &task) {
    WatchedModule module(task.module);
    Generator random(task.seed);
    for (const Saved &original : makeSaved(module, task.server, random)) {
        Fixture plain(module, task.server), behind(module, task.server), between(module, task.server);
        plain.load(original.bytes, original.mode);
        behind.load(original.bytes + unknownBlock(original.mode), original.mode);
        if (plain.save() != behind.save()) failCheck("an unknown block after the data changes the loaded settings");
        for (std::size_t at = 0; at < original.bytes.size(); at += 3) {
            noteRound(at);
            std::string extended = original.bytes;
            extended.insert(at, unknownBlock(original.mode));
            between.load(extended, original.mode);
        }
        use(between, random);
    }
}

constexpr Check kChecks[] = {
    {"data.mutations", 8, CheckScope::node, "ten thousand damaged states are loaded or refused", survivesMutations},
    {"data.cuts", 8, CheckScope::node, "states with a piece missing anywhere are loaded or refused", survivesCuts},
    {"data.reads", 8, CheckScope::node, "any read may fail", survivesFailingReads},
    {"data.writes", 8, CheckScope::node, "any write may fail, and saving again gives the full data",
     survivesFailingWrites},
    {"data.unknown", 8, CheckScope::node, "unknown blocks are skipped", skipsUnknownBlocks},
};

} // namespace

std::span<const Check> dataChecks() { return kChecks; }

} // namespace velm::host

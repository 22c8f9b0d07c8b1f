// Level 8: saved data that somebody damaged, by chance or on purpose. Loading may refuse it, and must not fall over it.
#include "host/base/error.h"
#include "host/check/blackboard.h"
#include "host/check/failing_state.h"
#include "host/check/levels.h"
#include "host/check/stage.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

#include <algorithm>

namespace velm::host {

namespace {

constexpr int kMutations = 10000, kOneInstance = 50, kSeeds = 20;
constexpr int kModes[] = {kStateBinary, kStateText};
constexpr int kLongest = 1000; // a whole number beyond this may ask for an evaluation that takes long by right

struct Saved {
    int mode;
    std::string bytes;
};

std::vector<Saved> savedBy(WatchedModule &module, const std::string &server, Dice &dice) {
    std::vector<Saved> all;
    for (int i = 0; i < kSeeds; ++i) {
        Stage stage(module, server);
        if (i > 0) stage.randomSettings(dice);
        const int mode = kModes[i % 2];
        all.push_back({mode, stage.save(mode)});
    }
    return all;
}

std::string oddToken(Dice &dice) {
    static const char *const kTokens[] = {"",      "-1",     "0",   "32767", "-32768",     "65536", "2147483648",
                                          "1e999", "-1e999", "nan", "inf",   "1e-320",     "\"",    "\"\"",
                                          "{",     "}",      "%n",  "\\",    "{ Envelope", "VPRM",  "ffffffff"};
    return kTokens[dice.below(std::size(kTokens))];
}

// Another token in the place of one, as a text has them between blanks.
void replaceToken(std::string &text, Dice &dice) {
    if (text.empty()) return;
    const auto at = static_cast<std::size_t>(dice.below(text.size()));
    const std::size_t from = text.find_last_of(" \n", at) + 1;
    const std::size_t end = std::min(text.find_first_of(" \n", std::max(at, from)), text.size());
    text.replace(from, std::max(end, from) - from, oddToken(dice));
}

// Another number in the place of one, as binary data has them.
void replaceNumber(std::string &bytes, Dice &dice) {
    static constexpr unsigned int kNumbers[] = {0,          1,          0xffffffff, 0x7fffffff, 0x80000000,
                                                0x7fff7fff, 0x80008000, 0x7f800000, 0x7fc00000, 0xff800000,
                                                0x00000001, 0x0000ffff, 0xffff0000};
    if (bytes.empty()) return;
    const unsigned int number = kNumbers[dice.below(std::size(kNumbers))];
    const std::size_t width = dice.chance(0.5) ? 2 : 4, at = static_cast<std::size_t>(dice.below(bytes.size()));
    for (std::size_t i = 0; i < width && at + i < bytes.size(); ++i)
        bytes[at + i] = static_cast<char>(number >> (24 - 8 * i) & 0xff);
}

void mutate(Saved &saved, Dice &dice) {
    std::string &bytes = saved.bytes;
    for (int left = dice.between(1, 4); left > 0; --left) {
        const auto at = static_cast<std::size_t>(bytes.empty() ? 0 : dice.below(bytes.size()));
        switch (dice.below(5)) {
        case 0:
            if (!bytes.empty()) bytes[at] = static_cast<char>(dice.below(256));
            break;
        case 1: bytes.erase(at, static_cast<std::size_t>(dice.between(1, 8))); break;
        case 2: bytes.insert(at, bytes.substr(at, static_cast<std::size_t>(dice.between(1, 40)))); break;
        default:
            if (saved.mode == kStateText)
                replaceToken(bytes, dice);
            else
                replaceNumber(bytes, dice);
        }
    }
}

// No count is so large that evaluating would take long.
bool isQuick(Stage &stage) {
    HostPanel *panel = stage.panel();
    if (!panel) return true;
    return std::all_of(panel->controls().begin(), panel->controls().end(), [&](unsigned int id) {
        const PanelItem &control = *panel->find(id);
        if (!control.type || control.type->kind != ControlKind::integer) return true;
        const auto *value = static_cast<const int *>(panel->value(control.valueId));
        return !value || (*value >= -kLongest && *value <= kLongest);
    });
}

// What a host does with a node that it has loaded, whatever became of it.
void use(Stage &stage, Dice &dice) {
    stage.save(kStateBinary);
    if (!isQuick(stage)) return;
    try {
        stage.start();
        stage.frame(1, 0.04);
        stage.evaluate({makeSample(dice)});
        stage.end();
    } catch (const InputError &) { // told by a node that holds a network, of what it could not load
    }
}

void standsMutations(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    const std::vector<Saved> originals = savedBy(module, task.server, dice);
    for (int round = 0; round < kMutations; round += kOneInstance) {
        Stage stage(module, task.server);
        for (int i = 0; i < kOneInstance; ++i) {
            noteRound(static_cast<std::uint64_t>(round + i));
            Saved damaged = originals[static_cast<std::size_t>(dice.below(originals.size()))];
            mutate(damaged, dice);
            stage.load(damaged.bytes, damaged.mode);
            if (i % 5 == 0) use(stage, dice);
        }
        use(stage, dice);
    }
}

void standsCuts(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    std::vector<Saved> originals = savedBy(module, task.server, dice);
    originals.resize(6);
    Stage stage(module, task.server);
    for (const Saved &original : originals)
        for (std::size_t from = 0; from < original.bytes.size(); ++from) {
            noteRound(from);
            // The beginning is missing.
            stage.load(std::string_view(original.bytes).substr(from), original.mode);
            // A piece is missing.
            std::string holed = original.bytes;
            holed.erase(from, static_cast<std::size_t>(dice.between(1, 6)));
            stage.load(holed, original.mode);
            if (from % 16 == 0) use(stage, dice);
        }
}

void standsFailingReads(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    for (const Saved &original : savedBy(module, task.server, dice)) {
        bool dry = true;
        for (long reads = 0; dry; ++reads) {
            noteRound(static_cast<std::uint64_t>(reads));
            Stage stage(module, task.server);
            const auto load = stage.node().handler->instance->load;
            if (!load) return;
            StateReader reader(original.mode, original.bytes, "saved");
            const FailingReads failing(reader.state(), reads);
            load(stage.node().instance, failing.state());
            dry = failing.ranDry();
            use(stage, dice);
        }
    }
}

// Saves with every write failing in turn; false when none was left to fail.
bool saveUntil(Stage &stage, int mode, long writes) {
    StateWriter writer(mode);
    const FailingWrites failing(writer.state(), writes);
    stage.node().handler->instance->save(stage.node().instance, failing.state());
    return failing.ranDry();
}

void standsFailingWrites(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    Stage stage(module, task.server);
    if (!stage.node().handler->instance->save) return;
    for (int i = 0; i < kSeeds; ++i) {
        if (i > 0) stage.randomSettings(dice);
        const int mode = kModes[i % 2];
        const std::string whole = stage.save(mode);
        for (long writes = 0; saveUntil(stage, mode, writes); ++writes) {
            noteRound(static_cast<std::uint64_t>(writes));
            if (const std::string again = stage.save(mode); again != whole)
                failCheck("saved again after its writes had failed it is not the same: " + difference(whole, again));
        }
        use(stage, dice);
    }
}

// A block that no module knows, as a later version of the host may write one.
std::string strangeBlock(int mode) {
    using namespace std::string_literals;
    return mode == kStateBinary ? "ZZZZ\0\4\1\2\3\4"s : "{ StrangeBlock\n  Strange 1 2 3\n}\n"s;
}

void standsUnknownBlocks(const CheckTask &task) {
    WatchedModule module(task.module);
    Dice dice(task.seed);
    for (const Saved &original : savedBy(module, task.server, dice)) {
        Stage plain(module, task.server), behind(module, task.server), between(module, task.server);
        plain.load(original.bytes, original.mode);
        behind.load(original.bytes + strangeBlock(original.mode), original.mode);
        if (plain.save() != behind.save()) failCheck("an unknown block behind the data changes what is loaded");
        for (std::size_t at = 0; at < original.bytes.size(); at += 3) {
            noteRound(at);
            std::string strange = original.bytes;
            strange.insert(at, strangeBlock(original.mode));
            between.load(strange, original.mode);
        }
        use(between, dice);
    }
}

constexpr Check kChecks[] = {
    {"data.mutations", 8, CheckScope::node, "ten thousand damaged states are loaded or refused", standsMutations},
    {"data.cuts", 8, CheckScope::node, "states that lack a piece anywhere are loaded or refused", standsCuts},
    {"data.reads", 8, CheckScope::node, "every read may fail", standsFailingReads},
    {"data.writes", 8, CheckScope::node, "every write may fail, and the next time all is saved", standsFailingWrites},
    {"data.unknown", 8, CheckScope::node, "unknown blocks are passed over", standsUnknownBlocks},
};

} // namespace

std::span<const Check> dataChecks() { return kChecks; }

} // namespace velm::host

#include "host/check/process/check_record.h"

#include "host/base/one_line.h"
#include "host/guard/record_copy.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace velm::host {

namespace {

CheckRecord ownRecord{};
CheckRecord *currentRecord = &ownRecord;
bool reproducing = false;

constexpr auto kRelaxed = std::memory_order_relaxed; // noting calls must not order what threads do

void printText(char *to, std::size_t size, const std::string &text) { std::snprintf(to, size, "%s", text.c_str()); }

[[noreturn]] void decide(Outcome outcome, const std::string &message) {
    if (!currentRecord->decided.exchange(true)) {
        currentRecord->outcome = outcome;
        printText(currentRecord->message, sizeof currentRecord->message, message);
    } else {
        pause(); // another thread is about to end the process
    }
    if (reproducing) {
        std::fprintf(stderr, "%s: %s\n  last call: %s\n", outcomeName(outcome), onOneLine(message).c_str(),
                     onOneLine(lastCalls(*currentRecord)).c_str());
        if (outcome == Outcome::fail) std::abort();
        _exit(0);
    }
    _exit(kDecidedStatus);
}

std::string callText(const CheckRecord &record, int index, const char *call) {
    std::string node;
    if (const int server = record.slots[index].server.load(kRelaxed); server >= 0 && server < record.serverCount)
        node = fmt::format("node \"{}\", ", record.servers[server]);
    const std::string thread = index == 0 ? "interface thread" : "render thread " + std::to_string(index - 1);
    return fmt::format("{}{}, {}, round {}", node, call, thread, record.rounds[index].load(kRelaxed));
}

} // namespace

std::unique_ptr<CheckRecord> copyOf(const CheckRecord &record, bool &isIntact) {
    auto copy = std::make_unique<CheckRecord>();
    isIntact = copyRecord(record, *copy);
    for (int i = 0; i < kSlots; ++i) copy->rounds[i].store(record.rounds[i].load(kRelaxed), kRelaxed);
    copy->decided.store(isSet(record.decided));
    int outcome = 0;
    std::memcpy(&outcome, &record.outcome, sizeof outcome);
    isIntact = isIntact && outcome >= 0 && outcome <= static_cast<int>(Outcome::skip);
    copy->outcome = isIntact ? static_cast<Outcome>(outcome) : Outcome::crash;
    copyText(copy->message, record.message, sizeof copy->message);
    copyText(copy->notes, record.notes, sizeof copy->notes);
    return copy;
}

CheckRecord &checkRecord() { return *currentRecord; }
void useCheckRecord(CheckRecord *shared) {
    currentRecord = shared;
    useCallRecord(shared);
}

void noteRound(std::uint64_t round) { currentRecord->rounds[std::max(0, ownSlot())].store(round, kRelaxed); }

std::string lastCalls(const CheckRecord &record) {
    std::string calls;
    const int crashed = record.crash.filled.load() ? std::max(0, record.crash.slot) : -1;
    for (int i = 0; i < kSlots; ++i) {
        const char *call = record.slots[i].call.load(kRelaxed);
        if (!call || (crashed >= 0 && crashed != i)) continue;
        calls += (calls.empty() ? "" : "; ") + callText(record, i, call);
    }
    if (!calls.empty()) return calls;
    const int index = crashed >= 0 ? crashed : 0;
    const char *last = record.slots[index].last.load(kRelaxed);
    return last ? "after " + callText(record, index, last) : "before any call";
}

void failCheck(const std::string &message) { decide(Outcome::fail, message); }
void skipCheck(const std::string &reason) { decide(Outcome::skip, reason); }

void warnCheck(const std::string &message) {
    char *notes = currentRecord->notes;
    if (std::strstr(notes, message.c_str())) return;
    const std::size_t used = std::strlen(notes);
    printText(notes + used, sizeof currentRecord->notes - used, (used > 0 ? "; " : "") + message);
}

void setReproducing(bool reproduces) { reproducing = reproduces; }

} // namespace velm::host

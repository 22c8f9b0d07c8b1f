#include "host/guard/call_record.h"

#include "host/guard/crash_handler.h"
#include "host/guard/shared_record.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>

namespace velm::host {

namespace {

CallRecord privateRecord{};
CallRecord *currentRecord = &privateRecord;
std::string moduleFile;

constexpr int kInterfaceSlot = 0;
// Also kInterfaceSlot on threads that have no SlotScope and are not the interface thread; ownSlot() tells them apart.
constinit thread_local int slotIndex = kInterfaceSlot;

constexpr auto kRelaxed = std::memory_order_relaxed; // the record must not synchronise threads with each other

// Only one thread at a time writes to a slot, so that no atomic increment is needed.
void count(CallSlot &slot) { slot.steps.store(slot.steps.load(kRelaxed) + 1, kRelaxed); }

} // namespace

bool ServerSet::isEmpty() const {
    return std::all_of(std::begin(words), std::end(words), [](std::uint64_t word) { return word == 0; });
}

CallRecord &callRecord() { return *currentRecord; }
void useCallRecord(CallRecord *shared) { currentRecord = shared; }

void shareCallRecord() {
    if (currentRecord != &privateRecord) return;
    static const SharedRecord<CallRecord> shared; // for the rest of the process
    std::memcpy(static_cast<void *>(&*shared), &privateRecord, sizeof privateRecord);
    currentRecord = &*shared;
}

void nameModule(const std::string &file) {
    moduleFile = file;
    std::snprintf(currentRecord->module, kLongestPath, "%s", file.c_str());
}

const std::string &namedModule() { return moduleFile; }

int numberOfServer(const char *name) {
    const auto *const begin = currentRecord->servers, *const end = begin + currentRecord->serverCount;
    const auto *found =
        std::find_if(begin, end, [&](const auto &known) { return std::strncmp(known, name, kLongestServer - 1) == 0; });
    if (found != end) return static_cast<int>(found - begin);
    if (currentRecord->serverCount == kMaxServers) return kModuleItself;
    std::snprintf(currentRecord->servers[currentRecord->serverCount], kLongestServer, "%s", name);
    return currentRecord->serverCount++;
}

CallScope::CallScope(int server, const char *call) {
    if (server == kHostServer) return;
    slot_ = &currentRecord->slots[slotIndex];
    outerCall_ = slot_->call.load(kRelaxed);
    outerServer_ = slot_->server.load(kRelaxed);
    if (server >= 0 && slotIndex == kInterfaceSlot && !currentRecord->used.has(server)) currentRecord->used.add(server);
    slot_->server.store(server, kRelaxed);
    slot_->last.store(call, kRelaxed);
    slot_->call.store(call, kRelaxed);
    count(*slot_);
}

CallScope::~CallScope() {
    if (!slot_) return;
    slot_->call.store(outerCall_, kRelaxed);
    if (outerCall_) slot_->server.store(outerServer_, kRelaxed);
    count(*slot_);
}

DialogScope::DialogScope()
    : slot_(currentRecord->slots[slotIndex]), outerCall_(slot_.call.load(kRelaxed)),
      outerServer_(slot_.server.load(kRelaxed)), outerInDialog_(slot_.inDialog.load(kRelaxed)) {
    slot_.inDialog.store(true, kRelaxed);
    slot_.call.store(nullptr, kRelaxed);
    count(slot_);
}

DialogScope::~DialogScope() {
    slot_.server.store(outerServer_, kRelaxed);
    slot_.call.store(outerCall_, kRelaxed);
    slot_.inDialog.store(outerInDialog_, kRelaxed);
    count(slot_);
}

int serverInCall() {
    const CallSlot &slot = currentRecord->slots[slotIndex];
    return slot.call.load(kRelaxed) ? slot.server.load(kRelaxed) : kHostServer;
}

SlotScope::SlotScope(int threadIndex) : slot_(currentRecord->slots[threadIndex + 1]) {
    slotIndex = threadIndex + 1;
    if (crashHandlersInstalled()) stack_.emplace();
    slot_.process.store(getpid());
    slot_.thread.store(systemThread());
}

SlotScope::~SlotScope() {
    slot_.thread.store(0);
    slotIndex = kInterfaceSlot;
}

int systemThread() { return static_cast<int>(syscall(SYS_gettid)); }

int ownSlot() {
    if (slotIndex != kInterfaceSlot) return slotIndex;
    return systemThread() == getpid() ? kInterfaceSlot : -1;
}

UnfinishedFile::UnfinishedFile(const std::string &path) {
    if (path.empty() || path.size() >= kLongestPath) return;
    // The process may end at any moment, and another process then reads the name. The first character is written last,
    // so that the name is either empty or complete.
    char *const name = currentRecord->unfinished;
    std::memcpy(name + 1, path.c_str() + 1, path.size());
    std::atomic_signal_fence(std::memory_order_release);
    name[0] = path[0];
}

UnfinishedFile::~UnfinishedFile() { currentRecord->unfinished[0] = '\0'; }

std::string serversText(const CallRecord &record, const ServerSet &servers) {
    std::string names;
    int count = 0;
    for (int number = 0; number < record.serverCount; ++number) {
        if (!servers.has(number)) continue;
        names += (names.empty() ? "\"" : ", \"") + std::string(record.servers[number]) + '"';
        ++count;
    }
    if (count == 0) return "the module";
    return (count == 1 ? "server " : "one of the servers ") + names;
}

} // namespace velm::host

#include "host/guard/record_copy.h"

#include <link.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace velm::host {

namespace {

using Address = std::uintptr_t;

constexpr auto kRelaxed = std::memory_order_relaxed;
constexpr std::size_t kLongestCall = 64; // bytes of a call's name, including the terminating zero

struct Segment {
    Address begin, end;
};

// The parts of the program, or of the library that contains this function, that are mapped but cannot be written to.
int noteConstants(dl_phdr_info *object, std::size_t, void *data) {
    auto &segments = *static_cast<std::vector<Segment> *>(data);
    bool isOwn = false;
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        const auto &part = object->dlpi_phdr[i];
        if (part.p_type != PT_LOAD) continue;
        const Address from = object->dlpi_addr + part.p_vaddr, to = from + part.p_memsz;
        const auto here = reinterpret_cast<Address>(&copyRecord);
        isOwn = isOwn || (here >= from && here < to);
        if ((part.p_flags & PF_R) != 0 && (part.p_flags & PF_W) == 0) segments.push_back({from, to});
    }
    if (!isOwn) segments.clear();
    return isOwn ? 1 : 0;
}

const std::vector<Segment> &constants() {
    static const std::vector<Segment> segments = [] {
        std::vector<Segment> found;
        dl_iterate_phdr(noteConstants, &found);
        return found;
    }();
    return segments;
}

// Whether this is null or a literal of this program, as the name of a call.
bool isCall(const char *call) {
    if (!call) return true;
    const auto at = reinterpret_cast<Address>(call);
    return std::ranges::any_of(constants(), [&](const Segment &segment) {
        if (at < segment.begin || at >= segment.end) return false;
        const std::size_t most = std::min<std::size_t>(segment.end - at, kLongestCall);
        return std::memchr(call, '\0', most) != nullptr;
    });
}

bool isServer(int number) { return number >= kHostServer && number < kMaxServers; }

class Copy {
  public:
    bool isIntact() const { return isIntact_; }

    template <class Number>
    Number inRange(Number number, Number least, Number most) {
        if (number >= least && number <= most) return number;
        isIntact_ = false;
        return std::clamp(number, least, most);
    }
    const char *call(const char *name) {
        if (isCall(name)) return name;
        isIntact_ = false;
        return nullptr;
    }
    // Sites in the module have a call.
    CallSite site(const CallSite &from) {
        CallSite to{.inModule = isSet(from.inModule), .call = call(from.call), .servers = from.servers};
        to.inModule = to.inModule && to.call;
        return to;
    }
    void slot(const CallSlot &from, CallSlot &to) {
        to.steps.store(from.steps.load(kRelaxed), kRelaxed);
        to.call.store(call(from.call.load(kRelaxed)), kRelaxed);
        to.last.store(call(from.last.load(kRelaxed)), kRelaxed);
        to.server.store(inRange(from.server.load(kRelaxed), int{kHostServer}, kMaxServers - 1), kRelaxed);
        to.thread.store(from.thread.load(kRelaxed), kRelaxed);
        to.inDialog.store(isSet(from.inDialog), kRelaxed);
        to.answered.store(isSet(from.answered), kRelaxed);
        if (isSet(from.answered)) to.answer = site(from.answer);
    }
    void crash(const CrashRecord &from, CrashRecord &to) {
        to.thread.store(from.thread.load(kRelaxed), kRelaxed);
        if (!isSet(from.filled)) return;
        int kind = 0;
        std::memcpy(&kind, &from.kind, sizeof kind);
        to.kind = static_cast<CrashKind>(inRange(kind, 0, static_cast<int>(CrashKind::last)));
        to.signal = from.signal;
        to.slot = inRange(from.slot, -1, kSlots - 1);
        to.site = site(from.site);
        copyText(to.text, from.text, sizeof to.text);
        to.filled.store(true);
    }

  private:
    bool isIntact_ = true;
};

} // namespace

void copyText(char *to, const char *from, std::size_t size) {
    std::memcpy(to, from, size);
    to[size - 1] = '\0';
}

bool copyRecord(const CallRecord &from, CallRecord &to) {
    Copy copy;
    copyText(to.module, from.module, sizeof to.module);
    copyText(to.unfinished, from.unfinished, sizeof to.unfinished);
    to.serverCount = copy.inRange(from.serverCount, 0, kMaxServers);
    for (int i = 0; i < to.serverCount; ++i) copyText(to.servers[i], from.servers[i], kLongestServer);
    to.used = from.used;
    for (int i = 0; i < kSlots; ++i) copy.slot(from.slots[i], to.slots[i]);
    copy.crash(from.crash, to.crash);
    to.finished.store(from.finished.load());
    return copy.isIntact();
}

bool isIntact(const CallRecord &record) {
    return std::ranges::all_of(record.slots, [](const CallSlot &slot) {
        return isCall(slot.call.load(kRelaxed)) && isCall(slot.last.load(kRelaxed)) &&
               isServer(slot.server.load(kRelaxed));
    });
}

} // namespace velm::host

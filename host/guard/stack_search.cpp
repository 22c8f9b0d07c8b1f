#include "host/guard/stack_search.h"

#include "host/guard/crash_handler.h"

#include <link.h>
#include <ucontext.h>
#include <unwind.h>

#include <atomic>
#include <cstdint>
#include <cstring>

namespace velm::host {

namespace {

using Address = std::uintptr_t;

// From `begin` up to `end`.
struct Range {
    std::atomic<Address> begin = 0, end = 0;
    bool has(Address address) const { return address >= begin && address < end; }
};
Range moduleCode, hostCode;
std::atomic<Address> evaluations[kMaxServers];

// Where the function starts that has this address in it; 0 where no table knows.
Address startOf(Address address) {
    return reinterpret_cast<Address>(_Unwind_FindEnclosingFunction(reinterpret_cast<void *>(address + 1)));
}

ServerSet serversThatStartAt(Address start) {
    ServerSet servers{};
    for (int number = 0; number < kMaxServers && start != 0; ++number)
        if (evaluations[number].load(std::memory_order_relaxed) == start) servers.add(number);
    return servers;
}

#if defined(__x86_64__)

template <class Offset>
Address jumpFrom(Address next) {
    Offset offset = 0;
    std::memcpy(&offset, reinterpret_cast<const void *>(next - sizeof offset), sizeof offset);
    return next + static_cast<Address>(std::intptr_t{offset});
}

// The function, or piece of one, into which the instruction at an address jumps, conditionally or not; 0 for any other
// instruction. What only looks like a jump, inside an instruction, seldom finds a function; the short ones, which reach
// no further than their neighbours, have to hit the very start.
Address jumpAt(Address address) {
    constexpr unsigned kShort = 0xEB, kLong = 0xE9, kTwoBytes = 0x0F, kLongIf = 0x8;
    unsigned char code[2];
    std::memcpy(code, reinterpret_cast<const void *>(address), sizeof code);
    Address to = 0;
    if (code[0] == kShort) to = jumpFrom<std::int8_t>(address + 2);
    if (code[0] == kLong) to = jumpFrom<std::int32_t>(address + 5);
    if (code[0] == kTwoBytes && code[1] >> 4 == kLongIf) to = jumpFrom<std::int32_t>(address + 6);
    if (!moduleCode.has(to)) return 0;
    const Address start = startOf(to);
    return code[0] == kShort && start != to ? 0 : start;
}

// Whether a function goes over into another one, by that many jumps at most.
bool leadsTo(Address function, Address target, int jumps) {
    constexpr Address kLongestJump = 6;
    for (Address at = function; moduleCode.has(at + kLongestJump) && startOf(at) == function; ++at) {
        const Address next = jumpAt(at);
        if (next == 0 || next == function) continue;
        if (next == target || (jumps > 1 && leadsTo(next, target, jumps - 1))) return true;
    }
    return false;
}

// Compilers leave a function by a jump to its last call, and keep its unlikely parts elsewhere: what the host called is
// then not on the stack, but it leads there.
ServerSet serversThatLeadTo(Address start) {
    constexpr int kMostJumps = 3;
    ServerSet servers{};
    for (int number = 0; number < kMaxServers; ++number) {
        const Address evaluation = evaluations[number].load(std::memory_order_relaxed);
        if (evaluation != 0 && leadsTo(evaluation, start, kMostJumps)) servers.add(number);
    }
    return servers;
}

// A call of what is no code leaves nothing that a stack could be read from but the address to return to, on its top.
class ReturnedFromNoCode {
  public:
    explicit ReturnedFromNoCode(void *context) {
        if (!context) return;
        auto &registers = static_cast<ucontext_t *>(context)->uc_mcontext.gregs;
        const auto at = static_cast<Address>(registers[REG_RIP]);
        if (startOf(at) != 0 || moduleCode.has(at)) return;
        registers_ = &registers;
        code_ = registers[REG_RIP];
        stack_ = registers[REG_RSP];
        const auto top = static_cast<Address>(stack_);
        std::memcpy(&registers[REG_RIP], reinterpret_cast<const void *>(top), sizeof(Address));
        registers[REG_RSP] = stack_ + static_cast<greg_t>(sizeof(Address));
    }
    ~ReturnedFromNoCode() {
        if (!registers_) return;
        (*registers_)[REG_RIP] = code_;
        (*registers_)[REG_RSP] = stack_;
    }
    ReturnedFromNoCode(const ReturnedFromNoCode &) = delete;
    ReturnedFromNoCode &operator=(const ReturnedFromNoCode &) = delete;

  private:
    gregset_t *registers_ = nullptr;
    greg_t code_ = 0, stack_ = 0;
};

#else

// Other machines' jumps and registers are not known here: where the stack does not tell, nothing does.
ServerSet serversThatLeadTo(Address) { return {}; }
class ReturnedFromNoCode {
  public:
    explicit ReturnedFromNoCode(void *) {}
    ~ReturnedFromNoCode() {}
};

#endif

struct Search {
    StackFinding found{};
    Address entered = 0; // where the module was entered, as far as seen; 0: not seen, or settled

    // The stack goes on in other code. True when that was the host's: nothing further out is what is being evaluated.
    bool leave(Address address) {
        if (entered == 0) return false;
        found.servers = serversThatLeadTo(entered);
        entered = 0;
        return hostCode.has(address) || !found.servers.isEmpty();
    }
};

_Unwind_Reason_Code lookAt(_Unwind_Context *context, void *data) {
    Search &search = *static_cast<Search *>(data);
    int isBefore = 0; // set where the address is that of an instruction, and not one to return to
    const Address address = _Unwind_GetIPInfo(context, &isBefore);
    if (!moduleCode.has(isBefore != 0 ? address : address - 1))
        return search.leave(address) ? _URC_NORMAL_STOP : _URC_NO_REASON;
    search.found.inModule = true;
    const Address start = _Unwind_GetRegionStart(context);
    search.found.servers = serversThatStartAt(start);
    if (!search.found.servers.isEmpty()) return _URC_NORMAL_STOP;
    search.entered = start;
    return _URC_NO_REASON;
}

// Notes the range of the object that has an address in it.
struct ObjectWith {
    Address address;
    Range &range;
};

int findCode(dl_phdr_info *object, std::size_t, void *data) {
    const auto &wanted = *static_cast<const ObjectWith *>(data);
    Address begin = ~Address{0}, end = 0;
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        const auto &part = object->dlpi_phdr[i];
        if (part.p_type != PT_LOAD) continue;
        const Address from = object->dlpi_addr + part.p_vaddr;
        begin = from < begin ? from : begin;
        end = from + part.p_memsz > end ? from + part.p_memsz : end;
    }
    if (wanted.address < begin || wanted.address >= end) return 0;
    wanted.range.begin = begin;
    wanted.range.end = end;
    return 1;
}

} // namespace

StackFinding searchStack(void *context) {
    const ReturnedFromNoCode returned(context);
    Search search;
    _Unwind_Backtrace(lookAt, &search);
    return search.found;
}

void noteModuleCode(const void *address) {
    for (auto &evaluation : evaluations) evaluation = 0; // of a module that was there before
    ObjectWith module{.address = reinterpret_cast<Address>(address), .range = moduleCode};
    ObjectWith host{.address = reinterpret_cast<Address>(&searchStack), .range = hostCode};
    dl_iterate_phdr(findCode, &module);
    dl_iterate_phdr(findCode, &host);
}

void noteEvaluate(int server, EvaluateFunction function) {
    if (server >= 0 && server < kMaxServers) evaluations[server] = reinterpret_cast<Address>(function);
}

} // namespace velm::host

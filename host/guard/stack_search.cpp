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

// The addresses from `begin` up to, but excluding, `end`.
struct Range {
    std::atomic<Address> begin = 0, end = 0;
    bool contains(Address address) const { return address >= begin && address < end; }
};
Range moduleCode, hostCode;
std::atomic<Address> evaluations[kMaxServers]; // the evaluate functions, by server number; 0: none

// The start of the function that contains this address; 0 if the unwind tables have no such function.
Address functionStart(Address address) {
    return reinterpret_cast<Address>(_Unwind_FindEnclosingFunction(reinterpret_cast<void *>(address + 1)));
}

ServerSet serversThatStartAt(Address start) {
    ServerSet servers{};
    for (int number = 0; number < kMaxServers && start != 0; ++number)
        if (evaluations[number].load(std::memory_order_relaxed) == start) servers.add(number);
    return servers;
}

#if defined(__x86_64__)

// The target of a jump instruction whose last bytes are its relative offset. `next` is the address behind it.
template <class Offset>
Address jumpTarget(Address next) {
    Offset offset = 0;
    std::memcpy(&offset, reinterpret_cast<const void *>(next - sizeof offset), sizeof offset);
    return next + static_cast<Address>(std::intptr_t{offset});
}

// The start of the function, or fragment of one, into which the instruction at this address jumps, conditionally or
// not; 0 for any other instruction. Bytes inside another instruction may look like a jump, but their target is seldom
// in a function. Those that look like a short jump, whose target is nearby, count only if they hit the start of a
// function.
Address functionJumpedTo(Address address) {
    constexpr unsigned kShort = 0xEB, kLong = 0xE9, kTwoBytes = 0x0F, kLongIf = 0x8;
    unsigned char code[2];
    std::memcpy(code, reinterpret_cast<const void *>(address), sizeof code);
    Address to = 0;
    if (code[0] == kShort) to = jumpTarget<std::int8_t>(address + 2);
    if (code[0] == kLong) to = jumpTarget<std::int32_t>(address + 5);
    if (code[0] == kTwoBytes && code[1] >> 4 == kLongIf) to = jumpTarget<std::int32_t>(address + 6);
    if (!moduleCode.contains(to)) return 0;
    const Address start = functionStart(to);
    return code[0] == kShort && start != to ? 0 : start;
}

// Whether a function can reach another one through a chain of at most this many jumps.
bool canJumpTo(Address function, Address target, int jumps) {
    constexpr Address kLongestJump = 6;
    for (Address at = function; moduleCode.contains(at + kLongestJump) && functionStart(at) == function; ++at) {
        const Address next = functionJumpedTo(at);
        if (next == 0 || next == function) continue;
        if (next == target || (jumps > 1 && canJumpTo(next, target, jumps - 1))) return true;
    }
    return false;
}

// The servers whose evaluate function may have jumped to the function with this start. Compilers turn the last call of
// a function into a jump, and move unlikely code into a separate fragment. The function that the host called is then
// not on the stack itself, but jumps to the one that is.
ServerSet serversThatJumpTo(Address start) {
    constexpr int kMostJumps = 3;
    ServerSet servers{};
    for (int number = 0; number < kMaxServers; ++number) {
        const Address evaluation = evaluations[number].load(std::memory_order_relaxed);
        if (evaluation != 0 && canJumpTo(evaluation, start, kMostJumps)) servers.add(number);
    }
    return servers;
}

// After a call of an address that holds no code, such as a null function pointer, the stack cannot be unwound from
// where the thread stopped. This steps the context back to the caller, whose return address is on top of the stack, and
// restores the context at its end.
class SteppedBackToCaller {
  public:
    explicit SteppedBackToCaller(void *context) {
        if (!context) return;
        auto &registers = static_cast<ucontext_t *>(context)->uc_mcontext.gregs;
        const auto at = static_cast<Address>(registers[REG_RIP]);
        if (functionStart(at) != 0 || moduleCode.contains(at)) return;
        registers_ = &registers;
        code_ = registers[REG_RIP];
        stack_ = registers[REG_RSP];
        const auto top = static_cast<Address>(stack_);
        std::memcpy(&registers[REG_RIP], reinterpret_cast<const void *>(top), sizeof(Address));
        registers[REG_RSP] = stack_ + static_cast<greg_t>(sizeof(Address));
    }
    ~SteppedBackToCaller() {
        if (!registers_) return;
        (*registers_)[REG_RIP] = code_;
        (*registers_)[REG_RSP] = stack_;
    }
    SteppedBackToCaller(const SteppedBackToCaller &) = delete;
    SteppedBackToCaller &operator=(const SteppedBackToCaller &) = delete;

  private:
    gregset_t *registers_ = nullptr;
    greg_t code_ = 0, stack_ = 0;
};

#else

// The jumps and registers of other processors are not decoded: servers are found on the stack alone.
ServerSet serversThatJumpTo(Address) { return {}; }
class SteppedBackToCaller {
  public:
    explicit SteppedBackToCaller(void *) {}
    ~SteppedBackToCaller() {}
};

#endif

struct Search {
    StackFinding found{};
    Address entered = 0; // the outermost function of the module seen so far; 0: none, or dealt with

    // The next frame outwards is not in the module. True ends the search: the servers have been found, or the host made
    // the call, so that frames further out belong to another evaluation.
    bool leave(Address address) {
        if (entered == 0) return false;
        found.servers = serversThatJumpTo(entered);
        entered = 0;
        return hostCode.contains(address) || !found.servers.isEmpty();
    }
};

_Unwind_Reason_Code visitFrame(_Unwind_Context *context, void *data) {
    Search &search = *static_cast<Search *>(data);
    // Nonzero: the address is that of an instruction not executed yet, as after a signal; 0: a return address.
    int isBefore = 0;
    const Address address = _Unwind_GetIPInfo(context, &isBefore);
    if (!moduleCode.contains(isBefore != 0 ? address : address - 1))
        return search.leave(address) ? _URC_NORMAL_STOP : _URC_NO_REASON;
    search.found.inModule = true;
    const Address start = _Unwind_GetRegionStart(context);
    search.found.servers = serversThatStartAt(start);
    if (!search.found.servers.isEmpty()) return _URC_NORMAL_STOP;
    search.entered = start;
    return _URC_NO_REASON;
}

// The shared object to look for, by an address in it, and where to note its range.
struct WantedObject {
    Address address;
    Range &range;
};

int noteRange(dl_phdr_info *object, std::size_t, void *data) {
    const auto &wanted = *static_cast<const WantedObject *>(data);
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
    const SteppedBackToCaller steppedBack(context);
    Search search;
    _Unwind_Backtrace(visitFrame, &search);
    return search.found;
}

void noteModuleCode(const void *address) {
    for (auto &evaluation : evaluations) evaluation = 0; // of a module that was loaded before
    WantedObject module{.address = reinterpret_cast<Address>(address), .range = moduleCode};
    WantedObject host{.address = reinterpret_cast<Address>(&searchStack), .range = hostCode};
    dl_iterate_phdr(noteRange, &module);
    dl_iterate_phdr(noteRange, &host);
}

void noteEvaluate(int server, EvaluateFunction function) {
    if (server >= 0 && server < kMaxServers) evaluations[server] = reinterpret_cast<Address>(function);
}

} // namespace velm::host

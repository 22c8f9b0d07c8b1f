#include "host/check/watch/global_writes.h"

#include "host/check/watch/locks.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/mman.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <iterator>
#include <memory>

namespace velm::host {

namespace {

// ---- The processor --------------------------------------------------------------------------------------------------

#if defined(__x86_64__) || defined(__i386__)
#if defined(__x86_64__)
constexpr int kInstructionRegister = REG_RIP;
#else
constexpr int kInstructionRegister = REG_EIP;
#endif
constexpr greg_t kStepFlag = 0x100; // the processor traps after one instruction

std::uintptr_t instructionOf(const ucontext_t &context) {
    return static_cast<std::uintptr_t>(context.uc_mcontext.gregs[kInstructionRegister]);
}

void setStepping(ucontext_t &context, bool isOn) {
    greg_t &flags = context.uc_mcontext.gregs[REG_EFL];
    flags = isOn ? flags | kStepFlag : flags & ~kStepFlag;
}

// Whether no other thread can see or disturb the instruction between its read and its write: one with the prefix
// "lock", or an exchange.
bool isAtomic(std::uintptr_t instruction) {
    constexpr unsigned char kLock = 0xf0, kExchangeByte = 0x86, kExchange = 0x87;
    constexpr unsigned char kOtherPrefixes[] = {0x26, 0x2e, 0x36, 0x3e, 0x64, 0x65, 0x66, 0x67, 0xf2, 0xf3};
    const auto *code = reinterpret_cast<const unsigned char *>(instruction);
    while (std::ranges::find(kOtherPrefixes, *code) != std::end(kOtherPrefixes)) ++code;
    if (*code == kLock) return true;
#if defined(__x86_64__)
    constexpr unsigned char kWide = 0x40, kWideMask = 0xf0;
    if ((*code & kWideMask) == kWide) ++code;
#endif
    return *code == kExchangeByte || *code == kExchange;
}
#else
std::uintptr_t instructionOf(const ucontext_t &) { return 0; }
void setStepping(ucontext_t &, bool) {}
bool isAtomic(std::uintptr_t) { return false; }
#endif

// ---- The module's memory --------------------------------------------------------------------------------------------

struct Range {
    std::uintptr_t begin, end;
    bool contains(std::uintptr_t address) const { return address >= begin && address < end; }
};

std::uintptr_t pageSize() {
    static const auto size = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    return size;
}
std::uintptr_t pageOf(std::uintptr_t address) { return address & ~(pageSize() - 1); }
std::uintptr_t afterPagesTo(std::uintptr_t end) { return pageOf(end + pageSize() - 1); }

void protect(const Range &range, int access) {
    mprotect(reinterpret_cast<void *>(range.begin), range.end - range.begin, access);
}

// The pages of a loaded file that its code may write to.
struct Variables {
    std::uintptr_t inside; // an address in the file
    std::uintptr_t base = 0;
    std::vector<Range> ranges = {};
};

// What the loader has write-protected after relocation comes first in its segment.
Range withoutProtected(Range range, const dl_phdr_info &file) {
    for (int i = 0; i < file.dlpi_phnum; ++i) {
        const auto &header = file.dlpi_phdr[i];
        const std::uintptr_t begin = file.dlpi_addr + header.p_vaddr;
        if (header.p_type == PT_GNU_RELRO && range.contains(begin))
            range.begin = std::max(range.begin, pageOf(begin + header.p_memsz));
    }
    return range;
}

int findVariables(dl_phdr_info *file, std::size_t, void *data) {
    auto &found = *static_cast<Variables *>(data);
    std::vector<Range> ranges;
    bool isIt = false;
    for (int i = 0; i < file->dlpi_phnum; ++i) {
        const auto &header = file->dlpi_phdr[i];
        if (header.p_type != PT_LOAD) continue;
        const std::uintptr_t begin = file->dlpi_addr + header.p_vaddr;
        isIt = isIt || Range{begin, begin + header.p_memsz}.contains(found.inside);
        if ((header.p_flags & PF_W) != 0)
            ranges.push_back(withoutProtected({pageOf(begin), afterPagesTo(begin + header.p_memsz)}, *file));
    }
    if (!isIt) return 0;
    found.base = file->dlpi_addr;
    for (const Range &range : ranges)
        if (range.begin < range.end) found.ranges.push_back(range);
    return 1;
}

// ---- The watch ------------------------------------------------------------------------------------------------------

// Write-protects the variables while it lives, and notes the writes. The handlers of the signals by which it does so
// use the one object that there is.
class Watch {
  public:
    explicit Watch(const Variables &variables) : variables_(variables) {
        for (const Range &range : variables.ranges) seen_.push_back(std::make_unique<bool[]>(range.end - range.begin));
        writes_.reserve(kMostGlobalWrites);
        current = this;
        install(SIGSEGV, onFault, previousFault_);
        install(SIGTRAP, onStep, previousStep_);
        for (const Range &range : variables_.ranges) protect(range, PROT_READ);
    }
    ~Watch() {
        for (const Range &range : variables_.ranges) protect(range, PROT_READ | PROT_WRITE);
        sigaction(SIGSEGV, &previousFault_, nullptr);
        sigaction(SIGTRAP, &previousStep_, nullptr);
        current = nullptr;
    }
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;

    const std::vector<std::uintptr_t> &writes() const { return writes_; }

  private:
    static constexpr std::size_t kMostOpen = 4; // pages that one instruction writes to

    static void install(int signal, void (*handler)(int, siginfo_t *, void *), struct sigaction &previous) {
        struct sigaction action {};
        action.sa_sigaction = handler;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK;
        sigemptyset(&action.sa_mask);
        sigaction(signal, &action, &previous);
    }

    // A signal that is not about a variable takes the effect that it had before.
    static void onFault(int, siginfo_t *info, void *context) {
        auto &registers = *static_cast<ucontext_t *>(context);
        if (!current->open(reinterpret_cast<std::uintptr_t>(info->si_addr), instructionOf(registers)))
            sigaction(SIGSEGV, &current->previousFault_, nullptr); // the instruction runs again
        else
            setStepping(registers, true);
    }

    static void onStep(int, siginfo_t *, void *context) {
        if (current->openCount_ == 0) {
            sigaction(SIGTRAP, &current->previousStep_, nullptr);
            raise(SIGTRAP);
        }
        for (; current->openCount_ > 0; --current->openCount_) {
            const std::uintptr_t page = current->open_[current->openCount_ - 1];
            protect({page, page + pageSize()}, PROT_READ);
        }
        setStepping(*static_cast<ucontext_t *>(context), false);
    }

    // Notes a write, and lets it happen. False if the address is not that of a variable.
    bool open(std::uintptr_t address, std::uintptr_t instruction) {
        for (std::size_t i = 0; i < seen_.size(); ++i) {
            const Range &range = variables_.ranges[i];
            if (!range.contains(address) || openCount_ == kMostOpen) continue;
            bool &isSeen = seen_[i][address - range.begin];
            if (!isSeen && !holdsLock() && !isAtomic(instruction) && writes_.size() < kMostGlobalWrites) {
                isSeen = true;
                writes_.push_back(address - variables_.base);
            }
            open_[openCount_++] = pageOf(address);
            protect({pageOf(address), pageOf(address) + pageSize()}, PROT_READ | PROT_WRITE);
            return true;
        }
        return false;
    }

    static inline Watch *current = nullptr;

    const Variables &variables_;
    std::vector<std::unique_ptr<bool[]>> seen_; // by range and byte
    std::vector<std::uintptr_t> writes_;
    std::uintptr_t open_[kMostOpen] = {};
    std::size_t openCount_ = 0;
    struct sigaction previousFault_ {
    }, previousStep_{};
};

} // namespace

const char *whyWritesAreUnknown() {
#if defined(__x86_64__) || defined(__i386__)
    if (dlsym(RTLD_DEFAULT, "__tsan_init")) return "the thread sanitizer is at work, which reports races itself";
    return nullptr;
#else
    return "writes can be followed on x86 processors only";
#endif
}

std::vector<std::uintptr_t> globalWritesOf(const void *inside, const std::function<void()> &work) {
    Variables variables{.inside = reinterpret_cast<std::uintptr_t>(inside)};
    dl_iterate_phdr(findVariables, &variables);
    std::vector<std::uintptr_t> writes;
    {
        const Watch watch(variables);
        work();
        writes = watch.writes();
    }
    std::ranges::sort(writes);
    return writes;
}

} // namespace velm::host

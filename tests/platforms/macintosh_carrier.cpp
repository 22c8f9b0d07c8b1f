// A shared library for 64-bit Linux that contains the module for Macintosh with an Intel processor, and exports that
// module's descriptor as its own. Programs for Linux can load it, and so run the code that was built for Macintosh.
//
// This is possible because both systems have the same calling convention and the same sizes of types, and the module
// needs only a few functions of C. The constructor does what the loader of macOS would do: it maps the segments,
// adjusts pointers, binds symbols, gives thread-local variables their memory, and calls the initialisers.
//
// The macro VELM_BUNDLE is the path of the module at compile time. If the module cannot be loaded, the process ends
// with a message.
#include "module/host.h"
#include "tests/platforms/macho_format.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string_view>
#include <strings.h>
#include <sys/mman.h>
#include <vector>

#if !defined(__x86_64__) || !defined(__ELF__)
#error "The carrier is for 64-bit Linux on Intel processors."
#endif

// The module's file, and the function that finds thread-local variables: it takes a variable's descriptor in rdi, and
// returns the variable's address in rax. Callers expect all other registers to be unchanged, so it cannot be written in
// C++.
asm(".section .rodata\n"
    ".balign 16\n"
    ".local velmBundle, velmBundleEnd\n"
    "velmBundle: .incbin \"" VELM_BUNDLE "\"\n"
    "velmBundleEnd: .byte 0\n"
    ".text\n"
    ".local velmThreadAddress\n"
    "velmThreadAddress:\n"
    "  movq velmThreadBlock@gottpoff(%rip), %rax\n"
    "  addq %fs:0, %rax\n"
    "  addq 16(%rdi), %rax\n"
    "  ret\n");

extern "C" {
[[gnu::visibility("hidden")]] extern const uint8_t velmBundle[], velmBundleEnd[];
[[gnu::visibility("hidden")]] void *velmThreadAddress(void *variable);
// The size of the memory for the module's thread-local variables. It is small, since Linux reserves little such memory
// for libraries that a running program opens.
constexpr size_t kThreadBytes = 16;
[[gnu::tls_model("initial-exec"), gnu::visibility("hidden"), gnu::aligned(16), gnu::used]] //
thread_local constinit char velmThreadBlock[kThreadBytes] = {};
[[gnu::visibility("default")]] HostModuleDescriptor _mod_descrip;
}

namespace {

using namespace velm::plugin::macho; // the records of the file

[[noreturn]] void stop(const char *what, const char *name = "") {
    std::fprintf(stderr, "macintosh_carrier: %s%s\n", what, name);
    std::abort();
}

// Functions and variables of the library of macOS that Linux lacks, or that have another name there.
struct SineAndCosine {
    double sine, cosine;
};
SineAndCosine sineAndCosine(double x) { return {std::sin(x), std::cos(x)}; }
[[noreturn]] void overflow() { stop("the stack was overwritten"); }
[[noreturn]] void unexpected() { stop("a function of the loader was called, which is not implemented"); }
uint64_t stackGuard = 0x595e9fbd94fda766;
void fill(char *to, const void *pattern, size_t size) {
    for (; size >= 16; size -= 16, to += 16) std::memcpy(to, pattern, 16);
    std::memcpy(to, pattern, size);
}

void *boundTo(const char *name) {
    const struct {
        std::string_view name;
        void *address;
    } own[] = {
        {"___sincos_stret", reinterpret_cast<void *>(sineAndCosine)},
        {"___stack_chk_fail", reinterpret_cast<void *>(overflow)},
        {"___stack_chk_guard", &stackGuard},
        {"__tlv_bootstrap", reinterpret_cast<void *>(unexpected)},
        {"dyld_stub_binder", reinterpret_cast<void *>(unexpected)},
        {"_memset_pattern16", reinterpret_cast<void *>(fill)},
        {"___bzero", reinterpret_cast<void *>(bzero)},
    };
    for (const auto &each : own)
        if (each.name == name) return each.address;
    void *address = name[0] == '_' ? dlsym(RTLD_DEFAULT, name + 1) : nullptr; // C symbols begin with an underscore
    if (!address) stop("no such symbol: ", name);
    return address;
}

uint64_t number(const uint8_t *&at) { // LEB128
    uint64_t value = 0;
    for (int shift = 0;; shift += 7) {
        const uint8_t byte = *at++;
        value |= static_cast<uint64_t>(byte & 0x7f) << shift;
        if (byte < 0x80) return value;
    }
}

class Bundle {
  public:
    explicit Bundle(const uint8_t *file) : file_(file) {
        readCommands();
        map();
        rebase();
        bind(info_.binds);
        bind(info_.lazyBinds); // weak binds are not needed: they would share the module's definitions with other files
        placeThreadVariables();
        protect();
        for (const Section &section : sections_)
            if ((section.flags & 0xff) == kInitialisers)
                for (uint64_t at = 0; at < section.size; at += 8)
                    (*reinterpret_cast<void (**)()>(memory_ + section.address + at))();
    }

    // The address of an exported symbol, or null. Symbols are paths in a tree whose edges are labelled with the parts
    // of their names.
    const void *exported(std::string_view name) const {
        const uint8_t *const tree = file_ + info_.exports.offset, *node = tree;
        while (node) {
            const uint8_t *at = node;
            const uint64_t size = number(at);
            if (name.empty()) {
                if (size == 0) return nullptr;
                number(at); // flags
                return memory_ + number(at);
            }
            at += size;
            node = nullptr;
            for (int edges = *at++; edges > 0; --edges) {
                const std::string_view label = reinterpret_cast<const char *>(at);
                at += label.size() + 1;
                const uint64_t next = number(at);
                if (node || !name.starts_with(label)) continue;
                node = tree + next;
                name.remove_prefix(label.size());
            }
        }
        return nullptr;
    }

  private:
    const uint8_t *file_;
    std::vector<Segment> segments_;
    std::vector<Section> sections_;
    LoaderInfo info_{};
    uint8_t *memory_ = nullptr; // the byte of address 0

    void readCommands() {
        Header header;
        std::memcpy(&header, file_, sizeof header);
        if (header.magic != kMagic || header.processor != kIntel64) stop("not for this processor: ", VELM_BUNDLE);
        const uint8_t *at = file_ + sizeof header;
        for (uint32_t i = 0; i < header.commands; ++i) {
            Command command;
            std::memcpy(&command, at, sizeof command);
            if (command.kind == kSegment) readSegment(at);
            if (command.kind == kLoaderInfo || command.kind == kLoaderInfoOnly) std::memcpy(&info_, at, sizeof info_);
            if (command.kind == kChainedFixups) stop("pointers are chained, which is not implemented");
            at += command.size;
        }
    }

    void readSegment(const uint8_t *at) {
        Segment segment;
        std::memcpy(&segment, at, sizeof segment);
        segments_.push_back(segment);
        const size_t before = sections_.size();
        sections_.resize(before + segment.sections);
        std::memcpy(sections_.data() + before, at + sizeof segment, segment.sections * sizeof(Section));
    }

    void map() {
        uint64_t size = 0;
        for (const Segment &segment : segments_) size = std::max(size, segment.address + segment.memorySize);
        void *memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) stop("no memory");
        memory_ = static_cast<uint8_t *>(memory);
        for (const Segment &segment : segments_)
            std::memcpy(memory_ + segment.address, file_ + segment.offset, segment.fileSize);
    }

    void protect() {
        for (const Segment &segment : segments_) {
            const int protection = (segment.protection & 1 ? PROT_READ : 0) |
                                   (segment.protection & 2 ? PROT_WRITE : 0) | (segment.protection & 4 ? PROT_EXEC : 0);
            if (mprotect(memory_ + segment.address, segment.memorySize, protection) != 0) stop("mprotect failed");
        }
    }

    uint64_t &pointerAt(uint64_t segment, uint64_t offset) {
        return *reinterpret_cast<uint64_t *>(memory_ + segments_.at(segment).address + offset);
    }

    // Adds the address of the memory to the pointers that the opcodes list.
    void rebase() {
        const uint8_t *at = file_ + info_.rebases.offset, *const end = at + info_.rebases.size;
        uint64_t segment = 0, offset = 0;
        const auto adjust = [&](uint64_t count, uint64_t skipped) {
            for (; count > 0; --count, offset += 8 + skipped)
                pointerAt(segment, offset) += reinterpret_cast<uint64_t>(memory_);
        };
        while (at < end) {
            const uint8_t opcode = *at & 0xf0, operand = *at & 0x0f;
            ++at;
            uint64_t count;
            switch (opcode) {
            case 0x00: return;
            case 0x10: break; // the type, which is always a pointer
            case 0x20: segment = operand, offset = number(at); break;
            case 0x30: offset += number(at); break;
            case 0x40: offset += operand * 8u; break;
            case 0x50: adjust(operand, 0); break;
            case 0x60: adjust(number(at), 0); break;
            case 0x70: adjust(1, number(at)); break;
            case 0x80: count = number(at), adjust(count, number(at)); break;
            default: stop("an unknown opcode for pointers");
            }
        }
    }

    // Stores the addresses of symbols, also of those that macOS would bind when they are first called.
    void bind(Stream stream) {
        const uint8_t *at = file_ + stream.offset, *const end = at + stream.size;
        uint64_t segment = 0, offset = 0;
        const char *name = "";
        const auto store = [&](uint64_t count, uint64_t skipped) {
            for (; count > 0; --count, offset += 8 + skipped)
                pointerAt(segment, offset) = reinterpret_cast<uint64_t>(boundTo(name));
        };
        while (at < end) {
            const uint8_t opcode = *at & 0xf0, operand = *at & 0x0f;
            ++at;
            uint64_t count;
            switch (opcode) {
            case 0x00: break; // padding, and in the list of lazy binds the end of a symbol
            case 0x10:
            case 0x50: break; // the library, of which there is only one, and the type, which is always a pointer
            case 0x40: name = reinterpret_cast<const char *>(at), at += std::strlen(name) + 1; break;
            case 0x70: segment = operand, offset = number(at); break;
            case 0x80: offset += number(at); break;
            case 0x90: store(1, 0); break;
            case 0xa0: store(1, number(at)); break;
            case 0xb0: store(1, operand * 8u); break;
            case 0xc0: count = number(at), store(count, number(at)); break;
            default: stop("an unknown opcode for symbols");
            }
        }
    }

    void placeThreadVariables() {
        uint64_t bytes = 0;
        for (const Section &section : sections_) {
            const uint32_t kind = section.flags & 0xff;
            if (kind == kThreadData) stop("a thread-local variable does not start as 0, which is not implemented");
            if (kind == kThreadZeros) bytes += section.size;
            if (kind != kThreadVariables) continue;
            for (uint64_t at = 0; at < section.size; at += sizeof(ThreadVariable))
                reinterpret_cast<ThreadVariable *>(memory_ + section.address + at)->address = velmThreadAddress;
        }
        if (bytes > kThreadBytes) stop("the thread-local variables need more memory");
    }
};

[[gnu::constructor]] void carry() {
    static const Bundle bundle(velmBundle);
    const void *descriptor = bundle.exported("__mod_descrip");
    if (!descriptor) stop("no descriptor in ", VELM_BUNDLE);
    std::memcpy(&_mod_descrip, descriptor, sizeof _mod_descrip);
}

} // namespace

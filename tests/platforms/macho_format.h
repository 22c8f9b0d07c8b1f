// The records of files for macOS, after Apple's "Mach-O File Format Reference" and the headers <mach-o/loader.h> and
// <mach-o/fat.h>. Numbers are little-endian, except in the headers of universal files.
#pragma once

#include <cstdint>

namespace velm::plugin::macho {

constexpr uint32_t kMagic = 0xfeedfacf;                        // a 64-bit file
constexpr uint32_t kUniversalMagic = 0xcafebabe;               // several files in one
constexpr uint32_t kIntel64 = 0x01000007, kArm64 = 0x0100000c; // processors
constexpr uint32_t kBundle = 8;                                // the type of files that programs load

// The kinds of load commands.
constexpr uint32_t kSymbolTable = 0x02, kLibrary = 0x0c, kSegment = 0x19, kSignature = 0x1d;
constexpr uint32_t kLoaderInfo = 0x22, kLoaderInfoOnly = 0x80000022, kChainedFixups = 0x80000034;
constexpr uint32_t kMinimumSystem = 0x24, kBuildVersion = 0x32;

// The kinds of sections: the lowest byte of their flags.
constexpr uint32_t kInitialisers = 0x09, kThreadData = 0x11, kThreadZeros = 0x12, kThreadVariables = 0x13;

struct Header {
    uint32_t magic = 0, processor = 0, subtype = 0, type = 0, commands = 0, commandBytes = 0, flags = 0, reserved = 0;
};

struct Command {
    uint32_t kind = 0, size = 0; // the size includes what follows
};

struct Segment {
    Command command = {};
    char name[16] = {};
    uint64_t address = 0, memorySize = 0, offset = 0, fileSize = 0;
    uint32_t mostProtection = 0, protection = 0, sections = 0, flags = 0;
};

struct Section {
    char name[16] = {}, segment[16] = {};
    uint64_t address = 0, size = 0;
    uint32_t offset = 0, alignment = 0, relocations = 0, relocationCount = 0, flags = 0, reserved[3] = {};
};

// A range of bytes of the file.
struct Stream {
    uint32_t offset = 0, size = 0;
};

struct LoaderInfo {
    Command command = {};
    Stream rebases = {}, binds = {}, weakBinds = {}, lazyBinds = {}, exports = {};
};

struct SymbolTable {
    Command command = {};
    uint32_t symbols = 0, count = 0, texts = 0, textBytes = 0;
};

struct Symbol {
    uint32_t name = 0; // an offset in the texts of the table
    uint8_t type = 0, section = 0;
    uint16_t description = 0;
    uint64_t value = 0;
};

struct Library {
    Command command = {};
    uint32_t name = 0; // the offset of the text from the start of the command
    uint32_t time = 0, version = 0, compatibleVersion = 0;
};

struct MinimumSystem {
    Command command = {};
    uint32_t version = 0, sdk = 0;
};

struct BuildVersion {
    Command command = {};
    uint32_t platform = 0, version = 0, sdk = 0, tools = 0;
};

struct SignatureCommand {
    Command command = {};
    Stream bytes = {};
};

struct ThreadVariable {
    void *(*address)(void *variable) = nullptr;
    uint64_t key = 0, offset = 0;
};

} // namespace velm::plugin::macho

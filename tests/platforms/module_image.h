// The memory image of a built module, computed from its file without loading it. Works for modules of every platform.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velm::plugin {

enum class ModuleFormat { elf, pe, machO };

struct ModuleImage {
    std::string file; // its bytes; of a universal file, those for one processor
    ModuleFormat format = ModuleFormat::elf;
    unsigned int addressSize = 0;             // 4 or 8
    uint64_t base = 0;                        // address of the first byte of `memory`
    std::string memory;                       // loaded and relocated; pointers in it are addresses
    std::map<std::string, uint64_t> exported; // the addresses of exported symbols
    std::vector<std::string> libraries;       // names of the libraries that it needs
    uint32_t linkTime = 0;                    // as stated in the file; Windows files only

    // Macintosh files only. Symbols have the underscore that C symbols begin with.
    uint32_t processor = 0;            // macho::kIntel64 or macho::kArm64
    std::string minimumSystem;         // the lowest version of macOS, such as "10.13"
    std::vector<std::string> imported; // the symbols that it expects in its libraries
    std::string signature;             // at the end of the file; empty if it is not signed

    // These throw std::runtime_error if the address is outside the image.
    uint32_t word32(uint64_t address) const;
    uint64_t pointer(uint64_t address) const; // of addressSize
    std::string text(uint64_t address) const;
    bool contains(uint64_t address) const { return address >= base && address - base < memory.size(); }
};

// Reads a module: an ELF shared object for Intel processors, a PE file, a Mach-O file, or a universal file, which has
// one Mach-O file for each kind of processor. Gives one image for each processor. Throws std::runtime_error if the file
// is none of these, or is damaged.
std::vector<ModuleImage> readModule(const std::string &path);

// Copies a record from these bytes, in this machine's byte order: all these processors are little-endian, as this
// machine's is. Throws std::runtime_error if the record is not within the bytes.
template <class Record>
Record recordAt(std::string_view bytes, uint64_t offset);

ModuleImage readElf(std::string file);
ModuleImage readPe(std::string file);
ModuleImage readMachO(std::string file);
std::vector<ModuleImage> readUniversal(const std::string &file);

// Checks the ad-hoc signature of a Mach-O file against the file's bytes, and gives what is wrong with it in words.
// Empty if it is right.
std::string signatureFault(const ModuleImage &image);

} // namespace velm::plugin

#include <cstring>
#include <stdexcept>

template <class Record>
Record velm::plugin::recordAt(std::string_view bytes, uint64_t offset) {
    if (offset > bytes.size() || bytes.size() - offset < sizeof(Record))
        throw std::runtime_error("a record lies outside the file");
    Record record;
    std::memcpy(&record, bytes.data() + offset, sizeof record);
    return record;
}

// The memory image of a built module, computed from its file without loading it. Works for modules of every platform.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velm::plugin {

struct ModuleImage {
    std::string file; // its bytes
    bool windows = false;
    unsigned int addressSize = 0;             // 4 or 8
    uint64_t base = 0;                        // address of the first byte of `memory`
    std::string memory;                       // loaded and relocated; pointers in it are addresses
    std::map<std::string, uint64_t> exported; // the addresses of exported symbols
    std::vector<std::string> libraries;       // names of the libraries that it needs
    uint32_t linkTime = 0;                    // as stated in the file; Windows files only

    // These throw std::runtime_error if the address is outside the image.
    uint32_t word32(uint64_t address) const;
    uint64_t pointer(uint64_t address) const; // of addressSize
    std::string text(uint64_t address) const;
    bool contains(uint64_t address) const { return address >= base && address - base < memory.size(); }
};

// Reads an ELF shared object for Intel processors, or a PE file. Throws std::runtime_error if the file is neither, or
// is damaged.
ModuleImage readModule(const std::string &path);

// Copies a record from these bytes, in this machine's byte order: the tests read files for processors of the same
// family as this machine's. Throws std::runtime_error if the record is not within the bytes.
template <class Record>
Record recordAt(std::string_view bytes, uint64_t offset);

ModuleImage readElf(std::string file);
ModuleImage readPe(std::string file);

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

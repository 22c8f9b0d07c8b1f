// What a shared object says of itself in its ELF tables: what it needs, what it shows, how it is to be bound. Read here
// rather than from a tool's output, so that the tests run where no such tools are.
#pragma once

#include <elf.h>
#include <link.h>
#include <span>
#include <string>
#include <vector>

namespace velm::plugin {

class ElfFile {
  public:
    // Throws std::runtime_error where the file cannot be read or is not of this machine's kind.
    explicit ElfFile(const std::string &path);

    struct Symbol {
        std::string name;
        bool defined;
    };
    std::vector<std::string> needed() const;    // names of libraries
    std::vector<Symbol> dynamicSymbols() const; // but for the local ones
    std::vector<Symbol> allSymbols() const;     // local ones too, where the file has not been stripped
    bool bindsAtOnce() const;                   // every symbol is resolved when the file is opened
    bool hasSection(const std::string &name) const;
    bool hasReadOnlyRelocations() const;

  private:
    std::string bytes_;

    // `count` records at an offset; throws where they lie outside the file.
    template <class Record>
    std::span<const Record> at(size_t offset, size_t count) const;
    const ElfW(Ehdr) & header() const;
    std::span<const ElfW(Shdr)> sections() const;
    std::span<const ElfW(Dyn)> dynamicEntries() const;
    const char *stringsOf(const ElfW(Shdr) & section) const; // the names that a section's records refer to
    std::vector<Symbol> symbolsOf(unsigned int sectionType, bool locals) const;
};

} // namespace velm::plugin

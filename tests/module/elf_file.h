// Reads the ELF tables of a shared object: the libraries that it needs, the symbols that it exports, and how they are
// bound. Not taken from the output of a tool, so that the tests run where there is no such tool.
#pragma once

#include <elf.h>
#include <link.h>
#include <span>
#include <string>
#include <vector>

namespace velm::plugin {

class ElfFile {
  public:
    // Throws std::runtime_error if the file cannot be read or is not for this kind of machine.
    explicit ElfFile(const std::string &path);

    struct Symbol {
        std::string name;
        bool defined;
    };
    std::vector<std::string> needed() const;    // the names of libraries
    std::vector<Symbol> dynamicSymbols() const; // except the local ones
    std::vector<Symbol> allSymbols() const;     // with the local ones, if the file has not been stripped
    bool bindsAtOnce() const;                   // all symbols are resolved when the file is opened
    bool hasSection(const std::string &name) const;
    bool hasReadOnlyRelocations() const;

  private:
    std::string bytes_;

    // `count` records at an offset. Throws std::runtime_error if they lie outside the file.
    template <class Record>
    std::span<const Record> at(size_t offset, size_t count) const;
    const ElfW(Ehdr) & header() const;
    std::span<const ElfW(Shdr)> sections() const;
    std::span<const ElfW(Dyn)> dynamicEntries() const;
    const char *stringsOf(const ElfW(Shdr) & section) const; // the string table that the records of a section refer to
    std::vector<Symbol> symbolsOf(unsigned int sectionType, bool locals) const;
};

} // namespace velm::plugin

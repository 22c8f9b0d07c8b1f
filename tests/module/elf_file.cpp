#include "tests/module/elf_file.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace velm::plugin {

template <class Record>
std::span<const Record> ElfFile::at(size_t offset, size_t count) const {
    if (offset > bytes_.size() || count * sizeof(Record) > bytes_.size() - offset)
        throw std::runtime_error("a table of the file lies outside it");
    return {reinterpret_cast<const Record *>(bytes_.data() + offset), count};
}

ElfFile::ElfFile(const std::string &path) {
    constexpr unsigned char kNativeClass = sizeof(void *) == 8 ? ELFCLASS64 : ELFCLASS32;
    std::ifstream file(path, std::ios::binary);
    bytes_.assign(std::istreambuf_iterator<char>(file), {});
    if (bytes_.compare(0, SELFMAG, ELFMAG) != 0 || header().e_ident[EI_CLASS] != kNativeClass)
        throw std::runtime_error(path + " is not a shared object of this machine");
}

const ElfW(Ehdr) & ElfFile::header() const { return at<ElfW(Ehdr)>(0, 1)[0]; }

std::span<const ElfW(Shdr)> ElfFile::sections() const { return at<ElfW(Shdr)>(header().e_shoff, header().e_shnum); }

std::span<const ElfW(Dyn)> ElfFile::dynamicEntries() const {
    for (const auto &section : sections())
        if (section.sh_type == SHT_DYNAMIC)
            return at<ElfW(Dyn)>(section.sh_offset, section.sh_size / sizeof(ElfW(Dyn)));
    throw std::runtime_error("the file is not a shared object");
}

const char *ElfFile::stringsOf(const ElfW(Shdr) & section) const {
    const auto &strings = sections()[section.sh_link];
    return at<char>(strings.sh_offset, strings.sh_size).data();
}

std::vector<std::string> ElfFile::needed() const {
    std::vector<std::string> names;
    for (const auto &section : sections()) {
        if (section.sh_type != SHT_DYNAMIC) continue;
        for (const auto &entry : dynamicEntries())
            if (entry.d_tag == DT_NEEDED) names.emplace_back(stringsOf(section) + entry.d_un.d_val);
    }
    return names;
}

std::vector<ElfFile::Symbol> ElfFile::symbolsOf(unsigned int sectionType, bool locals) const {
    std::vector<Symbol> symbols;
    for (const auto &section : sections()) {
        if (section.sh_type != sectionType) continue;
        for (const auto &symbol : at<ElfW(Sym)>(section.sh_offset, section.sh_size / sizeof(ElfW(Sym)))) {
            const bool local = ELF64_ST_BIND(symbol.st_info) == STB_LOCAL; // encoded alike in 32-bit and 64-bit files
            if (symbol.st_name != 0 && (locals || !local))
                symbols.push_back(
                    {.name = stringsOf(section) + symbol.st_name, .defined = symbol.st_shndx != SHN_UNDEF});
        }
    }
    return symbols;
}

std::vector<ElfFile::Symbol> ElfFile::dynamicSymbols() const { return symbolsOf(SHT_DYNSYM, false); }
std::vector<ElfFile::Symbol> ElfFile::allSymbols() const { return symbolsOf(SHT_SYMTAB, true); }

bool ElfFile::bindsAtOnce() const {
    for (const auto &entry : dynamicEntries())
        if ((entry.d_tag == DT_FLAGS && (entry.d_un.d_val & DF_BIND_NOW)) ||
            (entry.d_tag == DT_FLAGS_1 && (entry.d_un.d_val & DF_1_NOW)))
            return true;
    return false;
}

bool ElfFile::hasSection(const std::string &name) const {
    const auto &strings = sections()[header().e_shstrndx];
    const char *names = at<char>(strings.sh_offset, strings.sh_size).data();
    for (const auto &section : sections())
        if (name == names + section.sh_name) return true;
    return false;
}

bool ElfFile::hasReadOnlyRelocations() const {
    for (const auto &segment : at<ElfW(Phdr)>(header().e_phoff, header().e_phnum))
        if (segment.p_type == PT_GNU_RELRO) return true;
    return false;
}

} // namespace velm::plugin

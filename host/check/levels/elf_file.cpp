#include "host/check/levels/elf_file.h"

#include "host/base/error.h"
#include "host/io/files.h"

#include <cxxabi.h>
#include <elf.h>
#include <link.h>

#include <cstdlib>
#include <cstring>

namespace velm::host {

namespace {

template <class Record>
std::vector<Record> recordsAt(const std::string &bytes, std::size_t offset, std::size_t size) {
    if (offset > bytes.size() || size > bytes.size() - offset)
        throw InputError("a section of the module ends beyond the end of its file");
    std::vector<Record> records(size / sizeof(Record));
    std::memcpy(records.data(), bytes.data() + offset, records.size() * sizeof(Record));
    return records;
}

std::string nameAt(const std::string &bytes, const ElfW(Shdr) & names, std::size_t index) {
    const std::size_t offset = names.sh_offset + index;
    return offset < bytes.size() ? bytes.c_str() + offset : "";
}

bool isExported(const ElfW(Sym) & symbol) {
    const int binding = ELF64_ST_BIND(symbol.st_info),
              type = ELF64_ST_TYPE(symbol.st_info); // the same for 32-bit files
    return symbol.st_shndx != SHN_UNDEF && symbol.st_shndx != SHN_ABS && binding != STB_LOCAL &&
           (type == STT_OBJECT || type == STT_FUNC);
}

std::vector<ElfW(Shdr)> sectionsOf(const std::string &bytes) {
    const ElfW(Ehdr) header = recordsAt<ElfW(Ehdr)>(bytes, 0, sizeof(ElfW(Ehdr))).front();
    return recordsAt<ElfW(Shdr)>(bytes, header.e_shoff, header.e_shnum * sizeof(ElfW(Shdr)));
}

std::string readable(const std::string &symbol) {
    int status = 0;
    char *text = abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status);
    std::string name = status == 0 ? text : symbol;
    std::free(text);
    return name;
}

} // namespace

std::string variableAt(const std::string &file, std::uintptr_t address) {
    const std::string bytes = readFile(file);
    const auto sections = sectionsOf(bytes);
    for (const ElfW(Shdr) & section : sections) {
        if (section.sh_type != SHT_SYMTAB && section.sh_type != SHT_DYNSYM) continue;
        for (const ElfW(Sym) & symbol : recordsAt<ElfW(Sym)>(bytes, section.sh_offset, section.sh_size))
            if (ELF64_ST_TYPE(symbol.st_info) == STT_OBJECT && symbol.st_shndx != SHN_UNDEF &&
                address >= symbol.st_value && address - symbol.st_value < symbol.st_size)
                return readable(nameAt(bytes, sections.at(section.sh_link), symbol.st_name));
    }
    return {};
}

ElfSymbols readSymbols(const std::string &file) {
    const std::string bytes = readFile(file);
    const auto sections = sectionsOf(bytes);
    ElfSymbols symbols;
    for (const ElfW(Shdr) & section : sections) {
        if (section.sh_type != SHT_DYNSYM && section.sh_type != SHT_DYNAMIC) continue;
        const ElfW(Shdr) &names = sections.at(section.sh_link);
        if (section.sh_type == SHT_DYNSYM) {
            for (const ElfW(Sym) & symbol : recordsAt<ElfW(Sym)>(bytes, section.sh_offset, section.sh_size))
                if (isExported(symbol)) symbols.exported.push_back(nameAt(bytes, names, symbol.st_name));
        } else {
            for (const ElfW(Dyn) & entry : recordsAt<ElfW(Dyn)>(bytes, section.sh_offset, section.sh_size))
                if (entry.d_tag == DT_NEEDED) symbols.needed.push_back(nameAt(bytes, names, entry.d_un.d_val));
        }
    }
    if (symbols.exported.empty()) throw InputError("the module's file exports no symbols");
    return symbols;
}

} // namespace velm::host

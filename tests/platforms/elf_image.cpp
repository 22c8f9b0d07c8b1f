// Reads 32-bit and 64-bit modules for Linux on Intel processors.
#include "tests/platforms/module_image.h"

#include <elf.h>

namespace velm::plugin {
namespace {

struct Class32 {
    using Header = Elf32_Ehdr;
    using Segment = Elf32_Phdr;
    using Section = Elf32_Shdr;
    using Symbol = Elf32_Sym;
    using Dynamic = Elf32_Dyn;
    using Address = uint32_t;
};

struct Class64 {
    using Header = Elf64_Ehdr;
    using Segment = Elf64_Phdr;
    using Section = Elf64_Shdr;
    using Symbol = Elf64_Sym;
    using Dynamic = Elf64_Dyn;
    using Address = uint64_t;
};

template <class Class>
class Reader {
  public:
    explicit Reader(ModuleImage &image) : image_(image), header_(recordAt<typename Class::Header>(image.file, 0)) {
        image_.addressSize = sizeof(typename Class::Address);
    }

    void read() {
        loadSegments();
        for (uint64_t i = 0; i < header_.e_shnum; ++i) {
            const auto section = sectionAt(i);
            if (section.sh_type == SHT_DYNSYM) readSymbols(section);
            if (section.sh_type == SHT_DYNAMIC) readLibraries(section);
            if (section.sh_type == SHT_RELA) relocate(section);
        }
    }

  private:
    ModuleImage &image_;
    typename Class::Header header_;

    typename Class::Section sectionAt(uint64_t index) const {
        return recordAt<typename Class::Section>(image_.file, header_.e_shoff + index * header_.e_shentsize);
    }

    std::string nameAt(const typename Class::Section &section, uint64_t offset) const {
        const auto strings = sectionAt(section.sh_link);
        return image_.text(strings.sh_addr + offset);
    }

    void loadSegments() {
        for (int i = 0; i < header_.e_phnum; ++i) {
            const auto segment = recordAt<typename Class::Segment>(
                image_.file, header_.e_phoff + static_cast<uint64_t>(i) * header_.e_phentsize);
            if (segment.p_type != PT_LOAD) continue;
            if (segment.p_offset + segment.p_filesz > image_.file.size())
                throw std::runtime_error("a segment lies outside the file");
            if (image_.memory.size() < segment.p_vaddr + segment.p_memsz)
                image_.memory.resize(segment.p_vaddr + segment.p_memsz);
            image_.memory.replace(segment.p_vaddr, segment.p_filesz, image_.file, segment.p_offset, segment.p_filesz);
        }
    }

    void readSymbols(const typename Class::Section &section) {
        for (uint64_t at = 0; at < section.sh_size; at += sizeof(typename Class::Symbol)) {
            const auto symbol = recordAt<typename Class::Symbol>(image_.memory, section.sh_addr + at);
            if (symbol.st_name != 0 && symbol.st_shndx != SHN_UNDEF)
                image_.exported[nameAt(section, symbol.st_name)] = symbol.st_value;
        }
    }

    void readLibraries(const typename Class::Section &section) {
        for (uint64_t at = 0; at < section.sh_size; at += sizeof(typename Class::Dynamic)) {
            const auto entry = recordAt<typename Class::Dynamic>(image_.memory, section.sh_addr + at);
            if (entry.d_tag == DT_NEEDED) image_.libraries.push_back(nameAt(section, entry.d_un.d_val));
        }
    }

    // Fills in pointers. 64-bit files hold them in the relocation table; 32-bit files already have them in place.
    void relocate(const typename Class::Section &section) {
        for (uint64_t at = 0; at < section.sh_size; at += sizeof(Elf64_Rela)) {
            const auto entry = recordAt<Elf64_Rela>(image_.memory, section.sh_addr + at);
            if (ELF64_R_TYPE(entry.r_info) != R_X86_64_RELATIVE) continue;
            if (entry.r_offset + sizeof entry.r_addend > image_.memory.size())
                throw std::runtime_error("a relocation lies outside the file");
            std::memcpy(image_.memory.data() + entry.r_offset, &entry.r_addend, sizeof entry.r_addend);
        }
    }
};

} // namespace

ModuleImage readElf(std::string file) {
    ModuleImage image;
    image.file = std::move(file);
    const auto kind = recordAt<unsigned char>(image.file, EI_CLASS);
    if (kind == ELFCLASS64)
        Reader<Class64>(image).read();
    else if (kind == ELFCLASS32)
        Reader<Class32>(image).read();
    else
        throw std::runtime_error("the file is of no known class");
    return image;
}

} // namespace velm::plugin

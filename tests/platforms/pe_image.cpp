// Reads modules for Windows, according to "PE Format" in Microsoft's documentation.
#include "tests/platforms/module_image.h"

namespace velm::plugin {
namespace {

constexpr uint32_t kHeaderOffset = 0x3c; // the location of the header's own offset
constexpr uint16_t kMagic32 = 0x10b, kMagic64 = 0x20b;
constexpr uint32_t kSignature = 0x00004550; // "PE", and two zeros

struct FileHeader {
    uint32_t signature;
    uint16_t machine, sections;
    uint32_t linkTime, symbolTable, symbols;
    uint16_t optionalSize, characteristics;
};

struct Section {
    char name[8];
    uint32_t size, address, fileSize, fileOffset;
    uint32_t unused[3];
    uint32_t characteristics;
};

struct Directory {
    uint32_t address, size;
};

struct ExportTable {
    uint32_t flags, time, version, name, ordinalBase, functions, names, functionTable, nameTable, ordinalTable;
};

struct ImportTable {
    uint32_t lookup, time, forwarder, name, addresses;
};

// Fields of the optional header, whose offsets differ between 32-bit and 64-bit files.
struct Layout {
    unsigned int addressSize;
    uint64_t base;
    uint64_t directories; // their offset in the file
};

Layout layoutOf(const std::string &file, uint64_t optional) {
    const auto magic = recordAt<uint16_t>(file, optional);
    if (magic == kMagic64)
        return {.addressSize = 8, .base = recordAt<uint64_t>(file, optional + 24), .directories = optional + 112};
    if (magic == kMagic32)
        return {.addressSize = 4, .base = recordAt<uint32_t>(file, optional + 28), .directories = optional + 96};
    throw std::runtime_error("the file has no optional header of a known kind");
}

void loadSections(ModuleImage &image, uint64_t table, int count) {
    for (int i = 0; i < count; ++i) {
        const auto section = recordAt<Section>(image.file, table + static_cast<uint64_t>(i) * sizeof(Section));
        const size_t size = section.size < section.fileSize ? section.size : section.fileSize;
        if (section.address + size > image.memory.size() || section.fileOffset + size > image.file.size())
            throw std::runtime_error("a section lies outside the file");
        image.memory.replace(section.address, size, image.file, section.fileOffset, size);
    }
}

void readExports(ModuleImage &image, const Directory &directory) {
    if (directory.size == 0) return;
    const auto table = recordAt<ExportTable>(image.memory, directory.address);
    if (table.functions != table.names) throw std::runtime_error("something is exported without a name");
    for (uint32_t i = 0; i < table.names; ++i) {
        const auto name = recordAt<uint32_t>(image.memory, table.nameTable + 4 * i);
        const auto ordinal = recordAt<uint16_t>(image.memory, table.ordinalTable + 2 * i);
        const auto address = recordAt<uint32_t>(image.memory, table.functionTable + 4 * ordinal);
        image.exported[image.text(image.base + name)] = image.base + address;
    }
}

void readImports(ModuleImage &image, const Directory &directory) {
    if (directory.size == 0) return;
    for (uint64_t at = directory.address;; at += sizeof(ImportTable)) {
        const auto table = recordAt<ImportTable>(image.memory, at);
        if (table.name == 0) return;
        image.libraries.push_back(image.text(image.base + table.name));
    }
}

} // namespace

ModuleImage readPe(std::string file) {
    ModuleImage image;
    image.file = std::move(file);
    image.format = ModuleFormat::pe;
    const auto start = recordAt<uint32_t>(image.file, kHeaderOffset);
    const auto header = recordAt<FileHeader>(image.file, start);
    if (header.signature != kSignature) throw std::runtime_error("the file has no PE header");
    const uint64_t optional = start + sizeof(FileHeader);
    const Layout layout = layoutOf(image.file, optional);
    image.addressSize = layout.addressSize;
    image.base = layout.base;
    image.linkTime = header.linkTime;
    image.memory.resize(recordAt<uint32_t>(image.file, optional + 56));
    loadSections(image, optional + header.optionalSize, header.sections);
    readExports(image, recordAt<Directory>(image.file, layout.directories));
    readImports(image, recordAt<Directory>(image.file, layout.directories + sizeof(Directory)));
    return image;
}

} // namespace velm::plugin

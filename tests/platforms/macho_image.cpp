// Reads modules for Macintosh.
#include "tests/platforms/macho_format.h"
#include "tests/platforms/module_image.h"

#include <algorithm>

namespace velm::plugin {
namespace {

constexpr uint64_t kMostMemory = 1 << 28; // more is a damaged file
constexpr uint8_t kSymbolKind = 0x0e;     // the bits of a symbol's type that are 0 where it is in another file
constexpr int kDeepest = 64;              // edges on the path of an exported symbol

// The bytes of the stream. Throws std::runtime_error if they are not all within the file.
std::string_view bytesOf(const std::string &file, macho::Stream stream) {
    if (stream.offset > file.size() || file.size() - stream.offset < stream.size)
        throw std::runtime_error("a load command names bytes outside the file");
    return std::string_view(file).substr(stream.offset, stream.size);
}

std::string textAt(std::string_view bytes, uint64_t offset) {
    if (offset >= bytes.size()) throw std::runtime_error("a text lies outside the file");
    bytes.remove_prefix(offset);
    return std::string(bytes.substr(0, bytes.find('\0')));
}

std::string versionText(uint32_t version) { // 16 bits, 8 and 8
    std::string text = std::to_string(version >> 16) + '.' + std::to_string(version >> 8 & 0xff);
    if (version & 0xff) text += '.' + std::to_string(version & 0xff);
    return text;
}

uint64_t leb128(std::string_view bytes, uint64_t &at) {
    uint64_t value = 0;
    for (unsigned int shift = 0; shift < 64; shift += 7) {
        const auto byte = recordAt<uint8_t>(bytes, at++);
        value |= uint64_t{byte & 0x7fu} << shift;
        if (byte < 0x80) return value;
    }
    throw std::runtime_error("a number of the exported symbols is too long");
}

// The exported symbols are the paths of a tree, whose edges are labelled with texts.
void readExports(std::string_view tree, uint64_t at, const std::string &name, int depth,
                 std::map<std::string, uint64_t> &exported) {
    if (depth > kDeepest) throw std::runtime_error("the tree of exported symbols is a circle");
    const uint64_t size = leb128(tree, at), edges = at + size;
    if (size > 0) {
        leb128(tree, at); // flags
        exported[name] = leb128(tree, at);
    }
    uint64_t edge = edges + 1;
    for (int left = recordAt<uint8_t>(tree, edges); left > 0; --left) {
        const std::string label = textAt(tree, edge);
        edge += label.size() + 1;
        const uint64_t next = leb128(tree, edge);
        readExports(tree, next, name + label, depth + 1, exported);
    }
}

class MachOReader {
  public:
    explicit MachOReader(ModuleImage &image) : image_(image) {}

    void read() {
        const auto header = recordAt<macho::Header>(image_.file, 0);
        if (header.magic != macho::kMagic) throw std::runtime_error("the file is not a 64-bit Mach-O file");
        image_.format = ModuleFormat::machO;
        image_.addressSize = 8;
        image_.processor = header.processor;
        uint64_t at = sizeof header;
        for (uint32_t i = 0; i < header.commands; ++i) {
            const auto command = recordAt<macho::Command>(image_.file, at);
            if (command.size < sizeof command) throw std::runtime_error("a load command is too short");
            readCommand(command, at);
            at += command.size;
        }
    }

  private:
    ModuleImage &image_;

    template <class Record>
    Record at(uint64_t offset) const {
        return recordAt<Record>(image_.file, offset);
    }

    void readCommand(macho::Command command, uint64_t offset) {
        switch (command.kind) {
        case macho::kSegment: load(at<macho::Segment>(offset)); break;
        case macho::kSymbolTable: readImports(at<macho::SymbolTable>(offset)); break;
        case macho::kLibrary:
            image_.libraries.push_back(textAt(image_.file, offset + at<macho::Library>(offset).name));
            break;
        case macho::kMinimumSystem: image_.minimumSystem = versionText(at<macho::MinimumSystem>(offset).version); break;
        case macho::kBuildVersion: image_.minimumSystem = versionText(at<macho::BuildVersion>(offset).version); break;
        case macho::kSignature:
            image_.signature = bytesOf(image_.file, at<macho::SignatureCommand>(offset).bytes);
            break;
        case macho::kLoaderInfo:
        case macho::kLoaderInfoOnly: {
            const std::string_view tree = bytesOf(image_.file, at<macho::LoaderInfo>(offset).exports);
            if (!tree.empty()) readExports(tree, 0, "", 0, image_.exported);
            break;
        }
        // Pointers are in place in files without these chains; the image has no other way to know them.
        case macho::kChainedFixups: throw std::runtime_error("the pointers are chained, which is not supported");
        default: break;
        }
    }

    void load(const macho::Segment &segment) {
        if (segment.offset > image_.file.size() || image_.file.size() - segment.offset < segment.fileSize ||
            segment.address > kMostMemory || segment.memorySize > kMostMemory || segment.fileSize > segment.memorySize)
            throw std::runtime_error("a segment lies outside the file");
        image_.memory.resize(std::max<uint64_t>(image_.memory.size(), segment.address + segment.memorySize));
        image_.memory.replace(segment.address, segment.fileSize, image_.file, segment.offset, segment.fileSize);
    }

    void readImports(const macho::SymbolTable &table) {
        const std::string_view texts = bytesOf(image_.file, {.offset = table.texts, .size = table.textBytes});
        for (uint64_t i = 0; i < table.count; ++i) {
            const auto symbol = at<macho::Symbol>(table.symbols + i * sizeof(macho::Symbol));
            if ((symbol.type & kSymbolKind) == 0) image_.imported.push_back(textAt(texts, symbol.name));
        }
    }
};

// Universal files have big-endian headers.
uint32_t bigEndian32(const std::string &bytes, uint64_t offset) {
    return __builtin_bswap32(recordAt<uint32_t>(bytes, offset));
}

} // namespace

ModuleImage readMachO(std::string file) {
    ModuleImage image;
    image.file = std::move(file);
    MachOReader(image).read();
    return image;
}

std::vector<ModuleImage> readUniversal(const std::string &file) {
    constexpr uint64_t kHeader = 8, kEntry = 20; // bytes
    std::vector<ModuleImage> images;
    for (uint32_t i = 0; i < bigEndian32(file, 4); ++i) {
        const uint64_t entry = kHeader + i * kEntry;
        const macho::Stream part = {.offset = bigEndian32(file, entry + 8), .size = bigEndian32(file, entry + 12)};
        const uint32_t alignment = bigEndian32(file, entry + 16);
        if (alignment > 20 || part.offset % (1u << alignment) != 0)
            throw std::runtime_error("a part of the universal file is not aligned");
        images.push_back(readMachO(std::string(bytesOf(file, part))));
        if (images.back().processor != bigEndian32(file, entry))
            throw std::runtime_error("a part of the universal file is for another processor than its entry says");
    }
    return images;
}

} // namespace velm::plugin

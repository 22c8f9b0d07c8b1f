// The reader of modules for Macintosh, with small files that are made here.
#include "tests/platforms/macho_format.h"
#include "tests/platforms/module_image.h"
#include "tests/platforms/sha256.h"

#include <gtest/gtest.h>

namespace velm::plugin {
namespace {

template <class Record>
std::string bytes(const Record &record) {
    return {reinterpret_cast<const char *>(&record), sizeof record};
}

std::string bigEndian(std::initializer_list<uint32_t> numbers) {
    std::string result;
    for (const uint32_t number : numbers) result += bytes(__builtin_bswap32(number));
    return result;
}

// The tree of one exported symbol, "__mod", at the address 0x210: an edge "__", an edge "mod", and the end.
const std::string kExports("\0\1__\0\6"
                           "\0\1mod\0\x0d"
                           "\3\0\x90\4\0",
                           18);

macho::Stream append(std::string &file, const std::string &text) {
    const macho::Stream stream = {.offset = static_cast<uint32_t>(file.size()),
                                  .size = static_cast<uint32_t>(text.size())};
    file += text;
    return stream;
}

// A file with one of each load command that the reader knows, in the order of the members.
struct SmallFile {
    macho::Header header{.magic = macho::kMagic, .processor = macho::kArm64, .type = macho::kBundle, .commands = 6};
    macho::Segment segment{.command = {.kind = macho::kSegment, .size = sizeof segment},
                           .address = 0x200,
                           .memorySize = 0x40,
                           .fileSize = 0x20};
    macho::LoaderInfo loader{.command = {.kind = macho::kLoaderInfoOnly, .size = sizeof loader}};
    macho::SymbolTable symbols{.command = {.kind = macho::kSymbolTable, .size = sizeof symbols}};
    macho::Library library{.command = {.kind = macho::kLibrary, .size = sizeof library + 8}, .name = sizeof library};
    char libraryName[8] = "libs";
    macho::BuildVersion version{.command = {.kind = macho::kBuildVersion, .size = sizeof version},
                                .version = 0x000b0000};
    macho::SignatureCommand signature{.command = {.kind = macho::kSignature, .size = sizeof signature}};

    static std::string written() {
        SmallFile small;
        std::string body(sizeof(SmallFile), '\0');
        body += "the bytes of the only segment, 32";
        small.segment.offset = sizeof(SmallFile);
        small.loader.exports = append(body, kExports);
        const macho::Stream texts = append(body, std::string("\0_pow\0_own\0", 11));
        small.symbols.texts = texts.offset, small.symbols.textBytes = texts.size;
        small.symbols.symbols = append(body, bytes(macho::Symbol{.name = 1, .type = 0x01})).offset;
        append(body, bytes(macho::Symbol{.name = 6, .type = 0x0f}));
        small.symbols.count = 2;
        small.signature.bytes = append(body, signatureOf(body.size()));
        body.replace(0, sizeof small, bytes(small));
        return withHash(body, small.signature.bytes.offset);
    }

    // A signature of one page of this size, without the hash of the page, which its last 32 bytes will be.
    static std::string signatureOf(size_t size) {
        constexpr uint32_t kDirectory = 20, kHashes = 44;
        std::string result = bigEndian({0xfade0cc0, kDirectory + kHashes + 32, 1, 0, kDirectory});
        result +=
            bigEndian({0xfade0c02, kHashes + 32, 0x20400, 0x20002, kHashes, 0, 0, 1, static_cast<uint32_t>(size)});
        result += std::string("\x20\2\0\x0c\0\0\0\0", 8); // 32 bytes of SHA-256, pages of 4096 bytes
        return result + std::string(32, '\0');
    }

    static std::string withHash(std::string file, size_t size) {
        return file.replace(file.size() - 32, 32, sha256(std::string_view(file).substr(0, size)));
    }
};

std::string universal(std::initializer_list<uint32_t> processors) {
    std::string file = bigEndian({macho::kUniversalMagic, static_cast<uint32_t>(processors.size())});
    const auto size = static_cast<uint32_t>(SmallFile::written().size());
    uint32_t number = 1;
    for (const uint32_t processor : processors) file += bigEndian({processor, 0, 0x1000 * number++, size, 12});
    for (number = 1; number <= processors.size(); ++number) {
        file.resize(size_t{0x1000} * number);
        file += SmallFile::written();
    }
    return file;
}

TEST(Sha256, GivesThePublishedHashes) { // FIPS 180-4's examples, one and two blocks long
    const auto hex = [](const std::string &text) {
        std::string digits;
        for (const char one : sha256(text)) {
            const auto byte = static_cast<unsigned char>(one);
            (digits += "0123456789abcdef"[byte >> 4]) += "0123456789abcdef"[byte & 15];
        }
        return digits;
    };
    EXPECT_EQ(hex("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(hex("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
}

TEST(MachOImage, HasWhatTheFileSays) {
    const ModuleImage image = readMachO(SmallFile::written());
    EXPECT_EQ(image.format, ModuleFormat::machO);
    EXPECT_EQ(image.processor, macho::kArm64);
    EXPECT_EQ(image.exported, (std::map<std::string, uint64_t>{{"__mod", 0x210}}));
    EXPECT_EQ(image.imported, std::vector<std::string>{"_pow"});
    EXPECT_EQ(image.libraries, std::vector<std::string>{"libs"});
    EXPECT_EQ(image.minimumSystem, "11.0");
    EXPECT_EQ(image.memory.size(), 0x240u);
    EXPECT_EQ(image.text(0x204).substr(0, 9), "bytes of ");
    EXPECT_EQ(image.word32(0x220), 0u); // after the bytes in the file
}

TEST(MachOImage, IsRefusedWhereTheFileIsCut) {
    const std::string whole = SmallFile::written();
    for (size_t size = 0; size < whole.size(); ++size)
        EXPECT_THROW(readMachO(whole.substr(0, size)), std::runtime_error) << size;
}

TEST(MachOImage, IsRefusedWhereTheExportsAreACircle) {
    std::string file = SmallFile::written();
    const size_t tree = file.find(kExports);
    file[tree + 5] = 0; // the first edge leads back to the root
    EXPECT_THROW(readMachO(file), std::runtime_error);
}

TEST(MachOSignature, MatchesOnlyTheBytesThatWereSigned) {
    std::string file = SmallFile::written();
    EXPECT_EQ(signatureFault(readMachO(file)), "");
    file[file.find("only segment")] = 'O';
    EXPECT_EQ(signatureFault(readMachO(file)), "page 0 does not match its hash");
    ModuleImage unsignedImage;
    EXPECT_EQ(signatureFault(unsignedImage), "there is no signature");
}

TEST(UniversalImage, HasOnePartForEachProcessor) {
    EXPECT_EQ(readUniversal(universal({macho::kArm64, macho::kArm64})).size(), 2u);
    EXPECT_THROW(readUniversal(universal({macho::kIntel64})), std::runtime_error); // the part is for another processor
}

} // namespace
} // namespace velm::plugin

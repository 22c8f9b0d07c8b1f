// The contents of built modules, read without loading them: the module of this machine and those of other platforms
// that the environment variable VELM_MODULES lists, separated by colons.
#include "module/host.h"
#include "module/servers.h"
#include "tests/platforms/macho_format.h"
#include "tests/platforms/module_image.h"

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

namespace velm::plugin {
namespace {

#define ONE(Name, server) +1
#define NONE(Name, server)
constexpr size_t kNodes = VELM_SERVERS(ONE, ONE);
constexpr size_t kPanels = VELM_SERVERS(ONE, NONE) + 1; // and that of Render Cam, which is not listed
#undef NONE
#undef ONE

// What a module has for one kind of processor.
struct Part {
    std::string path; // the module
    size_t number;    // an index of what readModule gives
    friend void PrintTo(const Part &part, std::ostream *out) { *out << part.path << ", part " << part.number; }
};

std::vector<std::string> modules() {
    std::vector<std::string> all = {VELM_MODULE_FILE};
    const char *more = std::getenv("VELM_MODULES");
    std::istringstream list(more ? more : "");
    for (std::string path; std::getline(list, path, ':');) all.push_back(path);
    return all;
}

std::vector<Part> parts() {
    std::vector<Part> all;
    for (const std::string &path : modules())
        for (size_t number = 0; number < readModule(path).size(); ++number) all.push_back({path, number});
    return all;
}

std::vector<Part> parts(ModuleFormat format) {
    std::vector<Part> chosen = parts();
    std::erase_if(chosen, [&](const Part &part) { return readModule(part.path)[part.number].format != format; });
    return chosen;
}

std::vector<std::string> macintoshModules() {
    std::vector<std::string> chosen = modules();
    std::erase_if(chosen, [](const std::string &path) { return readModule(path)[0].format != ModuleFormat::machO; });
    return chosen;
}

std::string nameOf(size_t index, const std::string &path) {
    std::string name = std::to_string(index) + "_";
    for (const char c : std::filesystem::path(path).parent_path().filename().string())
        name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name;
}

std::string nameOfPart(const testing::TestParamInfo<Part> &info) { return nameOf(info.index, info.param.path); }
std::string nameOfFile(const testing::TestParamInfo<std::string> &info) { return nameOf(info.index, info.param); }

class BuiltModule : public testing::TestWithParam<Part> {
  protected:
    const ModuleImage image = readModule(GetParam().path).at(GetParam().number);
    const unsigned int size = image.addressSize;
    // The symbols of C have an underscore before their names in Mach-O files.
    std::string descriptorSymbol() const {
        return image.format == ModuleFormat::machO ? "__mod_descrip" : "_mod_descrip";
    }
    uint64_t descriptor() const { return image.exported.at(descriptorSymbol()); }
    // One of the pointers that follow the three words, after the padding that 64-bit pointers need.
    uint64_t pointerOfDescriptor(unsigned int number) const {
        return image.pointer(descriptor() + (size == 8 ? 16 : 12) + number * size);
    }
};

class WindowsModule : public BuiltModule {};
class MacintoshModule : public BuiltModule {};
class MacintoshFile : public testing::TestWithParam<std::string> {};
// If none has been built:
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(WindowsModule);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(MacintoshModule);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(MacintoshFile);

TEST_P(BuiltModule, ExportsOnlyTheUndecoratedDescriptor) {
    ASSERT_EQ(image.exported.size(), 1u);
    EXPECT_EQ(image.exported.begin()->first, descriptorSymbol());
}

TEST_P(BuiltModule, NeedsOnlyLibrariesOfThePlatform) {
    const std::map<ModuleFormat, std::set<std::string>> ofPlatform = {
        {ModuleFormat::elf, {"libc.so.6", "libm.so.6"}},
        {ModuleFormat::pe, {"KERNEL32.dll", "msvcrt.dll"}},
        {ModuleFormat::machO, {"/usr/lib/libSystem.B.dylib"}}};
    EXPECT_FALSE(image.libraries.empty());
    for (const std::string &library : image.libraries)
        EXPECT_TRUE(ofPlatform.at(image.format).contains(library)) << library;
}

TEST_P(BuiltModule, DescriptorHoldsTheWordsThatTheHostChecks) {
    EXPECT_EQ(image.word32(descriptor()), 0x04121994u);
    EXPECT_EQ(image.word32(descriptor() + 4), 3u);
    EXPECT_EQ(image.word32(descriptor() + 8), image.format == ModuleFormat::pe ? 0x300u : 0x400u);
    for (unsigned int number = 0; number < 3; ++number)
        EXPECT_TRUE(image.contains(pointerOfDescriptor(number))) << "pointer " << number;
}

// A record is four pointers without padding: 16 bytes in a 32-bit module, 32 in a 64-bit one.
TEST_P(BuiltModule, TableHasFourPointersForEachServer) {
    uint64_t row = pointerOfDescriptor(2);
    for (size_t record = 0; record < 2 * kNodes; ++record, row += 4 * size) {
        EXPECT_EQ(image.text(image.pointer(row)), record % 2 ? "NodeInterface" : "NodeHandler");
        EXPECT_TRUE(image.text(image.pointer(row + size)).starts_with("Velm ")) << record;
        const uint64_t tags = image.pointer(row + 3 * size);
        EXPECT_EQ(image.word32(tags + size), 0u);
        EXPECT_TRUE(image.text(image.pointer(tags + 2 * size)).starts_with("Velm's Nodes/")) << record;
        EXPECT_EQ(image.word32(tags + 3 * size), 0x70000u);
        EXPECT_EQ(image.pointer(tags + 4 * size), 0u);
    }
    for (unsigned int member = 0; member < 4; ++member) EXPECT_EQ(image.pointer(row + member * size), 0u);
}

// Every list starts with the change notification and the first control: six words of the size of a pointer.
TEST_P(BuiltModule, HintListsHaveWordsOfThePointersSize) {
    size_t lists = 0;
    const uint64_t end = image.base + image.memory.size() - 7 * size;
    for (uint64_t at = image.base; at < end; at += 4) {
        if (image.word32(at) != 0x3D000F01u || image.word32(at + 2 * size) != 0x3D000D03u) continue;
        if (image.pointer(at) != 0x3D000F01u) continue; // the upper half belongs to another word
        ++lists;
        EXPECT_EQ(image.pointer(at + 3 * size), 0x8001u);
        EXPECT_TRUE(image.contains(image.pointer(at + size))) << "the notification";
        const std::string control = image.text(image.pointer(at + 4 * size));
        EXPECT_TRUE(std::isalpha(static_cast<unsigned char>(control.c_str()[0]))) << control;
    }
    EXPECT_EQ(lists, kPanels);
}

TEST_P(BuiltModule, DoesNotContainTheSourceDirectory) {
    EXPECT_EQ(image.file.find(VELM_SOURCE_DIR), std::string::npos);
}

std::string wide(const std::string &text) {
    std::string result;
    for (const char c : text) (result += c) += '\0';
    return result;
}

TEST_P(WindowsModule, HasNoLinkTime) { EXPECT_EQ(image.linkTime, 0u); }

TEST_P(WindowsModule, PropertiesShowTheVersion) {
    constexpr uint32_t kStart = 0xfeef04bd; // signature of the record with the version numbers
    const size_t offset = image.memory.find(std::string("\xbd\x04\xef\xfe", 4));
    ASSERT_NE(offset, std::string::npos);
    ASSERT_EQ(image.word32(image.base + offset), kStart);
    std::istringstream version(VELM_VERSION);
    uint32_t numbers[3];
    char point;
    ASSERT_TRUE(version >> numbers[0] >> point >> numbers[1] >> point >> numbers[2]);
    EXPECT_EQ(image.word32(image.base + offset + 8), numbers[0] << 16 | numbers[1]);
    EXPECT_EQ(image.word32(image.base + offset + 12), numbers[2] << 16);
    EXPECT_NE(image.memory.find(wide("velm.p")), std::string::npos);
    EXPECT_NE(image.memory.find(wide(VELM_VERSION)), std::string::npos);
}

// The module must not expect a symbol that the system's library does not have in its oldest version.
TEST_P(MacintoshModule, ImportsOnlyListedSymbols) {
    std::ifstream file(VELM_SOURCE_DIR "/cmake/toolchains/libSystem.tbd");
    std::string list(std::istreambuf_iterator<char>(file), {});
    for (char &c : list)
        if (c == ',' || c == '[' || c == ']') c = ' ';
    std::istringstream words(list);
    const std::set<std::string> listed(std::istream_iterator<std::string>(words), {});
    EXPECT_FALSE(image.imported.empty());
    for (const std::string &symbol : image.imported) EXPECT_TRUE(listed.contains(symbol)) << symbol;
}

TEST_P(MacintoshModule, RunsOnTheOldestSystemThatIsDocumented) {
    EXPECT_EQ(image.minimumSystem, image.processor == macho::kArm64 ? "11.0" : "10.13");
}

// Apple processors run no unsigned code. Those of Intel need no signature.
TEST_P(MacintoshModule, IsSignedWhereTheProcessorRequiresIt) {
    const bool mayBeUnsigned = image.processor == macho::kIntel64;
    EXPECT_EQ(mayBeUnsigned && image.signature.empty() ? "" : signatureFault(image), "");
}

TEST_P(MacintoshModule, IsABundle) { EXPECT_EQ(recordAt<macho::Header>(image.file, 0).type, macho::kBundle); }

TEST_P(MacintoshFile, HasAPartForEachProcessor) {
    std::vector<uint32_t> processors;
    for (const ModuleImage &image : readModule(GetParam())) processors.push_back(image.processor);
    EXPECT_EQ(processors, (std::vector<uint32_t>{macho::kIntel64, macho::kArm64}));
}

// The version is defined in one file; the changelog is written by hand and has to match it.
TEST(Version, HasAChapterInTheChangelogThatSaysWhatChangesThePicture) {
    std::ifstream file(VELM_SOURCE_DIR "/CHANGELOG.md");
    const std::string text(std::istreambuf_iterator<char>(file), {});
    const size_t chapter = text.find("\n## " VELM_VERSION);
    ASSERT_NE(chapter, std::string::npos);
    const size_t picture = text.find("\n### Changes the picture\n", chapter);
    EXPECT_LT(picture, text.find("\n## ", chapter + 1));
}

INSTANTIATE_TEST_SUITE_P(Of, BuiltModule, testing::ValuesIn(parts()), nameOfPart);
INSTANTIATE_TEST_SUITE_P(Of, WindowsModule, testing::ValuesIn(parts(ModuleFormat::pe)), nameOfPart);
INSTANTIATE_TEST_SUITE_P(Of, MacintoshModule, testing::ValuesIn(parts(ModuleFormat::machO)), nameOfPart);
INSTANTIATE_TEST_SUITE_P(Of, MacintoshFile, testing::ValuesIn(macintoshModules()), nameOfFile);

} // namespace
} // namespace velm::plugin

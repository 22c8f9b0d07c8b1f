// The built module, build/velm.p: it needs only the C library and the maths library, exports one symbol, and brings no
// C++ runtime into the host.
#include "module/host.h"
#include "tests/module/elf_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <memory>

namespace velm::plugin {
namespace {

bool startsWith(const std::string &text, const char *start) { return text.rfind(start, 0) == 0; }

struct CloseFile {
    void operator()(void *file) const { dlclose(file); }
};

TEST(BuiltFile, OpensWithEverySymbolResolvedAndLeadsToItsServers) {
    const std::unique_ptr<void, CloseFile> file(dlopen(VELM_MODULE_FILE, RTLD_NOW | RTLD_LOCAL));
    ASSERT_TRUE(file) << dlerror();
    const auto *descriptor = static_cast<const HostModuleDescriptor *>(dlsym(file.get(), HOST_MODULE_SYMBOL));
    ASSERT_TRUE(descriptor) << dlerror();
    EXPECT_EQ(descriptor->syncWord, static_cast<unsigned int>(kModuleSyncWord));
    ASSERT_TRUE(descriptor->startup);
    EXPECT_NE(descriptor->startup(), nullptr);
    ASSERT_TRUE(descriptor->servers);
    EXPECT_STREQ(descriptor->servers[0].className, HOST_CLASS_NODE_HANDLER);
    descriptor->shutdown(descriptor->startup());
}

TEST(BuiltFile, ShowsTheDescriptorAndNothingElse) {
    std::vector<std::string> shown;
    for (const ElfFile::Symbol &symbol : ElfFile(VELM_MODULE_FILE).dynamicSymbols())
        if (symbol.defined) shown.push_back(symbol.name);
    EXPECT_EQ(shown, std::vector<std::string>{"_mod_descrip"});
}

TEST(BuiltFile, NeedsTheCLibraryAndTheMathsLibraryOnly) {
    for (const std::string &library : ElfFile(VELM_MODULE_FILE).needed())
        EXPECT_TRUE(startsWith(library, "libc.so.") || startsWith(library, "libm.so.") || startsWith(library, "ld-"))
            << library;
}

TEST(BuiltFile, AsksForNothingOfACppRuntimeOrAnUnwinder) {
    // Symbols that the C library adds to every shared object.
    constexpr std::array kOfEveryObject = {"__cxa_finalize", "_ITM_registerTMCloneTable",
                                           "_ITM_deregisterTMCloneTable"};
    constexpr std::array kForeign = {"_Z", "__cxa", "__gxx", "_Unwind", "__gcc", "_ITM"};
    for (const ElfFile::Symbol &symbol : ElfFile(VELM_MODULE_FILE).dynamicSymbols()) {
        const bool common = std::any_of(kOfEveryObject.begin(), kOfEveryObject.end(),
                                        [&](const char *name) { return symbol.name == name; });
        const bool foreign = std::any_of(kForeign.begin(), kForeign.end(),
                                         [&](const char *start) { return startsWith(symbol.name, start); });
        EXPECT_TRUE(common || !foreign) << symbol.name;
    }
}

TEST(BuiltFile, HoldsNoTypeInformationAndNoExceptionTables) {
    const ElfFile file(VELM_MODULE_FILE);
    EXPECT_FALSE(file.hasSection(".gcc_except_table"));
    for (const ElfFile::Symbol &symbol : file.allSymbols())
        for (const char *start : {"_ZTI", "_ZTS", "_ZTV"}) EXPECT_FALSE(startsWith(symbol.name, start)) << symbol.name;
}

TEST(BuiltFile, IsBoundWhenItIsOpenedAndReadOnlyThen) {
    const ElfFile file(VELM_MODULE_FILE);
    EXPECT_TRUE(file.bindsAtOnce());
    EXPECT_TRUE(file.hasReadOnlyRelocations());
}

} // namespace
} // namespace velm::plugin

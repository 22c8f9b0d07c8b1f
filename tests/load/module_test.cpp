// Opening modules, and refusing files that are not valid modules.
#include "host/load/module.h"

#include "host/base/error.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>

namespace velm::host::test {
namespace {

std::string moduleFile(const std::string &name) { return TEST_MODULES "/" + name + ".p"; }

std::string errorOf(const std::string &file) {
    try {
        Module::open(file);
    } catch (const InputError &error) {
        return error.what();
    }
    return "no error";
}

std::string expected(const std::string &file, const std::string &why) {
    return "cannot load the module " + file + ": " + why;
}

struct WrongModule {
    const char *name, *why;
};

class WrongModuleTest : public ::testing::TestWithParam<WrongModule> {};

TEST_P(WrongModuleTest, IsRefusedWithTheReason) {
    const std::string file = moduleFile(GetParam().name);
    EXPECT_EQ(errorOf(file), expected(file, GetParam().why));
}

INSTANTIATE_TEST_SUITE_P(
    Table, WrongModuleTest,
    ::testing::Values(WrongModule{"nowhere", "there is no such file"},
                      WrongModule{"no_descriptor", "it has no module descriptor _mod_descrip"},
                      WrongModule{"sync_word", "its sync word is 0x12345678 instead of 0x4121994"},
                      WrongModule{"version", "its descriptor has version 2 instead of 3"},
                      WrongModule{"platform", "its platform code is 0x300 instead of 0x400 or 0x200"},
                      WrongModule{"refuses", "it refuses to start"},
                      WrongModule{"no_servers", "its descriptor leaves out the startup, the shutdown or the servers"}),
    [](const auto &row) { return std::string(row.param.name); });

// A temporary file with these bytes, removed by the destructor.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string &bytes)
        : path_((std::filesystem::temp_directory_path() / ("velm_module_test_" + std::to_string(getpid()) + ".p"))
                    .string()) {
        std::ofstream(path_, std::ios::binary) << bytes;
    }
    ~TemporaryFile() { std::filesystem::remove(path_); }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    void expectError(const std::string &why) const { EXPECT_EQ(errorOf(path_), expected(path_, why)); }

  private:
    std::string path_;
};

std::string bytesOf(const std::string &file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The good module with its header changed.
template <class Change>
std::string changedHeader(Change change) {
    std::string bytes = bytesOf(moduleFile("good"));
    ElfW(Ehdr) header;
    std::memcpy(&header, bytes.data(), sizeof header);
    change(header);
    std::memcpy(bytes.data(), &header, sizeof header);
    return bytes;
}

TEST(ModuleFile, OtherFilesAreRefused) {
    TemporaryFile("").expectError("it is not a shared object");
    TemporaryFile("This text is not a module. It is longer than the header of a shared object, which has 64 bytes.\n")
        .expectError("it is not a shared object");
    const std::string directory = std::filesystem::temp_directory_path().string();
    EXPECT_EQ(errorOf(directory), expected(directory, "it is a directory"));
    EXPECT_EQ(errorOf("/dev/zero"), expected("/dev/zero", "it is not a regular file"));
    const std::string pipe = directory + "/velm_module_test_" + std::to_string(getpid()) + ".pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(errorOf(pipe), expected(pipe, "it is not a regular file")); // at once, instead of waiting for a writer
    std::filesystem::remove(pipe);
}

TEST(ModuleFile, TruncatedFilesAreRefused) {
    const std::string complete = bytesOf(moduleFile("good"));
    ASSERT_GT(complete.size(), 4096u);
    TemporaryFile(complete.substr(0, 40)).expectError("it was cut short");
    TemporaryFile(complete.substr(0, 100)).expectError("it was cut short");
    TemporaryFile(complete.substr(0, 2000)).expectError("it was cut short");
    TemporaryFile(complete.substr(0, 10)).expectError("it is not a shared object");
}

TEST(ModuleFile, ModulesForOtherMachinesAreRefused) {
    constexpr int kOwn = sizeof(void *) == 8 ? 64 : 32;
    TemporaryFile(changedHeader([](auto &header) { header.e_ident[EI_CLASS] = kOwn == 64 ? ELFCLASS32 : ELFCLASS64; }))
        .expectError("it is a " + std::to_string(96 - kOwn) + "-bit module, and this host a " + std::to_string(kOwn) +
                     "-bit program");
    TemporaryFile(changedHeader([](auto &header) {
        header.e_machine = EM_S390;
    })).expectError("it was built for another kind of machine");
    TemporaryFile(changedHeader([](auto &header) { header.e_type = ET_REL; })).expectError("it is not a shared object");
    TemporaryFile(changedHeader([](auto &header) {
        header.e_ident[EI_CLASS] = 9;
    })).expectError("it is not a shared object");
    TemporaryFile(changedHeader([](auto &header) {
        header.e_phentsize = 7;
    })).expectError("its program headers are damaged");
    TemporaryFile(changedHeader([](auto &header) { header.e_phoff = 1u << 30; })).expectError("it was cut short");
}

// Opens a module a second time, which keeps it in memory, so that its counters can be read after it was unloaded.
class CounterReader {
  public:
    explicit CounterReader(const std::string &name) : library_(dlopen(moduleFile(name).c_str(), RTLD_NOW)) {}
    ~CounterReader() { dlclose(library_); }
    CounterReader(const CounterReader &) = delete;
    CounterReader &operator=(const CounterReader &) = delete;
    int starts() const { return *static_cast<int *>(dlsym(library_, "starts")); }
    int stops() const { return *static_cast<int *>(dlsym(library_, "stops")); }
    void *stoppedWord() const { return *static_cast<void **>(dlsym(library_, "stoppedWord")); }
    void *startWord() const { return dlsym(library_, "starts"); }

  private:
    void *library_;
};

TEST(Module, StartsAndShutsDownOnce) {
    const CounterReader counters("good");
    {
        Module first = Module::open(moduleFile("good"));
        EXPECT_EQ(counters.starts(), 1);
        EXPECT_STREQ(first.servers()->name, "Test");
        EXPECT_EQ(first.descriptor().version, 3u);
        EXPECT_EQ(first.path(), moduleFile("good"));
        Module second = std::move(first);
        Module third = Module::open(moduleFile("unix"));
        third = std::move(second);
        EXPECT_EQ(counters.stops(), 0);
        EXPECT_STREQ(third.servers()->name, "Test");
    }
    EXPECT_EQ(counters.starts(), 1);
    EXPECT_EQ(counters.stops(), 1);
    EXPECT_EQ(counters.stoppedWord(), counters.startWord());
}

TEST(Module, IsShutDownWhenItIsReplaced) {
    const CounterReader counters("unix");
    const int before = counters.stops();
    Module module = Module::open(moduleFile("unix"));
    module = Module::open(moduleFile("good"));
    EXPECT_EQ(counters.stops(), before + 1);
}

TEST(Module, IsNotShutDownIfItRefusesToStart) {
    const CounterReader counters("refuses");
    EXPECT_THROW(Module::open(moduleFile("refuses")), InputError);
    EXPECT_EQ(counters.starts(), 1);
    EXPECT_EQ(counters.stops(), 0);
}

TEST(Module, RelativePathsStartAtTheWorkingDirectory) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(TEST_MODULES);
    EXPECT_EQ(errorOf("good.p"), "no error");
    std::filesystem::current_path(before);
}

TEST(Module, OpensTheModuleOfThisProject) {
    const Module module = Module::open(VELM_MODULE_FILE);
    EXPECT_STREQ(module.servers()->className, HOST_CLASS_NODE_HANDLER);
}

} // namespace
} // namespace velm::host::test

// Level 1: the module as a file that is loaded and unloaded.
#include "host/base/error.h"
#include "host/check/process/check_record.h"
#include "host/check/levels/elf_file.h"
#include "host/check/levels/levels.h"
#include "host/check/watch/process_state.h"
#include "host/check/watch/watch.h"

#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace velm::host {

namespace {

namespace fs = std::filesystem;

constexpr int kReloads = 1000, kFirstReloads = 100;
constexpr std::size_t kLeastGrowth = 8 * (kReloads - kFirstReloads); // bytes: less than the smallest block each time

std::vector<std::string> namesFrom(const std::string &file) {
    const CallScope noted(-1, "loading the module");
    const Module module = Module::open(file);
    return nodeNames(module.servers());
}

// A directory of our own, gone at the end.
class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::string name = (fs::temp_directory_path() / "velm-check-XXXXXX").string();
        if (!mkdtemp(name.data())) throw MachineError("no temporary directory can be made");
        path_ = name;
    }
    ~TemporaryDirectory() {
        std::error_code ignored; // it is only tidying
        fs::remove_all(path_, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;
    const fs::path &path() const { return path_; }

  private:
    fs::path path_;
};

// What is wrong with the module at an odd place; empty when nothing is.
std::string tryPlace(const std::string &file, const fs::path &place, const std::vector<std::string> &expected) {
    fs::create_directories(place.parent_path());
    fs::copy_file(file, place);
    fs::permissions(place, fs::perms::owner_read);
    try {
        if (namesFrom(place.string()) == expected) return {};
        return "it has other servers when it is loaded from " + place.filename().string();
    } catch (const InputError &error) {
        return error.what();
    }
}

std::string tryOddPlaces(const std::string &file) {
    const std::vector<std::string> expected = namesFrom(file);
    const TemporaryDirectory directory;
    for (const char *odd :
         {"with blanks in it/a module.p", "\xc3\xbc\xc3\xa9\xe6\x97\xa5/\xce\xb1.p", "no_ending", "quote'\"$(x)/%s.p"})
        if (std::string wrong = tryPlace(file, directory.path() / odd, expected); !wrong.empty()) return wrong;
    const fs::path absolute = fs::absolute(file);
    fs::current_path(directory.path());
    const bool same = namesFrom(absolute.string()) == expected;
    fs::current_path("/");
    return same ? "" : "it has other servers when the working directory is another";
}

void loadsFromOddPlaces(const CheckTask &task) {
    if (const std::string wrong = tryOddPlaces(task.module); !wrong.empty()) failCheck(wrong);
}

void showsOneSymbol(const CheckTask &task) {
    const ElfSymbols symbols = readSymbols(task.module);
    // The address sanitizer marks whatever a file shows by a symbol of its own.
    const auto other = std::find_if(symbols.shown.begin(), symbols.shown.end(), [](const std::string &name) {
        return name != HOST_MODULE_SYMBOL && !name.starts_with("__odr_asan.");
    });
    if (other != symbols.shown.end())
        warnCheck("it shows more than its descriptor: " + *other + ", of " + std::to_string(symbols.shown.size()));
    constexpr const char *kUsual[] = {"libc.so", "libm.so", "ld-linux", "libgcc_s", "libasan", "libubsan", "libtsan"};
    for (const std::string &library : symbols.needed)
        if (std::none_of(std::begin(kUsual), std::end(kUsual),
                         [&](const char *usual) { return library.starts_with(usual); }))
            warnCheck("it needs " + library + " beside the C library and the maths library");
}

void leavesNoTrace(const CheckTask &task) {
    const Surroundings before = lookAround();
    Surroundings during;
    {
        const CallScope noted(-1, "loading the module");
        const Module module = Module::open(task.module);
        during = lookAround();
    }
    const Surroundings after = lookAround();
    if (during.floatingPoint != before.floatingPoint || after.floatingPoint != before.floatingPoint)
        failCheck("loading or unloading changes the floating-point mode");
    if (const std::string changes = changesBetween(before, during); !changes.empty())
        warnCheck("while it is loaded " + changes);
    if (const std::string changes = changesBetween(before, after); !changes.empty())
        warnCheck("after it was unloaded " + changes);
}

void reloadsWithoutGrowth(const CheckTask &task) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    static_cast<void>(task);
    skipCheck("the sanitizers keep memory of their own for each loading");
#else
    for (int i = 0; i < kFirstReloads; ++i) namesFrom(task.module);
    const Surroundings before = lookAround();
    const std::size_t bytes = mallinfo2().uordblks;
    for (int i = kFirstReloads; i < kReloads; ++i) {
        noteRound(static_cast<std::uint64_t>(i));
        namesFrom(task.module);
    }
    const std::size_t grown = mallinfo2().uordblks;
    if (grown > bytes + kLeastGrowth)
        warnCheck(std::to_string((grown - bytes) / (kReloads - kFirstReloads)) +
                  " bytes are left behind at each loading");
    if (const std::string changes = changesBetween(before, lookAround()); !changes.empty())
        warnCheck("after many loadings " + changes);
#endif
}

constexpr Check kChecks[] = {
    {"file.loads", 1, CheckScope::module, "loads, with all symbols bound, from odd paths", loadsFromOddPlaces},
    {"file.symbols", 1, CheckScope::module, "shows its descriptor only, and needs the C library only", showsOneSymbol},
    {"file.trace", 1, CheckScope::module, "loading and unloading change nothing in the process", leavesNoTrace},
    {"file.reloads", 1, CheckScope::module, "a thousand loadings leave nothing behind", reloadsWithoutGrowth},
};

} // namespace

std::span<const Check> fileChecks() { return kChecks; }

} // namespace velm::host

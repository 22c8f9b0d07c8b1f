// Level 1: the module as a file that is loaded and unloaded.
#include "host/base/error.h"
#include "host/check/levels/elf_file.h"
#include "host/check/levels/levels.h"
#include "host/check/process/check_record.h"
#include "host/check/watch/process_state.h"
#include "host/check/watch/watch.h"

#include <fmt/format.h>
#include <malloc.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

namespace velm::host {

namespace {

namespace fs = std::filesystem;

constexpr int kReloads = 1000, kFirstReloads = 100;
// Growth in bytes that counts as a leak: less than one smallest heap block at each load.
constexpr std::size_t kLeastGrowth = 8 * (kReloads - kFirstReloads);

std::vector<std::string> nodeNamesIn(const std::string &file) {
    const CallScope scope(kModuleItself, "loading the module");
    const Module module = Module::open(file);
    return nodeNames(module.servers());
}

// Loads a copy of the module at another path. Returns what is wrong; empty if nothing is.
std::string tryPath(const std::string &file, const fs::path &path, const std::vector<std::string> &expected) {
    fs::create_directories(path.parent_path());
    fs::copy_file(file, path);
    fs::permissions(path, fs::perms::owner_read);
    try {
        if (nodeNamesIn(path.string()) == expected) return {};
        return "it has other servers when it is loaded from " + path.filename().string();
    } catch (const InputError &error) {
        return error.what();
    }
}

std::string tryUnusualPaths(const std::string &file, const fs::path &directory) {
    const std::vector<std::string> expected = nodeNamesIn(file);
    if (directory.empty()) throw MachineError("cannot create a temporary directory");
    for (const char *path :
         {"with blanks in it/a module.p", "\xc3\xbc\xc3\xa9\xe6\x97\xa5/\xce\xb1.p", "no_ending", "quote'\"$(x)/%s.p"})
        if (std::string wrong = tryPath(file, directory / path, expected); !wrong.empty()) return wrong;
    const fs::path absolute = fs::absolute(file);
    fs::current_path(directory);
    const bool same = nodeNamesIn(absolute.string()) == expected;
    fs::current_path("/");
    return same ? "" : "it has other servers in another working directory";
}

void loadsFromUnusualPaths(const CheckTask &task) {
    if (const std::string wrong = tryUnusualPaths(task.module, task.directory); !wrong.empty()) failCheck(wrong);
}

void exportsOneSymbol(const CheckTask &task) {
    const ElfSymbols symbols = readSymbols(task.module);
    // The address sanitizer adds a symbol of its own for each exported variable.
    const auto other = std::find_if(symbols.exported.begin(), symbols.exported.end(), [](const std::string &name) {
        return name != HOST_MODULE_SYMBOL && !name.starts_with("__odr_asan.");
    });
    if (other != symbols.exported.end())
        warnCheck(
            fmt::format("it exports more than its descriptor: {}, of {} symbols", *other, symbols.exported.size()));
    constexpr const char *kUsual[] = {"libc.so", "libm.so", "ld-linux", "libgcc_s", "libasan", "libubsan", "libtsan"};
    for (const std::string &library : symbols.needed)
        if (std::none_of(std::begin(kUsual), std::end(kUsual),
                         [&](const char *usual) { return library.starts_with(usual); }))
            warnCheck(fmt::format("it needs {} besides the C library and the maths library", library));
}

void leavesNoTrace(const CheckTask &task) {
    const ProcessState before = captureProcessState();
    ProcessState during;
    {
        const CallScope scope(kModuleItself, "loading the module");
        const Module module = Module::open(task.module);
        during = captureProcessState();
    }
    const ProcessState after = captureProcessState();
    if (during.floatingPoint != before.floatingPoint || after.floatingPoint != before.floatingPoint)
        failCheck("loading or unloading changes the floating-point mode");
    if (const std::string changes = describeChanges(before, during); !changes.empty())
        warnCheck("while it is loaded " + changes);
    if (const std::string changes = describeChanges(before, after); !changes.empty())
        warnCheck("after it was unloaded " + changes);
}

void reloadsWithoutGrowth(const CheckTask &task) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    static_cast<void>(task);
    skipCheck("the sanitizers allocate memory of their own for each load");
#else
    for (int i = 0; i < kFirstReloads; ++i) nodeNamesIn(task.module);
    const ProcessState before = captureProcessState();
    const std::size_t bytes = mallinfo2().uordblks;
    for (int i = kFirstReloads; i < kReloads; ++i) {
        noteRound(static_cast<std::uint64_t>(i));
        nodeNamesIn(task.module);
    }
    const std::size_t grown = mallinfo2().uordblks;
    if (grown > bytes + kLeastGrowth)
        warnCheck(fmt::format("{} bytes are leaked at each load", (grown - bytes) / (kReloads - kFirstReloads)));
    if (const std::string changes = describeChanges(before, captureProcessState()); !changes.empty())
        warnCheck("after many loads " + changes);
#endif
}

constexpr Check kChecks[] = {
    {"file.loads", 1, CheckScope::module, "loads with all symbols bound, from unusual paths", loadsFromUnusualPaths},
    {"file.symbols", 1, CheckScope::module, "exports only its descriptor and needs only the C library",
     exportsOneSymbol},
    {"file.trace", 1, CheckScope::module, "loading and unloading change nothing in the process", leavesNoTrace},
    {"file.reloads", 1, CheckScope::module, "a thousand loads leave nothing behind", reloadsWithoutGrowth},
};

} // namespace

std::span<const Check> fileChecks() { return kChecks; }

} // namespace velm::host

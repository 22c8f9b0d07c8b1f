#include "host/check/watch/process_state.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cfenv>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <filesystem>

#if defined(__x86_64__) || defined(__i386__)
#include <xmmintrin.h>
#endif

namespace velm::host {

namespace {

namespace fs = std::filesystem;

std::vector<std::string> openFiles() {
    std::vector<std::string> open;
    std::error_code error;
    for (const auto &entry : fs::directory_iterator("/proc/self/fd", error)) {
        const fs::path target = fs::read_symlink(entry.path(), error);
        // Leaves out the directory that is being read.
        if (!error && !target.string().ends_with("/fd"))
            open.push_back(entry.path().filename().string() + " " + target.string());
    }
    std::sort(open.begin(), open.end());
    return open;
}

int threadCount() {
    std::error_code error;
    int count = 0;
    for ([[maybe_unused]] const auto &entry : fs::directory_iterator("/proc/self/task", error)) ++count;
    return count;
}

std::vector<std::string> signalHandlers() {
    std::vector<std::string> handlers;
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action {};
        if (sigaction(number, nullptr, &action) != 0) continue;
        char text[64];
        std::snprintf(text, sizeof text, "signal %d: %p", number,
                      reinterpret_cast<void *>(action.sa_handler)); // a union with sa_sigaction
        handlers.emplace_back(text);
    }
    return handlers;
}

std::string environmentText() {
    std::string text;
    for (char **entry = environ; entry && *entry; ++entry) text += std::string(*entry) + '\n';
    return text;
}

long writtenTo(int descriptor) {
    struct stat facts {};
    return fstat(descriptor, &facts) == 0 && S_ISREG(facts.st_mode) ? static_cast<long>(facts.st_size) : 0;
}

void addChange(std::string &changes, bool isChanged, const std::string &change) {
    if (isChanged) changes += (changes.empty() ? "" : ", ") + change;
}

// The first entry that only one of the lists has, in parentheses; empty if they are equal.
std::string firstChange(const std::vector<std::string> &before, const std::vector<std::string> &after) {
    std::vector<std::string> differences;
    std::set_symmetric_difference(before.begin(), before.end(), after.begin(), after.end(),
                                  std::back_inserter(differences));
    return differences.empty() ? "" : fmt::format(" ({})", differences.front());
}

} // namespace

unsigned long floatingPointMode() {
    auto mode = static_cast<unsigned long>(std::fegetround());
#if defined(__x86_64__) || defined(__i386__)
    constexpr unsigned int kStatusBits = 0x3f;
    unsigned short classic = 0;
    __asm__ __volatile__("fnstcw %0" : "=m"(classic));
    mode = (_mm_getcsr() & ~kStatusBits) | static_cast<unsigned long>(classic) << 16;
#endif
    return mode;
}

ProcessState captureProcessState() {
    std::fflush(nullptr);
    ProcessState now;
    now.floatingPoint = floatingPointMode();
    now.locale = std::setlocale(LC_ALL, nullptr);
    std::error_code error;
    now.directory = fs::current_path(error).string();
    now.environment = environmentText();
    now.descriptors = openFiles();
    now.signals = signalHandlers();
    now.threads = threadCount();
    now.printed = writtenTo(STDOUT_FILENO) + (isatty(STDERR_FILENO) ? 0 : writtenTo(STDERR_FILENO));
    now.fileMask = umask(0);
    umask(now.fileMask);
    return now;
}

std::string describeChanges(const ProcessState &before, const ProcessState &after) {
    std::string changes;
    addChange(changes, before.locale != after.locale,
              fmt::format("the locale is {} instead of {}", after.locale, before.locale));
    addChange(changes, before.directory != after.directory, "the working directory is " + after.directory);
    addChange(changes, before.environment != after.environment, "the environment variables differ");
    addChange(changes, before.descriptors != after.descriptors,
              "the open files differ" + firstChange(before.descriptors, after.descriptors));
    addChange(changes, before.signals != after.signals,
              "the signal handlers differ" + firstChange(before.signals, after.signals));
    addChange(changes, before.threads != after.threads,
              fmt::format("there are {} threads instead of {}", after.threads, before.threads));
    addChange(changes, before.printed != after.printed,
              std::to_string(after.printed - before.printed) + " bytes were printed");
    addChange(changes, before.fileMask != after.fileMask, "the file mask differs");
    return changes;
}

} // namespace velm::host

#include "host/cli/log_file.h"

#include "host/base/error.h"
#include "host/base/one_line.h"
#include "host/cli/memory_use.h"
#include "host/cli/run.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace velm::host {

namespace {

int openToAppend(const std::string &file) {
    constexpr mode_t kMode = 0666;
    return ::open(file.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY, kMode);
}

// Whether an open file is empty or begins as logs do, with the time. So is anything that is not a regular file, such as
// a terminal.
bool isLog(int opened) {
    constexpr std::string_view kForm = "0000-00-00T00:00:00.000Z  ";
    struct stat found {};
    if (::fstat(opened, &found) != 0 || !S_ISREG(found.st_mode) || found.st_size == 0) return true;
    std::array<char, kForm.size()> start{};
    if (::pread(opened, start.data(), start.size(), 0) != static_cast<ssize_t>(start.size())) return false;
    return std::ranges::equal(start, kForm, [](char character, char expected) {
        return expected == '0' ? std::isdigit(static_cast<unsigned char>(character)) != 0 : character == expected;
    });
}

// False if the line could not be written as a whole, or the file is not a log.
bool append(int opened, std::string_view line) {
    return isLog(opened) && ::write(opened, line.data(), line.size()) == static_cast<ssize_t>(line.size());
}

const char *levelName(LogLevel level) {
    switch (level) {
    case LogLevel::info: return "info";
    case LogLevel::warning: return "warning";
    case LogLevel::error: return "error";
    }
    return "";
}

std::string timeText() {
    using std::chrono::milliseconds, std::chrono::system_clock;
    const auto now = std::chrono::floor<milliseconds>(system_clock::now());
    const auto part = (now.time_since_epoch() % std::chrono::seconds(1)).count();
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(system_clock::to_time_t(now)), part);
}

} // namespace

void LogFile::prepare() const {
    if (file_.empty()) return;
    const int opened = openToAppend(file_);
    if (opened < 0) throw MachineError(fmt::format("cannot write the log \"{}\": {}", file_, std::strerror(errno)));
    const bool canAppend = isLog(opened);
    ::close(opened);
    if (!canAppend) throw UsageError(fmt::format("--log: \"{}\" is not a log", file_));
}

void LogFile::add(LogLevel level, const std::string &message) const {
    if (file_.empty()) return;
    const int opened = openToAppend(file_);
    if (opened < 0) return;
    const std::string line =
        fmt::format("{}  {:<7} {:>9.1f} MiB  {}\n", timeText(), levelName(level), memoryInUse(), onOneLine(message));
    append(opened, line);
    ::close(opened);
}

} // namespace velm::host

#include "host/cli/run.h"

#include "host/base/error.h"
#include "host/base/one_line.h"
#include "host/cli/command_line.h"
#include "host/cli/log_file.h"
#include "host/cli/plain_output.h"
#include "host/cli/progress.h"
#include "host/guard/process_settings.h"
#include "host/render/services/scene_services.h"
#include "host/services/services.h"

#include <fmt/format.h>
#include <functional>
#include <new>
#include <optional>
#include <ostream>

#include <sys/resource.h>

namespace velm::host {

namespace {

// Where errors are reported.
struct ErrorReport {
    std::ostream &err;
    std::string log; // the file of the log; empty: none

    int fail(const std::string &message, int status) const {
        err << "velm: " << onOneLine(message) << '\n';
        if (status != kExitUsage) // the name of the log may be what is wrong
            LogFile(log).add(LogLevel::error, fmt::format("{}; status {}", message, status));
        return status;
    }
};

// The exit status of some work. Prints what the work throws as one line, and gives its status.
int statusOf(const ErrorReport &report, const std::function<int()> &work) {
    try {
        return work();
    } catch (const UsageError &error) {
        return report.fail(std::string(error.what()) + " (see velm --help)", error.status());
    } catch (const InputError &error) {
        return report.fail(error.what(), kExitInput);
    } catch (const std::bad_alloc &) {
        return report.fail("out of memory", kExitMachine);
    } catch (const std::exception &error) {
        return report.fail(error.what(), kExitMachine);
    }
}

void flush(std::ostream &out) {
    out.flush();
    if (!out) throw MachineError("the results could not be written to standard output");
}

int runCommand(const CommandLine &line, std::ostream &out, std::ostream &err) {
    return statusOf({.err = err, .log = line.program.log}, [&] {
        readLimits() = line.program.reading;
        offerNodeServices();
        offerSceneServices();
        std::optional<KeptSettings> settings; // not of checks, which look at what a module changes
        if (line.command->needsModule) settings.emplace();
        const int status = line.command->run(line.program, line.record, out, err);
        flush(out);
        return status;
    });
}

using RunCommand = int(const CommandLine &line, std::ostream &out, std::ostream &err);

int parseAndRun(int argc, const char *const *argv, std::ostream &out, std::ostream &err, RunCommand *runIt) {
    return statusOf({.err = err, .log = {}}, [&] {
        PlainOutput plain(out);
        const std::optional<CommandLine> line = parseCommandLine(argc, argv, plain);
        if (line) return runIt(*line, plain, err);
        flush(plain);
        return int{kExitDone};
    });
}

// Clears a progress bar that is still on the terminal.
void clearProgressBar(std::ostream &err) {
    if (progressStyle(err, false) == ProgressStyle::bar) err << kClearLine;
}

// The status of the module's process when a command has failed and its messages could not be written because the module
// has limited the size of files. The limit holds for the module's process only, so that this one can report it.
constexpr int kMessagesLost = 100;

// The size that files of this process can have, in bytes.
rlim_t fileSizeLimit() {
    rlimit limit{.rlim_cur = RLIM_INFINITY, .rlim_max = RLIM_INFINITY};
    getrlimit(RLIMIT_FSIZE, &limit);
    return limit.rlim_cur;
}

int runCommandGuarded(const CommandLine &line, std::ostream &out, std::ostream &err) {
    if (!line.command->needsModule) return runCommand(line, out, err);
    return statusOf({.err = err, .log = line.program.log}, [&] {
        try {
            const int status = runGuarded(line.program.module, line.program.guard, [&] {
                const rlim_t limit = fileSizeLimit();
                const int own = runCommand(line, out, err);
                const bool lost = own != kExitDone && !err.flush() && fileSizeLimit() != limit;
                return lost ? kMessagesLost : own;
            });
            if (status != kMessagesLost) return status;
            throw ModuleError(fmt::format("{}: the command failed, and its messages could not be written because the "
                                          "module has limited the size of files",
                                          line.program.module));
        } catch (...) {
            clearProgressBar(err);
            throw;
        }
    });
}

} // namespace

int run(int argc, const char *const *argv, std::ostream &out, std::ostream &err) {
    return parseAndRun(argc, argv, out, err, runCommand);
}

int runGuarded(int argc, const char *const *argv, std::ostream &out, std::ostream &err) {
    return parseAndRun(argc, argv, out, err, runCommandGuarded);
}

} // namespace velm::host

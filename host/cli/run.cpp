#include "host/cli/run.h"

#include "host/base/error.h"
#include "host/base/one_line.h"
#include "host/cli/command_line.h"
#include "host/cli/progress.h"
#include "host/render/services/scene_services.h"
#include "host/services/services.h"

#include <functional>
#include <new>
#include <ostream>

namespace velm::host {

namespace {

int fail(std::ostream &err, const std::string &message, int status) {
    err << "velm: " << onOneLine(message) << '\n';
    return status;
}

// The exit status of some work. Prints what the work throws as one line, and gives its status.
int statusOf(std::ostream &err, const std::function<int()> &work) {
    try {
        return work();
    } catch (const UsageError &error) {
        return fail(err, std::string(error.what()) + " (see velm --help)", error.status());
    } catch (const InputError &error) {
        return fail(err, error.what(), kExitInput);
    } catch (const std::bad_alloc &) {
        return fail(err, "out of memory", kExitMachine);
    } catch (const std::exception &error) {
        return fail(err, error.what(), kExitMachine);
    }
}

void flush(std::ostream &out) {
    out.flush();
    if (!out) throw MachineError("the results could not be written to standard output");
}

int runCommand(const CommandLine &line, std::ostream &out, std::ostream &err) {
    return statusOf(err, [&] {
        offerNodeServices();
        offerSceneServices();
        const int status = line.command->run(line.program, line.record, out, err);
        flush(out);
        return status;
    });
}

using RunCommand = int(const CommandLine &line, std::ostream &out, std::ostream &err);

int parseAndRun(int argc, const char *const *argv, std::ostream &out, std::ostream &err, RunCommand *runIt) {
    return statusOf(err, [&] {
        const std::optional<CommandLine> line = parseCommandLine(argc, argv, out);
        if (line) return runIt(*line, out, err);
        flush(out);
        return int{kExitDone};
    });
}

// Clears a progress bar that is still on the terminal.
void clearProgressBar(std::ostream &err) {
    if (progressStyle(err, false) == ProgressStyle::bar) err << kClearLine;
}

int runCommandGuarded(const CommandLine &line, std::ostream &out, std::ostream &err) {
    if (!line.command->needsModule) return runCommand(line, out, err);
    try {
        return runGuarded(line.program.module, line.program.guard, [&] { return runCommand(line, out, err); });
    } catch (...) {
        clearProgressBar(err);
        throw;
    }
}

} // namespace

int run(int argc, const char *const *argv, std::ostream &out, std::ostream &err) {
    return parseAndRun(argc, argv, out, err, runCommand);
}

int runGuarded(int argc, const char *const *argv, std::ostream &out, std::ostream &err) {
    return parseAndRun(argc, argv, out, err, runCommandGuarded);
}

} // namespace velm::host

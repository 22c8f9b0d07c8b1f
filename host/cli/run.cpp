#include "host/cli/run.h"

#include "host/base/error.h"
#include "host/base/one_line.h"
#include "host/cli/commands.h"
#include "host/cli/progress.h"
#include "host/render/services/scene_services.h"
#include "host/services/services.h"

#include <functional>
#include <new>
#include <ostream>

namespace velm::host {

namespace {

int dispatch(const Options &options, std::ostream &out, std::ostream &err) {
    offerNodeServices();
    offerSceneServices();
    if (const auto *nodes = std::get_if<NodesOptions>(&options.command)) return runNodes(options, *nodes, out);
    if (const auto *check = std::get_if<CheckCommandOptions>(&options.command)) return runCheck(options, *check, out);
    if (const auto *show = std::get_if<ShowOptions>(&options.command)) return runShow(options, *show, out);
    if (const auto *compare = std::get_if<CompareOptions>(&options.command)) return runCompare(*compare, out, err);
    if (const auto *pack = std::get_if<PackOptions>(&options.command)) return runPack(options, *pack, out, err);
    if (const auto *unpack = std::get_if<UnpackOptions>(&options.command)) return runUnpack(options, *unpack, out, err);
    return runRender(options, std::get<RenderOptions>(options.command), out, err);
}

int fail(std::ostream &err, const std::string &message, int status) {
    err << "velm: " << onOneLine(message) << '\n';
    return status;
}

// Gives the status of some work, and what it throws as a line and a status.
int toldStatus(std::ostream &err, const std::function<int()> &work) {
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

int runCommand(const Options &options, std::ostream &out, std::ostream &err) {
    return toldStatus(err, [&] {
        const int status = dispatch(options, out, err);
        flush(out);
        return status;
    });
}

bool worksWithModule(const Options &options) {
    return !std::holds_alternative<CheckCommandOptions>(options.command) &&
           !std::holds_alternative<CompareOptions>(options.command);
}

using RunCommand = int(const Options &options, std::ostream &out, std::ostream &err);

int parseAndRun(int argc, const char *const *argv, std::ostream &out, std::ostream &err, RunCommand *runIt) {
    return toldStatus(err, [&] {
        const std::optional<Options> options = parseOptions(argc, argv, out);
        if (options) return runIt(*options, out, err);
        flush(out);
        return int{kExitDone};
    });
}

// A line that was drawn over and over may stand unfinished.
void leaveLine(std::ostream &err) {
    if (progressStyle(err, false) == ProgressStyle::bar) err << kClearLine;
}

int runCommandGuarded(const Options &options, std::ostream &out, std::ostream &err) {
    if (!worksWithModule(options)) return runCommand(options, out, err);
    try {
        return runGuarded(options.module, options.guard, [&] { return runCommand(options, out, err); });
    } catch (...) {
        leaveLine(err);
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

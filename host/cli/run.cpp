#include "host/cli/run.h"

#include "host/cli/commands.h"
#include "host/error.h"
#include "host/render/scene_services.h"

#include <new>
#include <ostream>

namespace velm {

namespace {

int dispatch(const Options &options, std::ostream &out, std::ostream &err) {
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
    err << "velm: " << message << '\n';
    return status;
}

} // namespace

int run(int argc, const char *const *argv, std::ostream &out, std::ostream &err) {
    try {
        const std::optional<Options> options = parseOptions(argc, argv, out);
        const int status = options ? dispatch(*options, out, err) : kExitDone;
        out.flush();
        if (!out) throw MachineError("the results could not be written to standard output");
        return status;
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

} // namespace velm

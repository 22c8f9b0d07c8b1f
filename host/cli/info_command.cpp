// "velm info": what is in a file.
#include "host/cli/commands.h"
#include "host/cli/file_info.h"
#include "host/cli/scene_options.h"
#include "host/graph/listed_module.h"

#include <CLI/CLI.hpp>
#include <ostream>

namespace velm::host {

namespace {

struct InfoOptions : SceneSource {
    std::optional<int> subdivision; // replaces that of all meshes
    bool json = false;
};

void declareOptions(CLI::App &command, ProgramOptions &program, InfoOptions &options) {
    addSceneSource(command, options);
    addSubdivision(command, options.subdivision);
    addReadLimits(command, program.reading);
    command.add_flag("--json", options.json, kJsonHelp);
}

int run(const ProgramOptions &program, const InfoOptions &options, std::ostream &out, std::ostream &) {
    const ListedModule module(program.module);
    const FileInfo info = infoOf(options.scene, searchPath(options.data), options.subdivision, serverList());
    options.json ? printJson(infoJson(info), out) : printInfo(info, out);
    return kExitDone;
}

} // namespace

constinit const Command infoCommand =
    makeCommand<InfoOptions, declareOptions, run>({.name = "info", .help = "Tell what is in a file"});

} // namespace velm::host

// "velm files": the files that a render of a scene reads.
#include "host/base/one_line.h"
#include "host/cli/commands.h"
#include "host/cli/option_types.h"
#include "host/cli/scene_files.h"
#include "host/open/open_file.h"

#include <CLI/CLI.hpp>
#include <ostream>
#include <set>

namespace velm::host {

namespace {

struct FilesOptions : SceneSource {
    bool strict = false;
};

void declareOptions(CLI::App &command, ProgramOptions &program, FilesOptions &options) {
    addSceneSource(command, options);
    addReadLimits(command, program.reading);
    command.add_flag("--strict", options.strict, "Treat missing images as errors");
}

int run(const ProgramOptions &, const FilesOptions &options, std::ostream &out, std::ostream &err) {
    Warnings warnings = printedWarnings(err, options.strict);
    const SceneDescription scene = openFile({.file = options.scene, .path = searchPath(options.data)}).scene;
    std::set<std::string> printed;
    const auto print = [&](const std::string &file) {
        if (printed.insert(file).second) out << onOneLine(file) << '\n';
    };
    print(options.scene);
    for (const SceneFile &file : filesOfScene(scene, warnings)) {
        print(file.file);
        for (const std::string &other : file.others) print(other);
    }
    return kExitDone;
}

} // namespace

constinit const Command filesCommand = makeCommand<FilesOptions, declareOptions, run>(
    {.name = "files", .help = "List the files that a render of a scene reads", .needsModule = false});

} // namespace velm::host

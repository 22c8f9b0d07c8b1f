// "velm merge": pictures that were rendered in parts.
#include "host/base/error.h"
#include "host/cli/commands.h"
#include "host/cli/option_types.h"
#include "host/cli/output_file.h"
#include "host/cli/picture_file_options.h"
#include "host/cli/run.h"
#include "host/image/picture_parts.h"

#include <CLI/CLI.hpp>
#include <ostream>
#include <string>
#include <vector>

namespace velm::host {

namespace {

struct MergeOptions {
    std::vector<std::string> parts;
    std::string output;
    int expected = 0; // number of parts; 0: any
    PictureFileOptions files;
};

void declareMergeOptions(CLI::App &command, ProgramOptions &program, MergeOptions &options) {
    command.add_option("PARTS", options.parts, "The EXR files that velm render --part or --region wrote")
        ->required()
        ->type_name("");
    command.add_option("-o,--output", options.output, "The file of the whole picture")->required()->type_name("FILE");
    declarePictureFileOptions(command, options.files);
    addReadLimits(command, program.reading);
    command.add_option("--expect", options.expected, "How many parts there have to be")
        ->check(CLI::PositiveNumber)
        ->type_name("N");
}

int run(const ProgramOptions &, const MergeOptions &options, std::ostream &, std::ostream &) {
    for (const std::string &part : options.parts) refuseToReplace(options.output, part);
    checkOutputName(options.output);
    const FileSettings files = fileSettings(options.files, options.output);
    prepareOutput(options.output);
    std::vector<PartFile> parts;
    for (const std::string &part : options.parts) parts.push_back(readPart(part));
    const bool isClassic = parts.front().metadata.workflow == workflowText(Workflow::classic);
    checkWorkflow(options.files, isClassic ? Workflow::classic : Workflow::linear);
    const PartFile merged = mergeParts(std::move(parts), options.expected);
    writePicture(merged.picture, options.output, merged.metadata, files);
    return kExitDone;
}

} // namespace

constinit const Command mergeCommand = makeCommand<MergeOptions, declareMergeOptions, run>(
    {.name = "merge", .help = "Put pictures together that were rendered in parts", .needsModule = false});

} // namespace velm::host

// "velm convert": any file that can be rendered, as a scene file.
#include "host/base/error.h"
#include "host/cli/commands.h"
#include "host/cli/output_file.h"
#include "host/cli/scene_options.h"
#include "host/io/files.h"
#include "host/scene/format/write_scene.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fmt/format.h>
#include <ostream>
#include <variant>

namespace velm::host {

namespace {

struct ConvertOptions : CompletionOptions {
    std::string output;
    bool strict = false;
};

void declareOptions(CLI::App &command, ProgramOptions &program, ConvertOptions &options) {
    addSceneSource(command, options);
    command.add_option("OUTPUT", options.output, "The scene file (.json) that is written")->required()->type_name("");
    declareCompletion(command, options);
    addReadLimits(command, program.reading);
    command.add_flag("--strict", options.strict,
                     "Treat warnings, such as of parts of the file that are not read, as errors;\n"
                     "nothing is written then");
}

// UsageError if the new scene would replace the file that it is made from, or a file that it refers to.
void refuseToReplaceFilesOf(const SceneDescription &scene, const std::string &output) {
    refuseToReplace(output, scene.file);
    if (!scene.surfaceFile.empty()) refuseToReplace(output, scene.surfaceFile);
    for (const ObjectDescription &object : scene.objects)
        if (const auto *mesh = std::get_if<MeshFile>(&object.shape)) refuseToReplace(output, mesh->file);
    refuseToReplaceImages(output, scene.images);
}

// The scene that a file in `directory` can hold.
SceneDescription convertedScene(SceneDescription scene, const std::string &input, const std::string &directory) {
    // An image of an object file may have been found in a directory of --data. As an image of the scene itself it is
    // written with its path, so that the new scene does not depend on that option.
    for (ImageDescription &image : scene.images)
        if (image.notFound.empty()) image.objectFile.clear();
    std::error_code error; // for directories that do not exist
    const std::filesystem::path from = std::filesystem::path(input).parent_path();
    const bool isSameDirectory =
        std::filesystem::equivalent(from.empty() ? "." : from, directory.empty() ? "." : directory, error);
    if (!isSameDirectory) scene.schema.clear(); // names a file by its location relative to the old scene
    return scene;
}

int run(const ProgramOptions &, const ConvertOptions &options, std::ostream &out, std::ostream &err) {
    const std::filesystem::path output(options.output);
    if (output.extension() != ".json")
        throw UsageError(fmt::format("cannot write \"{}\": the name of a scene file ends in .json", options.output));
    Warnings warnings = printedWarnings(err, options.strict);
    MeshCache meshes;
    const OpenedFile opened = openCompletable(options, meshes);
    refuseToReplaceFilesOf(opened.scene, options.output);
    const SceneDescription scene = completeFile(opened, meshes, warnings);
    if (const std::string note = additionsNote(opened, scene); !note.empty()) err << "velm: note: " << note << '\n';
    const std::string directory = output.parent_path().string();
    writeFileAtomically(options.output, writeScene(convertedScene(scene, options.scene, directory), directory));
    out << options.output << '\n';
    return kExitDone;
}

} // namespace

constinit const Command convertCommand = makeCommand<ConvertOptions, declareOptions, run>(
    {.name = "convert", .help = "Write a file as a scene (JSON), for editing", .needsModule = false});

} // namespace velm::host

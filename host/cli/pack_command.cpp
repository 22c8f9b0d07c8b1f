// "velm pack" and "velm unpack": networks between scene files and object files.
#include "host/base/names.h"
#include "host/base/one_line.h"
#include "host/cli/commands.h"
#include "host/cli/option_types.h"
#include "host/cli/output_file.h"
#include "host/graph/listed_module.h"
#include "host/io/files.h"
#include "host/scene/convert/object_surfaces.h"
#include "host/scene/convert/write_surfaces.h"
#include "host/scene/read_scene.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fmt/format.h>
#include <ostream>

namespace velm::host {

namespace {

struct PackOptions {
    std::string scene, object;
    std::string output; // empty: the object's name with "_packed", in the current directory
    std::vector<std::string> data;
    bool strict = false; // warnings are errors
};

struct UnpackOptions {
    std::string object;
    std::string output; // empty: standard output
    std::vector<std::string> data;
    bool textures = false; // print nodes for the surfaces' textures
    bool strict = false;
};

void declarePack(CLI::App &command, ProgramOptions &program, PackOptions &options) {
    command.add_option("SCENE", options.scene, "The scene file whose surfaces are packed")->required()->type_name("");
    command.add_option("OBJECT", options.object, "The object file (.lwo) that is copied")->required()->type_name("");
    command
        .add_option("-o,--output", options.output,
                    "The new object file. Default: the object's name with _packed, in the current\n"
                    "directory")
        ->type_name("FILE");
    addData(command, options.data);
    addReadLimits(command, program.reading);
    command.add_flag("--strict", options.strict, "Treat warnings as errors");
}

void declareUnpack(CLI::App &command, ProgramOptions &program, UnpackOptions &options) {
    command.add_option("OBJECT", options.object, "The object file (.lwo)")->required()->type_name("");
    command.add_option("-o,--output", options.output, "The scene file; printed by default")->type_name("FILE");
    addData(command, options.data);
    command.add_flag("--textures", options.textures, "Also print nodes that compute the surfaces' texture layers");
    addReadLimits(command, program.reading);
    command.add_flag("--strict", options.strict,
                     "Treat warnings, such as of a node whose server is missing, as errors");
}

std::string packedName(const std::string &object) {
    const std::filesystem::path path(object);
    return path.stem().string() + "_packed" + path.extension().string();
}

std::string countText(std::size_t count, const char *what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

void tell(const PackedSurface &surface, std::ostream &out) {
    const char *change = surface.isNew ? ", a new surface" : surface.isUnchanged ? ", as it was" : "";
    out << fmt::format("{}: {}, {}{}\n", onOneLine(surface.name), countText(surface.nodes, "node"),
                       countText(surface.bytes, "byte"), change);
}

// Warns of the envelopes that the scene file will not have. `textures`: it has the nodes of the texture layers.
void warnOfAnimated(const ObjectFile &object, bool textures, Warnings &warnings) {
    for (const UnsetEnvelope &envelope : surfacesOf(object).animated) {
        if (textures && envelope.isInNetwork) continue;
        warnings.add({.location = {.file = object.name(), .line = 0},
                      .path = "",
                      .brief = "envelopes of surfaces",
                      .message = envelope.what + " has an envelope, which is not read; what it is without it counts"});
    }
}

int runPack(const ProgramOptions &program, const PackOptions &pack, std::ostream &out, std::ostream &err) {
    const std::string output = pack.output.empty() ? packedName(pack.object) : pack.output;
    refuseToReplace(output, pack.scene); // replacing the object is fine: the new one contains everything it had
    Warnings warnings = printedWarnings(err, pack.strict);
    SceneDescription scene = readSurfaces(pack.scene, searchPath(pack.data));
    refuseToReplaceImages(output, scene.images);
    // Nodes save the file names of images, which have to be valid wherever the object is.
    for (ImageDescription &image : scene.images) image.file = std::filesystem::absolute(image.file).string();
    ObjectFile object(readFile(pack.object), pack.object);
    const ListedModule module(program.module);
    const SceneSurfaces built(scene, serverList(), &warnings);
    const DefaultSettings usual(serverList());
    for (const PackedSurface &surface : packSurfaces(object, scene, built, usual)) tell(surface, out);
    writeFileAtomically(output, object.write());
    out << output << '\n';
    return kExitDone;
}

int runUnpack(const ProgramOptions &program, const UnpackOptions &unpack, std::ostream &out, std::ostream &err) {
    refuseToReplace(unpack.output, unpack.object);
    Warnings warnings = printedWarnings(err, unpack.strict);
    const ObjectFile object(readFile(unpack.object), unpack.object);
    warnOfAnimated(object, unpack.textures, warnings);
    const SearchPath path = searchPath(unpack.data);
    refuseToReplaceImages(unpack.output, imagesOf(object, path));
    UnpackedSurfaces unpacked;
    {
        const ListedModule module(program.module);
        unpacked = unpackSurfaces(object, path, serverList(), warnings,
                                  unpack.textures ? UnpackTextures::yes : UnpackTextures::no);
    }
    // What the settings cannot express is added as data; where that is not enough, the settings are dropped and the
    // data remains. Each turn only removes settings, so that the loop ends.
    for (bool changed = true; changed;) {
        const ListedModule module(program.module);
        changed = completeUnpacked(unpacked, serverList());
    }
    refuseToReplaceImages(unpack.output, unpacked.images); // those that nodes name are among them
    const std::string scene = writeSurfaces(unpacked.images, unpacked.surfaces);
    if (unpack.output.empty())
        out << scene;
    else
        writeFileAtomically(unpack.output, scene);
    return kExitDone;
}

} // namespace

constinit const Command packCommand = makeCommand<PackOptions, declarePack, runPack>(
    {.name = "pack", .help = "Write a scene's networks into a copy of an object file"});

constinit const Command unpackCommand = makeCommand<UnpackOptions, declareUnpack, runUnpack>(
    {.name = "unpack", .help = "Print the networks of an object file as a scene file"});

} // namespace velm::host

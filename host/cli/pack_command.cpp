// "velm pack" and "velm unpack": networks between scene files and object files.
#include "host/base/names.h"
#include "host/base/one_line.h"
#include "host/cli/commands.h"
#include "host/cli/listed_module.h"
#include "host/cli/output_file.h"
#include "host/cli/run.h"
#include "host/io/files.h"
#include "host/scene/convert/object_surfaces.h"
#include "host/scene/convert/write_surfaces.h"
#include "host/scene/read_scene.h"

#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <ostream>

namespace velm::host {

namespace {

Warnings warningsOn(std::ostream &err, bool strict) {
    return Warnings(strict ? Warnings::Policy::strict : Warnings::Policy::goOn,
                    [&err](const Warning &warning) { err << "velm: warning: " << warning.text() << '\n'; });
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

void warnOfAnimated(const ObjectFile &object, Warnings &warnings) {
    std::vector<std::string> animated;
    surfacesOf(object, &animated);
    for (const std::string &what : animated)
        warnings.add({.location = {.file = object.name(), .line = 0},
                      .path = "",
                      .brief = "envelopes of surfaces",
                      .message = what + " has an envelope, which is not read; what it is without it counts"});
}

} // namespace

int runPack(const Options &options, const PackOptions &pack, std::ostream &out, std::ostream &err) {
    const std::string output = pack.output.empty() ? packedName(pack.object) : pack.output;
    refuseToReplace(output, pack.scene); // the object may be replaced: all that it has is in the new one
    Warnings warnings = warningsOn(err, pack.strict);
    SceneDescription scene = readSurfaces(pack.scene, makeSearchPath(pack.data, std::getenv("VELM_DATA")));
    // Nodes keep the names of images, which are to be found from wherever the object is.
    for (ImageDescription &image : scene.images) image.file = std::filesystem::absolute(image.file).string();
    ObjectFile object(readFile(pack.object), pack.object);
    const ListedModule module(options.module);
    const SceneSurfaces built(scene, serverList(), &warnings);
    const DefaultSettings usual(serverList());
    for (const PackedSurface &surface : packSurfaces(object, scene, built, usual)) tell(surface, out);
    writeFileAtomically(output, object.write());
    out << output << '\n';
    return kExitDone;
}

int runUnpack(const Options &options, const UnpackOptions &unpack, std::ostream &out, std::ostream &err) {
    refuseToReplace(unpack.output, unpack.object);
    Warnings warnings = warningsOn(err, unpack.strict);
    const ObjectFile object(readFile(unpack.object), unpack.object);
    warnOfAnimated(object, warnings);
    UnpackedSurfaces unpacked;
    {
        const ListedModule module(options.module);
        const SearchPath path = makeSearchPath(unpack.data, std::getenv("VELM_DATA"));
        unpacked = unpackSurfaces(object, path, serverList(), warnings);
    }
    // What settings do not tell comes as data, and where that is not enough, as data alone. Each turn can only take
    // something away, so that the last one finds nothing to do.
    for (bool changed = true; changed;) {
        const ListedModule module(options.module);
        changed = completeUnpacked(unpacked, serverList());
    }
    const std::string scene = writeSurfaces(unpacked.images, unpacked.surfaces);
    if (unpack.output.empty())
        out << scene;
    else
        writeFileAtomically(unpack.output, scene);
    return kExitDone;
}

} // namespace velm::host

#include "host/open/file_reader.h"

#include "host/base/error.h"
#include "host/lws/scene_record.h"
#include "host/open/material_surfaces.h"
#include "host/open/mesh_scene.h"
#include "host/render/geometry/mesh_formats.h"
#include "host/render/motion/pose.h"
#include "host/scene/lws_scene.h"
#include "host/scene/own_surfaces.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <vector>

namespace velm::host {

namespace {

constexpr int kSamples = 8; // of a pixel, where the file does not say

bool isJson(const FileReader &, const FileEnds &file) {
    const std::size_t first = file.head.find_first_not_of(" \t\r\n");
    return first != std::string::npos && file.head[first] == '{';
}

SceneDescription readJson(const ReadRequest &request) {
    return readScene(request.file, request.path, request.overrides, request.cameras);
}

// A scene of one object, without cameras, lights and surfaces.
SceneDescription readBareObject(const ReadRequest &request) {
    SceneDescription scene;
    scene.file = request.file;
    scene.name = std::filesystem::path(request.file).stem().string();
    scene.render.samples = kSamples;
    ObjectDescription &object = scene.objects.emplace_back();
    object.name = scene.name;
    object.shape = MeshFile{request.file};
    object.location.file = request.file;
    if (request.reader.isZUp) object.rotation = {0, 90, 0}; // +Z of the file to +Y, and -Y to -Z
    return scene;
}

SceneDescription readMeshFile(const ReadRequest &request) {
    SceneDescription scene = readBareObject(request);
    ObjectDescription &object = scene.objects.front();
    const Mesh &mesh = request.meshes.get(object.shape, poseAt(scene, startTime(scene.render)).ofMesh(0));
    addMaterialSurfaces(mesh, request.path, object, scene);
    addCamerasAndLights(mesh, scene);
    return scene;
}

SceneDescription readObjectFile(const ReadRequest &request) {
    SceneDescription scene = readBareObject(request);
    addOwnSurfaces(request.path, scene);
    return scene;
}

bool isLightWaveScene(const FileReader &, const FileEnds &file) { return lws::isScene(file.head); }

SceneDescription readLightWaveScene(const ReadRequest &request) {
    return readLwsScene(request.file, request.path, request.warnings);
}

bool isMesh(const FileReader &reader, const FileEnds &file) {
    const MeshFormat *format = meshFormatOf(file);
    return format && std::string_view(format->ending) == reader.ending;
}

// Of mesh formats: those whose unit is the metre, and those whose +Z is up. STL files do not say what is up; programs
// for solids agree on +Z.
constexpr std::string_view kMetric[] = {"glb", "gltf"};
constexpr std::string_view kZUp[] = {"stl"};

// Kinds of file that bring more than a mesh come first; all other formats of meshes follow.
std::vector<FileReader> makeReaders() {
    std::vector<FileReader> readers = {{.name = "scene (JSON)",
                                        .ending = "json",
                                        .recognises = isJson,
                                        .read = readJson,
                                        .isScene = true,
                                        .isComplete = true,
                                        .isMetric = true},
                                       {.name = "LightWave scene",
                                        .ending = "lws",
                                        .recognises = isLightWaveScene,
                                        .read = readLightWaveScene,
                                        .isScene = true,
                                        .isMetric = true,
                                        .workflow = Workflow::classic},
                                       {.name = "LWO",
                                        .ending = "lwo",
                                        .recognises = isMesh,
                                        .read = readObjectFile,
                                        .isMetric = true,
                                        .workflow = Workflow::classic}};
    for (const MeshFormat *format : allMeshFormats()) {
        const std::string_view ending = format->ending;
        if (std::ranges::count(readers, ending, &FileReader::ending) > 0) continue;
        readers.push_back({.name = format->name,
                           .ending = format->ending,
                           .recognises = isMesh,
                           .read = readMeshFile,
                           .isMetric = std::ranges::count(kMetric, ending) > 0,
                           .isZUp = std::ranges::count(kZUp, ending) > 0});
    }
    return readers;
}

} // namespace

std::span<const FileReader> fileReaders() {
    static const std::vector<FileReader> readers = makeReaders();
    return readers;
}

std::string readableKinds() {
    std::vector<std::string> names;
    for (const FileReader &reader : fileReaders()) names.emplace_back(reader.name);
    return fmt::format("{}", fmt::join(names, ", "));
}

const FileReader &readerOf(const std::string &file) {
    const FileEnds ends = readFileEnds(file);
    std::string ending = std::filesystem::path(file).extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char letter) { return std::tolower(letter); });
    const FileReader *byContents = nullptr, *byName = nullptr;
    for (const FileReader &reader : fileReaders()) {
        const bool fitsContents = ends.size > 0 && reader.recognises(reader, ends);
        const bool fitsName = ending == fmt::format(".{}", reader.ending);
        if (fitsContents && fitsName) return reader;
        if (fitsContents) byContents = &reader; // of several, the last is the most special: glTF is JSON, too
        if (fitsName && !byName) byName = &reader;
    }
    if (byContents) return *byContents;
    if (byName) return *byName;
    throw InputError({.file = file},
                     fmt::format("{}; these kinds of file are read: {}",
                                 ends.size == 0 ? "the file is empty" : "the file is of no kind that is read",
                                 readableKinds()));
}

} // namespace velm::host

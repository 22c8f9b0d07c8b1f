#include "host/session/session.h"

#include "host/base/names.h"
#include "host/open/open_file.h"
#include "host/panel/settings.h"
#include "host/render/scene/render_scene_data.h"
#include "host/scene/format/write_scene.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace velm::host {

namespace {

// Warns of what was left out of the mesh files, or is drawn differently.
void warnOfMeshes(const RenderSceneData &scene, Warnings &warnings) {
    for (const RenderObject &object : scene.objects) {
        const auto *file = std::get_if<MeshFile>(&object.shape);
        if (!file) continue;
        for (const MeshWarning &warning : object.mesh->warnings)
            if (!warning.isBesideMesh)
                warnings.add(
                    {.location = {.file = file->file}, .path = "", .brief = warning.brief, .message = warning.message});
    }
}

// Warns of what was left out of the surfaces of object files.
void warnOfSurfaces(const SceneDescription &scene, Warnings &warnings) {
    for (const ReadingNote &note : scene.notes)
        warnings.add({.location = {.file = note.file}, .path = "", .brief = note.brief, .message = note.message});
}

HostPanel &panelFor(HostNode &node, const NodePath &path) {
    HostPanel *panel = panelOf(node);
    if (!panel) throw InputError(fmt::format("the node {} has no panel", inQuotes(path.text())));
    return *panel;
}

} // namespace

SceneDescription openDescription(const std::string &file, const SearchPath &path) {
    return openFile({.file = file, .path = path}).scene;
}

Session::Session(SceneDescription scene, Warnings &warnings, MeshCache *meshes)
    : scene_(std::move(scene)), warnings_(warnings), renderScene_(scene_, meshes),
      surfaces_(scene_, serverList(), &warnings) {
    warnOfMeshes(renderScene_.data(), warnings);
    warnOfSurfaces(scene_, warnings);
    renderScene_.prepare(scene_, [this](const std::string &name) { return surfaces_.surface(name); });
}

Session::~Session() = default;

Surface &Session::surface(const std::string &name) const {
    if (Surface *found = surfaces_.surface(name)) return *found;
    std::vector<std::string> known;
    for (const SurfaceDescription &one : scene_.surfaces) known.push_back(one.name);
    throw InputError(fmt::format("there is no surface {}{}", inQuotes(name), suggestion(name, known)));
}

Network &Session::network(const NetworkPath &path) const { return networkAt(surface(path.surface), path); }

HostNode &Session::node(const NodePath &path) const { return nodeAt(surface(path.network.surface), path); }

// ---- Networks ----

void Session::setSetting(const NodePath &path, const std::string &label, const SettingValue &value) {
    applySetting(panelFor(node(path), path), {.label = label, .value = value, .location = {}});
    changed_.insert(path.network.surface);
}

SettingValue Session::setting(const NodePath &path, const std::string &label) const {
    return readSetting(panelFor(node(path), path), label);
}

void Session::setSurfaceValue(const std::string &surfaceName, const std::string &name, const SettingValue &value) {
    surface(surfaceName).setDefault(name, value);
    changed_.insert(surfaceName);
}

std::string Session::addNode(const NetworkPath &path, const std::string &server, const std::string &name) {
    const HostNode &added = network(path).addNode(serverList().get(server), name);
    changed_.insert(path.surface);
    return added.name;
}

void Session::removeNode(const NodePath &path) {
    network(path.network).destroyNode(node(path));
    changed_.insert(path.network.surface);
}

std::string Session::renameNode(const NodePath &path, const std::string &name) {
    HostNode &renamed = node(path);
    network(path.network).rename(renamed, name);
    changed_.insert(path.network.surface);
    return renamed.name;
}

void Session::connect(const NodePath &from, const std::string &output, const NodePath &to, const std::string &input) {
    network(to.network).connect(from.node, output, to.node, input);
    changed_.insert(to.network.surface);
}

void Session::disconnect(const NodePath &to, const std::string &input) {
    HostNode &fed = node(to);
    HostInput *found = fed.findInput(input);
    if (!found) {
        std::vector<std::string> known;
        for (const auto &one : fed.inputs) known.push_back(one->name);
        throw InputError(fmt::format("the node {} has no input {}{}", inQuotes(to.text()), inQuotes(input),
                                     suggestion(input, known)));
    }
    network(to.network).disconnect(*found);
    changed_.insert(to.network.surface);
}

// ---- Scene ----

SceneWork Session::apply(SceneDescription changed) {
    if (changed.render.workflow != scene_.render.workflow)
        throw InputError("the workflow of an open scene cannot be changed, since its images have been read for it");
    const auto surfaceOf = [this](const std::string &name) { return surfaces_.surface(name); };
    const SceneWork update = renderScene_.update(changed, surfaceOf);
    try {
        warnOfMeshes(renderScene_.data(), warnings_);
    } catch (const InputError &) { // under the strict policy
        renderScene_.update(scene_, surfaceOf);
        throw;
    }
    scene_ = std::move(changed);
    return update;
}

void Session::showFrame(int frame) {
    Warnings found(Warnings::Policy::goOn); // a strict one would throw before the panoramas are renewed
    surfaces_.showFrame(frame, found);
    renderScene_.renewPanoramas();
    for (const Warning &warning : found.all()) warnings_.add(warning);
}

void Session::setTime(double time) {
    renderScene_.setTime(scene_, time, [this](const std::string &name) { return surfaces_.surface(name); });
}

SceneDescription Session::describe() const {
    SceneDescription described = scene_;
    const DefaultSettings defaults(serverList());
    for (SurfaceDescription &surface : described.surfaces) {
        if (!changed_.contains(surface.name)) continue;
        SurfaceDescription now = describeSurface(*surfaces_.surface(surface.name), defaults);
        surface.settings = std::move(now.settings);
        surface.network = std::move(now.network);
        surface.saved = {};
    }
    return described;
}

std::string Session::write(const std::string &directory) const { return writeScene(describe(), directory); }

} // namespace velm::host

#include "host/scene/build_scene.h"

#include "host/image/image.h"
#include "host/panel/settings.h"

#include <fmt/format.h>
#include <utility>

namespace velm {

namespace {

// A setting that still waits to be made; `node` is null for one of the surface itself.
struct PendingSetting {
    Surface *surface;
    HostNode *node;
    const SettingDescription *setting;
};

// What is said without a place gets the one where it was asked for.
template <class Action>
void atPlace(const Place &place, Action action) {
    try {
        action();
    } catch (const InputError &error) {
        throw InputError(place, error.what());
    }
}

void apply(const PendingSetting &pending) {
    if (!pending.node) {
        pending.surface->setDefault(*pending.setting);
        return;
    }
    HostPanel *panel = nullptr;
    atPlace(pending.setting->place, [&] { panel = panelOf(*pending.node); });
    if (!panel)
        throw InputError(pending.setting->place,
                         fmt::format("the node \"{}\" has no panel, and so no settings", pending.node->name));
    applySetting(*panel, *pending.setting);
}

// A popup may list what another node's setting names, perhaps in a later surface: what fails is tried again as long as
// others succeed.
void applyAll(std::vector<PendingSetting> pending) {
    while (!pending.empty()) {
        std::vector<PendingSetting> failed;
        std::string firstMessage;
        for (const PendingSetting &one : pending) {
            try {
                apply(one);
            } catch (const InputError &error) {
                if (failed.empty()) firstMessage = error.what();
                failed.push_back(one);
            }
        }
        if (failed.size() == pending.size()) throw InputError(firstMessage);
        pending = std::move(failed);
    }
}

void makeNodes(const SurfaceDescription &description, Surface &surface, ServerList &servers,
               std::vector<PendingSetting> &settings) {
    for (const SettingDescription &setting : description.settings)
        settings.push_back({.surface = &surface, .node = nullptr, .setting = &setting});
    for (const NodeDescription &node : description.nodes) {
        HostNode *made = nullptr;
        atPlace(node.place, [&] { made = &surface.editor().addNode(servers.get(node.server), node.name); });
        for (const SettingDescription &setting : node.settings)
            settings.push_back({.surface = &surface, .node = made, .setting = &setting});
    }
}

void connectNodes(const SurfaceDescription &description, Surface &surface) {
    for (const ConnectionDescription &connection : description.connections)
        atPlace(connection.place, [&] {
            surface.editor().connect(connection.fromNode, connection.output, connection.toNode, connection.input);
        });
}

} // namespace

BuiltScene::Images::~Images() { ImageList::instance().clear(); }

BuiltScene::BuiltScene(const SceneDescription &scene, ServerList &servers) {
    for (const ImageDescription &image : scene.images)
        atPlace(image.place, [&] { ImageList::instance().load(image.file, image.name); });
    std::vector<PendingSetting> settings;
    for (const SurfaceDescription &description : scene.surfaces) {
        surfaces_.push_back(std::make_unique<Surface>(description.name));
        makeNodes(description, *surfaces_.back(), servers, settings);
    }
    applyAll(std::move(settings));
    for (std::size_t i = 0; i < surfaces_.size(); ++i) connectNodes(scene.surfaces[i], *surfaces_[i]);
}

BuiltScene::~BuiltScene() = default;

Surface *BuiltScene::surface(const std::string &name) const {
    for (const auto &surface : surfaces_)
        if (surface->name() == name) return surface.get();
    return nullptr;
}

void BuiltScene::init(int mode) {
    for (std::size_t done = 0; done < surfaces_.size(); ++done) {
        try {
            surfaces_[done]->init(mode);
        } catch (...) {
            for (std::size_t i = 0; i < done; ++i) surfaces_[i]->cleanup();
            throw;
        }
    }
}

void BuiltScene::newTime(int frame, double time) {
    for (const auto &surface : surfaces_) surface->newTime(frame, time);
}

void BuiltScene::cleanup() {
    for (const auto &surface : surfaces_) surface->cleanup();
}

} // namespace velm

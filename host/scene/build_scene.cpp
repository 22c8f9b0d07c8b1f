#include "host/scene/build_scene.h"

#include "host/image/image.h"
#include "host/panel/settings.h"

#include <algorithm>
#include <fmt/format.h>
#include <functional>
#include <utility>

namespace velm {

namespace {

// A setting that still waits to be made, on its panel.
struct PendingSetting {
    HostPanel *panel;
    const SettingDescription *setting;
};

// A network whose nodes are there; its connections wait until everything is set.
struct PendingConnections {
    HostNodeEditor *editor;
    const std::vector<ConnectionDescription> *connections;
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

// True for a popup whose entries the node makes up at run time: perhaps of what other nodes' settings name.
bool listsAtRunTime(const PendingSetting &pending) {
    const HostPanel &panel = *pending.panel;
    return std::ranges::any_of(panel.controls(), [&](unsigned int id) {
        const PanelItem &control = *panel.find(id);
        return control.popupCount && panel.uniqueLabel(control) == pending.setting->label;
    });
}

// What makes names goes before what chooses among them, in whichever surface or network either stands.
void applyAll(std::vector<PendingSetting> settings) {
    std::ranges::stable_partition(settings, std::not_fn(listsAtRunTime));
    for (const PendingSetting &one : settings) applySetting(*one.panel, *one.setting);
}

class NetworkBuilder {
  public:
    explicit NetworkBuilder(ServerList &servers) : servers_(servers) {}

    // Makes the nodes of a network, and of those inside them; notes what is to be set and connected.
    void makeNodes(const NetworkDescription &network, HostNodeEditor &editor) {
        connections_.push_back({.editor = &editor, .connections = &network.connections});
        for (const NodeDescription &node : network.nodes) {
            HostNode *made = nullptr;
            atPlace(node.place, [&] { made = &editor.addNode(servers_.get(node.server), node.name); });
            noteSettings(node.settings, *made);
            for (const NetworkDescription &inside : node.network) makeNodes(inside, networkInside(*made, inside.place));
        }
    }

    void noteSettings(const std::vector<SettingDescription> &settings, HostNode &node) {
        for (const SettingDescription &setting : settings) {
            HostPanel *panel = nullptr;
            atPlace(setting.place, [&] { panel = panelOf(node); });
            if (!panel)
                throw InputError(setting.place,
                                 fmt::format("the node \"{}\" has no panel, and so no settings", node.name));
            settings_.push_back({.panel = panel, .setting = &setting});
        }
    }

    void setAndConnect() {
        applyAll(std::move(settings_));
        for (const auto &[editor, connections] : connections_) {
            for (const ConnectionDescription &one : *connections)
                atPlace(one.place, [&] { editor->connect(one.fromNode, one.output, one.toNode, one.input); });
            editor->rename(editor->root(), editor->name());
        }
    }

  private:
    // Its root is called after the node until all is connected, as the root of a surface is after the surface: that is
    // its name in scene files. In the host's own files it has its editor's.
    static HostNodeEditor &networkInside(HostNode &node, const Place &place) {
        if (node.nested.empty())
            throw InputError(place, fmt::format("the node \"{}\" holds no network; its kind is \"{}\"", node.name,
                                                node.server->name()));
        if (node.nested.size() > 1)
            throw InputError(place,
                             fmt::format("the node \"{}\" holds {} networks, of which none can be told from here",
                                         node.name, node.nested.size()));
        HostNodeEditor &inside = *node.nested.front();
        inside.rename(inside.root(), node.name);
        return inside;
    }

    ServerList &servers_;
    std::vector<PendingSetting> settings_;
    std::vector<PendingConnections> connections_;
};

} // namespace

BuiltScene::Images::~Images() { ImageList::instance().clear(); }

BuiltScene::BuiltScene(const SceneDescription &scene, ServerList &servers) {
    for (const ImageDescription &image : scene.images)
        atPlace(image.place, [&] { ImageList::instance().load(image.file, image.name); });
    NetworkBuilder builder(servers);
    for (const SurfaceDescription &description : scene.surfaces) {
        Surface &surface = *surfaces_.all.emplace_back(std::make_unique<Surface>(description.name));
        builder.noteSettings(description.settings, surface.editor().root());
        builder.makeNodes(description.network, surface.editor());
    }
    builder.setAndConnect();
}

BuiltScene::Surfaces::~Surfaces() {
    while (!all.empty()) all.pop_back();
}

BuiltScene::~BuiltScene() = default;

Surface *BuiltScene::surface(const std::string &name) const {
    for (const auto &surface : surfaces_.all)
        if (surface->name() == name) return surface.get();
    return nullptr;
}

void BuiltScene::init(int mode) {
    for (std::size_t done = 0; done < surfaces_.all.size(); ++done) {
        try {
            surfaces_.all[done]->init(mode);
        } catch (...) {
            for (std::size_t i = 0; i < done; ++i) surfaces_.all[i]->cleanup();
            throw;
        }
    }
}

void BuiltScene::newTime(int frame, double time) {
    for (const auto &surface : surfaces_.all) surface->newTime(frame, time);
}

void BuiltScene::cleanup() {
    for (const auto &surface : surfaces_.all) surface->cleanup();
}

} // namespace velm

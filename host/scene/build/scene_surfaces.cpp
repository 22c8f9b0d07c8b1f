#include "host/scene/build/scene_surfaces.h"

#include "host/base/names.h"
#include "host/image/image.h"
#include "host/panel/settings.h"
#include "host/scene/build/saved_networks.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <unordered_map>
#include <utility>

namespace velm::host {

namespace {

// A setting that is still to be applied to its panel.
struct PendingSetting {
    HostPanel *panel;
    const SettingDescription *setting;
    std::string path; // in the scene file
};

// A network whose nodes exist; they are connected when all settings are applied.
struct PendingConnections {
    Network *network;
    const NetworkDescription *description;
};

// Adds a location to the InputErrors of an action.
template <class Action>
void atLocation(const SourceLocation &location, Action action) {
    try {
        action();
    } catch (const InputError &error) {
        throw InputError(location, error.what());
    }
}

// The control of a setting if it is a popup whose entries the node lists at run time: they may depend on other nodes'
// settings. Null for all other controls.
const PanelItem *dynamicPopup(const PendingSetting &pending) {
    const HostPanel &panel = *pending.panel;
    for (const unsigned int id : panel.controls()) {
        const PanelItem &control = *panel.find(id);
        if (control.popupCount && panel.uniqueLabel(control) == pending.setting->label) return &control;
    }
    return nullptr;
}

// The images of a scene that could not be loaded, and the warnings about them.
class AbsentImages {
  public:
    explicit AbsentImages(Warnings &warnings) : warnings_(warnings) {}

    // Loads the images of the scene; those that cannot be loaded are the absent ones.
    void load(const SceneDescription &scene) {
        for (const ImageDescription &image : scene.images) {
            std::string why = image.notFound;
            try {
                if (why.empty()) load(image);
            } catch (const InputError &error) {
                why = error.what();
            }
            if (!why.empty()) note(image, why);
        }
        const ImageDescription *backdrop =
            scene.backdrop.kind == BackdropDescription::Kind::image ? find(scene.backdrop.image) : nullptr;
        if (backdrop) warnOfUse(*backdrop, scene.backdrop.location, "backdrop.image", "the backdrop stays black");
        for (const LightDescription &light : scene.lights)
            if (const ImageDescription *image = find(light.image))
                warnOfUse(*image, light.location, pathTo(pathTo("lights", light.name), "image"), "the dome stays dark");
    }

    // True when the setting chooses an absent image; adds a warning then.
    bool chosenBy(const PendingSetting &pending) {
        const auto *name = std::get_if<std::string>(&pending.setting->value);
        const ImageDescription *image = name ? find(*name) : nullptr;
        const PanelItem *list = image ? dynamicPopup(pending) : nullptr;
        if (!list || std::ranges::count(pending.panel->entries(*list), *name) > 0) return false;
        warnOfUse(*image, pending.setting->location, pending.path, "the node goes without it");
        return true;
    }

  private:
    static void load(const ImageDescription &image) {
        if (image.sequence)
            ImageList::instance().addSequence(image.file, *image.sequence, image.name, image.filters);
        else
            ImageList::instance().load(image.file, image.name, image.filters);
    }

    static std::string briefly(const ImageDescription &image) {
        return fmt::format("no image {} ({})", inQuotes(image.name), image.file);
    }

    const ImageDescription *find(const std::string &name) const {
        const auto found = absent_.find(name);
        return found == absent_.end() ? nullptr : found->second;
    }

    void note(const ImageDescription &image, const std::string &why) {
        absent_.emplace(image.name, &image);
        ImageList::instance().noteAbsent(image.name);
        const std::string source = image.source.empty() ? "" : "; it comes from " + image.source;
        warnings_.add({.location = image.fileLocation,
                       .path = pathTo(pathTo("images", image.name), "file"),
                       .brief = briefly(image),
                       .message = why + source});
    }

    void warnOfUse(const ImageDescription &image, const SourceLocation &location, const std::string &path,
                   const char *instead) {
        warnings_.add(
            {.location = location,
             .path = path,
             .brief = briefly(image),
             .message = fmt::format("the image {} ({}) is absent; {}", inQuotes(image.name), image.file, instead)});
    }

    Warnings &warnings_;
    std::unordered_map<std::string, const ImageDescription *> absent_; // by name; of the scene, which outlives this
};

// Settings that create names come before those that choose among them, in whichever surface or network they are.
void applyAll(std::vector<PendingSetting> settings, AbsentImages &absentImages) {
    std::stable_partition(settings.begin(), settings.end(),
                          [](const PendingSetting &one) { return dynamicPopup(one) == nullptr; });
    for (const PendingSetting &one : settings)
        if (!absentImages.chosenBy(one)) applySetting(*one.panel, *one.setting);
}

class NetworkBuilder {
  public:
    explicit NetworkBuilder(ServerList &servers) : servers_(servers) {}

    // Makes the nodes of a network and of the networks inside them, and notes their settings and connections. `path` is
    // that of the network in the scene file.
    void makeNodes(const NetworkDescription &description, Network &network, const std::string &path) {
        setView(network, description.view);
        addNodes(description, network, path);
    }

    // The same, except that the view of the network stays as it is.
    void addNodes(const NetworkDescription &description, Network &network, const std::string &path) {
        connections_.push_back({.network = &network, .description = &description});
        for (const NodeDescription &node : description.nodes) {
            HostNode *made = nullptr;
            atLocation(node.location, [&] { made = &makeDescribed(node, network, servers_); });
            const std::string nodePath = pathTo(pathTo(path, "nodes"), node.name);
            noteSettings(node.settings, *made, nodePath);
            for (const NetworkDescription &inside : node.network)
                makeNodes(inside, networkInside(*made, inside.location), pathTo(nodePath, "network"));
        }
    }

    // `path` is that of the surface or node that has the settings.
    void noteSettings(const std::vector<SettingDescription> &settings, HostNode &node, const std::string &path) {
        for (const SettingDescription &setting : settings) {
            HostPanel *panel = nullptr;
            atLocation(setting.location, [&] { panel = panelOf(node); });
            if (!panel)
                throw InputError(setting.location,
                                 fmt::format("the node \"{}\" has no panel, and so no settings", node.name));
            settings_.push_back(
                {.panel = panel, .setting = &setting, .path = pathTo(pathTo(path, "settings"), setting.label)});
        }
    }

    void setAndConnect(AbsentImages &absentImages) {
        applyAll(std::move(settings_), absentImages);
        for (const PendingConnections &connected : connections_) {
            Network &network = *connected.network;
            for (const ConnectionDescription &one : connected.description->connections)
                atLocation(one.location, [&] { connectDescribed(network, *connected.description, one); });
            network.rename(network.root(), network.name());
        }
    }

  private:
    // In scene files, the root of a network inside a node has the node's name, so it keeps that name until all nodes
    // are connected. Everywhere else it has the network's name.
    static Network &networkInside(HostNode &node, const SourceLocation &location) {
        if (node.nestedNetworks.empty())
            throw InputError(location, fmt::format("the node \"{}\" holds no network; its kind is \"{}\"", node.name,
                                                   node.server->name()));
        if (node.nestedNetworks.size() > 1)
            throw InputError(location,
                             fmt::format("the node \"{}\" holds {} networks, and a scene file can describe only one",
                                         node.name, node.nestedNetworks.size()));
        Network &inside = *node.nestedNetworks.front();
        inside.clear(); // the nodes that came with the node's saved data
        inside.rename(inside.root(), node.name);
        return inside;
    }

    ServerList &servers_;
    std::vector<PendingSetting> settings_;
    std::vector<PendingConnections> connections_;
};

// Adds a location to the errors of an action that do not have one.
template <class Act>
void withLocation(const SourceLocation &location, Act act) {
    try {
        act();
    } catch (const InputError &error) {
        if (!error.location().file.empty()) throw;
        throw InputError(location, error.message());
    }
}

} // namespace

SceneSurfaces::Images::~Images() { ImageList::instance().clear(); }

SceneSurfaces::SceneSurfaces(const SceneDescription &scene, ServerList &servers, Warnings *warnings) {
    Warnings asErrors(Warnings::Policy::strict);
    Warnings &reported = warnings ? *warnings : asErrors;
    ImageList::instance().setWorkflow(scene.render.workflow);
    AbsentImages absentImages(reported);
    absentImages.load(scene);
    std::ranges::copy_if(scene.images, std::back_inserter(sequences_),
                         [](const ImageDescription &image) { return image.sequence.has_value(); });
    NetworkBuilder builder(servers);
    for (const SurfaceDescription &description : scene.surfaces) {
        Surface &surface = *surfaces_.all.emplace_back(std::make_unique<Surface>(description.name));
        locations_.push_back(locationOf(description));
        const std::string path = pathTo("surfaces", description.name);
        if (!description.saved.file.empty()) {
            ImageList::instance().setLastError({});
            loadSaved(surface, description);
            const std::string &missing = ImageList::instance().lastError();
            if (!missing.empty())
                reported.add({.location = {.file = description.saved.file, .line = 0},
                              .path = path,
                              .brief = "an image of a node",
                              .message = missing + "; the node goes without it"});
            builder.addNodes(description.network, surface.network(), path);
            continue;
        }
        builder.noteSettings(description.settings, surface.network().root(), path);
        builder.makeNodes(description.network, surface.network(), path);
    }
    builder.setAndConnect(absentImages);
    for (std::size_t i = 0; i < scene.surfaces.size(); ++i)
        warnOfPlaceholders(*surfaces_.all[i], scene.surfaces[i], reported);
}

SceneSurfaces::Surfaces::~Surfaces() {
    while (!all.empty()) all.pop_back();
}

SceneSurfaces::~SceneSurfaces() = default;

Surface *SceneSurfaces::surface(const std::string &name) const {
    for (const auto &surface : surfaces_.all)
        if (surface->name() == name) return surface.get();
    return nullptr;
}

void SceneSurfaces::showFrame(int frame, Warnings &warnings) {
    for (const ImageList::UnreadFile &unread : ImageList::instance().setFrame(frame)) {
        const auto image = std::ranges::find(sequences_, unread.image, &ImageDescription::name);
        if (image == sequences_.end()) continue; // a node has added it
        warnings.add(
            {.location = image->fileLocation,
             .path = pathTo(pathTo("images", image->name), "file"),
             .brief = fmt::format("no file for a frame of the image {} ({})", inQuotes(image->name), image->file),
             .message = fmt::format("frame {}: {}; the image is transparent", frame, unread.why)});
    }
}

void SceneSurfaces::init(int mode) {
    for (std::size_t done = 0; done < surfaces_.all.size(); ++done) {
        try {
            withLocation(locations_[done], [&] { surfaces_.all[done]->init(mode); });
        } catch (...) {
            for (std::size_t i = 0; i < done; ++i) surfaces_.all[i]->cleanup();
            throw;
        }
    }
}

void SceneSurfaces::newTime(int frame, double time) {
    for (std::size_t i = 0; i < surfaces_.all.size(); ++i)
        withLocation(locations_[i], [&] { surfaces_.all[i]->newTime(frame, time); });
}

void SceneSurfaces::cleanup() {
    for (const auto &surface : surfaces_.all) surface->cleanup();
}

} // namespace velm::host

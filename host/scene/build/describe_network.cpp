#include "host/scene/build/describe_network.h"

#include "host/base/names.h"
#include "host/graph/node_data.h"
#include "host/graph/placeholder.h"
#include "host/panel/settings.h"
#include "host/scene/format/shortest.h"

#include <cmath>
#include <fmt/format.h>
#include <utility>

namespace velm::host {

namespace {

const PanelItem *controlOf(const HostPanel &panel, const std::string &label) {
    for (const unsigned int id : panel.controls()) {
        const PanelItem *control = panel.find(id);
        if (panel.uniqueLabel(*control) == label) return control;
    }
    return nullptr;
}

// All settings that the panel tells; what it cannot tell (a value that is no entry, components with unlike keys) is
// left out.
std::vector<SettingDescription> allSettings(HostNode &node) {
    std::vector<SettingDescription> settings;
    HostPanel *panel = panelOf(node);
    if (!panel) return settings;
    for (const std::string &label : settingLabels(*panel)) {
        try {
            const ControlType &type = *controlOf(*panel, label)->type;
            SettingValue value = readSetting(*panel, label);
            if (type.kind == ControlKind::number) value = shortest(std::move(value), shownFactor(type.unit));
            settings.push_back({label, std::move(value), {}});
        } catch (const InputError &) {
            continue;
        }
    }
    return settings;
}

bool canBeMade(HostNode &node, const SettingDescription &setting) {
    try {
        applySetting(*panelOf(node), setting);
        return true;
    } catch (const InputError &) {
        return false;
    }
}

class Describer {
  public:
    explicit Describer(const UsualSettings &usual) : usual_(usual) {}

    NetworkDescription network(Network &editor, const std::string &rootName) {
        NetworkDescription result;
        result.view = {.location = editor.location(),
                       .zoom = zoomOf(editor),
                       .disabled = editor.state(),
                       .root = editor.root().look};
        for (const auto &input : editor.root().inputs)
            if (input->isForeign) result.otherInputs.push_back(input->name);
        for (const auto &node : editor.nodes()) addConnections(editor, *node, node->name, result);
        addConnections(editor, editor.root(), rootName, result);
        for (const auto &node : editor.nodes()) {
            if (node->name == rootName)
                throw InputError(fmt::format("the node {} has the name of what holds its network, which a scene file "
                                             "cannot tell from it",
                                             velm::host::quoted(node->name)));
            result.nodes.push_back(describe(*node));
        }
        return result;
    }

    std::vector<SettingDescription> settings(HostNode &node) {
        std::vector<SettingDescription> result;
        for (const SettingDescription &setting : allSettings(node))
            if (!usual_.isUsual(node.server->name(), setting) && canBeMade(node, setting)) result.push_back(setting);
        return result;
    }

  private:
    // A scene file cannot tell a number that is none.
    static double zoomOf(const Network &editor) {
        const double zoom = editor.zoom();
        return std::isfinite(zoom) ? shortest(zoom, 1) : NetworkView{}.zoom;
    }

    // A control that a connection feeds tells nothing; so the connections are broken as they are noted.
    static void addConnections(Network &editor, HostNode &node, const std::string &name, NetworkDescription &result) {
        for (const auto &input : node.inputs) {
            if (!input->source) continue;
            result.connections.push_back({.fromNode = input->source->node->name,
                                          .output = input->source->name,
                                          .toNode = name,
                                          .input = input->name,
                                          .location = {}});
            editor.disconnect(*input);
        }
    }

    NodeDescription describe(HostNode &node) {
        NodeDescription result;
        result.name = node.name;
        result.server = node.server->name();
        result.look = node.look;
        if (node.placeholder) {
            result.kind = node.server->displayName();
            result.data = savedData(node);
            return result;
        }
        result.settings = settings(node);
        if (node.nestedNetworks.size() != 1) return result;
        NetworkDescription inside = network(*node.nestedNetworks.front(), node.name);
        const bool isEmpty = inside.nodes.empty() && inside.connections.empty() && inside.view == NetworkView{};
        if (!isEmpty) result.network.push_back(std::move(inside));
        return result;
    }

    const UsualSettings &usual_;
};

} // namespace

UsualSettings::UsualSettings(const ServerList &servers) {
    Network editor("Usual", "Usual", nullptr, nullptr);
    const auto note = [&](HostNode &node) {
        for (const SettingDescription &setting : allSettings(node))
            values_[node.server->name()].emplace(setting.label, setting.value);
    };
    for (const auto &server : servers.all()) {
        HostNode &node = editor.addNode(*server);
        note(node);
        editor.destroyNode(node);
    }
    note(Surface("Usual").network().root());
}

bool UsualSettings::isUsual(const std::string &server, const SettingDescription &setting) const {
    const auto found = values_.find(server);
    if (found == values_.end()) return false;
    const auto value = found->second.find(setting.label);
    return value != found->second.end() && value->second == setting.value;
}

const SettingValue *UsualSettings::ofSurface(const std::string &label) const {
    const auto &values = values_.at("Surface");
    const auto value = values.find(label);
    return value == values.end() ? nullptr : &value->second;
}

SurfaceDescription describeSurface(Surface &surface, const UsualSettings &usual) {
    Describer describer(usual);
    SurfaceDescription result;
    result.name = surface.name();
    try {
        result.network = describer.network(surface.network(), surface.name());
    } catch (const InputError &error) {
        throw InputError(fmt::format("surface {}: {}", velm::host::quoted(surface.name()), error.what()));
    }
    result.settings = describer.settings(surface.network().root());
    return result;
}

} // namespace velm::host

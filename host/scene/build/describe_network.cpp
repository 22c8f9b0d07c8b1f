#include "host/scene/build/describe_network.h"

#include "host/base/names.h"
#include "host/graph/node_data.h"
#include "host/graph/placeholder.h"
#include "host/panel/settings.h"
#include "host/scene/format/shortest.h"

#include <cmath>
#include <fmt/format.h>
#include <unordered_map>
#include <utility>

namespace velm::host {

namespace {

// A panel gives no value for a control whose input is connected. While an object of this class exists, the inputs of a
// network, and of the networks inside its nodes, appear unconnected. Nothing else changes: no input event is sent, and
// outputs keep their lists of consumers. Nothing may connect, disconnect or destroy inputs in the meantime.
class HiddenConnections {
  public:
    // Delegates, so that the destructor also runs when hiding fails half way.
    explicit HiddenConnections(Network &network) : HiddenConnections() { hide(network); }
    ~HiddenConnections() {
        for (const auto &[input, source] : sources_) input->source = source;
    }
    HiddenConnections(const HiddenConnections &) = delete;
    HiddenConnections &operator=(const HiddenConnections &) = delete;

    // The output that is connected to an input; null when there is none.
    const HostOutput *sourceOf(HostInput &input) const {
        const auto found = sources_.find(&input);
        return found == sources_.end() ? nullptr : found->second;
    }

  private:
    HiddenConnections() = default;

    void hide(Network &network) {
        hide(network.root());
        for (const auto &node : network.nodes()) {
            hide(*node);
            for (Network *inside : node->nestedNetworks) hide(*inside);
        }
    }
    void hide(HostNode &node) {
        for (const auto &input : node.inputs) {
            if (!input->source) continue;
            sources_.emplace(input.get(), input->source);
            input->source = nullptr;
        }
    }

    std::unordered_map<HostInput *, HostOutput *> sources_;
};

const PanelItem *controlOf(const HostPanel &panel, const std::string &label) {
    for (const unsigned int id : panel.controls()) {
        const PanelItem *control = panel.find(id);
        if (panel.uniqueLabel(*control) == label) return control;
    }
    return nullptr;
}

// The settings on a node's panel. Those without a value that a description can hold (an integer that stands for no
// entry, components with different keys) are left out.
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

bool isApplicable(HostNode &node, const SettingDescription &setting) {
    try {
        checkSetting(*panelOf(node), setting);
        return true;
    } catch (const InputError &) {
        return false;
    }
}

class Describer {
  public:
    Describer(const DefaultSettings &defaults, const HiddenConnections &connections)
        : defaults_(defaults), connections_(connections) {}

    // `rootName` is the name of the surface or node that owns the network.
    NetworkDescription network(const Network &network, const std::string &rootName) const {
        NetworkDescription result;
        result.view = {.location = network.location(),
                       .zoom = zoomOf(network),
                       .disabled = network.state(),
                       .root = network.root().look};
        for (const auto &input : network.root().inputs)
            if (input->isForeign) result.otherInputs.push_back(input->name);
        for (const auto &node : network.nodes()) addConnections(*node, node->name, result);
        addConnections(network.root(), rootName, result);
        for (const auto &node : network.nodes()) {
            if (node->name == rootName)
                throw InputError(fmt::format("the node {} has the name of the owner of its network, which a scene file "
                                             "cannot tell apart",
                                             inQuotes(node->name)));
            result.nodes.push_back(describe(*node));
        }
        return result;
    }

    std::vector<SettingDescription> settings(HostNode &node) const {
        std::vector<SettingDescription> result;
        for (const SettingDescription &setting : allSettings(node))
            if (!defaults_.isDefault(node.server->name(), setting) && isApplicable(node, setting))
                result.push_back(setting);
        return result;
    }

  private:
    // JSON has no infinities and no NaN.
    static double zoomOf(const Network &network) {
        const double zoom = network.zoom();
        return std::isfinite(zoom) ? shortest(zoom, 1) : NetworkView{}.zoom;
    }

    void addConnections(const HostNode &node, const std::string &name, NetworkDescription &result) const {
        for (const auto &input : node.inputs)
            if (const HostOutput *source = connections_.sourceOf(*input))
                result.connections.push_back({.fromNode = source->node->name,
                                              .output = source->name,
                                              .toNode = name,
                                              .input = input->name,
                                              .location = {}});
    }

    NodeDescription describe(HostNode &node) const {
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

    const DefaultSettings &defaults_;
    const HiddenConnections &connections_;
};

} // namespace

DefaultSettings::DefaultSettings(const ServerList &servers) {
    Network network("Defaults", "Defaults", nullptr, nullptr);
    const auto note = [&](HostNode &node) {
        for (const SettingDescription &setting : allSettings(node))
            values_[node.server->name()].emplace(setting.label, setting.value);
    };
    for (const auto &server : servers.all()) {
        HostNode &node = network.addNode(*server);
        note(node);
        network.destroyNode(node);
    }
    note(Surface("Defaults").network().root());
}

bool DefaultSettings::isDefault(const std::string &server, const SettingDescription &setting) const {
    const auto found = values_.find(server);
    if (found == values_.end()) return false;
    const auto value = found->second.find(setting.label);
    return value != found->second.end() && value->second == setting.value;
}

const SettingValue *DefaultSettings::ofSurface(const std::string &label) const {
    const auto &values = values_.at("Surface");
    const auto value = values.find(label);
    return value == values.end() ? nullptr : &value->second;
}

SurfaceDescription describeSurface(Surface &surface, const DefaultSettings &defaults) {
    Network &network = surface.network();
    const HiddenConnections connections(network);
    const Describer describer(defaults, connections);
    SurfaceDescription result;
    result.name = surface.name();
    try {
        result.network = describer.network(network, surface.name());
    } catch (const InputError &error) {
        throw InputError(fmt::format("surface {}: {}", inQuotes(surface.name()), error.what()));
    }
    result.settings = describer.settings(network.root());
    return result;
}

} // namespace velm::host

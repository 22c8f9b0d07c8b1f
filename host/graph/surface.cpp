#include "host/graph/surface.h"

#include "host/base/names.h"
#include "host/graph/builtin/builtin.h"
#include "host/graph/builtin/frame.h"
#include "host/graph/network_blocks.h"
#include "host/panel/settings.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace velm::host {

namespace {

using builtin::Kind;

enum {
    kColour,
    kLuminosity,
    kDiffuse,
    kSpecular,
    kGlossiness,
    kReflection,
    kTransparency,
    kRefractionIndex,
    kNormal // an input without a value
};

// The root is described in the same way as the host's own nodes, but is in no server list: it cannot be added to a
// network. Its numbers are plain fractions, not percentages.
constinit const builtin::Definition kRoot{
    .name = "Surface",
    .colour = {100, 100, 100},
    .parameters = {{{.label = "Color", .kind = Kind::colour, .initial = {0.78431, 0.78431, 0.78431}},
                    {.label = "Luminosity", .kind = Kind::scalar, .initial = {0}},
                    {.label = "Diffuse", .kind = Kind::scalar, .initial = {1}},
                    {.label = "Specular", .kind = Kind::scalar, .initial = {0}},
                    {.label = "Glossiness", .kind = Kind::scalar, .initial = {0.4}},
                    {.label = "Reflection", .kind = Kind::scalar, .initial = {0}},
                    {.label = "Transparency", .kind = Kind::scalar, .initial = {0}},
                    {.label = "Refraction Index", .kind = Kind::scalar, .initial = {1}}}},
};

const HostServer kHandler{HOST_CLASS_NODE_HANDLER, kRoot.name, builtin::activate<kRoot>, nullptr};
const HostServer kInterface{HOST_CLASS_NODE_INTERFACE, kRoot.name, builtin::activateInterface, nullptr};

ServerClass &rootClass() {
    static ServerClass server(kHandler, &kInterface, kBuiltinOrigin);
    return server;
}

} // namespace

std::array<double, 3> newSurfaceValue(std::string_view label) {
    for (const builtin::Parameter &parameter : kRoot.parameters)
        if (parameter.label && parameter.label == label) return parameter.initial;
    return {};
}

// Reads the root's values; has access to the surface.
struct Surface::Root {
    static const builtin::Instance &instance(const Network &network) {
        return *static_cast<const builtin::Instance *>(network.root().instance);
    }
    static void read(const Network &network, int parameter, ShadingSample *sample, double *value) {
        const HostNode &root = network.root();
        const auto index = static_cast<std::size_t>(parameter);
        const auto &own = instance(network).values[index];
        std::copy_n(own.begin(), parameter == kColour ? 3 : 1, value);
        if (network.state() == 0) evaluateInput(root.inputs[index].get(), sample, value);
    }
    static void readNormal(const Network &network, ShadingSample *sample, double normal[3]) {
        std::copy_n(sample->shadingNormal, 3, normal);
        double found[3] = {normal[0], normal[1], normal[2]};
        if (network.state() != 0 || !evaluateInput(network.root().inputs[kNormal].get(), sample, found)) return;
        const double length = std::hypot(found[0], found[1], found[2]);
        if (!(length > 0) || !std::isfinite(length)) return;
        for (int i = 0; i < 3; ++i) normal[i] = found[i] / length;
    }
    static void autosize(HostNodeEditor *, void *surface, double bounds[3][2]) {
        const auto &own = static_cast<Surface *>(surface)->bounds_;
        std::copy(&own[0][0], &own[0][0] + 6, &bounds[0][0]);
    }
};

Surface::Surface(std::string name) : network_(std::make_unique<Network>(std::move(name), rootClass())) {
    createInput(network_->root(), kConnectVector, "Normal", nullptr);
    network_->setUserData(this);
    network_->setAutosize(Root::autosize);
}

Surface::~Surface() = default;

void Surface::setDefault(const SettingDescription &setting) { applySetting(*panelOf(network_->root()), setting); }

SurfaceValues Surface::evaluate(ShadingSample *sample) const {
    SurfaceValues values;
    Root::read(*network_, kColour, sample, values.colour);
    Root::read(*network_, kLuminosity, sample, &values.luminosity);
    Root::read(*network_, kDiffuse, sample, &values.diffuse);
    Root::read(*network_, kSpecular, sample, &values.specular);
    Root::read(*network_, kGlossiness, sample, &values.glossiness);
    Root::read(*network_, kReflection, sample, &values.reflection);
    Root::read(*network_, kTransparency, sample, &values.transparency);
    Root::read(*network_, kRefractionIndex, sample, &values.refractionIndex);
    Root::readNormal(*network_, sample, values.normal);
    return values;
}

double Surface::evaluateTransparency(ShadingSample *sample) const {
    double transparency;
    Root::read(*network_, kTransparency, sample, &transparency);
    return transparency;
}

void Surface::evaluateColour(ShadingSample *sample, double colour[3]) const {
    Root::read(*network_, kColour, sample, colour);
}

namespace {

// Adds the surface's name to the errors of its network.
template <class Act>
void withName(const std::string &surface, Act act) {
    try {
        act();
    } catch (const InputError &error) {
        throw InputError(fmt::format("surface {}: {}", inQuotes(surface), error.what()));
    }
}

} // namespace

void Surface::init(int mode) {
    withName(name(), [&] { network_->init(mode); });
}

void Surface::newTime(int frame, double time) {
    withName(name(), [&] { network_->newTime(frame, time); });
}

void Surface::cleanup() { network_->cleanup(); }

void Surface::setBounds(const double bounds[3][2]) { std::copy(&bounds[0][0], &bounds[0][0] + 6, &bounds_[0][0]); }

void Surface::save(const HostSaveState &state) {
    withName(name(), [&] {
        state.beginBlock(state.data, &blocks::kNetwork, 0);
        network_->save(state);
        state.endBlock(state.data);
    });
}

void Surface::load(const HostLoadState &state) {
    withName(name(), [&] {
        const HostBlockId table[] = {blocks::kNetwork, {0, nullptr}};
        if (state.findBlock(state.data, table) == 0) throw InputError("there is no network in the file");
        network_->load(state);
        state.endBlock(state.data);
    });
}

} // namespace velm::host

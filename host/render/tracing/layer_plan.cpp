#include "host/render/tracing/layer_plan.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/render/geometry/vector.h"

#include <algorithm>
#include <fmt/format.h>
#include <string_view>
#include <utility>

namespace velm::host {
namespace {

struct LayerName {
    const char *name;
    LayerKind kind;
    std::vector<std::string> channels; // after "name."
};

const std::vector<LayerName> &layerNames() {
    static const std::vector<LayerName> names = {
        {.name = "depth", .kind = LayerKind::depth, .channels = {"Z"}},
        {.name = "normal", .kind = LayerKind::normal, .channels = {"X", "Y", "Z"}},
        {.name = "position", .kind = LayerKind::position, .channels = {"X", "Y", "Z"}},
        {.name = "albedo", .kind = LayerKind::albedo, .channels = {"R", "G", "B"}},
        {.name = "object", .kind = LayerKind::object, .channels = {"id"}},
        {.name = "surface", .kind = LayerKind::surface, .channels = {"id"}},
        {.name = "samples", .kind = LayerKind::samples, .channels = {"count"}},
    };
    return names;
}

// Calls `visit(surface's index, output, name)` for each output of each node that has a value of its own, where `name`
// is "Node.Output".
template <class Visit>
void forEachOutput(const RenderSceneData &scene, Visit visit) {
    for (std::size_t index = 0; index < scene.surfaces.size(); ++index)
        for (const auto &node : scene.surfaces[index].surface->network().nodes())
            for (const auto &output : node->outputs)
                if (output->type != kConnectFunction) visit(index, *output, node->name + '.' + output->name);
}

[[noreturn]] void refuse(const RenderSceneData &scene, const std::string &name) {
    std::vector<std::string> names;
    for (const LayerName &layer : layerNames()) names.emplace_back(layer.name);
    forEachOutput(scene, [&](std::size_t, const HostOutput &, const std::string &output) {
        if (std::ranges::find(names, output) == names.end()) names.push_back(output);
    });
    std::string list;
    for (const std::string &each : names) list += (list.empty() ? "" : ", ") + each;
    throw InputError({.file = scene.sceneFile}, "there is no layer " + inQuotes(name) + "; there are " + list);
}

// The type with which an output's value is asked for: as it is, but integers as scalars and materials as their diffuse
// colour.
int askedType(int type) {
    if (type == kConnectInteger) return kConnectScalar;
    return type == kConnectMaterial ? kConnectColour : type;
}

std::vector<std::string> componentsOf(int type) {
    if (type == kConnectColour) return {"R", "G", "B"};
    if (type == kConnectVector) return {"X", "Y", "Z"};
    return {};
}

} // namespace

LayerPlan::LayerPlan(const RenderSceneData &scene, const std::vector<std::string> &names) {
    for (std::size_t i = 0; i < names.size(); ++i)
        if (std::find(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(i), names[i]) ==
            names.begin() + static_cast<std::ptrdiff_t>(i))
            add(scene, names[i]);
    for (const std::string &channel : channels_) {
        if (std::ranges::count(channels_, channel) > 1)
            throw InputError({.file = scene.sceneFile}, "two layers have a channel " + inQuotes(channel));
        rules_.push_back(layerRule(channel));
    }
}

void LayerPlan::add(const RenderSceneData &scene, const std::string &name) {
    for (const LayerName &layer : layerNames()) {
        if (name != layer.name) continue;
        for (const std::string &channel : layer.channels) channels_.push_back(fmt::format("{}.{}", name, channel));
        layers_.push_back({.kind = layer.kind, .channels = layer.channels.size(), .inputs = {}});
        return;
    }
    std::vector<HostInput> inputs(scene.surfaces.size());
    int type = 0;
    forEachOutput(scene, [&](std::size_t surface, HostOutput &output, const std::string &outputName) {
        const Surface &owner = *scene.surfaces[surface].surface;
        if (name != outputName && name != owner.name() + '/' + outputName) return;
        if (type == 0) type = askedType(output.type);
        inputs[surface].source = &output;
    });
    if (type == 0) refuse(scene, name);
    for (HostInput &input : inputs) input.type = type;
    std::string channel = name;
    std::ranges::replace(channel, '/', '.');
    const std::vector<std::string> components = componentsOf(type);
    if (components.empty()) channels_.push_back(channel);
    for (const std::string &component : components) channels_.push_back(fmt::format("{}.{}", channel, component));
    layers_.push_back({.kind = LayerKind::node,
                       .channels = std::max<std::size_t>(components.size(), 1),
                       .inputs = std::move(inputs)});
}

void LayerRecorder::begin(double *values) {
    values_ = values;
    for (const PlannedLayer &layer : plan_.layers()) {
        std::fill_n(values, layer.channels, layer.kind == LayerKind::depth ? kNothingSeen : 0.0);
        values += layer.channels;
    }
}

void LayerRecorder::record(const RenderSceneData &scene, const RTCHit &hit, ShadingSample &sample,
                           const SurfaceValues &surface) {
    if (!values_ || sample.rayDepth > 0) return;
    double *values = std::exchange(values_, nullptr);
    const RenderSurface &hitSurface = scene.surfaceOf(hit.geomID, hit.primID);
    const auto surfaceIndex = static_cast<std::size_t>(&hitSurface - scene.surfaces.data());
    const Vec3 position(sample.position);
    for (const PlannedLayer &layer : plan_.layers()) {
        switch (layer.kind) {
        case LayerKind::depth: *values = dot(position - Vec3(sample.raySource), forward_); break;
        case LayerKind::normal: std::copy_n(surface.normal, 3, values); break;
        case LayerKind::position: position.store(values); break;
        case LayerKind::albedo: std::copy_n(surface.colour, 3, values); break;
        case LayerKind::object: *values = hit.geomID + 1.0; break;
        case LayerKind::surface: *values = static_cast<double>(surfaceIndex) + 1; break;
        case LayerKind::samples: break; // counted with the samples themselves
        case LayerKind::node: evaluateInput(&layer.inputs[surfaceIndex], &sample, values); break;
        }
        values += layer.channels;
    }
}

} // namespace velm::host

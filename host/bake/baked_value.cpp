#include "host/bake/baked_value.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/graph/surface.h"
#include "host/render/tracing/shade.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <optional>

namespace velm::host {
namespace {

// A value of the surface itself.
struct OwnValue {
    std::string_view name;
    BakedKind kind;
    Vec3 (*of)(const SurfaceValues &values);
};

Vec3 grey(double number) { return {number, number, number}; }

constexpr std::string_view kLit = "lit";
constexpr std::array<OwnValue, 9> kOwnValues = {{
    {.name = "Color", .kind = BakedKind::colour, .of = [](const SurfaceValues &values) { return Vec3(values.colour); }},
    {.name = "Luminosity",
     .kind = BakedKind::number,
     .of = [](const SurfaceValues &values) { return grey(values.luminosity); }},
    {.name = "Diffuse",
     .kind = BakedKind::number,
     .of = [](const SurfaceValues &values) { return grey(values.diffuse); }},
    {.name = "Specular",
     .kind = BakedKind::number,
     .of = [](const SurfaceValues &values) { return grey(values.specular); }},
    {.name = "Glossiness",
     .kind = BakedKind::number,
     .of = [](const SurfaceValues &values) { return grey(values.glossiness); }},
    {.name = "Reflection",
     .kind = BakedKind::number,
     .of = [](const SurfaceValues &values) { return grey(values.reflection); }},
    {.name = "Transparency",
     .kind = BakedKind::number,
     .of = [](const SurfaceValues &values) { return grey(values.transparency); }},
    {.name = "Refraction Index",
     .kind = BakedKind::number,
     .of = [](const SurfaceValues &values) { return grey(values.refractionIndex); }},
    {.name = "Normal",
     .kind = BakedKind::normal,
     .of = [](const SurfaceValues &values) { return Vec3(values.normal); }},
}};

// The kind of an output's values; nothing for functions, which have no value of their own.
std::optional<BakedKind> kindOf(int type) {
    switch (type) {
    case kConnectScalar:
    case kConnectInteger: return BakedKind::number;
    case kConnectVector: return BakedKind::vector;
    case kConnectColour:
    case kConnectMaterial: return BakedKind::colour;
    default: return std::nullopt;
    }
}

int typeOf(BakedKind kind) {
    switch (kind) {
    case BakedKind::number: return kConnectScalar;
    case BakedKind::colour: return kConnectColour;
    case BakedKind::vector:
    case BakedKind::normal: break;
    }
    return kConnectVector;
}

std::string nameOf(const HostNode &node, const HostOutput &output) {
    return fmt::format("{}.{}", node.name, output.name);
}

// All names that can be baked, each once.
std::vector<std::string> knownNames(const RenderSceneData &scene, const std::vector<std::uint16_t> &surfaces) {
    std::vector<std::string> names;
    for (const OwnValue &own : kOwnValues) names.emplace_back(own.name);
    names.emplace_back(kLit);
    for (const std::uint16_t surface : surfaces)
        for (const auto &node : scene.surfaces[surface].surface->network().nodes())
            for (const auto &output : node->outputs) {
                std::string name = nameOf(*node, *output);
                if (kindOf(output->type) && std::ranges::find(names, name) == names.end())
                    names.push_back(std::move(name));
            }
    return names;
}

[[noreturn]] void failUnknown(const RenderSceneData &scene, std::string_view name,
                              const std::vector<std::uint16_t> &surfaces) {
    std::vector<std::string> known = knownNames(scene, surfaces);
    const std::string near = didYouMean(name, known);
    for (std::string &each : known) each = inQuotes(each);
    throw InputError(fmt::format("there is no output {}{}{} there are {}", inQuotes(name), near,
                                 near.empty() ? ";" : "", fmt::join(known, ", ")));
}

} // namespace

BakedValue::BakedValue(const RenderSceneData &scene, std::string_view name, const std::vector<std::uint16_t> &surfaces)
    : sources_(scene.surfaces.size()) {
    if (!findOutput(scene, name, surfaces)) findOwn(scene, name, surfaces);
}

// False if no node has an output of that name.
bool BakedValue::findOutput(const RenderSceneData &scene, std::string_view name,
                            const std::vector<std::uint16_t> &surfaces) {
    std::optional<BakedKind> found;
    for (const std::uint16_t index : surfaces) {
        Surface &surface = *scene.surfaces[index].surface;
        for (const auto &node : surface.network().nodes())
            for (const auto &output : node->outputs) {
                const std::optional<BakedKind> kind = kindOf(output->type);
                if (!kind || nameOf(*node, *output) != name || has(index)) continue;
                if (found && *found != *kind)
                    throw InputError(fmt::format("surface {}: the output {} has another type than that of the same "
                                                 "name in another surface; bake them one by one",
                                                 inQuotes(surface.name()), inQuotes(name)));
                found = kind;
                sources_[index].surface = &surface;
                sources_[index].output.source = output.get();
                sources_[index].output.type = typeOf(*kind);
            }
    }
    if (found) kind_ = *found;
    return found.has_value();
}

void BakedValue::findOwn(const RenderSceneData &scene, std::string_view name,
                         const std::vector<std::uint16_t> &surfaces) {
    const auto *const own = std::ranges::find(kOwnValues, name, &OwnValue::name);
    if (own == kOwnValues.end() && name != kLit) failUnknown(scene, name, surfaces);
    from_ = name == kLit ? From::lit : From::own;
    if (from_ == From::own) {
        own_ = static_cast<int>(own - kOwnValues.begin());
        kind_ = own->kind;
    }
    for (const std::uint16_t index : surfaces) sources_[index].surface = scene.surfaces[index].surface;
}

Vec3 BakedValue::evaluate(RayState &state, std::uint16_t surface, ShadingSample &sample) const {
    const Source &source = sources_[surface];
    if (from_ == From::output) {
        double value[3] = {0, 0, 0};
        evaluateInput(&source.output, &sample, value);
        return kind_ == BakedKind::number ? grey(value[0]) : Vec3(value);
    }
    if (from_ == From::own && own_ == 0) { // the colour alone, without the other values, takes less time
        double colour[3];
        source.surface->evaluateColour(&sample, colour);
        return Vec3(colour);
    }
    const SurfaceValues values = source.surface->evaluate(&sample);
    return from_ == From::lit ? shade(state, sample, values) : kOwnValues[static_cast<std::size_t>(own_)].of(values);
}

} // namespace velm::host

#include "host/scene/convert/surface_chunk.h"

#include "host/base/angles.h"
#include "host/scene/convert/envelope_keys.h"
#include "host/scene/format/shortest.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace velm::host {

namespace {

// A setting of a surface that is one number, and its sub-chunk.
struct NumberChunk {
    const char *id;
    const char *label;
    std::optional<float> SurfaceChunkValues::*value;
};
constexpr NumberChunk kNumbers[] = {
    {"LUMI", "Luminosity", &SurfaceChunkValues::luminosity},
    {"DIFF", "Diffuse", &SurfaceChunkValues::diffuse},
    {"SPEC", "Specular", &SurfaceChunkValues::specular},
    {"GLOS", "Glossiness", &SurfaceChunkValues::glossiness},
    {"REFL", "Reflection", &SurfaceChunkValues::reflection},
    {"TRAN", "Transparency", &SurfaceChunkValues::transparency},
    {"RIND", "Refraction Index", &SurfaceChunkValues::refractionIndex},
};
constexpr const char *kColour = "Color";
constexpr int kBothSides = 3;

const SettingValue &valueOf(const SurfaceDescription &surface, const std::string &label,
                            const DefaultSettings &defaults) {
    const auto found = std::ranges::find(surface.settings, label, &SettingDescription::label);
    return found != surface.settings.end() ? found->value : *defaults.ofSurface(label);
}

std::string bigEndian(std::uint32_t value, int bytes) {
    std::string text;
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) text += static_cast<char>(value >> shift & 0xff);
    return text;
}

std::string floatBytes(double number) { return bigEndian(std::bit_cast<std::uint32_t>(static_cast<float>(number)), 4); }

std::string subChunk(const char *id, const std::string &contents) {
    return id + bigEndian(static_cast<std::uint32_t>(contents.size()), 2) + contents;
}

// An animated value counts as the value of its first key.
Double3 numbersOf(const SettingValue &value) {
    if (const auto *number = std::get_if<double>(&value)) return {*number, 0, 0};
    if (const auto *keys = std::get_if<KeysDescription>(&value)) return keys->keys.front().value;
    return std::get<Double3>(value);
}

} // namespace

void describeValues(const SurfaceChunkValues &values, SurfaceDescription &surface) {
    if (const auto &colour = values.colour) {
        const std::optional<SettingValue> animated = animatedTriple(values.envelopesOf("COLR"), *colour, 1);
        const Double3 numbers{(*colour)[0], (*colour)[1], (*colour)[2]};
        surface.settings.push_back({kColour, animated ? *animated : shortest(SettingValue(numbers), 1), {}});
    }
    for (const NumberChunk &chunk : kNumbers)
        if (const auto &value = values.*chunk.value) {
            const ComponentEnvelopes envelopes = values.envelopesOf(chunk.id);
            surface.settings.push_back(
                {chunk.label, animatedNumber(envelopes.empty() ? nullptr : envelopes[0], *value, 1), {}});
        }
    const double angle = values.smoothingAngle.value_or(0.0F) * kDegreesPerRadian;
    surface.smoothingAngle = std::isfinite(angle) ? shortest(std::clamp(angle, 0.0, 180.0), kDegreesPerRadian) : 0;
    surface.doubleSided = values.sides == kBothSides;
}

bool hasValues(const SurfaceDescription &surface, const SurfaceChunkValues &values, const DefaultSettings &defaults) {
    SurfaceDescription object;
    describeValues(values, object);
    const auto same = [&](const std::string &label) {
        const SettingValue described = shortest(valueOf(surface, label, defaults), 1);
        return described == valueOf(object, label, defaults);
    };
    return same(kColour) && std::ranges::all_of(kNumbers, [&](const NumberChunk &chunk) { return same(chunk.label); });
}

std::string subChunksOf(const SurfaceDescription &surface, const DefaultSettings &defaults) {
    const std::string noEnvelope = bigEndian(0, 2);
    const Double3 colour = numbersOf(valueOf(surface, kColour, defaults));
    std::string result =
        subChunk("COLR", floatBytes(colour[0]) + floatBytes(colour[1]) + floatBytes(colour[2]) + noEnvelope);
    for (const NumberChunk &chunk : kNumbers)
        result += subChunk(chunk.id, floatBytes(numbersOf(valueOf(surface, chunk.label, defaults))[0]) + noEnvelope);
    result += subChunk("SMAN", floatBytes(surface.smoothingAngle / kDegreesPerRadian));
    result += subChunk("SIDE", bigEndian(surface.doubleSided ? kBothSides : 1, 2));
    return result;
}

} // namespace velm::host

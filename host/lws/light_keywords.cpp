#include "host/lws/keywords.h"

namespace velm::host::lws {

namespace {

// By the number that the file has.
constexpr Light::Kind kKinds[] = {Light::Kind::distant, Light::Kind::point, Light::Kind::spot, Light::Kind::linear,
                                  Light::Kind::area};
constexpr Light::Falloff kFalloffs[] = {Light::Falloff::none, Light::Falloff::linear, Light::Falloff::inverseDistance,
                                        Light::Falloff::inverseSquare};
constexpr Light::Shadows kShadows[] = {Light::Shadows::none, Light::Shadows::traced, Light::Shadows::mapped};

// Reads the number of one of the choices.
template <class Choice, std::size_t count>
bool readChoice(Statement &statement, const Choice (&choices)[count], Choice &choice) {
    const std::optional<int> number = statement.words.integer();
    if (!number || *number < 0 || static_cast<std::size_t>(*number) >= count) return false;
    choice = choices[*number];
    return true;
}

bool readKind(Statement &statement, Light &light) { return readChoice(statement, kKinds, light.kind); }
bool readFalloffType(Statement &statement, Light &light) { return readChoice(statement, kFalloffs, light.falloff); }
bool readShadowType(Statement &statement, Light &light) { return readChoice(statement, kShadows, light.shadows); }

bool readLightColour(Statement &statement, Light &light) { return readColour(statement, light.colour); }

// In version 1: the fraction that is lost on each metre.
bool readLossPerMetre(Statement &statement, Light &light) {
    constexpr double kLeast = 1e-9;
    double loss = 0;
    if (!readConstant(statement, loss)) return false;
    const bool falls = loss > kLeast;
    light.falloff = falls ? Light::Falloff::linear : Light::Falloff::none;
    if (falls) light.range.constant = 1 / loss;
    return true;
}

bool readQuality(Statement &statement, Light &light) {
    light.quality = statement.words.integer();
    return light.quality.has_value();
}

bool readShadowColour(Statement &statement, Light &) {
    Double3 colour{};
    if (!readConstant(statement, colour)) return false;
    if (colour != Double3{}) statement.lose(Loss::shadowColour);
    return true;
}

constexpr Keyword<Light> kLightKeywords[] = {
    {.name = "LightColor", .read = readLightColour},
    {.name = "LightIntensity", .read = value<&Light::intensity>},
    {.name = "LgtIntensity", .read = value<&Light::intensity>},
    {.name = "LightType", .read = readKind},
    {.name = "LightFalloffType", .read = readFalloffType},
    {.name = "LightRange", .read = value<&Light::range>},
    {.name = "Falloff", .read = readLossPerMetre},
    {.name = "LightConeAngle", .read = angle<&Light::cone>},
    {.name = "ConeAngle", .read = angle<&Light::cone>},
    {.name = "LightEdgeAngle", .read = angle<&Light::edge>},
    {.name = "EdgeAngle", .read = angle<&Light::edge>},
    {.name = "ShadowType", .read = readShadowType},
    {.name = "ShadowCasting", .read = readShadowType},
    {.name = "ShadowColor", .read = readShadowColour},
    {.name = "LightQuality", .read = readQuality},
    {.name = "AffectDiffuse", .read = leftOutUnless<Loss::lightEffect, 1>},
    {.name = "AffectSpecular", .read = leftOutUnless<Loss::lightEffect, 1>},
    {.name = "LensFlare", .read = leftOutUnless<Loss::lensFlare, 0>},
    {.name = "VolumetricLighting", .read = leftOutUnless<Loss::volumetricLight, 0>},
    {.name = "LightProjectionImage", .read = leftOutFile<Loss::projectedImage>},
};

} // namespace

std::span<const Keyword<Light>> lightKeywords() { return kLightKeywords; }

} // namespace velm::host::lws

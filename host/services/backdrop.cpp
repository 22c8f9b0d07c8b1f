#include "host/services/backdrop.h"

#include "host/base/direction.h"
#include "host/image/image.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velm::host {

namespace {

// base ^ exponent, for an exponent above 0. Most squeezes are small integers, which need only a few multiplications.
double power(double base, double exponent) {
    constexpr double kMostFactors = 16;
    if (!(exponent <= kMostFactors) || exponent != static_cast<int>(exponent)) return std::pow(base, exponent);
    double result = 1;
    for (int left = static_cast<int>(exponent); left > 0; left /= 2, base *= base)
        if (left % 2 != 0) result *= base;
    return result;
}

} // namespace

Backdrop::Backdrop(const BackdropDescription &description) : description_(description) {
    if (!(description.skySqueeze > 0) || !(description.groundSqueeze > 0))
        throw InputError(description.location, "a backdrop's sky squeeze and ground squeeze have to be above 0");
    if (description.kind != BackdropDescription::Kind::image) return;
    image_ = imageNamed(description.image, "the backdrop's image", description.location);
}

Backdrop::Type Backdrop::type() const {
    switch (description_.kind) {
    case BackdropDescription::Kind::plain: return kPlain;
    case BackdropDescription::Kind::gradient: return kGradient;
    case BackdropDescription::Kind::image: return kImage;
    }
    return kPlain;
}

void Backdrop::gradient(const double direction[3], double colour[3]) const {
    const double elevation = std::atan2(direction[1], levelLength(direction));
    const bool above = elevation >= 0;
    const Double3 &pole = above ? description_.zenith : description_.nadir;
    const Double3 &horizon = above ? description_.sky : description_.ground;
    const double squeeze = above ? description_.skySqueeze : description_.groundSqueeze;
    const double fraction = power(std::max(0.0, 1 - std::abs(elevation) / (std::numbers::pi / 2)), squeeze);
    for (std::size_t i = 0; i < 3; ++i) colour[i] = pole[i] + fraction * (horizon[i] - pole[i]);
}

void Backdrop::evaluate(const double direction[3], double colour[3]) const {
    const double sum = direction[0] + direction[1] + direction[2];
    const bool usable = std::isfinite(sum) && (direction[0] != 0 || direction[1] != 0 || direction[2] != 0);
    constexpr double kForward[3] = {0, 0, 1};
    const double *seen = usable ? direction : kForward;
    switch (description_.kind) {
    case BackdropDescription::Kind::plain: std::copy_n(description_.colour.begin(), 3, colour); break;
    case BackdropDescription::Kind::gradient: gradient(seen, colour); break;
    case BackdropDescription::Kind::image: {
        double u, v;
        directionToImage(description_.seamAngle * std::numbers::pi / 180, seen, &u, &v);
        sampleBilinear(image_, u, v, colour);
        for (int i = 0; i < 3; ++i) colour[i] *= description_.brightness;
        break;
    }
    }
}

namespace {

const Backdrop kNoBackdrop;
const Backdrop *currentBackdrop = &kNoBackdrop;

// Backdrops do not change over time: every function ignores its first argument, the time.
void backdropColour(double, const double direction[3], double colour[3]) {
    currentBackdrop->evaluate(direction, colour);
}

int backdropType(double) { return currentBackdrop->type(); }

void backdropColours(double, double zenith[3], double sky[3], double ground[3], double nadir[3]) {
    const BackdropDescription &description = currentBackdrop->description();
    const bool isGradient = currentBackdrop->type() == Backdrop::kGradient;
    const auto give = [&](const Double3 &colour, double result[3]) {
        std::copy_n((isGradient ? colour : description.colour).begin(), 3, result);
    };
    give(description.zenith, zenith);
    give(description.sky, sky);
    give(description.ground, ground);
    give(description.nadir, nadir);
}

void backdropSqueeze(double, double *sky, double *ground) {
    *sky = currentBackdrop->description().skySqueeze;
    *ground = currentBackdrop->description().groundSqueeze;
}

constexpr HostBackdropInfo kBackdropInfo = {
    .backdrop = backdropColour,
    .type = backdropType,
    .colours = backdropColours,
    .squeeze = backdropSqueeze,
};

} // namespace

const HostBackdropInfo *backdropInfo() { return &kBackdropInfo; }

void setBackdrop(const Backdrop *backdrop) { currentBackdrop = backdrop ? backdrop : &kNoBackdrop; }

} // namespace velm::host

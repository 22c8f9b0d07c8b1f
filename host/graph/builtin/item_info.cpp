// Facts about the frame and the scene, rather than about the surface: the time, the place of an item, and the distance
// from the camera. An item's place is that at the time of the frame, also while a shutter is open.
#include "host/graph/builtin/definitions.h"
#include "host/graph/builtin/vectors.h"

#include <algorithm>

namespace velm::host::builtin {

namespace {

// ---- Time ----

enum { kStart, kSpeed };
enum { kSecondsOut, kFrameOut };

void giveTime(const Evaluation &evaluation, int output) {
    if (output == kFrameOut) return evaluation.set(evaluation.frame());
    evaluation.set((evaluation.time() - evaluation.scalar(kStart)) * evaluation.scalar(kSpeed));
}

// ---- Item Info ----

enum { kPositionOut, kRotationOut, kScaleOut, kItemDistanceOut };

// Without a name, the item is at the origin.
HostError findItem(Instance &instance) {
    instance.item = {};
    if (!instance.text.front() || services().places->find(instance.text.data(), instance.item)) return nullptr;
    return "the scene has no item with the name in its setting \"Item\"";
}

// From the sample to a position.
Vector vectorTo(const Evaluation &evaluation, const Vector &position) {
    const double *from = evaluation.sample().position;
    return {position[0] - from[0], position[1] - from[1], position[2] - from[2]};
}

void giveItem(const Evaluation &evaluation, int output) {
    const ItemPlace &place = evaluation.item();
    switch (output) {
    case kPositionOut: return evaluation.set(place.position);
    case kRotationOut: return evaluation.set(place.rotation);
    case kScaleOut: return evaluation.set(place.scale);
    case kItemDistanceOut: return evaluation.set(lengthOf(vectorTo(evaluation, place.position)));
    default: return;
    }
}

// ---- Camera Distance ----

enum { kNear, kFar };
enum { kDistanceOut, kDepthOut, kFractionOut };

void giveCameraDistance(const Evaluation &evaluation, int output) {
    Vector position{}, forward{};
    services().places->camera(position.data(), forward.data());
    const Vector toCamera = vectorTo(evaluation, position);
    if (output == kDepthOut) return evaluation.set(-dot(toCamera, forward));
    const double distance = lengthOf(toCamera);
    if (output == kDistanceOut) return evaluation.set(distance);
    const double near = evaluation.scalar(kNear), far = evaluation.scalar(kFar);
    // Equal distances make a step.
    const double fraction = near == far ? (distance < near ? 0 : 1) : (distance - near) / (far - near);
    evaluation.set(std::clamp(fraction, 0.0, 1.0));
}

} // namespace

constinit const Definition timeInfoNode{
    .name = "Time",
    .colour = kInfoColour,
    .parameters = {{{.label = "Start"}, {.label = "Speed", .kind = Kind::percent, .initial = {1}}}},
    .outputs = {{{"Seconds", kConnectScalar}, {"Frame", kConnectInteger}}},
    .evaluate = giveTime,
};

constinit const Definition itemInfoNode{
    .name = "Item Info",
    .colour = kInfoColour,
    .parameters = {{{.label = "Item", .kind = Kind::text}}},
    .outputs = {{{"Position", kConnectVector},
                 {"Rotation", kConnectVector},
                 {"Scale", kConnectVector},
                 {"Distance", kConnectScalar}}},
    .evaluate = giveItem,
    .newTime = findItem,
};

constinit const Definition cameraDistance{
    .name = "Camera Distance",
    .colour = kInfoColour,
    .parameters = {{{.label = "Near", .kind = Kind::distance},
                    {.label = "Far", .kind = Kind::distance, .initial = {10}}}},
    .outputs = {{{"Distance", kConnectScalar}, {"Depth", kConnectScalar}, {"Fraction", kConnectScalar}}},
    .evaluate = giveCameraDistance,
};

} // namespace velm::host::builtin

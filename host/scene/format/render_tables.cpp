// The tables of render settings, cameras and lights.
#include "host/base/limits.h"
#include "host/scene/format/item_rows.h"
#include "host/scene/format/nested.h"
#include "host/scene/format/tables.h"

#include <fmt/format.h>

namespace velm::host {

namespace {

// ---- Render settings ----

constexpr ValueRule kPart{.kind = ValueRule::Kind::vec4, .minimum = 0, .maximum = 1};

// Throws InputError for a part of the picture that is empty; `object` is the one that it belongs to.
void checkPart(const ReadContext &context, const JsonValue &object, const char *key, const Part &part) {
    if (part[0] < part[2] && part[1] < part[3]) return;
    context.fail(object.find(key)->line,
                 fmt::format("\"{}\" is empty: its right and bottom edges must lie beyond its left and top", key));
}

constexpr ValueRule kPixelAspect{
    .kind = ValueRule::Kind::number, .minimum = kLeastPixelAspect, .maximum = kLargestPixelAspect};

constexpr Field<RenderDescription> kRenderFields[] = {
    {.key = "width",
     .help = "Width of the picture, in pixels.",
     .rule = integerRule(1, kLargestSide),
     .target = &RenderDescription::width},
    {.key = "height",
     .help = "Height of the picture, in pixels.",
     .rule = integerRule(1, kLargestSide),
     .target = &RenderDescription::height},
    {.key = "pixelAspect",
     .help = "Width of a pixel divided by its height.",
     .rule = kPixelAspect,
     .target = &RenderDescription::pixelAspect},
    {.key = "region",
     .help = "The part of the picture that is rendered: its left, top, right and bottom edges, as fractions of the "
             "width and height from the upper left corner.",
     .rule = kPart,
     .target = &RenderDescription::region},
    {.key = "samples",
     .help = "Anti-aliasing samples of each pixel.",
     .rule = integerRule(1, kMostSamples),
     .target = &RenderDescription::samples},
    {.key = "recursionDepth",
     .help = "The largest number of bounces of a ray.",
     .rule = integerRule(0, kMaxRecursionDepth),
     .target = &RenderDescription::recursionDepth},
    {.key = "firstFrame",
     .help = "First frame of the animation.",
     .rule = integerRule(-kLastFrameNumber, kLastFrameNumber),
     .target = &RenderDescription::firstFrame},
    {.key = "lastFrame",
     .help = "Last frame of the animation.",
     .rule = integerRule(-kLastFrameNumber, kLastFrameNumber),
     .target = &RenderDescription::lastFrame},
    {.key = "frameStep",
     .help = "Frames from one rendered frame to the next.",
     .rule = integerRule(1, kLastFrameNumber),
     .target = &RenderDescription::frameStep},
    {.key = "framesPerSecond",
     .help = "Frames in one second of time.",
     .rule = positiveRule(),
     .target = &RenderDescription::framesPerSecond},
    {.key = "camera",
     .help = "Name of the camera that renders the picture; the first camera by default.",
     .target = locatedText<&RenderDescription::camera, &RenderDescription::cameraLocation>},
    {.key = "ambientColour",
     .help = "Colour of the ambient light, which comes from all directions.",
     .rule = colourRule(),
     .target = &RenderDescription::ambientColour},
    {.key = "ambientIntensity",
     .help = "Intensity of the ambient light; 1 lights a white surface fully.",
     .rule = atLeastRule(0),
     .target = &RenderDescription::ambientIntensity},
    {.key = "workflow",
     .help = "linear, the default: colours are linear light, and the sRGB curve is applied to files of 8 and 16 bits "
             "as they are read and written. classic: without any curve, as in LightWave up to version 9.",
     .target = choiceIn<&RenderDescription::workflow, kWorkflowNames>},
};

void finishRender(const ReadContext &context, const JsonValue &object, RenderDescription &render) {
    checkPart(context, object, "region", render.region);
    if (render.lastFrame >= render.firstFrame) return;
    const JsonValue *last = object.find("lastFrame");
    context.fail(last ? last->line : object.line, fmt::format("the last frame, {}, comes before the first one, {}",
                                                              render.lastFrame, render.firstFrame));
}

// ---- Cameras ----

void finishCamera(const ReadContext &context, const JsonValue &object, CameraDescription &camera) {
    if (camera.blades == 1 || camera.blades == 2)
        context.fail(object.find("blades")->line, "a lens has 3 blades or more, or 0 if it is round");
    checkPart(context, object, "mask", camera.mask);
    checkAim(context, object, camera, "camera");
}

constexpr ValueRule kFieldOfView{
    .kind = ValueRule::Kind::number, .minimum = 0, .maximum = 180, .exclusiveMinimum = true, .exclusiveMaximum = true};

constexpr ValueRule kAperture = atLeastRule(0), kFocusDistance = positiveRule();

constexpr ValueRule kShutter{.kind = ValueRule::Kind::number, .minimum = 0, .maximum = kLongestShutter};

constexpr std::array kCameraFields{
    kPositionField<CameraDescription>,
    kTargetField<CameraDescription>,
    kRotationField<CameraDescription>,
    kPivotField<CameraDescription>,
    kParentField<CameraDescription>,
    Field<CameraDescription>{
        .key = "fieldOfView",
        .help = "Horizontal field of view, in degrees.",
        .target = keyed<CameraDescription, Channel::fieldOfView, &CameraDescription::fieldOfView, kFieldOfView>},
    Field<CameraDescription>{.key = "filmWidth",
                             .help = "Width of the film, in metres. With the field of view, it gives the focal length.",
                             .rule = positiveRule(),
                             .target = &CameraDescription::filmWidth},
    Field<CameraDescription>{
        .key = "aperture",
        .help = "F-number of the lens: the focal length divided by the lens's diameter. 0, the default, is a pinhole, "
                "which has everything in focus.",
        .target = keyed<CameraDescription, Channel::aperture, &CameraDescription::aperture, kAperture>},
    Field<CameraDescription>{
        .key = "focusDistance",
        .help = "Distance of the plane that is in focus, in metres along the camera's +Z.",
        .target = keyed<CameraDescription, Channel::focusDistance, &CameraDescription::focusDistance, kFocusDistance>},
    Field<CameraDescription>{.key = "blades",
                             .help =
                                 "Number of sides of the lens, which shows in what is out of focus; 0: it is round.",
                             .rule = integerRule(0, kMostBlades),
                             .target = &CameraDescription::blades},
    Field<CameraDescription>{.key = "bladeRotation",
                             .help = "Rotation of the blades about the camera's +Z, in degrees, as a bank.",
                             .rule = numberRule(),
                             .target = &CameraDescription::bladeRotation},
    Field<CameraDescription>{.key = "shutter",
                             .help = "The fraction of a frame for which the shutter is open, from the frame's time on: "
                                     "what moves is blurred. 0, the default: nothing is.",
                             .rule = kShutter,
                             .target = &CameraDescription::shutter},
    Field<CameraDescription>{.key = "mask",
                             .help = "The part of the picture that shows the scene, like the region of \"render\"; the "
                                     "rest has the mask's colour.",
                             .rule = kPart,
                             .target = &CameraDescription::mask},
    Field<CameraDescription>{.key = "maskColour",
                             .help = "Colour of the pixels outside the mask; black by default.",
                             .rule = colourRule(),
                             .target = &CameraDescription::maskColour},
};

// ---- Lights ----

constexpr const char *kLightKinds[] = {"point", "distant", "area", "spot", "linear", "dome"};
constexpr unsigned kPoint = 1u << static_cast<unsigned>(LightDescription::Kind::point);
constexpr unsigned kDistant = 1u << static_cast<unsigned>(LightDescription::Kind::distant);
constexpr unsigned kArea = 1u << static_cast<unsigned>(LightDescription::Kind::area);
constexpr unsigned kSpot = 1u << static_cast<unsigned>(LightDescription::Kind::spot);
constexpr unsigned kLinear = 1u << static_cast<unsigned>(LightDescription::Kind::linear);
constexpr unsigned kDome = 1u << static_cast<unsigned>(LightDescription::Kind::dome);
static_assert(kPoint == 1 && kDistant == 2 && kArea == 4 && kSpot == 8 && kLinear == 16 && kDome == 32,
              "the texts of the kinds are in the order of the kinds");

constexpr const char *kFalloffs[] = {"none", "linear", "inverseDistance", "inverseSquare"};
static_assert(static_cast<int>(LightDescription::Falloff::none) == 0 &&
              static_cast<int>(LightDescription::Falloff::linear) == 1 &&
              static_cast<int>(LightDescription::Falloff::inverseDistance) == 2 &&
              static_cast<int>(LightDescription::Falloff::inverseSquare) == 3);

void finishLight(const ReadContext &context, const JsonValue &object, LightDescription &light) {
    if (light.isAimed()) checkAim(context, object, light, "light");
}

constexpr ValueRule kColour = colourRule(), kAtLeast0 = atLeastRule(0), kPositive = positiveRule();
constexpr ValueRule kConeRule{.kind = ValueRule::Kind::number, .minimum = 0, .maximum = 180, .exclusiveMinimum = true};

// Required for all lights but domes, whose position only moves their children.
constexpr Field<LightDescription> kLightPosition{
    .key = "position",
    .help = "Position of the light, in metres, relative to the parent.",
    .target = keyed<LightDescription, Channel::position, &LightDescription::position, kVectorRule, true>,
    .required = true,
    .requiredKinds = ~kDome};

constexpr Field<LightDescription> kLightTarget{
    .key = "target",
    .help = "What the light shines at, instead of a rotation: a point of the scene, in metres, or an item's name; the "
            "origin by default.",
    .target = kTargetValue<LightDescription>,
    .kinds = kDistant | kArea | kSpot | kLinear};

constexpr auto kLightKind = std::to_array<Field<LightDescription>>({
    {.key = "kind",
     .help = "A point light shines in all directions, a distant light has parallel rays, a spot light a cone. An area "
             "light is a rectangle, a linear light a line; both have soft shadows. A dome surrounds the scene.",
     .rule = choiceRule(kLightKinds),
     .target = kindIn<&LightDescription::kind>,
     .required = true},
});

constexpr auto kLightValues = std::to_array<Field<LightDescription>>({
    {.key = "colour",
     .help = "Colour of the light.",
     .target = keyed<LightDescription, Channel::colour, &LightDescription::colour, kColour>},
    {.key = "intensity",
     .help = "1 lights a white surface that faces the light fully: at any distance from a distant light or a dome, at "
             "the range (one metre by default) from the others.",
     .target = keyed<LightDescription, Channel::intensity, &LightDescription::intensity, kAtLeast0>},
    {.key = "falloff",
     .help = "How the light decreases with the distance d: not at all, to nothing at the range (1 - d / range), by "
             "range / d, or by its square.",
     .target = choiceIn<&LightDescription::falloff, kFalloffs>,
     .kinds = kPoint | kArea | kSpot | kLinear},
    {.key = "range",
     .help = "Range of the falloff, in metres.",
     .target = keyed<LightDescription, Channel::range, &LightDescription::range, kPositive>,
     .kinds = kPoint | kArea | kSpot | kLinear},
    {.key = "cone",
     .help = "Half the angle of the cone, in degrees.",
     .target = keyed<LightDescription, Channel::cone, &LightDescription::cone, kConeRule>,
     .kinds = kSpot},
    {.key = "edge",
     .help = "Width of the soft edge inside the cone, in degrees.",
     .target = keyed<LightDescription, Channel::edge, &LightDescription::edge, kAtLeast0>,
     .kinds = kSpot},
    {.key = "width",
     .help = "Width of the light's rectangle, in metres.",
     .target = keyed<LightDescription, Channel::width, &LightDescription::width, kPositive>,
     .kinds = kArea},
    {.key = "height",
     .help = "Height of the light's rectangle, in metres.",
     .target = keyed<LightDescription, Channel::height, &LightDescription::height, kPositive>,
     .kinds = kArea},
    {.key = "length",
     .help = "Length of the light's line, which is along its X axis, in metres.",
     .target = keyed<LightDescription, Channel::length, &LightDescription::length, kPositive>,
     .kinds = kLinear},
    {.key = "samples",
     .help = "Shadow rays for each lit point.",
     .rule = integerRule(1, kMostSamples),
     .target = &LightDescription::samples,
     .kinds = kArea | kLinear | kDome},
    {.key = "image",
     .help = "Name of an image of the scene whose colours are the light: a panorama of 360 by 180 degrees.",
     .rule = textRule(),
     .target = &LightDescription::image,
     .kinds = kDome},
    {.key = "hemisphere",
     .help = "Whether only the upper half of the dome shines.",
     .rule = boolRule(),
     .target = &LightDescription::hemisphere,
     .kinds = kDome},
    {.key = "shadows",
     .help = "Whether objects cast shadows in this light.",
     .rule = boolRule(),
     .target = &LightDescription::shadows},
    {.key = "colouredShadows",
     .help = "Whether transparent surfaces tint the light that passes through them.",
     .rule = boolRule(),
     .target = &LightDescription::colouredShadows},
});

constexpr auto kLightFields =
    joined(kLightKind,
           std::array{kLightPosition, kLightTarget, kRotationField<LightDescription>, kScaleField<LightDescription>,
                      kPivotField<LightDescription>, kParentField<LightDescription>},
           kLightValues);

} // namespace

const Table<RenderDescription> &renderTable() {
    static constexpr Table<RenderDescription> table{
        .what = "\"render\"", .fields = kRenderFields, .finish = finishRender};
    return table;
}

const Table<CameraDescription> &cameraTable() {
    static constexpr Table<CameraDescription> table{
        .what = "a camera", .fields = kCameraFields, .finish = finishCamera};
    return table;
}

const Table<LightDescription> &lightTable() {
    static constexpr Table<LightDescription> table{.what = "a light", .fields = kLightFields, .finish = finishLight};
    return table;
}

} // namespace velm::host

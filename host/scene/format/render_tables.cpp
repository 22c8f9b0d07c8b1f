// The tables of render settings, cameras and lights.
#include "host/base/limits.h"
#include "host/scene/format/nested.h"
#include "host/scene/format/tables.h"

#include <fmt/format.h>

namespace velm::host {

namespace {

// ---- Render settings ----

constexpr CustomValue<RenderDescription> kWorkflow{
    .read =
        [](const ReadContext &context, const JsonMember &found, RenderDescription &render) {
            render.workflow =
                static_cast<Workflow>(readChoice(context, found.key, found.value, choiceRule(kWorkflowNames)));
        },
    .write = [](const WriteContext &, const RenderDescription &render) -> std::optional<nlohmann::ordered_json> {
        if (render.workflow == Workflow::linear) return std::nullopt;
        return writePlain(choiceRule(kWorkflowNames), static_cast<int>(render.workflow));
    },
    .schema = [] { return ruleSchema(choiceRule(kWorkflowNames)); }};

constexpr Field<RenderDescription> kRenderFields[] = {
    {.key = "width",
     .help = "Width of the picture, in pixels.",
     .rule = integerRule(1, kLargestSide),
     .target = &RenderDescription::width},
    {.key = "height",
     .help = "Height of the picture, in pixels.",
     .rule = integerRule(1, kLargestSide),
     .target = &RenderDescription::height},
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
     .target = kWorkflow},
};

void finishRender(const ReadContext &context, const JsonValue &object, RenderDescription &render) {
    if (render.lastFrame >= render.firstFrame) return;
    const JsonValue *last = object.find("lastFrame");
    context.fail(last ? last->line : object.line, fmt::format("the last frame, {}, comes before the first one, {}",
                                                              render.lastFrame, render.firstFrame));
}

// ---- Cameras ----

constexpr CustomValue<CameraDescription> kCameraTarget{
    .read =
        [](const ReadContext &context, const JsonMember &found, CameraDescription &camera) {
            camera.target = readVec3(context, found.key, found.value, vec3Rule());
            camera.hasTarget = true;
        },
    .write = [](const WriteContext &, const CameraDescription &camera) -> std::optional<nlohmann::ordered_json> {
        if (!camera.hasTarget) return std::nullopt;
        return writePlain(vec3Rule(), camera.target);
    },
    .schema = [] { return ruleSchema(vec3Rule()); }};

// A camera with a target has no rotation in its file.
constexpr CustomValue<CameraDescription> kCameraRotation{
    .read = [](const ReadContext &context, const JsonMember &found,
               CameraDescription &camera) { readPlain(context, found.key, found.value, vec3Rule(), camera.rotation); },
    .write = [](const WriteContext &, const CameraDescription &camera) -> std::optional<nlohmann::ordered_json> {
        if (camera.hasTarget || camera.rotation == CameraDescription{}.rotation) return std::nullopt;
        return writePlain(vec3Rule(), camera.rotation);
    },
    .schema = [] { return ruleSchema(vec3Rule()); }};

void finishCamera(const ReadContext &context, const JsonValue &object, CameraDescription &camera) {
    if (!camera.hasTarget) return;
    if (const JsonValue *rotation = object.find("rotation"))
        context.fail(rotation->line, "a camera that has a \"target\" cannot have a \"rotation\" too");
    if (camera.target == camera.position)
        context.fail(object.find("target")->line, "the position of the camera is its target");
}

constexpr ValueRule kFieldOfView{
    .kind = ValueRule::Kind::number, .minimum = 0, .maximum = 180, .exclusiveMinimum = true, .exclusiveMaximum = true};

constexpr Field<CameraDescription> kCameraFields[] = {
    {.key = "position",
     .help = "Position of the camera, in metres.",
     .rule = vec3Rule(),
     .target = &CameraDescription::position},
    {.key = "target",
     .help = "The point that the camera looks at, in metres; replaces a rotation.",
     .target = kCameraTarget},
    {.key = "rotation", .help = "Heading, pitch and bank, in degrees.", .target = kCameraRotation},
    {.key = "fieldOfView",
     .help = "Horizontal field of view, in degrees.",
     .rule = kFieldOfView,
     .target = &CameraDescription::fieldOfView},
};

// ---- Lights ----

constexpr const char *kLightKinds[] = {"point", "distant", "area"};
constexpr unsigned kPoint = 1u << static_cast<unsigned>(LightDescription::Kind::point);
constexpr unsigned kDistant = 1u << static_cast<unsigned>(LightDescription::Kind::distant);
constexpr unsigned kArea = 1u << static_cast<unsigned>(LightDescription::Kind::area);
static_assert(kPoint == 1 && kDistant == 2 && kArea == 4, "the texts of the kinds are in the order of the kinds");

void finishLight(const ReadContext &context, const JsonValue &object, LightDescription &light) {
    if (light.kind != LightDescription::Kind::point && light.position == light.target)
        context.fail(object.line, "the position of the light is its target");
}

constexpr Field<LightDescription> kLightFields[] = {
    {.key = "kind",
     .help = "A point light shines in all directions, a distant light has parallel rays, an area light soft shadows.",
     .rule = choiceRule(kLightKinds),
     .target = kindIn<&LightDescription::kind>,
     .required = true},
    {.key = "position",
     .help = "Position of the light, in metres.",
     .rule = vec3Rule(),
     .target = &LightDescription::position,
     .required = true},
    {.key = "target",
     .help = "The point that the light shines at, in metres; the origin by default.",
     .rule = vec3Rule(),
     .target = &LightDescription::target,
     .kinds = kDistant | kArea},
    {.key = "colour", .help = "Colour of the light.", .rule = colourRule(), .target = &LightDescription::colour},
    {.key = "intensity",
     .help = "1 lights a white surface that faces the light fully: at any distance from a distant light, at one metre "
             "from the others.",
     .rule = atLeastRule(0),
     .target = &LightDescription::intensity},
    {.key = "width",
     .help = "Width of the light's rectangle, in metres.",
     .rule = positiveRule(),
     .target = &LightDescription::width,
     .kinds = kArea},
    {.key = "height",
     .help = "Height of the light's rectangle, in metres.",
     .rule = positiveRule(),
     .target = &LightDescription::height,
     .kinds = kArea},
    {.key = "samples",
     .help = "Shadow rays for each lit point.",
     .rule = integerRule(1, kMostSamples),
     .target = &LightDescription::samples,
     .kinds = kArea},
    {.key = "shadows",
     .help = "Whether objects cast shadows in this light.",
     .rule = boolRule(),
     .target = &LightDescription::shadows},
};

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

// The tables of the scene as a whole, of its cameras, lights, backdrop, images and render settings.
#include "host/base/limits.h"
#include "host/scene/format/nested.h"
#include "host/scene/format/surface_collection.h"
#include "host/scene/format/tables.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace velm::host {

namespace {

// ---- Render settings ----

void readRenderCamera(const ReadContext &context, const JsonMember &found, RenderDescription &render) {
    render.camera = readText(context, found.key, found.value, textForm());
    render.cameraLocation = context.at(found.value.line);
}

constexpr Field<RenderDescription> kRenderFields[] = {
    {.key = "width",
     .help = "Columns of the picture.",
     .form = wholeForm(1, kLargestSide),
     .target = &RenderDescription::width},
    {.key = "height",
     .help = "Rows of the picture.",
     .form = wholeForm(1, kLargestSide),
     .target = &RenderDescription::height},
    {.key = "samples",
     .help = "Anti-aliasing samples of each pixel.",
     .form = wholeForm(1, kMostSamples),
     .target = &RenderDescription::samples},
    {.key = "recursionDepth",
     .help = "Bounces that a ray may make.",
     .form = wholeForm(0, kMaxRecursionDepth),
     .target = &RenderDescription::recursionDepth},
    {.key = "firstFrame",
     .help = "First frame of the animation.",
     .form = wholeForm(-kLastFrameNumber, kLastFrameNumber),
     .target = &RenderDescription::firstFrame},
    {.key = "lastFrame",
     .help = "Last frame of the animation.",
     .form = wholeForm(-kLastFrameNumber, kLastFrameNumber),
     .target = &RenderDescription::lastFrame},
    {.key = "frameStep",
     .help = "Frames from one rendered frame to the next.",
     .form = wholeForm(1, kLastFrameNumber),
     .target = &RenderDescription::frameStep},
    {.key = "framesPerSecond",
     .help = "Frames in one second of time.",
     .form = positiveForm(),
     .target = &RenderDescription::framesPerSecond},
    {.key = "camera",
     .help = "Name of the camera that is rendered; the first one when there is no word of it.",
     .target = ReadField<RenderDescription>(readRenderCamera),
     .schema = [] { return formSchema(textForm()); }},
    {.key = "ambientColour",
     .help = "Colour of the light that comes from everywhere.",
     .form = colourForm(),
     .target = &RenderDescription::ambientColour},
    {.key = "ambientIntensity",
     .help = "Strength of the light that comes from everywhere; 1 lights a white surface fully.",
     .form = leastForm(0),
     .target = &RenderDescription::ambientIntensity},
};

void finishRender(const ReadContext &context, const JsonValue &object, RenderDescription &render) {
    if (render.lastFrame >= render.firstFrame) return;
    const JsonValue *last = object.find("lastFrame");
    context.fail(last ? last->line : object.line, fmt::format("the last frame, {}, comes before the first one, {}",
                                                              render.lastFrame, render.firstFrame));
}

// ---- Cameras ----

void readCameraTarget(const ReadContext &context, const JsonMember &found, CameraDescription &camera) {
    camera.target = readTriple(context, found.key, found.value, tripleForm());
    camera.hasTarget = true;
}

void finishCamera(const ReadContext &context, const JsonValue &object, CameraDescription &camera) {
    if (!camera.hasTarget) return;
    if (const JsonValue *rotation = object.find("rotation"))
        context.fail(rotation->line, "a camera that has a \"target\" cannot have a \"rotation\" too");
    if (camera.target == camera.position)
        context.fail(object.find("target")->line, "the camera stands in its own target");
}

constexpr Form kFieldOfView{.kind = Form::Kind::number, .least = 0, .most = 180, .aboveLeast = true, .belowMost = true};

constexpr Field<CameraDescription> kCameraFields[] = {
    {.key = "position",
     .help = "Where the camera stands, in metres.",
     .form = tripleForm(),
     .target = &CameraDescription::position},
    {.key = "target",
     .help = "The point that the camera looks at, in metres; takes the place of a rotation.",
     .target = ReadField<CameraDescription>(readCameraTarget),
     .schema = [] { return formSchema(tripleForm()); }},
    {.key = "rotation",
     .help = "Heading, pitch and bank, in degrees.",
     .form = tripleForm(),
     .target = &CameraDescription::rotation},
    {.key = "fieldOfView",
     .help = "Horizontal field of view, in degrees.",
     .form = kFieldOfView,
     .target = &CameraDescription::fieldOfView},
};

// ---- Lights ----

constexpr const char *kLightKinds[] = {"point", "distant", "area"};
constexpr unsigned kPoint = 1u << static_cast<unsigned>(LightDescription::Kind::point);
constexpr unsigned kDistant = 1u << static_cast<unsigned>(LightDescription::Kind::distant);
constexpr unsigned kArea = 1u << static_cast<unsigned>(LightDescription::Kind::area);
static_assert(kPoint == 1 && kDistant == 2 && kArea == 4, "the texts of the kinds stand in the order of the kinds");

void finishLight(const ReadContext &context, const JsonValue &object, LightDescription &light) {
    if (light.kind != LightDescription::Kind::point && light.position == light.target)
        context.fail(object.line, "the light stands in its own target");
}

constexpr Field<LightDescription> kLightFields[] = {
    {.key = "kind",
     .help = "A point gives light all round, a distant light parallel rays, an area light soft shadows.",
     .form = choiceForm(kLightKinds),
     .target = SetChoice<LightDescription>(
         [](LightDescription &light, int kind) { light.kind = static_cast<LightDescription::Kind>(kind); }),
     .required = true},
    {.key = "position",
     .help = "Where the light stands, in metres.",
     .form = tripleForm(),
     .target = &LightDescription::position,
     .required = true},
    {.key = "target",
     .help = "The point that the light shines at, in metres; the origin when there is no word of it.",
     .form = tripleForm(),
     .target = &LightDescription::target,
     .kinds = kDistant | kArea},
    {.key = "colour", .help = "Its colour.", .form = colourForm(), .target = &LightDescription::colour},
    {.key = "intensity",
     .help = "1 lights a white surface that faces the light fully: at any distance from a distant light, at one metre "
             "from the others.",
     .form = leastForm(0),
     .target = &LightDescription::intensity},
    {.key = "width",
     .help = "Width of the lit rectangle, in metres.",
     .form = positiveForm(),
     .target = &LightDescription::width,
     .kinds = kArea},
    {.key = "height",
     .help = "Height of the lit rectangle, in metres.",
     .form = positiveForm(),
     .target = &LightDescription::height,
     .kinds = kArea},
    {.key = "samples",
     .help = "Shadow rays for each lit point.",
     .form = wholeForm(1, kMostSamples),
     .target = &LightDescription::samples,
     .kinds = kArea},
    {.key = "shadows",
     .help = "Whether objects cast shadows in its light.",
     .form = truthForm(),
     .target = &LightDescription::shadows},
};

// ---- Backdrop ----

constexpr const char *kBackdropKinds[] = {"plain", "gradient", "image"};
constexpr unsigned kPlain = 1u << static_cast<unsigned>(BackdropDescription::Kind::plain);
constexpr unsigned kGradient = 1u << static_cast<unsigned>(BackdropDescription::Kind::gradient);
constexpr unsigned kImage = 1u << static_cast<unsigned>(BackdropDescription::Kind::image);
static_assert(kPlain == 1 && kGradient == 2 && kImage == 4, "the texts of the kinds stand in the order of the kinds");

constexpr Field<BackdropDescription> kBackdropFields[] = {
    {.key = "kind",
     .help = "One colour, a gradient from straight up to straight down, or an image all round.",
     .form = choiceForm(kBackdropKinds),
     .target = SetChoice<BackdropDescription>(
         [](BackdropDescription &backdrop, int kind) { backdrop.kind = static_cast<BackdropDescription::Kind>(kind); }),
     .required = true},
    {.key = "colour",
     .help = "The one colour.",
     .form = colourForm(),
     .target = &BackdropDescription::colour,
     .kinds = kPlain},
    {.key = "zenith",
     .help = "Colour straight up.",
     .form = colourForm(),
     .target = &BackdropDescription::zenith,
     .kinds = kGradient},
    {.key = "sky",
     .help = "Colour of the sky at the horizon.",
     .form = colourForm(),
     .target = &BackdropDescription::sky,
     .kinds = kGradient},
    {.key = "ground",
     .help = "Colour of the ground at the horizon.",
     .form = colourForm(),
     .target = &BackdropDescription::ground,
     .kinds = kGradient},
    {.key = "nadir",
     .help = "Colour straight down.",
     .form = colourForm(),
     .target = &BackdropDescription::nadir,
     .kinds = kGradient},
    {.key = "skySqueeze",
     .help = "How close to the horizon the sky's colours draw together.",
     .form = positiveForm(),
     .target = &BackdropDescription::skySqueeze,
     .kinds = kGradient},
    {.key = "groundSqueeze",
     .help = "How close to the horizon the ground's colours draw together.",
     .form = positiveForm(),
     .target = &BackdropDescription::groundSqueeze,
     .kinds = kGradient},
    {.key = "image",
     .help = "Name of an image of the scene that goes all round, as a panorama of 360 by 180 degrees.",
     .form = textForm(),
     .target = &BackdropDescription::image,
     .required = true,
     .kinds = kImage},
    {.key = "seamAngle",
     .help = "How far the image is turned about the vertical, in degrees.",
     .form = numberForm(),
     .target = &BackdropDescription::seamAngle,
     .kinds = kImage},
    {.key = "brightness",
     .help = "What the image's colours are multiplied with.",
     .form = leastForm(0),
     .target = &BackdropDescription::brightness,
     .kinds = kImage},
};

void readBackdrop(const ReadContext &context, const JsonMember &found, SceneDescription &scene) {
    scene.backdrop.location = context.at(found.line);
    readObject(context, backdropTable(), found.value, scene.backdrop);
}

// ---- Images ----

// An image that is not there is no error yet: what uses it may go without.
void readImageFile(const ReadContext &context, const JsonMember &found, ImageDescription &image) {
    image.file = readText(context, found.key, found.value, textForm());
    image.fileLocation = context.at(found.value.line);
    if (auto file = findFile(image.file, context.directory, context.path))
        image.file = *file;
    else
        image.notFound = whyNotFound(image.file, context.directory, context.path);
}

constexpr Field<ImageDescription> kImageFields[] = {
    {.key = "file",
     .help = "The image's file; seen from the scene's directory, or in one of the data directories. Where it is "
             "missing or damaged, a warning says so, and what uses it goes without.",
     .target = ReadField<ImageDescription>(readImageFile),
     .schema = [] { return formSchema(textForm()); },
     .required = true},
    {.key = "source",
     .help = "Where people get the file from; told when it is missing.",
     .form = textForm(),
     .target = &ImageDescription::source},
};

// ---- The whole ----

constexpr Field<SceneDescription> kSceneFields[] = {
    {.key = "$schema",
     .help = "The schema of this format, for editors.",
     .target = ReadField<SceneDescription>([](const ReadContext &context, const JsonMember &found, SceneDescription &) {
         readText(context, found.key, found.value, textForm());
     }),
     .schema = [] { return formSchema(textForm()); }},
    {.key = "render",
     .help = "The picture, its quality, and the frames of the animation.",
     .target = ReadField<SceneDescription>(readNested<&SceneDescription::render, renderTable>),
     .schema = nestedSchema<renderTable>},
    {.key = "cameras",
     .help = "The cameras, by name; at least one.",
     .target = ReadField<SceneDescription>(readCollection<&SceneDescription::cameras, cameraTable>),
     .schema = collectionSchema<cameraTable>},
    {.key = "lights",
     .help = "The lights, by name.",
     .target = ReadField<SceneDescription>(readCollection<&SceneDescription::lights, lightTable>),
     .schema = collectionSchema<lightTable>},
    {.key = "backdrop",
     .help = "What is seen where there is no object; black when there is no word of it.",
     .target = ReadField<SceneDescription>(readBackdrop),
     .schema = nestedSchema<backdropTable>},
    {.key = "images",
     .help = "The images that backdrop and nodes may use, by name.",
     .target = ReadField<SceneDescription>(readCollection<&SceneDescription::images, imageTable>),
     .schema = collectionSchema<imageTable>},
    {.key = "objects",
     .help = "The objects, by name.",
     .target = ReadField<SceneDescription>(readCollection<&SceneDescription::objects, objectTable>),
     .schema = collectionSchema<objectTable>},
    {.key = "surfaces",
     .help = "The surfaces, by name: each a network of nodes; those of an object file come with \"from\".",
     .target = ReadField<SceneDescription>(readSurfaceCollection),
     .schema = surfaceCollectionSchema},
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
    static constexpr Table<LightDescription> table{
        .what = "a light",
        .fields = kLightFields,
        .kinds = kLightKinds,
        .kindOf = [](const LightDescription &light) { return static_cast<int>(light.kind); },
        .finish = finishLight};
    return table;
}

const Table<BackdropDescription> &backdropTable() {
    static constexpr Table<BackdropDescription> table{
        .what = "\"backdrop\"",
        .fields = kBackdropFields,
        .kinds = kBackdropKinds,
        .kindOf = [](const BackdropDescription &backdrop) { return static_cast<int>(backdrop.kind); }};
    return table;
}

const Table<ImageDescription> &imageTable() {
    static constexpr Table<ImageDescription> table{.what = "an image", .fields = kImageFields};
    return table;
}

const Table<SceneDescription> &sceneTable() {
    static constexpr Table<SceneDescription> table{.what = "a scene", .fields = kSceneFields};
    return table;
}

std::string resolveFile(const ReadContext &context, const JsonValue &value) {
    const std::string name = readText(context, "file", value, textForm());
    if (auto file = findFile(name, context.directory, context.path)) return *file;
    context.fail(value.line, whyNotFound(name, context.directory, context.path));
}

} // namespace velm::host

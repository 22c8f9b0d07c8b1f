// The tables of the scene as a whole, of its backdrop and its images.
#include "host/base/names.h"
#include "host/scene/format/instances.h"
#include "host/scene/format/nested.h"
#include "host/scene/format/surface_collection.h"
#include "host/scene/format/tables.h"

namespace velm::host {

namespace {

// ---- Backdrop ----

constexpr const char *kBackdropKinds[] = {"plain", "gradient", "image"};
constexpr unsigned kPlain = 1u << static_cast<unsigned>(BackdropDescription::Kind::plain);
constexpr unsigned kGradient = 1u << static_cast<unsigned>(BackdropDescription::Kind::gradient);
constexpr unsigned kImage = 1u << static_cast<unsigned>(BackdropDescription::Kind::image);
static_assert(kPlain == 1 && kGradient == 2 && kImage == 4, "the texts of the kinds are in the order of the kinds");

constexpr Field<BackdropDescription> kBackdropFields[] = {
    {.key = "kind",
     .help = "One colour, a gradient from straight up to straight down, or a panorama image.",
     .rule = choiceRule(kBackdropKinds),
     .target = kindIn<&BackdropDescription::kind>,
     .required = true},
    {.key = "colour",
     .help = "Colour of a plain backdrop.",
     .rule = colourRule(),
     .target = &BackdropDescription::colour,
     .kinds = kPlain},
    {.key = "zenith",
     .help = "Colour straight up.",
     .rule = colourRule(),
     .target = &BackdropDescription::zenith,
     .kinds = kGradient},
    {.key = "sky",
     .help = "Colour of the sky at the horizon.",
     .rule = colourRule(),
     .target = &BackdropDescription::sky,
     .kinds = kGradient},
    {.key = "ground",
     .help = "Colour of the ground at the horizon.",
     .rule = colourRule(),
     .target = &BackdropDescription::ground,
     .kinds = kGradient},
    {.key = "nadir",
     .help = "Colour straight down.",
     .rule = colourRule(),
     .target = &BackdropDescription::nadir,
     .kinds = kGradient},
    {.key = "skySqueeze",
     .help = "How strongly the colours of the sky are squeezed towards the horizon; the default is 2.",
     .rule = positiveRule(),
     .target = &BackdropDescription::skySqueeze,
     .kinds = kGradient},
    {.key = "groundSqueeze",
     .help = "How strongly the colours of the ground are squeezed towards the horizon; the default is 2.",
     .rule = positiveRule(),
     .target = &BackdropDescription::groundSqueeze,
     .kinds = kGradient},
    {.key = "image",
     .help = "Name of an image of the scene that surrounds it, as a panorama of 360 by 180 degrees.",
     .rule = textRule(),
     .target = &BackdropDescription::image,
     .required = true,
     .kinds = kImage},
    {.key = "seamAngle",
     .help = "Rotation of the image about the vertical, in degrees.",
     .rule = numberRule(),
     .target = &BackdropDescription::seamAngle,
     .kinds = kImage},
    {.key = "brightness",
     .help = "Factor by which the colours of the image are multiplied.",
     .rule = atLeastRule(0),
     .target = &BackdropDescription::brightness,
     .kinds = kImage},
};

// ---- Fog ----

constexpr const char *kFogKinds[] = {"none", "linear", "quadratic", "cubic"};
static_assert(static_cast<int>(FogDescription::Kind::none) == 0 &&
              static_cast<int>(FogDescription::Kind::linear) == 1 &&
              static_cast<int>(FogDescription::Kind::quadratic) == 2 &&
              static_cast<int>(FogDescription::Kind::cubic) == 3);

constexpr unsigned kSomeFog = ~1u; // the kinds other than none
constexpr ValueRule kAmount{.kind = ValueRule::Kind::number, .minimum = 0, .maximum = 1};

constexpr Field<FogDescription> kFogFields[] = {
    {.key = "kind",
     .help = "How the fog grows with the distance: evenly, or faster near its beginning.",
     .rule = choiceRule(kFogKinds),
     .target = kindIn<&FogDescription::kind>,
     .required = true},
    {.key = "colour",
     .help = "Colour of the fog.",
     .rule = colourRule(),
     .target = &FogDescription::colour,
     .kinds = kSomeFog},
    {.key = "backdropColour",
     .help = "Whether the fog has the colour of the backdrop behind it, instead of its own.",
     .rule = boolRule(),
     .target = &FogDescription::backdropColour,
     .kinds = kSomeFog},
    {.key = "minDistance",
     .help = "Distance from the camera at which the fog begins to grow, in metres.",
     .rule = atLeastRule(0),
     .target = &FogDescription::minDistance,
     .kinds = kSomeFog},
    {.key = "maxDistance",
     .help = "Distance from the camera from which on the fog does not grow any more, in metres.",
     .rule = positiveRule(),
     .target = &FogDescription::maxDistance,
     .kinds = kSomeFog},
    {.key = "minAmount",
     .help = "Amount of the fog up to the smaller distance; 1 hides everything.",
     .rule = kAmount,
     .target = &FogDescription::minAmount,
     .kinds = kSomeFog},
    {.key = "maxAmount",
     .help = "Amount of the fog from the larger distance on.",
     .rule = kAmount,
     .target = &FogDescription::maxAmount,
     .kinds = kSomeFog},
};

void finishFog(const ReadContext &context, const JsonValue &object, FogDescription &fog) {
    if (fog.minDistance < fog.maxDistance) return;
    const JsonValue *found = object.find("maxDistance");
    if (!found) found = object.find("minDistance");
    context.fail(found->line, "\"maxDistance\" must be above \"minDistance\"");
}

// ---- Images ----

constexpr CustomValue<ImageDescription> kImageFile{
    .read =
        [](const ReadContext &context, const JsonMember &found, ImageDescription &image) {
            image.file = readText(context, found.key, found.value, textRule());
            image.fileLocation = context.at(found.value.line);
        },
    .write = [](const WriteContext &context, const ImageDescription &image) -> std::optional<nlohmann::ordered_json> {
        return image.notFound.empty() ? context.nameOf(image.file) : image.file;
    },
    .schema = textSchema};

constexpr Field<ImageSequence> kSequenceFields[] = {
    {.key = "first",
     .help = "The smallest number in the names of the files.",
     .rule = integerRule(),
     .target = &ImageSequence::first,
     .required = true},
    {.key = "last",
     .help = "The largest number in the names of the files.",
     .rule = integerRule(),
     .target = &ImageSequence::last,
     .required = true},
    {.key = "offset",
     .help = "Number that is added to the number of the frame to get the number of the file.",
     .rule = integerRule(),
     .target = &ImageSequence::offset},
    {.key = "loop",
     .help = "Whether the first file follows the last one again. By default, frames before the first file show the "
             "first one, and frames after the last file show the last one.",
     .rule = boolRule(),
     .target = &ImageSequence::loop},
};

constexpr Table<ImageSequence> kSequenceTable{.what = "\"sequence\"", .fields = kSequenceFields};

constexpr CustomValue<ImageDescription> kImageSequence{
    .read =
        [](const ReadContext &context, const JsonMember &found, ImageDescription &image) {
            ImageSequence &sequence = image.sequence.emplace();
            readObject(context, kSequenceTable, found.value, sequence);
            if (sequence.last < sequence.first) context.fail(found.value.line, "\"last\" must not be below \"first\"");
        },
    .write = [](const WriteContext &context, const ImageDescription &image) -> std::optional<nlohmann::ordered_json> {
        if (!image.sequence) return std::nullopt;
        return writeObject(context, kSequenceTable, *image.sequence);
    },
    .schema = [] { return objectSchema(kSequenceTable); }};

constexpr const char *kFilterKinds[] = {"brightness", "contrast", "saturation", "hue", "gamma", "negative"};
constexpr unsigned kNegativeFilter = 1u << static_cast<unsigned>(ImageFilter::Kind::negative);
static_assert(static_cast<int>(ImageFilter::Kind::brightness) == 0 &&
                  static_cast<int>(ImageFilter::Kind::contrast) == 1 &&
                  static_cast<int>(ImageFilter::Kind::saturation) == 2 &&
                  static_cast<int>(ImageFilter::Kind::hue) == 3 && static_cast<int>(ImageFilter::Kind::gamma) == 4 &&
                  static_cast<int>(ImageFilter::Kind::negative) == 5,
              "the texts of the kinds are in the order of the kinds");

constexpr Field<ImageFilter> kFilterFields[] = {
    {.key = "kind",
     .help = "What the filter changes.",
     .rule = choiceRule(kFilterKinds),
     .target = kindIn<&ImageFilter::kind>,
     .required = true},
    {.key = "amount",
     .help = "Amount of the change: 0 is none, except for \"gamma\", where 1 is none. A hue of 1 is the whole circle.",
     .rule = numberRule(),
     .target = &ImageFilter::amount,
     .required = true,
     .kinds = ~kNegativeFilter},
};

constexpr Table<ImageFilter> kFilterTable{.what = "a filter", .fields = kFilterFields};

constexpr CustomValue<ImageDescription> kImageFilters{
    .read =
        [](const ReadContext &context, const JsonMember &found, ImageDescription &image) {
            const JsonValue &list = found.value;
            if (list.kind != JsonValue::Kind::list)
                context.fail(list.line, "\"filters\" must be a list of filters; found " + list.shown());
            for (const JsonValue &element : list.list)
                readObject(context, kFilterTable, element, image.filters.emplace_back());
        },
    .write = [](const WriteContext &context, const ImageDescription &image) -> std::optional<nlohmann::ordered_json> {
        if (image.filters.empty()) return std::nullopt;
        nlohmann::ordered_json list = nlohmann::ordered_json::array();
        for (const ImageFilter &filter : image.filters) list.push_back(writeObject(context, kFilterTable, filter));
        return list;
    },
    .schema =
        [] {
            return nlohmann::ordered_json{{"type", "array"}, {"items", objectSchema(kFilterTable)}};
        }};

// A missing image is not an error yet: whatever uses it may do without.
void findImage(const ReadContext &context, const JsonValue &, ImageDescription &image) {
    if (image.sequence && !isSequencePattern(image.file))
        throw InputError(image.fileLocation,
                         "the \"file\" of a sequence needs \"#\" in its name, in place of the number, "
                         "such as \"fire_####.png\"; found " +
                             inQuotes(image.file));
    const auto file = image.sequence ? findSequence(image.file, *image.sequence, context.directory, context.path)
                                     : findFile(image.file, context.directory, context.path);
    if (file)
        image.file = *file;
    else
        image.notFound = whyNotFound(image.file, context.directory, context.path);
}

constexpr Field<ImageDescription> kImageFields[] = {
    {.key = "file",
     .help = "The image's file, relative to the scene's directory or to one of the data directories. If it is missing "
             "or damaged, a warning says so, and the scene is rendered without it.",
     .target = kImageFile,
     .required = true},
    {.key = "sequence",
     .help =
         "Makes the image show another file at each frame: \"file\" has \"#\" in place of the number, once for each "
         "digit.",
     .target = kImageSequence},
    {.key = "filters",
     .help = "Changes to the colours of the file, in the order in which they are applied.",
     .target = kImageFilters},
    {.key = "source",
     .help = "Where people get the file from; the warning about a missing file repeats it.",
     .rule = textRule(),
     .target = &ImageDescription::source},
};

// ---- The scene ----

constexpr CustomValue<SceneDescription> kObjects{
    .read =
        [](const ReadContext &context, const JsonMember &found, SceneDescription &scene) {
            readNamed(context, objectTable(), found, scene.objects);
            addInstances(scene.objects);
        },
    .write = [](const WriteContext &context, const SceneDescription &scene) -> std::optional<nlohmann::ordered_json> {
        if (scene.objects.empty()) return std::nullopt;
        nlohmann::ordered_json json = nlohmann::ordered_json::object();
        addNamed(context, objectTable(), withoutInstances(scene.objects), json);
        return json;
    },
    .schema =
        [] {
            return nlohmann::ordered_json{{"type", "object"}, {"additionalProperties", objectSchema(objectTable())}};
        }};

constexpr Field<SceneDescription> kSceneFields[] = {
    {.key = "$schema",
     .help = "The schema of this format, for editors.",
     .rule = textRule(),
     .target = &SceneDescription::schema},
    {.key = "render",
     .help = "The picture, its quality, and the frames of the animation.",
     .target = nested<&SceneDescription::render, renderTable>},
    {.key = "cameras",
     .help = "The cameras, by name; at least one.",
     .target = collection<&SceneDescription::cameras, cameraTable>},
    {.key = "lights", .help = "The lights, by name.", .target = collection<&SceneDescription::lights, lightTable>},
    {.key = "backdrop",
     .help = "What is visible where there is no object; black by default.",
     .target = nested<&SceneDescription::backdrop, backdropTable>},
    {.key = "fog",
     .help = "Fog, which covers what is far from the camera; none by default.",
     .target = nested<&SceneDescription::fog, fogTable>},
    {.key = "images",
     .help = "The images that the backdrop and nodes may use, by name.",
     .target = collection<&SceneDescription::images, imageTable>},
    {.key = "objects", .help = "The objects, by name.", .target = kObjects},
    {.key = "nulls",
     .help = "Items without a shape that others have as their parent or target, by name.",
     .target = collection<&SceneDescription::nulls, nullTable>},
    {.key = "surfaces",
     .help = "The surfaces, by name: each is a network of nodes. \"from\" adds those of an object file.",
     .target = CustomValue<SceneDescription>{.read = readSurfaceCollection,
                                             .write = writeSurfaceCollection,
                                             .schema = surfaceCollectionSchema}},
};

} // namespace

const Table<BackdropDescription> &backdropTable() {
    static constexpr Table<BackdropDescription> table{.what = "\"backdrop\"", .fields = kBackdropFields};
    return table;
}

const Table<FogDescription> &fogTable() {
    static constexpr Table<FogDescription> table{.what = "\"fog\"", .fields = kFogFields, .finish = finishFog};
    return table;
}

const Table<ImageDescription> &imageTable() {
    static constexpr Table<ImageDescription> table{.what = "an image", .fields = kImageFields, .finish = findImage};
    return table;
}

const Table<SceneDescription> &sceneTable() {
    static constexpr Table<SceneDescription> table{.what = "a scene", .fields = kSceneFields};
    return table;
}

std::string resolveFile(const ReadContext &context, const JsonValue &value) {
    const std::string name = readText(context, "file", value, textRule());
    if (auto file = findFile(name, context.directory, context.path)) return *file;
    context.fail(value.line, whyNotFound(name, context.directory, context.path));
}

} // namespace velm::host

// The tables of objects, their shapes, and nulls.
#include "host/scene/format/item_rows.h"
#include "host/scene/format/nested.h"
#include "host/scene/format/quoted_list.h"
#include "host/scene/format/surface_collection.h"
#include "host/scene/format/tables.h"

#include <algorithm>
#include <tuple>

namespace velm::host {

namespace {

using Json = nlohmann::ordered_json;

// ---- Shapes ----

constexpr int kFewestSegments = 3, kMostSegments = 4096;

constexpr ValueRule kLayerRule = integerRule(0, 65535);

void readLayer(const ReadContext &context, const JsonMember &found, MeshFile &mesh) {
    mesh.layer = readInteger(context, found.key, found.value, kLayerRule);
}

std::optional<Json> writeLayer(const WriteContext &, const MeshFile &mesh) {
    if (!mesh.layer) return std::nullopt;
    return *mesh.layer;
}

constexpr Field<MeshFile> kMeshFields[] = {
    {.key = "file",
     .help = "The mesh's file (LWO, LXO, FBX, GLB, glTF, PLY, DAE, 3DS, OFF, STL or OBJ), relative to the scene's "
             "directory or to one of the data directories.",
     .target = CustomValue<MeshFile>{.read = [](const ReadContext &context, const JsonMember &found,
                                                MeshFile &mesh) { mesh.file = resolveFile(context, found.value); },
                                     .write = [](const WriteContext &context, const MeshFile &mesh)
                                         -> std::optional<Json> { return context.nameOf(mesh.file); },
                                     .schema = textSchema},
     .required = true},
    {.key = "layer",
     .help =
         "Number of the only layer of an LWO file to use, as in the file: one less than LightWave shows. All visible "
         "layers by default.",
     .target = CustomValue<MeshFile>{.read = readLayer,
                                     .write = writeLayer,
                                     .schema = [] { return ruleSchema(kLayerRule); }}},
    {.key = "subdivision",
     .help = "How often the subdivision surfaces of an LWO file are divided: an edge of their control cages becomes 2 "
             "to the power of this number of edges. 0 draws the cages.",
     .rule = integerRule(0, kMostSubdivision),
     .target = &MeshFile::subdivision},
};

constexpr Field<PlaneShape> kPlaneFields[] = {
    {.key = "width", .help = "Size along X, in metres.", .rule = positiveRule(), .target = &PlaneShape::width},
    {.key = "depth", .help = "Size along Z, in metres.", .rule = positiveRule(), .target = &PlaneShape::depth},
};

constexpr ValueRule kSizes{.kind = ValueRule::Kind::vec3, .minimum = 0, .exclusiveMinimum = true};

constexpr Field<BoxShape> kBoxFields[] = {
    {.key = "size", .help = "Size along X, Y and Z, in metres.", .rule = kSizes, .target = &BoxShape::size},
    {.key = "inward",
     .help = "Whether the polygons face the inside, as in a room.",
     .rule = boolRule(),
     .target = &BoxShape::inward},
};

constexpr Field<SphereShape> kSphereFields[] = {
    {.key = "radius", .help = "Radius, in metres.", .rule = positiveRule(), .target = &SphereShape::radius},
    {.key = "segments",
     .help = "Polygons about the axis.",
     .rule = integerRule(kFewestSegments, kMostSegments),
     .target = &SphereShape::segments},
};

template <class Shape>
struct ShapeRow {
    const char *key; // of the object that has the shape
    const char *help;
    std::span<const Field<Shape>> fields;
};

// One row for each alternative of ShapeDescription, in their order.
constexpr std::tuple kShapes{
    ShapeRow<MeshFile>{.key = "mesh", .help = "A mesh from a file.", .fields = kMeshFields},
    ShapeRow<PlaneShape>{.key = "plane",
                         .help = "A horizontal rectangle that faces up, centred on the object's position.",
                         .fields = kPlaneFields},
    ShapeRow<BoxShape>{.key = "box", .help = "A box, centred on the object's position.", .fields = kBoxFields},
    ShapeRow<SphereShape>{
        .key = "sphere", .help = "A sphere, centred on the object's position.", .fields = kSphereFields},
};

template <class... Shapes>
consteval bool areRowsOf(const std::variant<Shapes...> *) {
    return std::is_same_v<std::remove_const_t<decltype(kShapes)>, std::tuple<ShapeRow<Shapes>...>>;
}
static_assert(areRowsOf(static_cast<const ShapeDescription *>(nullptr)), "every shape has its row, in order");

constexpr auto kShapeKeys = std::apply([](const auto &...rows) { return std::array{rows.key...}; }, kShapes);

template <class Shape>
const Table<Shape> &shapeTable() {
    static constexpr const ShapeRow<Shape> &row = std::get<ShapeRow<Shape>>(kShapes);
    static const std::string what = quotedList(std::span(&row.key, 1));
    static const Table<Shape> table{.what = what.c_str(), .fields = row.fields};
    return table;
}

template <class Shape>
constexpr CustomValue<ObjectDescription> kShapeValue{
    .read =
        [](const ReadContext &context, const JsonMember &found, ObjectDescription &object) {
            Shape shape;
            readObject(context, shapeTable<Shape>(), found.value, shape);
            object.shape = shape;
        },
    .write = [](const WriteContext &context, const ObjectDescription &object) -> std::optional<Json> {
        const auto *shape = std::get_if<Shape>(&object.shape);
        if (!shape) return std::nullopt;
        return writeObject(context, shapeTable<Shape>(), *shape);
    },
    .schema = [] { return objectSchema(shapeTable<Shape>()); }};

template <class Shape>
constexpr Field<ObjectDescription> shapeField(const ShapeRow<Shape> &row) {
    return {.key = row.key, .help = row.help, .target = kShapeValue<Shape>};
}

// ---- Surfaces of an object ----

void readSurface(const ReadContext &context, const JsonMember &found, ObjectDescription &object) {
    object.surfaces.insert(object.surfaces.begin(), {.material = "",
                                                     .surface = readText(context, found.key, found.value, textRule()),
                                                     .location = context.at(found.value.line)});
}

std::optional<Json> writeSurface(const WriteContext &, const ObjectDescription &object) {
    const auto found = std::ranges::find(object.surfaces, "", &SurfaceUse::material);
    if (found == object.surfaces.end()) return std::nullopt;
    return found->surface;
}

void readMaterials(const ReadContext &context, const JsonMember &found, ObjectDescription &object) {
    requireObject(context, '"' + found.key + '"', found.value);
    for (const JsonMember &member : found.value.members) {
        checkName(context, member, "a material");
        object.surfaces.push_back({.material = member.key,
                                   .surface = readText(context, member.key, member.value, textRule()),
                                   .location = context.at(member.line)});
    }
}

std::optional<Json> writeMaterials(const WriteContext &, const ObjectDescription &object) {
    Json materials = Json::object();
    for (const SurfaceUse &use : object.surfaces)
        if (!use.material.empty()) materials[use.material] = use.surface;
    if (materials.empty()) return std::nullopt;
    return materials;
}

// ---- Instances of an object ----

constexpr Field<InstanceDescription> kInstanceFields[] = {
    {.key = "position",
     .help = "Position of the pivot, in metres, relative to the object's parent.",
     .rule = kVectorRule,
     .target = &InstanceDescription::position},
    {.key = "rotation",
     .help = "Heading, pitch and bank, in degrees, relative to the object's parent.",
     .rule = kVectorRule,
     .target = &InstanceDescription::rotation},
    {.key = "scale",
     .help = "Factor by which the mesh is scaled: one number, or one along each axis.",
     .rule = kScaleRule,
     .target = &InstanceDescription::scale},
};

constexpr Table<InstanceDescription> kInstanceTable{.what = "an instance", .fields = kInstanceFields};

constexpr CustomValue<ObjectDescription> kInstances{
    .read =
        [](const ReadContext &context, const JsonMember &found, ObjectDescription &object) {
            const JsonValue &list = found.value;
            if (list.kind != JsonValue::Kind::list)
                context.fail(list.line, "\"instances\" must be a list of objects; found " + list.shown());
            for (const JsonValue &element : list.list) {
                InstanceDescription &instance = object.instances.emplace_back();
                instance.location = context.at(element.line);
                readObject(context, kInstanceTable, element, instance);
            }
        },
    .write = [](const WriteContext &context, const ObjectDescription &object) -> std::optional<Json> {
        if (object.instances.empty()) return std::nullopt;
        Json list = Json::array();
        for (const InstanceDescription &instance : object.instances)
            list.push_back(writeObject(context, kInstanceTable, instance));
        return list;
    },
    .schema =
        [] {
            return Json{{"type", "array"}, {"items", objectSchema(kInstanceTable)}};
        }};

// ---- Objects ----

constexpr ValueRule kDissolveRule{.kind = ValueRule::Kind::number, .minimum = 0, .maximum = 1};

constexpr auto kOtherFields = std::to_array<Field<ObjectDescription>>({
    {.key = "surface",
     .help = "Name of the surface of all polygons that \"materials\" does not mention. Required, except for a mesh "
             "from an object file (.lwo), which then gets the file's own surfaces.",
     .target = CustomValue<ObjectDescription>{.read = readSurface, .write = writeSurface, .schema = textSchema}},
    {.key = "materials",
     .help = "Surfaces of polygons, by the material that the mesh's file gives them.",
     .target =
         CustomValue<ObjectDescription>{.read = readMaterials,
                                        .write = writeMaterials,
                                        .schema =
                                            [] {
                                                return Json{{"type", "object"}, {"additionalProperties", textSchema()}};
                                            }}},
    {.key = "instances",
     .help = "Transforms of further objects like this one, which share its mesh and move with its parent.",
     .target = kInstances},
    {.key = "seenByCamera",
     .help = "Whether the camera sees the object.",
     .rule = boolRule(),
     .target = &ObjectDescription::seenByCamera},
    {.key = "seenByRays",
     .help = "Whether reflections, refractions and occlusion see the object.",
     .rule = boolRule(),
     .target = &ObjectDescription::seenByRays},
    {.key = "castsShadows",
     .help = "Whether the object casts shadows.",
     .rule = boolRule(),
     .target = &ObjectDescription::castsShadows},
    {.key = "dissolve",
     .help = "0 for a visible object, 1 for an invisible one. Objects in between are drawn like visible ones.",
     .target = keyed<ObjectDescription, Channel::dissolve, &ObjectDescription::dissolve, kDissolveRule>},
});

constexpr auto kShapeFields = std::apply([](const auto &...rows) { return std::array{shapeField(rows)...}; }, kShapes);

constexpr auto kObjectFields = joined(kShapeFields,
                                      std::array{kPositionField<ObjectDescription>, kTargetField<ObjectDescription>,
                                                 kRotationField<ObjectDescription>, kScaleField<ObjectDescription>,
                                                 kPivotField<ObjectDescription>, kParentField<ObjectDescription>},
                                      kOtherFields);

// ---- Nulls ----

constexpr std::array kNullFields{kPositionField<NullDescription>, kTargetField<NullDescription>,
                                 kRotationField<NullDescription>, kScaleField<NullDescription>,
                                 kPivotField<NullDescription>,    kParentField<NullDescription>};

void finishNull(const ReadContext &context, const JsonValue &value, NullDescription &item) {
    checkAim(context, value, item, "null");
}

void finishObject(const ReadContext &context, const JsonValue &value, ObjectDescription &object) {
    checkAim(context, value, object, "object");
    if (value.find("surface")) return;
    const auto *mesh = std::get_if<MeshFile>(&object.shape);
    if (!mesh || !isObjectFile(mesh->file)) context.fail(value.line, "an object needs \"surface\"");
}

} // namespace

const Table<ObjectDescription> &objectTable() {
    static constexpr Table<ObjectDescription> table{
        .what = "an object", .fields = kObjectFields, .oneOf = kShapeKeys, .finish = finishObject};
    return table;
}

const Table<NullDescription> &nullTable() {
    static constexpr Table<NullDescription> table{.what = "a null", .fields = kNullFields, .finish = finishNull};
    return table;
}

} // namespace velm::host

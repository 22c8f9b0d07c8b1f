// The tables of objects and their shapes.
#include "host/scene/format/nested.h"
#include "host/scene/format/surface_collection.h"
#include "host/scene/format/tables.h"

namespace velm::host {

namespace {

constexpr int kFewestSegments = 3, kMostSegments = 4096;

constexpr Field<MeshFile> kMeshFields[] = {
    {.key = "file",
     .help = "The mesh's file (OBJ, PLY, 3DS, LWO and so on); seen from the scene's directory, or in one of the data "
             "directories.",
     .target = ReadField<MeshFile>([](const ReadContext &context, const JsonMember &found, MeshFile &mesh) {
         mesh.file = resolveFile(context, found.value);
     }),
     .schema = [] { return formSchema(textForm()); },
     .required = true},
};

constexpr Field<PlaneShape> kPlaneFields[] = {
    {.key = "width", .help = "Along X, in metres.", .form = positiveForm(), .target = &PlaneShape::width},
    {.key = "depth", .help = "Along Z, in metres.", .form = positiveForm(), .target = &PlaneShape::depth},
};

constexpr Form kSizes{.kind = Form::Kind::triple, .least = 0, .aboveLeast = true};

constexpr Field<BoxShape> kBoxFields[] = {
    {.key = "size", .help = "Along X, Y and Z, in metres.", .form = kSizes, .target = &BoxShape::size},
    {.key = "inward",
     .help = "Whether the polygons face the inside, as those of a room do.",
     .form = truthForm(),
     .target = &BoxShape::inward},
};

constexpr Field<SphereShape> kSphereFields[] = {
    {.key = "radius", .help = "In metres.", .form = positiveForm(), .target = &SphereShape::radius},
    {.key = "segments",
     .help = "Polygons about the axis.",
     .form = wholeForm(kFewestSegments, kMostSegments),
     .target = &SphereShape::segments},
};

template <class Shape>
const Table<Shape> &shapeTable();
template <>
const Table<MeshFile> &shapeTable() {
    static constexpr Table<MeshFile> table{.what = "\"mesh\"", .fields = kMeshFields};
    return table;
}
template <>
const Table<PlaneShape> &shapeTable() {
    static constexpr Table<PlaneShape> table{.what = "\"plane\"", .fields = kPlaneFields};
    return table;
}
template <>
const Table<BoxShape> &shapeTable() {
    static constexpr Table<BoxShape> table{.what = "\"box\"", .fields = kBoxFields};
    return table;
}
template <>
const Table<SphereShape> &shapeTable() {
    static constexpr Table<SphereShape> table{.what = "\"sphere\"", .fields = kSphereFields};
    return table;
}

template <class Shape>
void readShape(const ReadContext &context, const JsonMember &found, ObjectDescription &object) {
    Shape shape;
    readObject(context, shapeTable<Shape>(), found.value, shape);
    object.shape = shape;
}

template <class Shape>
constexpr Field<ObjectDescription> shapeField(const char *key, const char *help) {
    return {.key = key,
            .help = help,
            .target = ReadField<ObjectDescription>(readShape<Shape>),
            .schema = nestedSchema<shapeTable<Shape>>};
}

// Triples of the object's own place are a level down in the description.
template <Double3 TransformDescription::*member>
void readTransform(const ReadContext &context, const JsonMember &found, ObjectDescription &object) {
    object.transform.*member = readTriple(context, found.key, found.value, tripleForm());
}

constexpr Form kScale{.kind = Form::Kind::scale};

void readScale(const ReadContext &context, const JsonMember &found, ObjectDescription &object) {
    object.transform.scale = readTriple(context, found.key, found.value, kScale);
}

void readSurface(const ReadContext &context, const JsonMember &found, ObjectDescription &object) {
    object.surfaces.push_back({.material = "",
                               .surface = readText(context, found.key, found.value, textForm()),
                               .location = context.at(found.value.line)});
}

void readMaterials(const ReadContext &context, const JsonMember &found, ObjectDescription &object) {
    wantObject(context, '"' + found.key + '"', found.value);
    for (const JsonMember &member : found.value.members) {
        checkName(context, member, "a material");
        object.surfaces.push_back({.material = member.key,
                                   .surface = readText(context, member.key, member.value, textForm()),
                                   .location = context.at(member.line)});
    }
}

constexpr Field<ObjectDescription> kObjectFields[] = {
    shapeField<MeshFile>("mesh", "A mesh from a file."),
    shapeField<PlaneShape>("plane", "A horizontal rectangle that faces up, centred on the object's position."),
    shapeField<BoxShape>("box", "A box, centred on the object's position."),
    shapeField<SphereShape>("sphere", "A sphere, centred on the object's position."),
    {.key = "position",
     .help = "Where the shape's origin stands, in metres.",
     .target = ReadField<ObjectDescription>(readTransform<&TransformDescription::position>),
     .schema = [] { return formSchema(tripleForm()); }},
    {.key = "rotation",
     .help = "Heading, pitch and bank, in degrees.",
     .target = ReadField<ObjectDescription>(readTransform<&TransformDescription::rotation>),
     .schema = [] { return formSchema(tripleForm()); }},
    {.key = "scale",
     .help = "What the shape's size is multiplied with: one number, or one along each axis.",
     .target = ReadField<ObjectDescription>(readScale),
     .schema = [] { return formSchema(kScale); }},
    {.key = "surface",
     .help = "Name of the surface of all polygons that \"materials\" does not tell otherwise. A mesh from an object "
             "file (.lwo) has surfaces of its own, which it gets when there is no word of it; all others need it.",
     .target = ReadField<ObjectDescription>(readSurface),
     .schema = [] { return formSchema(textForm()); }},
    {.key = "materials",
     .help = "Surfaces of polygons by the material that the mesh's file gives them.",
     .target = ReadField<ObjectDescription>(readMaterials),
     .schema =
         [] {
             return nlohmann::ordered_json{{"type", "object"}, {"additionalProperties", formSchema(textForm())}};
         }},
    {.key = "seenByCamera",
     .help = "Whether the camera sees the object.",
     .form = truthForm(),
     .target = &ObjectDescription::seenByCamera},
    {.key = "seenByRays",
     .help = "Whether reflections, refractions and occlusion see the object.",
     .form = truthForm(),
     .target = &ObjectDescription::seenByRays},
    {.key = "castsShadows",
     .help = "Whether the object casts shadows.",
     .form = truthForm(),
     .target = &ObjectDescription::castsShadows},
};

void finishObject(const ReadContext &context, const JsonValue &value, ObjectDescription &object) {
    if (value.find("surface")) return;
    const auto *mesh = std::get_if<MeshFile>(&object.shape);
    if (!mesh || !isObjectFile(mesh->file)) context.fail(value.line, "an object needs \"surface\"");
}

constexpr const char *kShapes[] = {"mesh", "plane", "box", "sphere"};

} // namespace

const Table<ObjectDescription> &objectTable() {
    static constexpr Table<ObjectDescription> table{
        .what = "an object", .fields = kObjectFields, .oneOf = kShapes, .finish = finishObject};
    return table;
}

} // namespace velm::host

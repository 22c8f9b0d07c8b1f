// A scene as its file describes it: plain data, checked against the format's rules, not yet built. The reader fills it;
// the builders of networks and of the render scene, and the writer, read it. Units are those of the file: metres for
// lengths, degrees for rotations and fields of view, 1.0 for full colour; settings are in the units that panels show.
//
// Two descriptions are equal when all that they hold is equal, source locations included.
#pragma once

#include "host/base/error.h"
#include "host/base/image_filter.h"
#include "host/base/image_sequence.h"
#include "host/base/limits.h"
#include "host/base/workflow.h"
#include "host/graph/node_look.h"
#include "host/panel/setting.h"
#include "host/services/backdrop_description.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace velm::host {

struct NetworkDescription;

struct NodeDescription {
    std::string name;   // unique in its network
    std::string server; // "Velm Counter"
    std::string kind;   // the server's display name; not empty: without the server, the node becomes a placeholder
    std::string data;   // the binary data that the server saved of the node; `settings` are applied after it
    std::vector<SettingDescription> settings;
    std::vector<NetworkDescription> network; // the network inside the node: none or one
    NodeLook look;
    SourceLocation location;

    bool operator==(const NodeDescription &) const = default;
};

struct ConnectionDescription {
    std::string fromNode, output; // "AO", "Color"
    std::string toNode, input;    // the network's root has the name of the surface or node that owns the network
    SourceLocation location;

    bool operator==(const ConnectionDescription &) const = default;
};

// How an editor shows a network.
struct NetworkView {
    std::array<int, 2> location{0, 0};
    double zoom = 1;
    int disabled = 0; // other than 0: the network is switched off
    NodeLook root;

    bool operator==(const NetworkView &) const = default;
};

struct NetworkDescription {
    std::vector<NodeDescription> nodes;
    std::vector<ConnectionDescription> connections;
    std::vector<std::string> otherInputs; // inputs of the root that only other programs read; preserved for them
    NetworkView view;
    SourceLocation location;

    bool operator==(const NetworkDescription &) const = default;
};

// Where a surface comes from that an object file brings, and what the file has of it.
struct SavedNetwork {
    std::string block;      // "NODS", its size, its contents; empty where the surface has no network
    std::string file;       // the object file; empty for a surface that the scene describes
    std::string name;       // the surface's name in the file
    std::size_t offset = 0; // of the block in the file, in bytes
    // The surface's own values in the file. A surface whose values differ from these was changed by hand.
    std::vector<SettingDescription> settings;
    double smoothingAngle = 0;
    bool doubleSided = true;

    bool operator==(const SavedNetwork &) const = default;
};

struct SurfaceDescription {
    std::string name;
    std::vector<SettingDescription> settings; // of the root node: "Color", "Diffuse" and so on
    // For a surface from an object file: the nodes made from its texture layers. They are added to the network in
    // `saved`, which then has no nodes of its own.
    NetworkDescription network;
    SavedNetwork saved;           // the root's data in its block override `settings`
    double smoothingAngle = 89.5; // degrees; 0 gives flat polygons
    bool doubleSided = true;
    SourceLocation location;

    bool operator==(const SurfaceDescription &) const = default;
};

struct TransformDescription {
    Double3 position{};
    Double3 rotation{}; // heading, pitch, bank
    Double3 scale{1, 1, 1};
    Double3 pivot{}; // the point that is at `position`, and about which the item is rotated and scaled

    bool operator==(const TransformDescription &) const = default;
};

// The values of items that may have keys. Each component of a vector has keys of its own.
enum class Channel {
    position,
    rotation, // degrees
    scale,
    pivot,
    target,        // the point
    colour,        // of lights
    intensity,     // of lights
    range,         // of lights
    cone,          // of spot lights, degrees
    edge,          // of spot lights, degrees
    width,         // of area lights, metres
    height,        // of area lights, metres
    length,        // of linear lights, metres
    fieldOfView,   // of cameras, degrees
    dissolve,      // of objects
    aperture,      // of cameras, f-number
    focusDistance, // of cameras
};

// The keys of one component of a value. They replace the constant, and the item's member keeps its default.
struct ChannelDescription {
    Channel channel = Channel::position;
    int component = 0;    // 0 to 2; 0 of a value with one component
    KeysDescription keys; // of one component, in seconds and in the unit of the member

    bool operator==(const ChannelDescription &) const = default;
};

// What objects, nulls, lights and cameras have in common: where they are. An item's transform is relative to its
// parent. Its target replaces its rotation.
struct ItemDescription : TransformDescription {
    std::string name;                         // unique among the items of its kind
    std::string parent;                       // the name of another item of any kind, unique among all; empty: none
    bool hasTarget = false;                   // the item's +Z points at `targetItem`, or at `target`
    Double3 target{};                         // in world coordinates; used when `targetItem` is empty
    std::string targetItem;                   // the name of another item of any kind, unique among all
    std::vector<ChannelDescription> channels; // in order of channel and component; none occurs twice
    SourceLocation location, parentLocation, targetLocation;

    bool operator==(const ItemDescription &) const = default;
};

// An item without a shape, to which others are attached.
struct NullDescription : ItemDescription {
    bool operator==(const NullDescription &) const = default;
};

struct MeshFile {
    std::string file;           // as found: a relative path in the scene file is already resolved
    std::optional<int> layer{}; // of a LightWave object, by its number in the file: only this one, even if it is hidden
    int subdivision = kDefaultSubdivision; // level of a LightWave object's subdivision surfaces; 0: their control cages

    bool operator==(const MeshFile &) const = default;
};
struct PlaneShape { // horizontal, facing +Y, centred on the origin
    double width = 1, depth = 1;

    bool operator==(const PlaneShape &) const = default;
};
struct BoxShape { // centred on the origin
    Double3 size{1, 1, 1};
    bool inward = false; // polygons face the inside

    bool operator==(const BoxShape &) const = default;
};
struct SphereShape { // centred on the origin
    double radius = 1;
    int segments = 64;

    bool operator==(const SphereShape &) const = default;
};
// A new shape is an alternative here, a row in object_tables.cpp, and a function shapeMesh in the renderer.
using ShapeDescription = std::variant<MeshFile, PlaneShape, BoxShape, SphereShape>;

// The surface of the polygons that have a material of the mesh. An empty material stands for all polygons whose
// material no other entry names.
struct SurfaceUse {
    std::string material, surface;
    SourceLocation location;
    bool fromObject = false; // the mesh's object file says so, not the scene

    bool operator==(const SurfaceUse &) const = default;
};

// The transform of a further object like another one, relative to the same parent.
struct InstanceDescription {
    Double3 position{}, rotation{}, scale{1, 1, 1};
    SourceLocation location;

    bool operator==(const InstanceDescription &) const = default;
};

struct ObjectDescription : ItemDescription {
    ShapeDescription shape;
    std::vector<InstanceDescription> instances; // from which the reader made objects; see addInstances
    bool isInstance = false;                    // one of these objects; the writer leaves it out
    std::vector<SurfaceUse> surfaces;           // the entry with the empty material first, where there is one
    bool seenByCamera = true, seenByRays = true, castsShadows = true;
    double dissolve = 0; // 0 to 1: the fraction of what is behind that shows; 1 is invisible

    bool operator==(const ObjectDescription &) const = default;
};

// A light shines along its +Z. An area light is a rectangle in the light's XY plane, and a linear light a part of its X
// axis; the scale changes their sizes. A dome surrounds the scene at an infinite distance.
struct LightDescription : ItemDescription {
    enum class Kind { point, distant, area, spot, linear, dome } kind = Kind::distant;
    // The factor by which the light decreases with the distance d: 1, max(0, 1 - d / range), range / d, (range / d)^2.
    enum class Falloff { none, linear, inverseDistance, inverseSquare } falloff = Falloff::inverseSquare;

    Double3 colour{1, 1, 1};
    double intensity = 1;         // 1 lights a facing diffuse white surface to 1 where the falloff is 1
    double range = 1;             // of the falloff, metres
    double cone = 30;             // of a spot light: half the full angle of its cone, degrees
    double edge = 5;              // of a spot light: width of the soft edge inside the cone, degrees
    double width = 1, height = 1; // of an area light, metres
    double length = 1;            // of a linear light, metres
    int samples = 16;             // shadow rays of an area, linear or dome light
    // Of a dome: the name of an image of the scene whose colours, times `colour`, are its light. The middle of the
    // image is at the light's +Z, its upper edge at the light's +Y. Empty: the dome has the same colour everywhere.
    std::string image;
    bool hemisphere = false; // a dome shines only from above its XZ plane
    bool shadows = true;
    bool colouredShadows = false; // transparent surfaces tint the light that passes through them

    LightDescription() { hasTarget = true; } // the origin

    // Whether the light has a direction, and so may have a target.
    bool isAimed() const { return kind != Kind::point && kind != Kind::dome; }

    bool operator==(const LightDescription &) const = default;
};

// A rectangle of a picture: its left, top, right and bottom edges, as fractions of the picture's width and height.
using Part = std::array<double, 4>;
inline constexpr Part kWholePicture{0, 0, 1, 1};

struct CameraDescription : ItemDescription {
    double fieldOfView = 40;  // horizontal, degrees
    double filmWidth = 0.036; // metres
    // The diameter of the lens is the focal length divided by this f-number. 0: a pinhole, with everything in focus.
    double aperture = 0;
    double focusDistance = 1; // metres, along the camera's +Z
    int blades = 0;           // the lens has the shape of a regular polygon with so many sides; 0: it is round
    double bladeRotation = 0; // of the polygon, degrees
    double shutter = 0;       // the fraction of a frame for which the shutter is open, from the frame's time on
    Part mask = kWholePicture;
    Double3 maskColour{0, 0, 0}; // of the pixels outside the mask

    CameraDescription() { position = {0, 0, -5}; }

    bool operator==(const CameraDescription &) const = default;
};

// Fog covers what a ray hits, by an amount that grows from minAmount to maxAmount between two distances from the
// camera. With x from 0 to 1 in between, it grows by x, by 1 - (1 - x)^2 or by 1 - (1 - x)^3.
struct FogDescription {
    enum class Kind { none, linear, quadratic, cubic } kind = Kind::none;

    Double3 colour{1, 1, 1};
    bool backdropColour = false;               // the fog has the colour of the backdrop behind it instead
    double minDistance = 0, maxDistance = 100; // metres; the second is the larger one
    double minAmount = 0, maxAmount = 1;       // 0 to 1

    bool operator==(const FogDescription &) const = default;
};

struct ImageDescription {
    std::string name;
    std::string file;         // as found; the name in the scene when there is no such file; of a sequence, the pattern
    std::string notFound{};   // why the file was not found and where it was looked for; empty when it was found
    std::string source{};     // where people get the file from; may be empty
    std::string objectFile{}; // the object file that brings the image; empty for an image that the scene describes
    SourceLocation location{}, fileLocation{};
    std::optional<ImageSequence> sequence{}; // nothing for an image of one file
    std::vector<ImageFilter> filters{};      // in the order in which they are applied

    bool operator==(const ImageDescription &) const = default;
};

struct RenderDescription {
    int width = 640, height = 360; // pixels
    double pixelAspect = 1;        // the width of a pixel divided by its height
    Part region = kWholePicture;   // the part that is rendered
    int samples = 1;               // anti-aliasing samples of a pixel
    int recursionDepth = 8;        // bounces
    int firstFrame = 1, lastFrame = 1, frameStep = 1;
    double framesPerSecond = 30;
    std::string camera; // empty: the first one
    SourceLocation cameraLocation;
    Double3 ambientColour{1, 1, 1};
    double ambientIntensity = 0;
    Workflow workflow = Workflow::linear;

    bool operator==(const RenderDescription &) const = default;
};

// The width of the picture divided by its height, with the shape of the pixels.
inline double pictureAspect(const RenderDescription &render) {
    return render.width * render.pixelAspect / render.height;
}

// A warning about something in an object file that was left out of the scene's surfaces.
struct ReadingNote {
    std::string file;
    std::string brief;   // a few words, equal for equal causes: "procedural textures"
    std::string message; // a line

    bool operator==(const ReadingNote &) const = default;
};

struct SceneDescription {
    std::string file, name;
    std::string schema; // the JSON Schema that the file names for editors; may be empty
    RenderDescription render;
    BackdropDescription backdrop;
    FogDescription fog;
    std::vector<CameraDescription> cameras;
    std::vector<LightDescription> lights;
    std::vector<ImageDescription> images;
    std::vector<ObjectDescription> objects;
    std::vector<NullDescription> nulls;
    std::vector<SurfaceDescription> surfaces;
    std::string surfaceFile; // an object file whose surfaces are added to these; empty: none
    SourceLocation surfaceFileLocation;
    std::vector<ReadingNote> notes; // of the surfaces that object files bring

    bool operator==(const SceneDescription &) const = default;
};

} // namespace velm::host

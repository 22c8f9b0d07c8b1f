// A scene as its file tells it: plain data, checked for form, not yet built. The reader fills it, the builders of
// networks and of the renderer's world read it. Units are the file's own, as a person writes them: metres for lengths,
// degrees for rotations and fields of view, 1.0 for full colour; settings are in the units that the panels show.
#pragma once

#include "host/base/error.h"
#include "host/panel/setting.h"
#include "host/services/backdrop_description.h"

#include <array>
#include <string>
#include <variant>
#include <vector>

namespace velm::host {

struct NetworkDescription;

// How an editor shows a node. It takes no part in what the node computes.
struct NodeLook {
    std::array<int, 2> at{0, 0}; // place in the editor
    int mode = 1;                // 1 is a node drawn open
    std::string preview;         // name of the output that is previewed
    std::string comment;

    bool operator==(const NodeLook &) const = default;
};

struct NodeDescription {
    std::string name;   // unique in its network
    std::string server; // "Velm Counter"
    std::string kind;   // the server's display name, of a node that is kept also where its server is not there
    std::string data;   // what the server saved of the node, in binary form; settings go over it
    std::vector<SettingDescription> settings;
    std::vector<NetworkDescription> network; // that the node holds inside itself: none or one
    NodeLook look;
    SourceLocation location;
};

struct ConnectionDescription {
    std::string fromNode, output; // "AO", "Color"
    std::string toNode, input;    // the root of the network goes by the name of the surface or node that holds it
    SourceLocation location;
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
    std::vector<std::string> otherInputs; // of the root, which nothing here reads; kept for other programs
    NetworkView view;
    SourceLocation location;
};

// A surface of an object file: the block of its network as it stands there, and where that is.
struct SavedNetwork {
    std::string block;      // "NODS", its size, its contents; empty where the surface has no network
    std::string file;       // empty for a surface that is described here
    std::string name;       // of the surface in the file
    std::size_t offset = 0; // of the block in the file
};

struct SurfaceDescription {
    std::string name;
    std::vector<SettingDescription> settings; // of the root node: "Color", "Diffuse" and so on
    NetworkDescription network;
    SavedNetwork saved;           // takes the place of `network`; what it says of the root goes before `settings`
    double smoothingAngle = 89.5; // degrees; 0 gives flat polygons
    bool doubleSided = true;
    SourceLocation location;
};

struct TransformDescription {
    Double3 position{};
    Double3 rotation{}; // heading, pitch, bank
    Double3 scale{1, 1, 1};

    bool operator==(const TransformDescription &) const = default;
};

struct MeshFile {
    std::string file; // relative paths are already resolved against the scene file

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
struct SphereShape {
    double radius = 1;
    int segments = 64;

    bool operator==(const SphereShape &) const = default;
};
using ShapeDescription = std::variant<MeshFile, PlaneShape, BoxShape, SphereShape>;

// Which surface the polygons of a mesh's material get; an empty material stands for all that are not named.
struct SurfaceUse {
    std::string material, surface;
    SourceLocation location;
};

struct ObjectDescription {
    std::string name;
    ShapeDescription shape;
    TransformDescription transform;
    std::vector<SurfaceUse> surfaces;
    bool seenByCamera = true, seenByRays = true, castsShadows = true;
    SourceLocation location;
};

struct LightDescription {
    enum class Kind { point, distant, area } kind = Kind::distant;
    std::string name;
    Double3 position{}; // of point and area lights
    Double3 target{};   // what a distant or area light looks at; a distant light shines from position to target
    Double3 colour{1, 1, 1};
    double intensity = 1;         // 1 lights a facing diffuse white surface to 1 (at 1 m for point and area lights)
    double width = 1, height = 1; // of an area light
    int samples = 16;             // shadow rays of an area light
    bool shadows = true;
    SourceLocation location;
};

struct CameraDescription {
    std::string name;
    Double3 position{0, 0, -5};
    Double3 rotation{}; // heading, pitch, bank; ignored when there is a target
    bool hasTarget = false;
    Double3 target{};
    double fieldOfView = 40; // horizontal, degrees
    SourceLocation location;
};

struct ImageDescription {
    std::string name;
    std::string file;       // resolved; as the scene names it where there is none
    std::string notFound{}; // why there is none and where it was looked for; empty when there is one
    std::string source{};   // where people get the file from; may be empty
    SourceLocation location{}, fileLocation{};
};

struct RenderDescription {
    int width = 640, height = 360;
    int samples = 1;        // anti-aliasing samples of a pixel, per pixel
    int recursionDepth = 8; // bounces
    int firstFrame = 1, lastFrame = 1, frameStep = 1;
    double framesPerSecond = 30;
    std::string camera; // the first one when empty
    SourceLocation cameraLocation;
    Double3 ambientColour{1, 1, 1};
    double ambientIntensity = 0;
};

struct SceneDescription {
    std::string file, name;
    RenderDescription render;
    BackdropDescription backdrop;
    std::vector<CameraDescription> cameras;
    std::vector<LightDescription> lights;
    std::vector<ImageDescription> images;
    std::vector<ObjectDescription> objects;
    std::vector<SurfaceDescription> surfaces;
    std::string surfaceFile; // an object file whose surfaces are added to these; empty: none
    SourceLocation surfaceFileLocation;
};

} // namespace velm::host

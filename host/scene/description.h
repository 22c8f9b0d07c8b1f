// A scene as its file tells it: plain data, checked for form, not yet built. The reader fills it, the builders of
// networks and of the renderer's world read it. Units are the file's own, as a person writes them: metres for lengths,
// degrees for rotations and fields of view, 1.0 for full colour; settings are in the units that the panels show.
#pragma once

#include "host/error.h"

#include <array>
#include <string>
#include <variant>
#include <vector>

namespace velm {

using Triple = std::array<double, 3>;

// One key of an animated setting. `value` has one or three meaningful numbers, as the setting has.
struct KeyDescription {
    double time = 0; // seconds
    Triple value{};
    int shape = 0; // kShapeTcb and so on
    double tension = 0, continuity = 0, bias = 0;
    std::array<double, 4> parameters{}; // of the Hermite and Bezier shapes

    bool operator==(const KeyDescription &) const = default;
};

struct KeysDescription {
    int components = 1; // 1 or 3
    std::vector<KeyDescription> keys;
    int before = 1, after = 1; // kBehaveConstant

    bool operator==(const KeysDescription &) const = default;
};

using SettingValue = std::variant<bool, double, Triple, std::string, KeysDescription>;

struct SettingDescription {
    std::string label; // as on the panel; the second of two equal labels is "Clamp 2"
    SettingValue value;
    Place place;
};

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
    Place place;
};

struct ConnectionDescription {
    std::string fromNode, output; // "AO", "Color"
    std::string toNode, input;    // the root of the network goes by the name of the surface or node that holds it
    Place place;
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
    Place place;
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
    Place place;
};

struct TransformDescription {
    Triple position{};
    Triple rotation{}; // heading, pitch, bank
    Triple scale{1, 1, 1};
};

struct MeshFile {
    std::string file; // relative paths are already resolved against the scene file
};
struct PlaneShape { // horizontal, facing +Y, centred on the origin
    double width = 1, depth = 1;
};
struct BoxShape { // centred on the origin
    Triple size{1, 1, 1};
    bool inward = false; // polygons face the inside
};
struct SphereShape {
    double radius = 1;
    int segments = 64;
};
using ShapeDescription = std::variant<MeshFile, PlaneShape, BoxShape, SphereShape>;

// Which surface the polygons of a mesh's material get; an empty material stands for all that are not named.
struct SurfaceUse {
    std::string material, surface;
    Place place;
};

struct ObjectDescription {
    std::string name;
    ShapeDescription shape;
    TransformDescription transform;
    std::vector<SurfaceUse> surfaces;
    bool seenByCamera = true, seenByRays = true, castsShadows = true;
    Place place;
};

struct LightDescription {
    enum class Kind { point, distant, area } kind = Kind::distant;
    std::string name;
    Triple position{}; // of point and area lights
    Triple target{};   // what a distant or area light looks at; a distant light shines from position to target
    Triple colour{1, 1, 1};
    double intensity = 1;         // 1 lights a facing diffuse white surface to 1 (at 1 m for point and area lights)
    double width = 1, height = 1; // of an area light
    int samples = 16;             // shadow rays of an area light
    bool shadows = true;
    Place place;
};

struct CameraDescription {
    std::string name;
    Triple position{0, 0, -5};
    Triple rotation{}; // heading, pitch, bank; ignored when there is a target
    bool hasTarget = false;
    Triple target{};
    double fieldOfView = 40; // horizontal, degrees
    Place place;
};

struct BackdropDescription {
    enum class Kind { plain, gradient, image } kind = Kind::plain;
    Triple colour{0, 0, 0};                                               // plain
    Triple zenith{0, 0.1569, 0.3137}, sky{0.4706, 0.7059, 0.9412};        // gradient, straight up and at the horizon
    Triple ground{0.1961, 0.1569, 0.1176}, nadir{0.3922, 0.3137, 0.2353}; // at the horizon from below, straight down
    double skySqueeze = 2, groundSqueeze = 2;
    std::string image;     // name of an image
    double seamAngle = 0;  // degrees
    double brightness = 1; // of the image
    Place place;
};

struct ImageDescription {
    std::string name;
    std::string file;       // resolved; as the scene names it where there is none
    std::string notFound{}; // why there is none and where it was looked for; empty when there is one
    std::string source{};   // where people get the file from; may be empty
    Place place{}, filePlace{};
};

struct RenderDescription {
    int width = 640, height = 360;
    int samples = 1;        // anti-aliasing samples of a pixel, per pixel
    int recursionDepth = 8; // bounces
    int firstFrame = 1, lastFrame = 1, frameStep = 1;
    double framesPerSecond = 30;
    std::string camera; // the first one when empty
    Place cameraPlace;
    Triple ambientColour{1, 1, 1};
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
};

} // namespace velm

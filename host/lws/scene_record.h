// The contents of a LightWave scene file: items with their ids, motions and values, not yet converted to a
// SceneDescription. Units: metres, seconds, degrees, 1.0 for full colour, whatever the version of the file. Axes are
// LightWave's: left-handed, +Y up, +Z forward.
#pragma once

#include "host/base/double3.h"
#include "host/lws/scene_losses.h"
#include "host/panel/setting.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host::lws {

// A number that may have keys, which then replace the constant.
struct Value {
    double constant = 0;
    KeysDescription keys{}; // of one component; the times ascend. Empty: the value is constant

    bool isAnimated() const { return !keys.keys.empty(); }
    // The constant, or the value of the first key.
    double first() const { return isAnimated() ? keys.keys.front().value[0] : constant; }
};

// The first digit of an item's id.
enum class ItemKind : std::uint32_t { object = 1, light = 2, camera = 3, bone = 4 };

inline ItemKind kindOf(std::uint32_t id) { return static_cast<ItemKind>(id >> 28); }
inline std::uint32_t itemId(ItemKind kind, std::uint32_t number) {
    return static_cast<std::uint32_t>(kind) << 28 | number;
}

// The channels of a motion: X, Y and Z of the position; heading, pitch and bank; X, Y and Z of the scale.
constexpr std::size_t kChannels = 9, kPositionChannel = 0, kRotationChannel = 3, kScaleChannel = 6;

struct Item {
    std::uint32_t id = 0; // unique in the scene
    std::string name;     // as the file has it: other items may have the same
    int line = 0;         // of the file, where the item begins
    std::array<Value, kChannels> motion{{{}, {}, {}, {}, {}, {}, {.constant = 1}, {.constant = 1}, {.constant = 1}}};
    std::optional<std::uint32_t> parent, target; // ids of items of the scene. Parents form no cycle
    bool aims = false;                           // heading and pitch point the item's +Z at the target
    std::optional<Double3> pivot;                // where the scene has one, instead of that of the object's layer
    bool active = true;
};

struct Object : Item {
    std::string path; // as it is in the file; empty for a null object
    int layer = 0;    // counted from 1; 0: the whole file
    bool seenByCamera = true, seenByRays = true, castsShadows = true;
    Value dissolve{};            // 1: invisible
    std::optional<int> segments; // of each edge of a subdivision surface, as rendered
};

struct Light : Item {
    // otherPoint: spherical or photometric. none: of a kind that is not rendered.
    enum class Kind { distant, point, spot, linear, area, dome, otherPoint, none } kind = Kind::distant;
    enum class Shadows { none, traced, mapped } shadows = Shadows::traced;
    enum class Falloff { none, linear, inverseDistance, inverseSquare } falloff = Falloff::none;
    std::array<Value, 3> colour{{{.constant = 1}, {.constant = 1}, {.constant = 1}}};
    Value intensity{.constant = 1};
    Value range{.constant = 1};
    Value cone{.constant = 30}, edge{.constant = 5}; // half the full angle; the width of the soft edge inside it
    std::optional<int> quality;                      // of area, linear and dome lights
};

struct Camera : Item {
    Value zoom{.constant = 3.2};    // 1 / tan(half the vertical field of view)
    double width = 0, height = 0;   // pixels, before the multiplier; 0: not given
    double multiplier = 1;          // of the size
    double pixelAspect = 1;         // the width of a pixel divided by its height
    bool hasPixelCode = false;      // in versions 1 and 2: PixelAspectRatio gives the number of a video format
    bool usesOwnPixelRatio = false; // in versions 1 and 2: CustomPixelRatio gives the shape of the pixels
    double apertureHeight = 0.015;  // the height of the film, metres
    bool hasFilmCode = false;       // in versions 1 and 2: FilmSize gives the number of another film
    bool hasMotionBlur = false, usesGlobalBlur = false;
    double blurLength = 0.5; // the fraction of a frame
    bool hasMask = false, usesGlobalMask = false;
    std::array<double, 4> mask{}; // left, top, width, height, in pixels before the multiplier; 0 by 0: not given
    Double3 maskColour{0, 0, 0};
    bool hasRegion = false;
    std::array<double, 4> region{0, 1, 0, 1}; // left, right, top, bottom, as fractions of the picture
    bool hasDepthOfField = false;
    Value focusDistance{.constant = 1}; // metres
    Value fNumber{.constant = 4};
    int blades = 0;            // of the diaphragm; 0: it is round
    double bladeRotation = 0;  // degrees
    bool usesSizeCode = false; // in versions 1 and 2: Resolution gives the number of a video format
    bool usesGlobalSize = false;
    int samples = 1; // of a pixel
};

struct Scene {
    int version = 0;
    int firstFrame = 1, lastFrame = 60, frameStep = 1;
    double framesPerSecond = 30;
    Double3 ambientColour{1, 1, 1};
    double ambientIntensity = 0.25;
    bool solidBackdrop = false;
    Double3 backdrop{0, 0, 0}, zenith{0, 0.1569, 0.3137}, sky{0.4706, 0.7059, 0.9412}, ground{0.1961, 0.1569, 0.1176},
        nadir{0.3922, 0.3137, 0.2353};
    double skySqueeze = 2, groundSqueeze = 2;
    int fogType = 0; // 0: none; 1: linear; 2, 3: of the two other kinds
    Double3 fogColour{0, 0, 0};
    bool fogHasBackdropColour = false;
    double fogMinDistance = 0, fogMaxDistance = 1, fogMinAmount = 0, fogMaxAmount = 1;
    bool tracesShadows = true, tracesReflections = true, hasShadowMaps = true;
    int antialiasingSamples = 1; // of a pixel
    std::optional<int> recursionLimit;
    int currentCamera = 0; // an index; there may be no such camera
    Camera globalCamera{}; // the frame size of cameras that have none of their own
    std::vector<Object> objects;
    std::vector<Light> lights;
    std::vector<Camera> cameras;
    std::vector<Item> bones;
    Losses losses;
};

// Whether a file that begins with `head`, of five bytes or more, is a LightWave scene. [any thread]
bool isScene(std::string_view head);

// Reads a scene of any version; those after 5 as version 5. `file` is for errors. Unknown lines and blocks are skipped.
// InputError with the file and the line: for a head, an envelope or a list of keys that is damaged, a block that is not
// closed, cycles of parents, and more than kMostItems items. Apart from the items, whose number is limited, the record
// takes memory in proportion to the size of the file. [any thread]
Scene readScene(std::string_view bytes, const std::string &file);

constexpr std::size_t kMostItems = 65536;
constexpr int kLastVersion = 5; // the last known version

} // namespace velm::host::lws

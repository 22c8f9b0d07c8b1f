// A service that the host offers for its own nodes: where the items of the scene are.
#pragma once

#include <array>

namespace velm::host {

inline constexpr char kItemPlaceFuncs[] = "Velm Item Places";

// Where an item is, in world space.
struct ItemPlace {
    std::array<double, 3> position{};     // of its pivot; metres
    std::array<double, 3> rotation{};     // heading, pitch and bank; radians
    std::array<double, 3> scale{1, 1, 1}; // factors along its own axes
};

struct ItemPlaceFuncs {
    // Gives the place of the object, null, light or camera with that name, or of the first of several, at the time of
    // the current frame. False, with `place` unchanged, when the scene has none. [between frames]
    bool (*find)(const char *name, ItemPlace &place) = nullptr;
    // Gives the position of the camera that the frame is rendered through, in metres, and the unit vector in which it
    // looks, both in world space. [render threads]
    void (*camera)(double position[3], double forward[3]) = nullptr;
};

} // namespace velm::host

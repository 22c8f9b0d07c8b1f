// The image in memory that draw callbacks draw on, and the drawing functions that panels give to plug-ins.
#pragma once

#include "host/panel/panel.h"
#include "module/host.h"

#include <array>
#include <cstdint>
#include <vector>

// 8-bit red, green and blue, by row from the upper left; initially black. Drawing is clipped to the area, and
// components are clamped to 0 to 255.
struct HostDrawArea {
    HostDrawArea(int areaWidth, int areaHeight);        // pixels; less than 1 counts as 1
    std::array<std::uint8_t, 3> at(int x, int y) const; // a pixel inside the area
    void put(int x, int y, int red, int green, int blue);

    const int width, height;
    std::vector<std::uint8_t> rgb;
};

namespace velm::host {

// The drawing functions. Colour numbers: 0 black, 1 grey, 2 light grey, 3 white, 4 red, 5 green, 6 blue, 7 yellow; any
// other number is black. A border is a frame of one pixel: light at the top and left and dark at the bottom and right,
// or the reverse for a non-zero indent. There is no font: text draws nothing, and measures 6 by 10 pixels for each
// character. Functions with a null area do nothing. [interface thread; not while rendering]
const HostDrawFuncs *drawFuncs();

// The size of a drawing control in pixels, from its options. The height is 32, 64, 128 or 256, and 64 by default; the
// width is 1, 4/3 or 16/9 of the height, and 1 by default.
struct DrawSize {
    int width, height;
};
DrawSize thumbnailSize(const PanelItem &control);

// Lets a control draw itself on the whole area; does nothing for a control without a draw callback.
void drawControl(HostPanel &panel, const PanelItem &control, HostDrawArea &area);

} // namespace velm::host

// Where draw callbacks draw: an image in memory, and the drawing functions that panels hand to plug-ins.
#pragma once

#include "host/panel/panel.h"
#include "module/host.h"

#include <array>
#include <cstdint>
#include <vector>

// 8-bit red, green, blue, by row from the upper left; black at first. Whatever is drawn outside is cut off, and
// components beyond 0 to 255 are brought into that range.
struct HostDrawArea {
    HostDrawArea(int areaWidth, int areaHeight);        // at least 1 each
    std::array<std::uint8_t, 3> at(int x, int y) const; // inside the area
    void put(int x, int y, int red, int green, int blue);

    const int width, height;
    std::vector<std::uint8_t> rgb;
};

namespace velm::host {

// The drawing functions. Colour numbers: 0 black, 1 grey, 2 light grey, 3 white, 4 red, 5 green, 6 blue, 7 yellow; any
// other number is black. A border is a frame of one pixel, light above and dark below, the other way round for a
// non-zero indent. There is no font: text has the size of 6 by 10 pixels a character, and draws nothing.
const HostDrawFuncs *drawFuncs();

// The size that a drawing control's options ask for, in pixels: heights 32, 64, 128 and 256, 64 when none is given;
// widths as high, 4:3 of it, or 16:9 of it; square when none is given.
struct DrawSize {
    int width, height;
};
DrawSize thumbnailSize(const PanelItem &control);

// Lets a control draw itself over the whole area; does nothing for one without a draw callback.
void drawControl(HostPanel &panel, const PanelItem &control, HostDrawArea &area);

} // namespace velm::host

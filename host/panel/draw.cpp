#include "host/panel/draw.h"

#include "host/guard/module_call.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

HostDrawArea::HostDrawArea(int areaWidth, int areaHeight)
    : width(std::max(areaWidth, 1)), height(std::max(areaHeight, 1)),
      rgb(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3) {}

namespace {

std::size_t offset(const HostDrawArea &area, int x, int y) {
    return (static_cast<std::size_t>(y) * static_cast<std::size_t>(area.width) + static_cast<std::size_t>(x)) * 3;
}

} // namespace

std::array<std::uint8_t, 3> HostDrawArea::at(int x, int y) const {
    const std::uint8_t *pixel = &rgb[offset(*this, x, y)];
    return {pixel[0], pixel[1], pixel[2]};
}

void HostDrawArea::put(int x, int y, int red, int green, int blue) {
    if (x < 0 || y < 0 || x >= width || y >= height) return;
    std::uint8_t *pixel = &rgb[offset(*this, x, y)];
    pixel[0] = static_cast<std::uint8_t>(std::clamp(red, 0, 255));
    pixel[1] = static_cast<std::uint8_t>(std::clamp(green, 0, 255));
    pixel[2] = static_cast<std::uint8_t>(std::clamp(blue, 0, 255));
}

namespace velm::host {

namespace {

constexpr int kCharacterWidth = 6, kCharacterHeight = 10;
constexpr int kDark = 1, kLight = 3; // of borders

struct Colour {
    int red, green, blue;
};

Colour colourOf(int number) {
    static constexpr Colour colours[] = {{0, 0, 0},   {128, 128, 128}, {192, 192, 192}, {255, 255, 255},
                                         {255, 0, 0}, {0, 255, 0},     {0, 0, 255},     {255, 255, 0}};
    return number >= 0 && number < 8 ? colours[number] : colours[0];
}

void rgbPixel(HostDrawArea *area, int red, int green, int blue, int x, int y) {
    if (area) area->put(x, y, red, green, blue);
}

void pixel(HostDrawArea *area, int colour, int x, int y) {
    const Colour rgb = colourOf(colour);
    rgbPixel(area, rgb.red, rgb.green, rgb.blue, x, y);
}

void rgbBox(HostDrawArea *area, int red, int green, int blue, int x, int y, int width, int height) {
    if (!area) return;
    // Clip first: a box may be far larger than the area.
    const long long right = std::min<long long>(static_cast<long long>(x) + width, area->width);
    const long long bottom = std::min<long long>(static_cast<long long>(y) + height, area->height);
    for (int row = std::max(y, 0); row < bottom; ++row)
        for (int column = std::max(x, 0); column < right; ++column) area->put(column, row, red, green, blue);
}

void box(HostDrawArea *area, int colour, int x, int y, int width, int height) {
    const Colour rgb = colourOf(colour);
    rgbBox(area, rgb.red, rgb.green, rgb.blue, x, y, width, height);
}

// One pixel for each step along the longer direction, both ends included. Only the steps inside the area are visited,
// as the ends may be far outside.
void line(HostDrawArea *area, int colour, int x0, int y0, int x1, int y1) {
    if (!area) return;
    const double dx = static_cast<double>(x1) - x0;
    const double dy = static_cast<double>(y1) - y0;
    const bool isWide = std::abs(dx) >= std::abs(dy);
    const double length = isWide ? std::abs(dx) : std::abs(dy);
    if (length == 0) return pixel(area, colour, x0, y0);
    const int extent = isWide ? area->width : area->height;
    const double start = isWide ? x0 : y0;
    const double direction = (isWide ? dx : dy) / length;
    for (int along = 0; along < extent; ++along) {
        const double step = (along - start) * direction;
        if (step < 0 || step > length) continue;
        const double across = (isWide ? y0 : x0) + (isWide ? dy : dx) * (step / length);
        if (across < -1 || across > (isWide ? area->height : area->width)) continue;
        const int rounded = static_cast<int>(across + 1.5) - 1;
        isWide ? pixel(area, colour, along, rounded) : pixel(area, colour, rounded, along);
    }
}

void border(HostDrawArea *area, int indent, int x, int y, int width, int height) {
    if (width < 1 || height < 1) return;
    const int upper = indent != 0 ? kDark : kLight;
    const int lower = indent != 0 ? kLight : kDark;
    box(area, upper, x, y, width, 1);
    box(area, upper, x, y, 1, height);
    box(area, lower, x, y + height - 1, width, 1);
    box(area, lower, x + width - 1, y, 1, height);
}

int textWidth(HostDrawArea *, const char *text) {
    return text ? static_cast<int>(std::strlen(text)) * kCharacterWidth : 0;
}

int textHeight(HostDrawArea *, const char *) { return kCharacterHeight; }

void noText(HostDrawArea *, const char *, int, int, int) {}

} // namespace

const HostDrawFuncs *drawFuncs() {
    static const HostDrawFuncs funcs = {
        .pixel = pixel,
        .rgbPixel = rgbPixel,
        .line = line,
        .box = box,
        .rgbBox = rgbBox,
        .border = border,
        .textWidth = textWidth,
        .textHeight = textHeight,
        .text = noText,
    };
    return &funcs;
}

DrawSize thumbnailSize(const PanelItem &control) {
    int height = 64;
    if ((control.options & kThumbSmall) != 0) height = 32;
    if ((control.options & kThumbMedium) != 0) height = 64;
    if ((control.options & kThumbLarge) != 0) height = 128;
    if ((control.options & kThumbExtraLarge) != 0) height = 256;
    if ((control.options & kThumbWide) != 0) return {.width = height * 16 / 9, .height = height};
    if ((control.options & kThumb4To3) != 0) return {.width = height * 4 / 3, .height = height};
    return {.width = height, .height = height};
}

void drawControl(HostPanel &panel, const PanelItem &control, HostDrawArea &area) {
    if (control.draw)
        callModule(panel.owningServer, "panel draw",
                   [&] { control.draw(&panel, control.id, &area, area.width, area.height); });
}

} // namespace velm::host

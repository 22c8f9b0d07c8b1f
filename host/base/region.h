// A rectangle of pixels.
#pragma once

namespace velm::host {

// Columns left to right - 1, rows top to bottom - 1.
struct Region {
    int left = 0, top = 0, right = 0, bottom = 0;
    bool operator==(const Region &) const = default;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool isEmpty() const { return left >= right || top >= bottom; }
    bool contains(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
};

// What two rectangles have in common; empty where they have nothing.
constexpr Region intersection(const Region &a, const Region &b) {
    return {.left = a.left > b.left ? a.left : b.left,
            .top = a.top > b.top ? a.top : b.top,
            .right = a.right < b.right ? a.right : b.right,
            .bottom = a.bottom < b.bottom ? a.bottom : b.bottom};
}

} // namespace velm::host

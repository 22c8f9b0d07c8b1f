#include "host/open/framing.h"

#include "host/render/scene/camera.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace velm::host {
namespace {

constexpr View kViews[] = {View::front, View::back,   View::left,        View::right,
                           View::top,   View::bottom, View::threeQuarter};
constexpr double kRounding = 1e-9;

Bounds box(const Vec3 &low, const Vec3 &high) {
    Bounds bounds;
    bounds.include(low);
    bounds.include(high);
    return bounds;
}

// Where the corners of a box are in the picture: -1 and 1 are its edges.
struct Extent {
    double left = INFINITY, right = -INFINITY, bottom = INFINITY, top = -INFINITY, nearest = INFINITY;

    Extent(const Bounds &bounds, const CameraDescription &description, int width, int height) {
        const CameraView view = Camera(description, width, height).view();
        const Vec3 axes[3] = {Vec3(view.matrix), Vec3(view.matrix + 3), Vec3(view.matrix + 6)};
        for (int corner = 0; corner < 8; ++corner) {
            const Vec3 offset =
                Vec3{bounds.sides[0][corner & 1], bounds.sides[1][corner >> 1 & 1], bounds.sides[2][corner >> 2 & 1]} -
                Vec3(view.position);
            const double depth = dot(axes[2], offset);
            const double x = dot(axes[0], offset) / (depth * view.tanHalfWidth);
            const double y = dot(axes[1], offset) / (depth * view.tanHalfHeight);
            nearest = std::min(nearest, depth);
            left = std::min(left, x);
            right = std::max(right, x);
            bottom = std::min(bottom, y);
            top = std::max(top, y);
        }
    }
};

TEST(Framing, PutsTheOutermostCornersOnTheMargin) {
    const Bounds boxes[] = {box({-1, -1, -1}, {1, 1, 1}),    box({0, 0, 0}, {10, 0.1, 0.2}),
                            box({-3, 100, 7}, {-2, 140, 9}), box({1e5, 0, 0}, {1e5 + 1, 1, 1}),
                            box({-1, 0, -1}, {1, 0, 1}),     box({0, 0, 0}, {1e-4, 2e-4, 1e-4})};
    const int sizes[][2] = {{640, 360}, {360, 640}, {300, 300}};
    const double margin = 1 - 2 * kFrameMargin;
    for (const Bounds &bounds : boxes)
        for (const View view : kViews)
            for (const auto &size : sizes) {
                const double aspect = double(size[0]) / size[1];
                const Extent extent(bounds, framed(bounds, view, aspect), size[0], size[1]);
                SCOPED_TRACE(testing::Message() << "view " << int(view) << ", " << size[0] << " x " << size[1]
                                                << ", from x = " << bounds.sides[0][0]);
                EXPECT_GT(extent.nearest, 0);
                const double across = extent.right - extent.left, upwards = extent.top - extent.bottom;
                EXPECT_NEAR(std::max(across, upwards), 2 * margin, 1e-6);
                if (across > upwards) {
                    EXPECT_NEAR(extent.left, -margin, 1e-6);
                    EXPECT_NEAR(extent.right, margin, 1e-6);
                }
                EXPECT_LE(std::max({-extent.left, extent.right, -extent.bottom, extent.top}), margin + 1e-6);
            }
}

// Seen exactly from the front, a cube's nearer face fills the margin, at a distance that follows from the field of
// view.
TEST(Framing, HasTheDistanceOfTheClosedForm) {
    const CameraDescription camera = framed(box({-1, -1, -1}, {1, 1, 1}), View::front, 1);
    const double halfWidth = std::tan(20 * 3.14159265358979323846 / 180);
    EXPECT_NEAR(camera.position[0], 0, kRounding);
    EXPECT_NEAR(camera.position[1], 0, kRounding);
    EXPECT_NEAR(camera.position[2], -1 - 1 / (halfWidth * (1 - 2 * kFrameMargin)), kRounding);
    EXPECT_NEAR(camera.fieldOfView, 40, kRounding);
}

TEST(Framing, LooksFromTheSideThatTheViewNames) {
    const Bounds cube = box({-1, -1, -1}, {1, 1, 1});
    const auto position = [&](View view) { return Vec3(framed(cube, view, 1).position); };
    EXPECT_LT(position(View::front).z, -2);
    EXPECT_GT(position(View::back).z, 2);
    EXPECT_LT(position(View::left).x, -2);
    EXPECT_GT(position(View::right).x, 2);
    EXPECT_GT(position(View::top).y, 2);
    EXPECT_LT(position(View::bottom).y, -2);
    const Vec3 oblique = position(View::threeQuarter);
    EXPECT_TRUE(oblique.x > 1 && oblique.y > 1 && oblique.z < -1) << oblique.x << ' ' << oblique.y << ' ' << oblique.z;
}

} // namespace
} // namespace velm::host

// The margin around what is baked, and pictures looked up across seams.
#include "tests/bake/bake_scene.h"
#include "tests/temporary_directory.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <random>

namespace velm::host::test {
namespace {

constexpr double kSingle = 1e-5; // of sums of some numbers in single precision

// Two squares that share an edge, in one plane. They are apart in the map, and the second one is mirrored there.
const char *const kTwoSquares = R"(
v 0 0 0
v 1 0 0
v 2 0 0
v 0 0 -1
v 1 0 -1
v 2 0 -1
vt 0.1 0.1
vt 0.4 0.1
vt 0.4 0.4
vt 0.1 0.4
vt 0.9 0.1
vt 0.6 0.1
vt 0.6 0.4
vt 0.9 0.4
f 1/1 2/2 5/3 4/4
f 2/5 3/6 6/7 5/8
)";

// A cube with a side of 2 whose faces are apart in the map, three in a row. The second one is mirrored.
std::string cubeText() {
    const Vec3 sides[6][3] = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {{-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
                              {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}, {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
                              {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}, {{0, 0, -1}, {0, 1, 0}, {1, 0, 0}}};
    std::string text;
    for (int face = 0; face < 6; ++face) {
        const auto &[out, right, up] = sides[face];
        const auto row = face / 3, column = face % 3;
        for (int k = 0; k < 4; ++k) {
            const double x = k == 1 || k == 2 ? 1 : -1, y = k >= 2 ? 1 : -1;
            const Vec3 corner = out + x * right + y * up;
            const double u = column / 3.0 + (face == 1 ? -x : x) * 0.13 + 1.0 / 6, v = row / 2.0 + y * 0.2 + 0.25;
            text += fmt::format("v {} {} {}\nvt {} {}\n", corner.x, corner.y, corner.z, u, v);
        }
        text +=
            fmt::format("f {0}/{0} {1}/{1} {2}/{2} {3}/{3}\n", 4 * face + 1, 4 * face + 2, 4 * face + 3, 4 * face + 4);
    }
    return text;
}

class MeshScene : private TemporaryDirectory, public BakeScene {
  public:
    MeshScene(const std::string &text, int side) : BakeScene(MeshFile{.file = write("mesh.obj", text)}, {}, side) {}
};

TEST(Margin, GoesOverASeamIntoTheNeighbour) {
    MeshScene scene(kTwoSquares, 40);
    scene.bake.margin = 4;
    const Picture picture = scene.bakeProbe(kPositionProbe);
    for (int y = 24; y < 36; ++y) {
        for (int x = 0; x < 20; ++x) {
            // Up to the seam and beyond it, x is what the left square's mapping gives. Beyond the mesh's end, at u =
            // 0.1, it is that of the nearest texel.
            const double u = std::max(4.5, x + 0.5) / 40;
            EXPECT_NEAR(picture.pixel(x, y)[0], (u - 0.1) / 0.3, kSingle) << x << ", " << y;
            EXPECT_NEAR(picture.pixel(x, y)[3], x >= 4 && x < 16 ? 1 : 0, kSingle) << x << ", " << y;
        }
        for (int x = 20; x < 24; ++x) // beyond the far end of the right square
            EXPECT_NEAR(picture.pixel(x, y)[0], 2 - 0.5 / 12, kSingle) << x << ", " << y;
    }
}

TEST(Margin, EndsWhereItShould) {
    MeshScene scene(kTwoSquares, 40);
    scene.bake.margin = 2;
    const Picture picture = scene.bakeProbe([](const ShadingSample &, double value[3]) { value[0] = 1; });
    const auto at = [&](int x) { return picture.pixel(x, 30)[0]; };
    EXPECT_EQ(at(1), 0);
    EXPECT_EQ(at(2), 1);
    EXPECT_EQ(at(17), 1);
    EXPECT_EQ(at(18), 0);
}

TEST(Margin, ChangesNoCoveredTexel) {
    const auto bakeWith = [](int margin) {
        MeshScene scene(cubeText(), 64);
        scene.job.samples = 4;
        scene.bake.margin = margin;
        return scene.bakeProbe(kPositionProbe);
    };
    const Picture without = bakeWith(0), with = bakeWith(16);
    int covered = 0, filled = 0;
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            if (without.pixel(x, y)[3] > 0) {
                ++covered;
                EXPECT_TRUE(std::equal(without.pixel(x, y), without.pixel(x, y) + 4, with.pixel(x, y)));
            } else {
                EXPECT_EQ(texelOf(without, x, y), Vec3());
                EXPECT_EQ(with.pixel(x, y)[3], 0);
                filled += texelOf(with, x, y) == Vec3() ? 0 : 1;
            }
        }
    }
    EXPECT_GT(covered, 64 * 64 / 2);
    EXPECT_EQ(covered + filled, 64 * 64);
}

// The colour that a renderer finds at a place of the map, with a bilinear filter.
Vec3 lookUp(const Picture &picture, double u, double v) {
    const double x = u * picture.width() - 0.5, y = (1 - v) * picture.height() - 0.5;
    const int left = static_cast<int>(std::floor(x)), top = static_cast<int>(std::floor(y));
    const double right = x - left, down = y - top;
    return (1 - down) * ((1 - right) * texelOf(picture, left, top) + right * texelOf(picture, left + 1, top)) +
           down * ((1 - right) * texelOf(picture, left, top + 1) + right * texelOf(picture, left + 1, top + 1));
}

TEST(Margin, LetsAFunctionBeLookedUpAnywhere) {
    constexpr int kSide = 128;
    MeshScene scene(cubeText(), kSide);
    scene.bake.margin = 4;
    const Vec3 gradient{0.3, -0.5, 0.4};
    const Picture picture = scene.bakeProbe(
        [&](const ShadingSample &sample, double value[3]) { value[0] = dot(gradient, Vec3(sample.position)); });
    // A texel covers up to 2 / (0.26 * kSide) metres.
    const double texel = 2 / (0.26 * kSide) * length(gradient);
    const Mesh &mesh = *scene.renderScene().data().objects[0].mesh;
    std::mt19937 generator(11);
    std::uniform_real_distribution<double> number(0, 1);
    int inner = 0;
    for (int i = 0; i < 10000; ++i) {
        const auto triangle = static_cast<std::uint32_t>(i % 12);
        const double out = std::sqrt(number(generator)), across = number(generator);
        const double weights[] = {1 - out, out * (1 - across), out * across};
        Vec3 position;
        double u = 0, v = 0;
        for (int k = 0; k < 3; ++k) {
            const auto &uv = mesh.uvMaps[0].values[mesh.triangles[triangle].corners[k]];
            position += weights[k] * mesh.corner(triangle, k);
            u += weights[k] * static_cast<double>(uv[0]);
            v += weights[k] * static_cast<double>(uv[1]);
        }
        // On a flat face, the filter shows a linear function as it is. Only texels that the face covers in part, or
        // those of the face beyond the edge, give another value.
        std::array<double, 3> along = {std::fabs(position.x), std::fabs(position.y), std::fabs(position.z)};
        std::ranges::sort(along);                 // the largest one is 1
        const bool isInner = along[1] < 1 - 0.15; // two texels from the edges
        inner += isInner ? 1 : 0;
        EXPECT_NEAR(lookUp(picture, u, v).x, dot(gradient, position), isInner ? kSingle : texel)
            << position.x << ", " << position.y << ", " << position.z;
    }
    EXPECT_GT(inner, 5000);
}

TEST(Margin, WarnsOfOverlapsAndMirroredTriangles) {
    // Both faces have the same coordinates.
    MeshScene scene("v 0 0 0\nv 1 0 0\nv 1 0 -1\nv 0 0 -1\nv 0 1 -1\nv 1 1 -1\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                    "f 1/1 2/2 3/3 4/4\nf 4/1 3/2 6/3 5/4\nf 1/2 2/1 3/4 4/3\n",
                    8);
    scene.bakeProbe(kPositionProbe);
    std::string texts;
    for (const Warning &warning : scene.warnings.all()) texts += warning.text() + "\n";
    EXPECT_NE(texts.find("64 texels are covered more than once, such as by the polygons 0 and 1"), std::string::npos)
        << texts;
    EXPECT_NE(texts.find("2 triangles mirrored in the UV map"), std::string::npos) << texts;
}

} // namespace
} // namespace velm::host::test

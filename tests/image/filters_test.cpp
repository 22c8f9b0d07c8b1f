// The formulas of image filters.
#include "host/image/filters.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace velm::host {
namespace {

using Kind = ImageFilter::Kind;
using Colour = std::array<float, 3>;

constexpr float kTolerance = 2e-6F; // of float arithmetic

Colour filtered(Colour colour, const std::vector<ImageFilter> &filters, bool isWithinOne = false) {
    applyFilters(filters, isWithinOne, colour);
    return colour;
}

struct Row {
    ImageFilter filter;
    Colour colour, expected;
};

TEST(ImageFilters, FollowTheirFormulas) {
    const Row kRows[] = {
        {{.kind = Kind::brightness, .amount = 0.25}, {0, 0.5F, 1}, {0.25F, 0.75F, 1.25F}},
        {{.kind = Kind::brightness, .amount = -0.5}, {0, 0.5F, 1}, {0, 0, 0.5F}},
        {{.kind = Kind::contrast, .amount = 1}, {0.25F, 0.5F, 1}, {0, 0.5F, 1.5F}},
        {{.kind = Kind::contrast, .amount = -1}, {0, 0.7F, 1}, {0.5F, 0.5F, 0.5F}},
        {{.kind = Kind::saturation, .amount = 0.25}, {0.8F, 0.4F, 0.6F}, {0.8F, 0.2F, 0.5F}},
        {{.kind = Kind::saturation, .amount = 3}, {0.8F, 0.4F, 0.6F}, {0.8F, 0, 0.4F}},
        {{.kind = Kind::saturation, .amount = -1}, {0.8F, 0.4F, 0.6F}, {0.8F, 0.8F, 0.8F}},
        {{.kind = Kind::saturation, .amount = 1}, {0.5F, 0.5F, 0.5F}, {0.5F, 0.5F, 0.5F}},
        {{.kind = Kind::saturation, .amount = 1}, {0, 0, 0}, {0, 0, 0}},
        {{.kind = Kind::hue, .amount = 1.0 / 3}, {1, 0, 0}, {0, 1, 0}},
        {{.kind = Kind::hue, .amount = -1.0 / 3}, {1, 0, 0}, {0, 0, 1}},
        {{.kind = Kind::hue, .amount = 0.5}, {0.2F, 0.4F, 0.8F}, {0.8F, 0.6F, 0.2F}},
        {{.kind = Kind::hue, .amount = 1.0 / 6}, {0, 1, 0}, {0, 1, 1}},
        {{.kind = Kind::hue, .amount = 0.3}, {0.4F, 0.4F, 0.4F}, {0.4F, 0.4F, 0.4F}},
        {{.kind = Kind::gamma, .amount = 2}, {0.25F, 0, 4}, {0.5F, 0, 2}},
        {{.kind = Kind::gamma, .amount = 0}, {0.25F, 1, 4}, {0, 0, 0}},
        {{.kind = Kind::negative}, {0.25F, 1, 4}, {0.75F, 0, 0}},
    };
    for (const Row &row : kRows) {
        const Colour result = filtered(row.colour, {row.filter});
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(result[i], row.expected[i], kTolerance)
                << static_cast<int>(row.filter.kind) << ' ' << row.filter.amount << " component " << i;
    }
}

// Turning the hue by a whole circle, in steps, gives the colour back; so does every whole number of circles.
TEST(ImageFilters, HuesAreOnACircle) {
    const Colour colours[] = {{1, 0.5F, 0.25F}, {0.1F, 0.2F, 0.9F}, {0.3F, 0.9F, 0.3F}, {0.5F, 0.5F, 0.1F}};
    for (const Colour &colour : colours) {
        const Colour turned = filtered(colour, std::vector<ImageFilter>(7, {.kind = Kind::hue, .amount = 1.0 / 7}));
        const Colour many = filtered(colour, {{.kind = Kind::hue, .amount = -12}});
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(turned[i], colour[i], 10 * kTolerance);
            EXPECT_NEAR(many[i], colour[i], kTolerance);
        }
    }
}

TEST(ImageFilters, AreAppliedInTheirOrder) {
    const ImageFilter darker{.kind = Kind::brightness, .amount = -0.5}, negative{.kind = Kind::negative};
    EXPECT_EQ(filtered({0.25F, 0.75F, 1}, {darker, negative}), (Colour{1, 0.75F, 0.5F}));
    EXPECT_EQ(filtered({0.25F, 0.75F, 1}, {negative, darker}), (Colour{0.25F, 0, 0}));
}

TEST(ImageFilters, LimitTheirResults) {
    const std::vector<ImageFilter> filters{{.kind = Kind::brightness, .amount = 1},
                                           {.kind = Kind::brightness, .amount = -0.5}};
    EXPECT_EQ(filtered({0.25F, 0.75F, 0}, filters, true), (Colour{0.5F, 0.5F, 0.5F}));
    EXPECT_EQ(filtered({0.25F, 0.75F, 0}, filters), (Colour{0.75F, 1.25F, 0.5F}));
    constexpr float kInfinite = std::numeric_limits<float>::infinity(), kNaN = std::numeric_limits<float>::quiet_NaN();
    for (const Kind kind : {Kind::brightness, Kind::contrast, Kind::saturation, Kind::hue, Kind::gamma, Kind::negative})
        for (const float component : filtered({kInfinite, kNaN, -1}, {{.kind = kind, .amount = 0.5}}))
            EXPECT_TRUE(std::isfinite(component) && component >= 0) << static_cast<int>(kind);
}

TEST(ImageFilters, LuminancesHaveNoHue) {
    std::array<float, 1> luminance{0.25F};
    applyFilters(std::vector<ImageFilter>{{.kind = Kind::hue, .amount = 0.3}, {.kind = Kind::saturation, .amount = 1}},
                 true, luminance);
    EXPECT_EQ(luminance[0], 0.25F);
    applyFilters(std::vector<ImageFilter>{{.kind = Kind::negative}}, true, luminance);
    EXPECT_EQ(luminance[0], 0.75F);
}

} // namespace
} // namespace velm::host

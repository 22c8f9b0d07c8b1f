#include "host/base/names.h"

#include <gtest/gtest.h>

using namespace velm::host;

namespace {

TEST(Suggest, FindsTheNearestName) {
    const std::vector<std::string> known = {"Color", "Opacity", "Blending", "U Tiling", "V Tiling", "X"};
    const struct {
        const char *wanted, *nearest;
    } rows[] = {{"Colour", "Color"},
                {"color", "Color"},
                {"Colr", "Color"},
                {"Oapcity", "Opacity"},
                {"Blendign", "Blending"},
                {"W Tiling", "U Tiling"},
                {"v tiling", "V Tiling"},
                {"Gradient", ""},
                {"", ""},
                {"Opactiy!", "Opacity"},
                {"Y", ""}};
    for (const auto &row : rows) EXPECT_EQ(nearest(row.wanted, known), row.nearest) << row.wanted;
    EXPECT_EQ(nearest("a", {}), "");
}

TEST(Suggest, QuotesTheNearestNameIfThereIsOne) {
    EXPECT_EQ(didYouMean("Colour", {"Color"}), ", did you mean \"Color\"?");
    EXPECT_EQ(didYouMean("Volume", {"Color"}), "");
}

} // namespace

// The numbers and names of the files of image sequences.
#include "host/base/image_sequence.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace velm::host {
namespace {

std::vector<int> numbersOf(const ImageSequence &sequence, int from, int to) {
    std::vector<int> numbers;
    for (int frame = from; frame <= to; ++frame) numbers.push_back(sequence.numberAt(frame));
    return numbers;
}

TEST(ImageSequence, ShowsItsFirstAndLastFileOutsideOfItsRange) {
    EXPECT_EQ(numbersOf({.first = 3, .last = 5}, 1, 7), (std::vector{3, 3, 3, 4, 5, 5, 5}));
    EXPECT_EQ(numbersOf({.first = 3, .last = 5, .offset = 2}, 1, 4), (std::vector{3, 4, 5, 5}));
    EXPECT_EQ(numbersOf({.first = 4, .last = 4}, -1, 1), (std::vector{4, 4, 4}));
}

TEST(ImageSequence, RepeatsItsFilesInALoop) {
    EXPECT_EQ(numbersOf({.first = 3, .last = 5, .loop = true}, -1, 7), (std::vector{5, 3, 4, 5, 3, 4, 5, 3, 4}));
    EXPECT_EQ(numbersOf({.first = 1, .last = 2, .offset = -1, .loop = true}, 0, 3), (std::vector{1, 2, 1, 2}));
}

TEST(ImageSequence, HasNoOverflow) {
    constexpr int kLowest = std::numeric_limits<int>::min(), kHighest = std::numeric_limits<int>::max();
    EXPECT_EQ((ImageSequence{.first = 1, .last = 9, .offset = kHighest}.numberAt(kHighest)), 9);
    EXPECT_EQ((ImageSequence{.first = 1, .last = 9, .offset = kLowest}.numberAt(kLowest)), 1);
    EXPECT_EQ((ImageSequence{.first = kLowest, .last = kHighest, .loop = true}.numberAt(5)), 5);
}

TEST(ImageSequence, NumbersReplaceTheLastRunOfHashes) {
    EXPECT_EQ(numberedFile("fire/flame_####.png", 12), "fire/flame_0012.png");
    EXPECT_EQ(numberedFile("#.png", 12), "12.png");
    EXPECT_EQ(numberedFile("a#/b##c###", 1), "a#/b##c001");
    EXPECT_EQ(numberedFile("a###", -7), "a-07");
    EXPECT_EQ(numberedFile("a##", 12345), "a12345");
    EXPECT_TRUE(isSequencePattern("#"));
    EXPECT_FALSE(isSequencePattern("flame.png"));
    EXPECT_FALSE(isSequencePattern("fire#1/flame.png"));
}

TEST(ImageSequence, NumbersAreFoundInNames) {
    EXPECT_EQ(numberOfFile("flame_####.png", "flame_0012.png"), 12);
    EXPECT_EQ(numberOfFile("flame_####.png", "flame_12345.png"), 12345);
    EXPECT_EQ(numberOfFile("##", "-3"), -3);
    for (const char *other : {"flame_12.png", "flame_00012.png", "flame_.png", "flame_0012.png~", "Flame_0012.png",
                              "flame_+012.png", "flame_99999999999.png", "", "flame_.pn"})
        EXPECT_EQ(numberOfFile("flame_####.png", other), std::nullopt) << other;
    EXPECT_EQ(numberOfFile("flame.png", "flame.png"), std::nullopt);
}

} // namespace
} // namespace velm::host

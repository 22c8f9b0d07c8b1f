// Words taken from the stream ahead of their use: every draw gets the same word as without.
#include "tests/random/stream.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace velm::plugin {
namespace {

class WordsAheadTest : public testing::Test {
  protected:
    std::mt19937 reference{21};

    WordsAheadTest() { init_genrand(21); }

    // Uses the next of the words taken ahead.
    static uint32_t take(WordsAhead &ahead) {
        const uint32_t word = *ahead.words();
        ahead.use(1);
        return word;
    }
};

TEST_F(WordsAheadTest, AreTheNextWordsOfTheStreamWhereverItStands) {
    for (int round = 0; round < 3 * kStateWords;
         ++round) { // so that the state is refilled at every position among them
        WordsAhead ahead;
        ahead.fill(WordsAhead::kMost - round % 7);
        while (ahead.left() > 0) ASSERT_EQ(take(ahead), reference()) << round;
    }
    EXPECT_EQ(genrand_int32(), reference()) << "afterwards";
}

TEST_F(WordsAheadTest, SeedAStreamThatNobodyHasSeeded) {
    forgetSeed();
    WordsAhead ahead;
    ahead.fill(1);
    EXPECT_EQ(take(ahead), 3499211612u);
}

TEST_F(WordsAheadTest, GoToWhoeverDrawsBeforeTheyAreUsed) {
    WordsAhead ahead;
    ahead.fill(10);
    EXPECT_EQ(take(ahead), reference());
    EXPECT_EQ(genrand_int32(), reference()) << "a single draw in between";
    EXPECT_EQ(ahead.left(), 8);
    EXPECT_EQ(take(ahead), reference());
    const uint32_t next[3] = {static_cast<uint32_t>(reference()), static_cast<uint32_t>(reference()),
                              static_cast<uint32_t>(reference())};
    EXPECT_EQ(gaussianNoise(), noiseOfWords(next[0], next[1], next[2])) << "noise in between";
    ahead.fill(10);
    while (ahead.left() > 0) EXPECT_EQ(take(ahead), reference()) << "filled up again";
    EXPECT_EQ(genrand_int32(), reference()) << "none is left, the scope is still there";
}

TEST_F(WordsAheadTest, ADrawOfSeveralMayTakeTheLastOfThemAndGoOnInTheStream) {
    WordsAhead ahead;
    ahead.fill(2);
    uint32_t words[3];
    genrand_words(words);
    for (const uint32_t word : words) EXPECT_EQ(word, reference());
    EXPECT_EQ(ahead.left(), 0);
}

TEST_F(WordsAheadTest, ScopesNest) {
    WordsAhead outer;
    outer.fill(6);
    EXPECT_EQ(take(outer), reference());
    {
        WordsAhead inner;
        inner.fill(3); // from the five words of the outer scope
        EXPECT_EQ(outer.left(), 2);
        EXPECT_EQ(take(inner), reference());
        EXPECT_EQ(genrand_int32(), reference());
        inner.fill(4); // the one left, two of the outer scope, one of the stream
        EXPECT_EQ(outer.left(), 0);
        while (inner.left() > 0) EXPECT_EQ(take(inner), reference());
    }
    outer.fill(4);
    while (outer.left() > 0) EXPECT_EQ(take(outer), reference());
}

// Nested evaluations: each uses its own number of words, and calls others in between.
void evaluate(int depth, std::mt19937 &choices, std::mt19937 &reference, int &wrong) {
    WordsAhead ahead;
    for (int needed = static_cast<int>(choices() % 100); needed > 0;) {
        ahead.fill(std::min(needed, WordsAhead::kMost));
        const int before = ahead.left();
        wrong += *ahead.words() != reference();
        ahead.use(1);
        --needed;
        if (choices() % 4 == 0) wrong += genrand_int32() != reference();
        if (depth > 0 && choices() % 8 == 0) evaluate(depth - 1, choices, reference, wrong);
        EXPECT_LT(ahead.left(), before);
    }
}

TEST_F(WordsAheadTest, EvaluationsThatCallEachOtherAgreeWithSingleDraws) {
    std::mt19937 choices(4);
    int wrong = 0;
    for (int round = 0; round < 20; ++round) evaluate(3, choices, reference, wrong);
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(genrand_int32(), reference());
}

} // namespace
} // namespace velm::plugin

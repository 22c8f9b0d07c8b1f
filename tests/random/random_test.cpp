// The stream against known results: the sequences that the authors published, and the same generator of the standard
// library.
#include "tests/random/stream.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace velm::plugin {
namespace {

constexpr int kSeveralRefills = 5 * kStateWords + 17;

// Read before main runs, and thus before any test draws.
const int indexAtLoad = mti.load();
const auto wordsAtLoad = std::count_if(std::begin(mt), std::end(mt), [](const auto &word) { return word != 0; });

TEST(Random, NothingSeedsItAtLoadTime) {
    EXPECT_EQ(indexAtLoad, 625);
    EXPECT_EQ(wordsAtLoad, 0);
}

TEST(Random, GivesThePublishedSequenceOfTheDefaultSeed) {
    init_genrand(5489);
    uint32_t word = genrand_int32();
    EXPECT_EQ(word, 3499211612u);
    for (int i = 1; i < 10000; ++i) word = genrand_int32();
    EXPECT_EQ(word, 4123659995u);
}

TEST(Random, GivesThePublishedSequenceOfAKey) {
    constexpr std::array<uint32_t, 4> kKey = {0x123, 0x234, 0x345, 0x456};
    init_by_array(kKey.data(), static_cast<int>(kKey.size()));
    for (const uint32_t expected : {1067595299u, 955945823u, 477289528u, 4107218783u, 4228976476u})
        EXPECT_EQ(genrand_int32(), expected);
}

TEST(Random, SeedsItselfAtTheFirstDraw) {
    forgetSeed();
    EXPECT_EQ(genrand_int32(), 3499211612u);
    std::mt19937 reference;
    reference.discard(1);
    for (int i = 0; i < kSeveralRefills; ++i) ASSERT_EQ(genrand_int32(), reference()) << i;
}

TEST(Random, StartsWhereNodesRestartIt) {
    init_genrand(kCreationSeed);
    EXPECT_EQ(kCreationSeed, 3u);
    EXPECT_EQ(genrand_int32(), 2365658986u);
}

TEST(Random, AgreesWithTheStandardLibraryForAnySeed) {
    std::vector<uint32_t> seeds = {0, 1, 2, 3, 4, 5489, 0x7fffffff, 0x80000000, 0xfffffffe, 0xffffffff};
    for (uint32_t seed = 17; seeds.size() < 60; seed = seed * 2654435761u + 1) seeds.push_back(seed);
    for (const uint32_t seed : seeds) {
        init_genrand(seed);
        std::mt19937 reference(seed);
        for (int i = 0; i < kSeveralRefills; ++i) ASSERT_EQ(genrand_int32(), reference()) << "seed " << seed;
    }
}

// The seeding from a key as published in 2002, for keys of other lengths than in the publication.
std::array<uint32_t, kStateWords> seededByKey(const std::vector<uint32_t> &key) {
    std::array<uint32_t, kStateWords> state{};
    state[0] = 19650218;
    for (uint32_t i = 1; i < kStateWords; ++i) state[i] = 1812433253 * (state[i - 1] ^ (state[i - 1] >> 30)) + i;
    uint32_t i = 1, j = 0;
    const auto wrap = [&] {
        if (++i < kStateWords) return;
        state[0] = state[kStateWords - 1];
        i = 1;
    };
    for (size_t k = std::max<size_t>(kStateWords, key.size()); k > 0; --k) {
        state[i] = (state[i] ^ ((state[i - 1] ^ (state[i - 1] >> 30)) * 1664525)) + key[j] + j;
        wrap();
        j = (j + 1) % static_cast<uint32_t>(key.size());
    }
    for (int k = kStateWords - 1; k > 0; --k) {
        state[i] = (state[i] ^ ((state[i - 1] ^ (state[i - 1] >> 30)) * 1566083941)) - i;
        wrap();
    }
    state[0] = 0x80000000;
    return state;
}

TEST(Random, TakesKeysShorterAndLongerThanItsState) {
    for (const size_t length : {1u, 2u, 623u, 624u, 625u, 1000u}) {
        std::vector<uint32_t> key;
        for (uint32_t i = 0; i < length; ++i) key.push_back(i * 2654435761u);
        init_by_array(key.data(), static_cast<int>(length));
        const auto expected = seededByKey(key);
        for (size_t i = 0; i < kStateWords; ++i) ASSERT_EQ(mt[i].load(), expected[i]) << length;
        EXPECT_EQ(mti.load(), kStateWords);
        EXPECT_EQ(mt[0].load(), 0x80000000u);
    }
}

TEST(Random, RestartsInTheMiddle) {
    init_genrand(3);
    for (int i = 0; i < 700; ++i) genrand_int32();
    init_genrand(3);
    EXPECT_EQ(mti.load(), kStateWords);
    EXPECT_EQ(genrand_int32(), 2365658986u);
}

// ---- Forms of a draw ----

constexpr uint32_t kWords[] = {0, 1, 2, 0x7fffffff, 0x80000000, 0xdeadbeef, 0xfffffffe, 0xffffffff};

TEST(Random, EveryWordCanBeDrawn) {
    for (const uint32_t word : kWords) {
        setNextWords(word);
        EXPECT_EQ(genrand_int32(), word);
    }
}

TEST(Random, FormsAreTheWordRescaled) {
    for (const uint32_t word : kWords) {
        setNextWords(word, word, word, word);
        EXPECT_EQ(genrand_int31(), word / 2);
        EXPECT_EQ(genrand_real1(), word * (1.0 / 4294967295.0));
        EXPECT_EQ(genrand_real2(), word / 4294967296.0);
        EXPECT_EQ(mti.load(), 3) << "one word for each draw";
    }
}

TEST(Random, EndsOfTheIntervals) {
    setNextWords(0u, 0u, 0u, 0xffffffffu, 0xffffffffu, 0xffffffffu);
    EXPECT_EQ(genrand_int31(), 0u);
    EXPECT_EQ(genrand_real1(), 0.0);
    EXPECT_EQ(genrand_real2(), 0.0);
    EXPECT_EQ(genrand_int31(), 0x7fffffffu);
    EXPECT_EQ(genrand_real1(), 1.0) << "closed";
    EXPECT_LT(genrand_real2(), 1.0) << "half open";
}

// ---- Several words at once ----

TEST(Random, PairsAndTriplesAreSingleDrawsAtEveryOffset) {
    std::mt19937 reference(99);
    std::vector<uint32_t> words(2 * kStateWords + 8);
    for (uint32_t &word : words) word = static_cast<uint32_t>(reference());
    for (size_t offset = 0; offset <= kStateWords; ++offset) {
        const auto restart = [&] {
            init_genrand(99);
            for (size_t i = 0; i < offset; ++i) genrand_int32();
        };
        restart();
        uint32_t two[2];
        genrand_words(two);
        ASSERT_EQ(two[0], words[offset]) << offset;
        ASSERT_EQ(two[1], words[offset + 1]) << offset;
        ASSERT_EQ(genrand_int32(), words[offset + 2]) << offset;

        restart();
        uint32_t three[3];
        genrand_words(three);
        for (size_t i = 0; i < 3; ++i) ASSERT_EQ(three[i], words[offset + i]) << offset;
        ASSERT_EQ(genrand_int32(), words[offset + 3]) << offset;

        restart();
        const uint32_t next[3] = {words[offset], words[offset + 1], words[offset + 2]};
        ASSERT_EQ(gaussianNoise(), noiseOfWords(next[0], next[1], next[2])) << offset;
        ASSERT_EQ(genrand_int32(), words[offset + 3]) << offset;
    }
}

TEST(Random, TheFirstDrawOfSeveralSeedsToo) {
    std::mt19937 reference;
    forgetSeed();
    uint32_t three[3];
    genrand_words(three);
    for (const uint32_t word : three) EXPECT_EQ(word, reference());
    EXPECT_EQ(genrand_int32(), reference());
}

TEST(Random, TheIndexStaysWithinTheState) {
    forgetSeed();
    EXPECT_EQ(mti.load(), 625);
    for (int i = 0; i < kSeveralRefills; ++i) {
        genrand_int32();
        ASSERT_GE(mti.load(), 0);
        ASSERT_LE(mti.load(), 624);
        ASSERT_EQ(mti.load(), i % kStateWords + 1);
    }
}

} // namespace
} // namespace velm::plugin

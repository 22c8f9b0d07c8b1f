#include "random/random.h"

#include <algorithm>

namespace velm::plugin {

namespace {

constexpr int kShiftWords = 397; // M of the publication
constexpr uint32_t kUpperMask = 0x80000000u, kLowerMask = 0x7fffffffu;
constexpr uint32_t mag01[2] = {0, 0x9908b0dfu}; // the row of the twist matrix, selected by the lowest bit
constexpr uint32_t kDefaultSeed = 5489;

uint32_t word(int index) { return mt[index].load(std::memory_order_relaxed); }
void setWord(int index, uint32_t value) { mt[index].store(value, std::memory_order_relaxed); }

// The recurrence of the publication for one word: `high` gives the top bit, `low` the other bits, and `far` is the word
// M further on.
uint32_t twist(uint32_t high, uint32_t low, uint32_t far) {
    const uint32_t y = (high & kUpperMask) | (low & kLowerMask);
    return far ^ (y >> 1) ^ mag01[y & 1];
}

uint32_t mixed(int index) { return word(index - 1) ^ (word(index - 1) >> 30); }

} // namespace

alignas(kCacheLine) constinit std::atomic<uint32_t> mt[kStateWords] = {};
constinit StreamIndex mti = kNeverSeeded;
VELM_FIXED_PLACE constinit thread_local WordsAhead *WordsAhead::innermost = nullptr;

void init_genrand(uint32_t seed) {
    setWord(0, seed);
    for (int i = 1; i < kStateWords; ++i) setWord(i, 1812433253u * mixed(i) + static_cast<uint32_t>(i));
    mti.store(kStateWords, std::memory_order_relaxed);
}

void init_by_array(const uint32_t *key, int length) {
    init_genrand(19650218u);
    int i = 1, j = 0;
    const auto advance = [&i] {
        if (++i >= kStateWords) {
            setWord(0, word(kStateWords - 1));
            i = 1;
        }
    };
    for (int k = length > kStateWords ? length : kStateWords; k > 0; --k) {
        setWord(i, (word(i) ^ (mixed(i) * 1664525u)) + key[j] + static_cast<uint32_t>(j));
        advance();
        if (++j >= length) j = 0;
    }
    for (int k = kStateWords - 1; k > 0; --k) {
        setWord(i, (word(i) ^ (mixed(i) * 1566083941u)) - static_cast<uint32_t>(i));
        advance();
    }
    setWord(0, 0x80000000u); // not all zero
}

void refillState(int index) {
    if (index == kNeverSeeded) init_genrand(kDefaultSeed);
    // Each word is loaded once: as `low` of one step and then as `high` of the next.
    uint32_t current = word(0);
    int i = 0;
    for (; i < kStateWords - kShiftWords; ++i) {
        const uint32_t next = word(i + 1);
        setWord(i, twist(current, next, word(i + kShiftWords)));
        current = next;
    }
    for (; i < kStateWords - 1; ++i) {
        const uint32_t next = word(i + 1);
        setWord(i, twist(current, next, word(i + kShiftWords - kStateWords)));
        current = next;
    }
    setWord(i, twist(current, word(0), word(kShiftWords - 1)));
}

namespace {

void drawFromStream(uint32_t *words, int count) {
    int index = mti.load(std::memory_order_relaxed);
    while (count > 0) {
        if (index >= kStateWords) {
            refillState(index);
            index = 0;
        }
        const int here = std::min(count, kStateWords - index);
        // Stored before the words are read, so that other threads continue after them.
        mti.store(index + here, std::memory_order_relaxed);
        for (int i = 0; i < here; ++i) words[i] = word(index + i);
        for (int i = 0; i < here; ++i) words[i] = temper(words[i]);
        index += here;
        words += here;
        count -= here;
    }
}

} // namespace

void WordsAhead::drawFrom(WordsAhead *scope, uint32_t *words, int count) {
    for (; scope && count > 0; scope = scope->outer_) {
        const int here = std::min(count, scope->left());
        std::copy_n(scope->words(), here, words);
        scope->use(here);
        words += here;
        count -= here;
    }
    drawFromStream(words, count);
}

void WordsAhead::fill(int count) {
    const int kept = left();
    std::copy_n(words(), kept, words_);
    drawFrom(outer_, words_ + kept, count - kept);
    next_ = 0;
    end_ = count;
}

double gaussianNoise() {
    uint32_t words[kWordsOfNoise];
    genrand_words(words);
    return noiseOfWords(words[0], words[1], words[2]);
}

} // namespace velm::plugin

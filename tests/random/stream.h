// Helpers of the tests of the random stream: the state before the first draw, and the inverse of the tempering.
#pragma once

#include "random/random.h"

namespace velm::plugin {

// Resets the stream to its state when the module is loaded.
inline void forgetSeed() {
    for (std::atomic<uint32_t> &word : mt) word = 0;
    mti = kNeverSeeded;
}

// The state word whose tempering is `y`: undoes the steps of the tempering in reverse order.
constexpr uint32_t untempered(uint32_t y) {
    y ^= y >> 18;
    y ^= (y << 15) & 0xefc60000u;
    uint32_t undone = y;
    for (int i = 0; i < 5; ++i) undone = y ^ ((undone << 7) & 0x9d2c5680u); // each pass recovers seven bits
    y = undone;
    for (int i = 0; i < 3; ++i) undone = y ^ (undone >> 11);
    return undone;
}

// Makes the next draws return these words, at most 624.
template <class... Words>
void setNextWords(Words... words) {
    int index = 0;
    ((mt[index++] = untempered(words)), ...);
    mti = 0;
}

} // namespace velm::plugin

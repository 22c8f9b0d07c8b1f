// What the tests of the random stream share: the state as it is before anything is drawn, and the way back from a word
// of the stream to the word of the state that gives it.
#pragma once

#include "random/random.h"

namespace velm::plugin {

// As if the module had just been loaded.
inline void forgetSeed() {
    for (std::atomic<uint32_t> &word : mt) word = 0;
    mti = kNeverSeeded;
}

// The word that is tempered to `y`: the steps of the tempering, undone in reverse.
constexpr uint32_t untempered(uint32_t y) {
    y ^= y >> 18;
    y ^= (y << 15) & 0xefc60000u;
    uint32_t undone = y;
    for (int i = 0; i < 5; ++i) undone = y ^ ((undone << 7) & 0x9d2c5680u); // seven bits come right at a time
    y = undone;
    for (int i = 0; i < 3; ++i) undone = y ^ (undone >> 11);
    return undone;
}

// Makes the next draws give these words. At most 624.
template <class... Words>
void setNextWords(Words... words) {
    int index = 0;
    ((mt[index++] = untempered(words)), ...);
    mti = 0;
}

} // namespace velm::plugin

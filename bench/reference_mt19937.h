// MT19937 as its publication describes it, in the plainest form: what the module's stream is measured against.
// (Makoto Matsumoto and Takuji Nishimura, ACM TOMACS 8 (1), 1998; seeding of 2002.)
#pragma once

#include <cstdint>

namespace velm::host::bench {

class ReferenceTwister {
  public:
    explicit ReferenceTwister(uint32_t seed) {
        state_[0] = seed;
        for (int i = 1; i < kWords; ++i)
            state_[i] = 1812433253u * (state_[i - 1] ^ (state_[i - 1] >> 30)) + static_cast<uint32_t>(i);
    }

    uint32_t word() {
        if (next_ >= kWords) refill();
        uint32_t y = state_[next_++];
        y ^= y >> 11;
        y ^= (y << 7) & 0x9d2c5680u;
        y ^= (y << 15) & 0xefc60000u;
        return y ^ (y >> 18);
    }

    double closed() { return word() * (1.0 / 4294967295.0); }

    // Three uniform draws, summed and rescaled.
    double noise() {
        const double s =
            (word() * (1.0 / 4294967296.0) + word() * (1.0 / 4294967296.0) + word() * (1.0 / 4294967296.0)) * 10923.0;
        return (s + s - 32766.0) * (1.0 / 32767.0);
    }

  private:
    static constexpr int kWords = 624, kShift = 397;

    void refill() {
        for (int i = 0; i < kWords; ++i) {
            const uint32_t y = (state_[i] & 0x80000000u) | (state_[(i + 1) % kWords] & 0x7fffffffu);
            state_[i] = state_[(i + kShift) % kWords] ^ (y >> 1) ^ ((y & 1) != 0 ? 0x9908b0dfu : 0u);
        }
        next_ = 0;
    }

    uint32_t state_[kWords];
    int next_ = kWords;
};

} // namespace velm::host::bench

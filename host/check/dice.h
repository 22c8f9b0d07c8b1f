// The choices of the checks: the same for the same seed, on every machine.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velm::host {

// SplitMix64: Steele, Lea, Flood, "Fast splittable pseudorandom number generators", OOPSLA 2014.
class Dice {
  public:
    explicit Dice(std::uint64_t seed) : state_(seed) {}

    std::uint64_t word() {
        std::uint64_t z = state_ += 0x9e3779b97f4a7c15u;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
        return z ^ (z >> 31);
    }
    // 0 to n - 1; n above 0.
    int below(std::size_t n) { return static_cast<int>(word() % n); }
    // low to high, both possible.
    int between(int low, int high) {
        return static_cast<int>(low +
                                static_cast<std::int64_t>(
                                    word() % (static_cast<std::uint64_t>(high - static_cast<std::int64_t>(low)) + 1)));
    }
    bool chance(double part) { return real() < part; }
    // 0 to 1.
    double real() { return static_cast<double>(word() >> 11) * 0x1p-53; }
    double real(double low, double high) { return low + (high - low) * real(); }

  private:
    std::uint64_t state_;
};

// A seed of its own for everything that has a name (FNV-1a over the name).
inline std::uint64_t seedFor(std::uint64_t master, std::string_view name) {
    std::uint64_t hash = 0xcbf29ce484222325u ^ master;
    for (const char character : name) hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001b3u;
    return Dice(hash).word();
}

} // namespace velm::host

#include "host/graph/builtin/cellular.h"

#include "host/base/hash.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace velm::host {

namespace {

// Finds the two nearest points by going through the cubes around a position.
class NearestSearch {
  public:
    NearestSearch(const double position[3], double randomness) : randomness_(randomness) {
        for (int i = 0; i < 3; ++i) {
            const double corner = std::floor(position[i]);
            corner_[i] = static_cast<std::int64_t>(corner);
            inside_[i] = position[i] - corner;
        }
    }

    NearestPoints result() {
        visitCubes(1);
        // Points beyond the cubes that were visited are at least as far away as these cubes reach.
        double reach = 2;
        for (const double x : inside_) reach = std::min({reach, 1 + x, 2 - x});
        if (second_ > reach * reach) visitCubes(2);
        return {.first = std::sqrt(first_), .second = std::sqrt(second_), .number = number_};
    }

  private:
    // Visits the cubes that are `ring` cubes away along at least one axis, and, for the first ring, the cube itself.
    void visitCubes(int ring) {
        for (int z = -ring; z <= ring; ++z)
            for (int y = -ring; y <= ring; ++y)
                for (int x = -ring; x <= ring; ++x)
                    if (ring == 1 || std::max({std::abs(x), std::abs(y), std::abs(z)}) == ring) visit(x, y, z);
    }

    void visit(int x, int y, int z) {
        const std::uint32_t ofX = scramble(static_cast<std::uint32_t>(corner_[0] + x));
        const std::uint32_t ofXy = scramble(ofX + static_cast<std::uint32_t>(corner_[1] + y));
        const std::uint32_t number = scramble(ofXy + static_cast<std::uint32_t>(corner_[2] + z));
        const double dx = x - inside_[0] + along(number, 1), dy = y - inside_[1] + along(number, 2),
                     dz = z - inside_[2] + along(number, 3);
        const double squared = dx * dx + dy * dy + dz * dz;
        if (squared < first_) {
            second_ = first_;
            first_ = squared;
            number_ = number;
        } else {
            second_ = std::min(second_, squared);
        }
    }

    // One coordinate of the point in a cube: 0 to 1.
    double along(std::uint32_t number, std::uint32_t axis) const {
        constexpr double kUnit = 1.0 / 4294967296; // 2 to the power of -32
        return 0.5 + randomness_ * (scramble(number + axis) * kUnit - 0.5);
    }

    const double randomness_;
    std::int64_t corner_[3];
    double inside_[3];                  // the position in its cube, 0 to 1
    double first_ = 100, second_ = 100; // squared; farther than any point of the first ring
    std::uint32_t number_ = 0;
};

} // namespace

NearestPoints nearestPoints(const double position[3], double randomness) {
    constexpr double kLimit = 1e15; // a larger double has almost no fraction left
    for (int i = 0; i < 3; ++i)
        if (!(std::fabs(position[i]) < kLimit)) return {};
    return NearestSearch(position, std::clamp(randomness, 0.0, 1.0)).result();
}

} // namespace velm::host

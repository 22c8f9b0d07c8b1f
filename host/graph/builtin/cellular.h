// Cellular noise.
#pragma once

#include <cstdint>

namespace velm::host {

// The two points of a scattered set that are nearest to a position.
struct NearestPoints {
    double first = 0, second = 0; // the distances to both; first <= second
    std::uint32_t number = 0;     // that belongs to the nearest point: random, and the same everywhere in its cell
};

// Cellular noise in space after S. Worley, "A Cellular Texture Basis Function", SIGGRAPH 1996, with one point in each
// cube of a lattice of whole numbers. A point lies in the middle of its cube, moved by `randomness` (0 to 1) of the way
// to a random position in the cube. Exact for distances below 2, which all but a few are. All zeros where a position is
// not finite. The same on every machine. [any thread]
NearestPoints nearestPoints(const double position[3], double randomness);

} // namespace velm::host

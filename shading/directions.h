// Directions of many rays at once: the angles of a batch are turned into unit vectors about an axis together, and the
// random words of a batch are taken from the stream in one visit.
#pragma once

#include "random/random.h"

#include <algorithm>
#include <cstdint>

namespace velm::plugin {

// The rotation that takes +X to an axis: first by the axis's pitch, then by its heading.
struct AxisRotation {
    double cosPitch, sinPitch, cosHeading, sinHeading;
};

// The rotation to `axis`, of any length. The zero vector gives +X.
AxisRotation rotationTo(const double axis[3]);

// The directions of several rays: for each the angle from the axis and the angle about it, in radians, and the unit
// vector that these give.
struct DirectionBatch {
    static constexpr int kWordsPerRay = 2;
    static constexpr int kMost = WordsAhead::kMost / kWordsPerRay; // rays
    double theta[kMost], phi[kMost];
    double directions[kMost][3];
};

// Computes the first `count` directions from their angles. Where theta is 0, the direction is the axis. [render
// threads]
void rotateBatch(DirectionBatch &batch, int count, const AxisRotation &rotation);

// Sends `count` rays, batch by batch, in the order of their numbers. `aim(ray, r1, r2, theta, phi)` sets the two angles
// of a ray from its number, from 0, and two random numbers on [0, 1]. `rotate(batch, length)` computes the directions
// of a batch from its angles, and `send(direction)` sends one ray.
//
// The result is the same as if each ray drew its two numbers just before it is sent: if `send` draws from the stream
// itself, the rays after it get later numbers, and their directions are computed anew. [render threads]
template <class Aim, class Rotate, class Send>
void sendInBatches(int64_t count, Aim aim, Rotate rotate, Send send) {
    constexpr int kWords = DirectionBatch::kWordsPerRay;
    WordsAhead ahead;
    DirectionBatch batch;
    for (int64_t sent = 0; sent < count;) {
        const int length = static_cast<int>(std::min<int64_t>(count - sent, DirectionBatch::kMost));
        ahead.fill(kWords * length);
        const uint32_t *words = ahead.words();
        for (int i = 0; i < length; ++i, words += kWords)
            aim(sent + i, words[0] * kPerInt32Closed, words[1] * kPerInt32Closed, batch.theta[i], batch.phi[i]);
        rotate(batch, length);
        for (int i = 0; i < length && ahead.left() == kWords * (length - i); ++i, ++sent) {
            ahead.use(kWords);
            send(batch.directions[i]);
        }
    }
}

} // namespace velm::plugin

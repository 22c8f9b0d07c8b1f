// Closed forms of the curves between two keys, and a short way to make keys.
#pragma once

#include "host/animation/channel.h"

namespace velm::host {

struct Tangents {
    double leaving, arriving; // value per span
};

// The cubic with these values and tangents at its ends; `x` is the fraction of the span, 0 to 1.
inline double hermite(double from, double to, Tangents tangents, double x) {
    return (1 + 2 * x) * (1 - x) * (1 - x) * from + x * (1 - x) * (1 - x) * tangents.leaving +
           x * x * (3 - 2 * x) * to + x * x * (x - 1) * tangents.arriving;
}

// The cubic with these control points; `t` is 0 to 1.
inline double bernstein(double p0, double p1, double p2, double p3, double t) {
    const double s = 1 - t;
    return s * s * s * p0 + 3 * t * s * s * p1 + 3 * t * t * s * p2 + t * t * t * p3;
}

// Creates a key, which belongs to the envelope.
inline HostKey &put(HostEnvelope &envelope, double time, double value, int shape) {
    HostKey &key = envelope.putKey(time, value);
    key.shape = shape;
    return key;
}

} // namespace velm::host

// The value of an envelope between, before and after its keys.

#include "host/animation/channel.h"

#include <algorithm>
#include <cmath>

namespace {

// Two neighbouring keys, and the keys beyond them: null at an end of the envelope.
struct Span {
    const HostKey *previous;
    const HostKey &from;
    const HostKey &to;
    const HostKey *next;
};

// A span as seen from the key at one of its ends. The span beyond is the one on the other side of that key. All
// differences of values are in the direction of time.
struct SpanEnd {
    const HostKey &key;
    bool outgoing;   // the span begins at the key; otherwise it ends there
    double length;   // of the span, in seconds; positive
    double rise;     // difference of values over the span
    double beyond;   // difference of values over the span beyond; 0 without one
    double fraction; // of this span in the time of both; 1 without the other
};

// The span as seen from the key at which it begins (`outgoing`) or ends.
SpanEnd seenFrom(const Span &span, bool outgoing) {
    const HostKey &first = outgoing && span.previous ? *span.previous : span.from;
    const HostKey &last = !outgoing && span.next ? *span.next : span.to;
    const double length = span.to.time - span.from.time;
    return {.key = outgoing ? span.from : span.to,
            .outgoing = outgoing,
            .length = length,
            .rise = span.to.value - span.from.value,
            .beyond = outgoing ? span.from.value - first.value : last.value - span.to.value,
            .fraction = length / (last.time - first.time)};
}

// In seconds. Where its slope is needed, a narrower handle counts as one of this width.
constexpr double kNarrowestHandle = 1e-5;

// The tangent of a two-dimensional Bezier key: the slope of its handle.
double handleTangent(const SpanEnd &end) {
    const double time = end.key.parameters[end.outgoing ? 2 : 0];
    const double value = end.key.parameters[end.outgoing ? 3 : 1];
    const double narrowest = end.outgoing ? kNarrowestHandle : -kNarrowestHandle;
    return value * end.length / (std::fabs(time) < kNarrowestHandle ? narrowest : time);
}

// The tangent at a key in value per span, as cubic Hermite curves need it. It depends on the shape of the key, even
// where the span has another: a key's shape is that of the span before it. A key between two spans has tangents over
// both of them, and each span takes its fraction.
double tangent(const SpanEnd &end) {
    const HostKey &key = end.key;
    switch (key.shape) {
    case kShapeTcb: {
        // Kochanek and Bartels, "Interpolating Splines with Local Tension, Continuity, and Bias Control", 1984.
        const double bias = end.outgoing ? key.bias : -key.bias;
        const double ofBeyond = (1 - key.tension) * (1 + key.continuity) * (1 + bias);
        const double ofRise = (1 - key.tension) * (1 - key.continuity) * (1 - bias);
        return end.fraction * (ofBeyond * end.beyond + ofRise * end.rise);
    }
    case kShapeHermite:
    case kShapeBezier1: return end.fraction * key.parameters[end.outgoing ? 1 : 0];
    case kShapeLinear: return end.fraction * (end.beyond + end.rise);
    case kShapeBezier2: return handleTangent(end);
    default: return 0; // stepped: horizontal
    }
}

double bernstein(double p0, double p1, double p2, double p3, double t) {
    const double s = 1 - t;
    return s * s * s * p0 + 3 * s * s * t * p1 + 3 * s * t * t * p2 + t * t * t * p3;
}

// The curve in time and value. Bisection finds the curve parameter for a time to the last bit, in as many steps as a
// double has binary digits. The curve begins before that time and ends after it, so there always is such a parameter.
// Handles that leave the span can fold the curve back; bisection then settles on one of several parameters.
double bezier2(const SpanEnd &start, const HostKey &to, double time) {
    const HostKey &key = start.key;
    const bool alike = key.shape == kShapeBezier2;
    const double handleTime = alike ? key.parameters[2] : start.length / 3;
    const double handleValue = alike ? key.parameters[3] : tangent(start) / 3;
    double low = 0, high = 1;
    for (int step = 0; step < 60; ++step) {
        const double middle = (low + high) / 2;
        const double at = bernstein(key.time, key.time + handleTime, to.time + to.parameters[0], to.time, middle);
        (at < time ? low : high) = middle;
    }
    const double middle = (low + high) / 2;
    return bernstein(key.value, key.value + handleValue, to.value + to.parameters[1], to.value, middle);
}

// The value between the two keys, by the shape of the second one.
double between(const Span &span, double time) {
    const HostKey &from = span.from;
    const HostKey &to = span.to;
    if (to.shape == kShapeStepped) return from.value;
    const SpanEnd start = seenFrom(span, true);
    const double x = (time - from.time) / start.length;
    if (to.shape == kShapeLinear) return from.value + x * start.rise;
    if (to.shape == kShapeBezier2) return bezier2(start, to, time);
    const double x2 = x * x, x3 = x2 * x;
    return (2 * x3 - 3 * x2 + 1) * from.value + (3 * x2 - 2 * x3) * to.value + (x3 - 2 * x2 + x) * tangent(start) +
           (x3 - x2) * tangent(seenFrom(span, false));
}

// The span that ends at the key with this index, which is at least 1.
Span spanTo(const HostEnvelope &envelope, std::size_t index) {
    const auto &keys = envelope.keys;
    return {.previous = index > 1 ? keys[index - 2].get() : nullptr,
            .from = *keys[index - 1],
            .to = *keys[index],
            .next = index + 1 < keys.size() ? keys[index + 1].get() : nullptr};
}

// The value from the time of the first key to that of the last.
double inside(const HostEnvelope &envelope, double time) {
    const auto &keys = envelope.keys;
    const auto after = std::upper_bound(keys.begin(), keys.end(), time,
                                        [](double wanted, const auto &key) { return wanted < key->time; });
    if (after == keys.begin()) return keys.front()->value;
    const HostKey &at = **(after - 1);
    if (at.time == time || after == keys.end()) return at.value;
    return between(spanTo(envelope, static_cast<std::size_t>(after - keys.begin())), time);
}

// The value on the straight line that leaves the first key (`early`) or the last one along its tangent.
double straightOn(const HostEnvelope &envelope, bool early, double time) {
    const Span span = spanTo(envelope, early ? 1 : envelope.keys.size() - 1);
    const SpanEnd end = seenFrom(span, early);
    return end.key.value + (time - end.key.time) * tangent(end) / end.length;
}

} // namespace

double HostEnvelope::evaluate(double time) const {
    if (keys.empty()) return 0;
    const HostKey &first = *keys.front();
    const HostKey &last = *keys.back();
    if (!std::isfinite(time)) return time > 0 ? last.value : first.value;
    if (keys.size() == 1) return first.value; // a single key has no range to leave
    const bool early = time < first.time;
    if (!early && time <= last.time) return inside(*this, time);

    // How many whole lengths of the keyed range lie between (rounded down), and the position in the last one.
    const double length = last.time - first.time;
    const double runs = std::floor((time - first.time) / length);
    const double into = std::clamp(time - first.time - runs * length, 0.0, length);
    switch (early ? before : after) {
    case kBehaveReset: return 0;
    case kBehaveRepeat: return inside(*this, first.time + into);
    case kBehaveOscillate: return inside(*this, std::fmod(runs, 2) == 0 ? first.time + into : last.time - into);
    case kBehaveOffsetRepeat: return inside(*this, first.time + into) + runs * (last.value - first.value);
    case kBehaveLinear: return straightOn(*this, early, time);
    default: return early ? first.value : last.value; // constant
    }
}

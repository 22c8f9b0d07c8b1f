// The value of an envelope between, before and after its keys.

#include "host/animation/channel.h"

#include <algorithm>
#include <cmath>

namespace {

// Tangents are in value per span, as cubic Hermite curves need them; the span is the one on the side of the tangent. A
// key at an end of the envelope has no neighbour on one side.
struct Neighbours {
    const HostKey *previous;
    const HostKey *next;
};

// Kochanek and Bartels, "Interpolating Splines with Local Tension, Continuity, and Bias Control", 1984, with their
// adjustment for spans of different length: a tangent is scaled by its span's fraction of both.
double tcbTangent(const HostKey &key, Neighbours around, bool outgoing) {
    if (!around.previous && !around.next) return 0;
    const double continuity = outgoing ? key.continuity : -key.continuity;
    const double fromBefore = (1 - key.tension) * (1 + continuity) * (1 + key.bias);
    const double fromAfter = (1 - key.tension) * (1 - continuity) * (1 - key.bias);
    if (!around.previous) return (1 - key.tension) * (around.next->value - key.value);
    if (!around.next) return (1 - key.tension) * (key.value - around.previous->value);
    const double both = around.next->time - around.previous->time;
    const double span = outgoing ? around.next->time - key.time : key.time - around.previous->time;
    const double sum = fromBefore * (key.value - around.previous->value) + fromAfter * (around.next->value - key.value);
    return sum * span / both;
}

double spanDifference(const HostKey &key, Neighbours around, bool outgoing) {
    const HostKey *other = outgoing ? around.next : around.previous;
    if (!other) return 0;
    return outgoing ? other->value - key.value : key.value - other->value;
}

// The two-dimensional handle of a key on one side, relative to the key: time (within the span) and value.
struct Handle {
    double time, value;
};

Handle bezierHandle(const HostKey &key, double span, bool outgoing) {
    const double time = outgoing ? std::clamp(key.parameters[2], 0.0, span) : std::clamp(key.parameters[0], -span, 0.0);
    return {.time = time, .value = outgoing ? key.parameters[3] : key.parameters[1]};
}

// The tangents of a key depend on its own shape, whatever the shape of the span on its other side.
double tangent(const HostKey &key, Neighbours around, bool outgoing) {
    switch (key.shape) {
    case kShapeTcb: return tcbTangent(key, around, outgoing);
    case kShapeHermite: return key.parameters[outgoing ? 1 : 0];
    case kShapeBezier1: return outgoing ? 3 * key.parameters[1] : -3 * key.parameters[0];
    case kShapeLinear: return spanDifference(key, around, outgoing);
    case kShapeBezier2: {
        const HostKey *other = outgoing ? around.next : around.previous;
        if (!other) return 0;
        const double span = std::fabs(other->time - key.time);
        const Handle handle = bezierHandle(key, span, outgoing);
        return handle.time == 0 ? 0 : handle.value / handle.time * span;
    }
    default: return 0; // stepped: horizontal
    }
}

double bernstein(double p0, double p1, double p2, double p3, double t) {
    const double s = 1 - t;
    return s * s * s * p0 + 3 * s * s * t * p1 + 3 * s * t * t * p2 + t * t * t * p3;
}

// The curve's time increases monotonically, since no handle leaves the span. Bisection therefore finds the curve
// parameter for a time to the last bit, in as many steps as a double has binary digits.
double bezier2(const HostKey &from, const HostKey &to, Handle leaving, Handle arriving, double time) {
    double low = 0, high = 1;
    for (int step = 0; step < 60; ++step) {
        const double middle = (low + high) / 2;
        const double at = bernstein(from.time, from.time + leaving.time, to.time + arriving.time, to.time, middle);
        (at < time ? low : high) = middle;
    }
    const double middle = (low + high) / 2;
    return bernstein(from.value, from.value + leaving.value, to.value + arriving.value, to.value, middle);
}

class Curve {
  public:
    explicit Curve(const HostEnvelope &envelope) : keys_(envelope.keys) {}

    // The value between two keys; `index` is the key at which the span ends.
    double span(std::size_t index, double time) const {
        const HostKey &from = *keys_[index - 1];
        const HostKey &to = *keys_[index];
        const double length = to.time - from.time;
        if (to.shape == kShapeStepped) return time < to.time ? from.value : to.value;
        if (to.shape == kShapeLinear) return from.value + (to.value - from.value) * ((time - from.time) / length);
        const double leaving = tangent(from, around(index - 1), true);
        if (to.shape == kShapeBezier2) {
            const bool alike = from.shape == kShapeBezier2;
            const Handle handle = alike ? bezierHandle(from, length, true) : Handle{length / 3, leaving / 3};
            return bezier2(from, to, handle, bezierHandle(to, length, false), time);
        }
        const double arriving = tangent(to, around(index), false);
        const double t = (time - from.time) / length;
        const double t2 = t * t, t3 = t2 * t;
        return (2 * t3 - 3 * t2 + 1) * from.value + (t3 - 2 * t2 + t) * leaving + (3 * t2 - 2 * t3) * to.value +
               (t3 - t2) * arriving;
    }

    // From the time of the first key to that of the last.
    double inside(double time) const {
        const auto after = std::upper_bound(keys_.begin(), keys_.end(), time,
                                            [](double wanted, const auto &key) { return wanted < key->time; });
        if (after == keys_.begin()) return keys_.front()->value;
        const HostKey &at = **(after - 1);
        if (at.time == time || after == keys_.end()) return at.value;
        return span(static_cast<std::size_t>(after - keys_.begin()), time);
    }

    // The slope in value per second at the first or last key, on its inner side.
    double endSlope(bool last) const {
        if (keys_.size() < 2) return 0;
        const std::size_t end = last ? keys_.size() - 1 : 1; // the key at which the outermost span ends
        const double length = keys_[end]->time - keys_[end - 1]->time;
        const HostKey &from = *keys_[end - 1];
        const HostKey &to = *keys_[end];
        if (to.shape == kShapeStepped) return 0;
        if (to.shape == kShapeLinear) return (to.value - from.value) / length;
        return (last ? tangent(to, around(end), false) : tangent(from, around(0), true)) / length;
    }

  private:
    Neighbours around(std::size_t index) const {
        return {.previous = index > 0 ? keys_[index - 1].get() : nullptr,
                .next = index + 1 < keys_.size() ? keys_[index + 1].get() : nullptr};
    }

    const std::vector<std::unique_ptr<HostKey>> &keys_;
};

} // namespace

double HostEnvelope::evaluate(double time) const {
    if (keys.empty()) return 0;
    const Curve curve(*this);
    const HostKey &first = *keys.front();
    const HostKey &last = *keys.back();
    if (!std::isfinite(time)) return time > 0 ? last.value : first.value;
    const bool early = time < first.time;
    if (!early && time <= last.time) return curve.inside(time);

    const HostKey &end = early ? first : last;
    const double length = last.time - first.time;
    // How many whole lengths of the keyed range lie between (rounded down), and the position in the last one.
    const double runs = length > 0 ? std::floor((time - first.time) / length) : 0;
    const double into = length > 0 ? std::clamp(time - first.time - runs * length, 0.0, length) : 0;
    switch (early ? before : after) {
    case kBehaveReset: return 0;
    case kBehaveRepeat: return curve.inside(first.time + into);
    case kBehaveOscillate: return curve.inside(std::fmod(runs, 2) == 0 ? first.time + into : last.time - into);
    case kBehaveOffsetRepeat: return curve.inside(first.time + into) + runs * (last.value - first.value);
    case kBehaveLinear: return end.value + curve.endSlope(!early) * (time - end.time);
    default: return end.value; // constant
    }
}

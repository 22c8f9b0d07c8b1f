#include "host/render/tracing/ray_counts.h"

namespace velm::host {

RayCounts &RayCounts::operator+=(const RayCounts &other) {
    camera += other.camera;
    cast += other.cast;
    shaded += other.shaded;
    shadow += other.shadow;
    return *this;
}

} // namespace velm::host

#include "host/render/geometry/embree_scene.h"

#include "host/base/error.h"

#include <string>
#include <sys/types.h>

namespace velm::host {
namespace {

// Called by Embree from its building threads.
bool countMemory(void *bytes, ssize_t change, bool) {
    *static_cast<std::atomic<long> *>(bytes) += change;
    return true;
}

} // namespace

EmbreeDevice::EmbreeDevice() : device_(rtcNewDevice(nullptr)) {
    if (!device_) throw MachineError("cannot start the ray tracing library Embree");
    rtcSetDeviceMemoryMonitorFunction(device_, countMemory, &bytes_);
}

EmbreeDevice::~EmbreeDevice() { rtcReleaseDevice(device_); }

void EmbreeDevice::requireNoError() const {
    switch (const RTCError error = rtcGetDeviceError(device_)) {
    case RTC_ERROR_NONE: return;
    case RTC_ERROR_OUT_OF_MEMORY:
        throw MachineError("not enough memory for the acceleration structure of the scene's geometry");
    case RTC_ERROR_UNSUPPORTED_CPU:
        throw MachineError("the ray tracing library Embree does not support this processor");
    default: throw MachineError("the ray tracing library Embree failed with error " + std::to_string(error));
    }
}

EmbreeScene newEmbreeScene(const std::shared_ptr<const EmbreeDevice> &device) {
    const RTCScene scene = rtcNewScene(device->handle());
    if (!scene) device->requireNoError();
    // Rays must not slip through the edge between two triangles.
    rtcSetSceneFlags(scene, RTC_SCENE_FLAG_ROBUST);
    return {scene, [device](RTCScene released) { rtcReleaseScene(released); }};
}

EmbreeGeometry newEmbreeGeometry(const EmbreeDevice &device, RTCGeometryType type) {
    const RTCGeometry geometry = rtcNewGeometry(device.handle(), type);
    if (!geometry) device.requireNoError();
    return {geometry, rtcReleaseGeometry};
}

} // namespace velm::host

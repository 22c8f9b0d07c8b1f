// Embree's device and scenes, with their lifetimes.
#pragma once

#include <embree3/rtcore.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <type_traits>

namespace velm::host {

// A device of Embree, which counts the memory that is allocated by it. Acceleration structures that share scenes share
// their device.
class EmbreeDevice {
  public:
    EmbreeDevice(); // throws MachineError if Embree does not start
    ~EmbreeDevice();
    EmbreeDevice(const EmbreeDevice &) = delete;
    EmbreeDevice &operator=(const EmbreeDevice &) = delete;

    RTCDevice handle() const { return device_; }
    // Memory that Embree holds now.
    std::size_t bytes() const { return static_cast<std::size_t>(bytes_.load()); }
    // Throws MachineError if any call for this device has failed since the last call of this function.
    void requireNoError() const;

  private:
    RTCDevice device_ = nullptr;
    std::atomic<long> bytes_ = 0;
};

// A scene of Embree. It keeps its device, but not the buffers of its geometries. Empty: none.
using EmbreeScene = std::shared_ptr<std::remove_pointer_t<RTCScene>>;
EmbreeScene newEmbreeScene(const std::shared_ptr<const EmbreeDevice> &device);

// A geometry of Embree, which the scenes that it is attached to keep too.
using EmbreeGeometry = std::shared_ptr<std::remove_pointer_t<RTCGeometry>>;
EmbreeGeometry newEmbreeGeometry(const EmbreeDevice &device, RTCGeometryType type);

} // namespace velm::host

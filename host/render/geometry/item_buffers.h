// The cameras and lights of a mesh file in shared memory, where the process that reads the file stores them.
#pragma once

#include "host/io/shared_arena.h"
#include "host/render/geometry/mesh_item.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <string>
#include <vector>

namespace velm::host {

// The other process may have left anything in the buffers: isWithin has to be true before cameras() and lights() are
// called.
class ItemBuffers {
  public:
    explicit ItemBuffers(std::pmr::memory_resource *memory)
        : cameras_(memory), lights_(memory), lightKinds_(memory), names_(memory) {}

    void take(const std::vector<MeshCamera> &cameras, const std::vector<MeshLight> &lights) {
        for (const MeshCamera &camera : cameras) {
            cameras_.push_back(camera);
            names_.emplace_back(camera.name);
        }
        for (const MeshLight &light : lights) {
            lights_.push_back(light);
            lightKinds_.push_back(static_cast<std::uint32_t>(light.kind));
            names_.emplace_back(light.name);
        }
    }

    bool isWithin(const SharedArena &arena) const {
        return arena.holds(cameras_) && arena.holds(lights_) && arena.holds(lightKinds_) && arena.holds(names_) &&
               std::ranges::all_of(names_, [&](const std::pmr::string &name) { return arena.holds(name); }) &&
               lightKinds_.size() == lights_.size() && names_.size() == cameras_.size() + lights_.size() &&
               std::ranges::all_of(cameras_, areFinite<MeshCameraValues>) &&
               std::ranges::all_of(lights_, areFinite<MeshLightValues>) &&
               std::ranges::all_of(lightKinds_, [](std::uint32_t kind) {
                   return kind <= static_cast<std::uint32_t>(MeshLight::Kind::ambient);
               });
    }

    std::vector<MeshCamera> cameras() const {
        std::vector<MeshCamera> all;
        for (std::size_t i = 0; i < cameras_.size(); ++i) all.push_back({cameras_[i], std::string(names_[i])});
        return all;
    }

    std::vector<MeshLight> lights() const {
        std::vector<MeshLight> all;
        for (std::size_t i = 0; i < lights_.size(); ++i)
            all.push_back(
                {lights_[i], static_cast<MeshLight::Kind>(lightKinds_[i]), std::string(names_[cameras_.size() + i])});
        return all;
    }

  private:
    template <class Values>
    static bool areFinite(const Values &values) {
        using Numbers = std::array<double, sizeof(Values) / sizeof(double)>;
        return std::ranges::all_of(std::bit_cast<Numbers>(values), [](double number) { return std::isfinite(number); });
    }

    std::pmr::vector<MeshCameraValues> cameras_;
    std::pmr::vector<MeshLightValues> lights_;
    std::pmr::vector<std::uint32_t> lightKinds_; // by light
    std::pmr::vector<std::pmr::string> names_;   // of the cameras, then of the lights
};

} // namespace velm::host

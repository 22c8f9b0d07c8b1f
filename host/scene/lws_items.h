// Converts items of LightWave scenes to item descriptions.
#pragma once

#include "host/lws/scene_record.h"
#include "host/scene/format/description.h"

#include <string>
#include <unordered_map>
#include <unordered_set>

namespace velm::host {

// The names of the items of a scene. A name that another item has gets a number.
class LwsNames {
  public:
    void add(const lws::Item &item, const std::string &wanted);
    const std::string &operator[](std::uint32_t id) const { return names_.at(id); }

  private:
    std::unordered_map<std::uint32_t, std::string> names_; // by id
    std::unordered_set<std::string> taken_;
    std::unordered_map<std::string, int> next_; // by wanted name: the number to try next
};

// Each sets members of `to`; `file` is for its location. Values are clamped to the ranges of the scene format.
void convertPlace(const lws::Item &from, const LwsNames &names, const std::string &file, ItemDescription &to);
// The level of subdivision at which an edge of a subdivision surface has at least that many segments, as far as levels
// go. LightWave divides edges into any number of segments; its usual 3 become the 4 of level 2.
int subdivisionOf(int segments);
void convertDissolve(const lws::Object &from, ObjectDescription &to);
// The part of the picture that a camera renders.
Part regionOf(const lws::Camera &camera);
void convertMask(const lws::Camera &from, CameraDescription &to);
void convertShutter(const lws::Camera &from, CameraDescription &to);
void convertLens(const lws::Camera &from, CameraDescription &to);
void convertLight(const lws::Light &from, const lws::Scene &scene, LightDescription &to);

// How zoom factors become fields of view. The two are not proportional, so the zoom's keys are sampled.
struct ZoomSampling {
    double aspect = 1;           // the width of the picture divided by its height
    double framesPerSecond = 30; // the rate of the samples
    int mostSteps = 0;           // between samples; a longer animation is sampled at a lower rate. At least 1
};
void convertZoom(const lws::Camera &from, const ZoomSampling &sampling, CameraDescription &to);

} // namespace velm::host

// Items of LightWave scenes as items of ours.
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

// Each fills in the item; `file` is for its location. Values are brought into the ranges that the format has.
void convertPlace(const lws::Item &from, const LwsNames &names, const std::string &file, ItemDescription &to);
void convertDissolve(const lws::Object &from, ObjectDescription &to);
void convertLight(const lws::Light &from, const lws::Scene &scene, LightDescription &to);
// `aspect` is the width of the picture divided by its height. `framesPerSecond` is the rate at which keys of the zoom,
// which the field of view does not follow in proportion, become keys of the field of view.
void convertZoom(const lws::Camera &from, double aspect, double framesPerSecond, CameraDescription &to);

} // namespace velm::host

// The ids of items in a LightWave scene.
#pragma once

#include "host/lws/scene_record.h"

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>

namespace velm::host::lws {

// Assigns unique ids to the items of a scene, in the order of the file.
class ItemIds {
  public:
    // The id that the file gives, or the next one of its kind. An id that another item has is replaced by a free one.
    std::uint32_t take(ItemKind kind, std::optional<std::uint32_t> given, std::uint32_t next);

  private:
    std::unordered_set<std::uint32_t> taken_;
    std::uint32_t spare_ = 0x0fffffff; // numbers from the end of the range are unlikely to be in use
};

// Removes references to parents and targets that do not exist, and of items to themselves as targets, and counts them
// as losses. InputError with the line of an item whose parents form a cycle.
void checkLinks(Scene &scene, const std::string &file);

} // namespace velm::host::lws

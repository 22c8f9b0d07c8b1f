// Warnings about what is baked.
#pragma once

#include "host/bake/bake_target.h"
#include "host/bake/baked_value.h"
#include "host/base/warnings.h"

#include <string>

namespace velm::host {

// All arguments have to outlive it. [controller thread]
class BakeWarnings {
  public:
    BakeWarnings(const RenderSceneData &scene, const BakeTarget &target, Warnings &warnings)
        : scene_(scene), target_(target), warnings_(warnings) {}

    // Of surfaces that do not have the value; `output` is its name.
    void ofSurfaces(const BakedValue &value, const std::string &output) const;
    // If the result depends on the order of evaluation, which is that of `points`: "the texels".
    void ofOrder(const char *points) const;

    // Adds a warning about the object.
    void add(const char *brief, const std::string &message) const;

  private:
    const RenderSceneData &scene_;
    const BakeTarget &target_;
    Warnings &warnings_;
};

} // namespace velm::host

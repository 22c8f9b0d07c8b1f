// What an input names and does not get. The work goes on without it, and people are told; or, where they asked for it,
// the work ends there.
#pragma once

#include "host/base/error.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

struct Warning {
    SourceLocation location; // of what is wrong, in the user's files
    std::string path;    // the way to it inside that file: "surfaces.Chrome.nodes.Mirror.settings.Image"; may be empty
    std::string brief;   // a few words for a summary, the same whenever it is the same thing: "no image \"Sky\""
    std::string message; // a line that says what is wrong and what is expected or done instead

    // "scene.json:12: images.Sky.file: message", as far as there is a place.
    std::string text() const;
};

// Adds a name to a path inside a file: "images" and "Sky" give "images.Sky"; names that are not plain words are quoted.
std::string pathTo(const std::string &parent, std::string_view name);

// Collects the warnings of one run, in their order. One thread at a time.
class Warnings {
  public:
    enum class Policy { goOn, strict };

    // `tell` is called with each warning as it comes; it may be empty.
    explicit Warnings(Policy policy, std::function<void(const Warning &)> tell = {});

    // Under the strict policy throws the warning as an InputError. Else keeps it and tells it; one that was told
    // before, word for word and at the same place, is passed over.
    void add(Warning warning);

    const std::vector<Warning> &all() const { return all_; }

    // "2 warnings: no image \"Sky\"; no image \"Wood\"": each thing once, however often it was met. Empty without any.
    std::string summary() const;

  private:
    Policy policy_;
    std::function<void(const Warning &)> tell_;
    std::vector<Warning> all_;
};

} // namespace velm::host

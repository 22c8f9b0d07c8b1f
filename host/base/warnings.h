// Warnings: an input names something that is missing or unusable. The work continues without it and the user is
// warned; under the strict policy the work ends with an error instead.
#pragma once

#include "host/base/error.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace velm::host {

struct Warning {
    SourceLocation location; // of what is wrong
    std::string path;    // the path to it inside that file: "surfaces.Chrome.nodes.Mirror.settings.Image"; may be empty
    std::string brief;   // a few words for a summary, equal for equal causes: "no image \"Sky\""
    std::string message; // a line that says what is wrong and what is expected or done instead

    // "scene.json:12: images.Sky.file: message", as far as location and path are known.
    std::string text() const;
};

// Appends a name to a path inside a file: "images" and "Sky" give "images.Sky". Names other than plain words are
// quoted.
std::string pathTo(const std::string &parent, std::string_view name);

// Collects the warnings of one run, in order. Not thread-safe.
class Warnings {
  public:
    enum class Policy { goOn, strict };

    // `tell` is called with each new warning; it may be empty.
    explicit Warnings(Policy policy, std::function<void(const Warning &)> tell = {});

    // Under the strict policy, throws the warning as an InputError. Otherwise stores it and calls `tell`, unless the
    // same text was added before.
    void add(Warning warning);

    const std::vector<Warning> &all() const { return all_; }

    // "2 warnings: no image \"Sky\"; no image \"Wood\"", with each cause once, and the first kMostInSummary of them by
    // name. Empty if there are none.
    static constexpr std::size_t kMostInSummary = 20;
    std::string summary() const;

  private:
    Policy policy_;
    std::function<void(const Warning &)> tell_;
    std::vector<Warning> all_;
    std::unordered_set<std::string> texts_; // of all of them
};

} // namespace velm::host

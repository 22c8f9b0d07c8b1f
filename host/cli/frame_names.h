// The names of the files that frames are written to.
#pragma once

#include <string>

namespace velm::host {

// Where a frame's number goes in a file's name.
class FrameNames {
  public:
    // `pattern` is what the user asked for. In its last part, a run of # or a %d with or without a width (%04d) stands
    // for the number; where there is neither and `several` is set, the number goes before the ending in four digits:
    // "walk.png" gives "walk_0001.png". UsageError when there are two such places.
    FrameNames(const std::string &pattern, bool several);

    std::string operator()(int frame) const;

  private:
    std::string before_, after_;
    bool numbered_ = false;
    int digits_ = 0; // at least; zeros fill them up
};

} // namespace velm::host

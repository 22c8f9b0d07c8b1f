// The names of the files that frames are written to.
#pragma once

#include <string>

namespace velm::host {

// Inserts the number of a frame into a file name.
class FrameNames {
  public:
    // `pattern` is the output file that the user gave. In its last path component, a run of # or a %d with or without a
    // width (%04d) is replaced by the number. Without either, and if `several` is set, the number goes before the
    // extension in four digits: "walk.png" gives "walk_0001.png". UsageError when there are two such patterns.
    FrameNames(const std::string &pattern, bool several);

    std::string operator()(int frame) const;

  private:
    std::string before_, after_;
    bool numbered_ = false;
    int digits_ = 0; // the least number of digits, padded with zeros
};

} // namespace velm::host

// Lists of frames, as --frames takes them.
#pragma once

#include <string>
#include <vector>

namespace velm::host {

// Frames and ranges of frames, in the order in which they were given: "1-10x3,15".
//
//     list  = item, {",", item}
//     item  = frame, ["-", frame, [("x" | ":"), step]]
//
// A frame is an integer from -kLastFrameNumber to kLastFrameNumber (host/base/limits.h), a step an integer from 1 on. A
// range ends with the last frame that its steps reach: "1-10x4" is 1, 5, 9. There are no blanks.
class FrameList {
  public:
    // UsageError, with the item and the position of its first character in the text, counted from 1.
    static FrameList parse(const std::string &text);

    // The frames in the order of the list. A frame that occurs more than once is rendered once, at its first position.
    // `usualStep`, from 1 on, is the step of the ranges that give none.
    std::vector<int> frames(int usualStep) const;

  private:
    struct Range {
        int first = 1, last = 1;
        int step = 0; // 0: none was given
    };
    static Range parseItem(const std::string &item, std::size_t position);

    std::vector<Range> ranges_;
};

// The frames from `first` to `last`, at most, by `step`, which is at least 1.
std::vector<int> framesBetween(int first, int last, int step);

// The shortest text of frames in their order, with ":" before steps: {1, 4, 7, 10, 15} gives "1-10:3,15". A step that
// is the usual one is left out. FrameList reads the text, and where the usual step is 1, so do job schedulers. Empty
// for no frames.
std::string frameText(const std::vector<int> &frames, int usualStep);

} // namespace velm::host

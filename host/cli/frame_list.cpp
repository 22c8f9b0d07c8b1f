#include "host/cli/frame_list.h"

#include "host/base/limits.h"
#include "host/cli/run.h"

#include <charconv>
#include <fmt/format.h>
#include <unordered_set>

namespace velm::host {

namespace {

constexpr std::size_t kShortestRange = 3; // two frames are listed instead

// Takes an integer from the front of the text; false, with the text unchanged, if there is none.
bool take(std::string_view &text, int &number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{}) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool take(std::string_view &text, std::string_view characters) {
    if (text.empty() || characters.find(text.front()) == std::string_view::npos) return false;
    text.remove_prefix(1);
    return true;
}

// How many of the frames from `start` on have the same distance, which is positive.
std::size_t runLength(const std::vector<int> &frames, std::size_t start) {
    if (start + 1 >= frames.size()) return 1;
    const int step = frames[start + 1] - frames[start];
    std::size_t end = start + 1;
    while (step > 0 && end < frames.size() && frames[end] - frames[end - 1] == step) ++end;
    return end - start;
}

} // namespace

FrameList::Range FrameList::parseItem(const std::string &item, std::size_t position) {
    const auto fail = [position](const std::string &message) {
        throw UsageError(fmt::format("--frames: {} (character {})", message, position));
    };
    Range range;
    std::string_view rest = item;
    bool isRange = take(rest, range.first);
    range.last = range.first;
    if (isRange && take(rest, "-")) isRange = take(rest, range.last) && (!take(rest, "x:") || take(rest, range.step));
    if (!isRange || !rest.empty())
        fail(fmt::format("\"{}\" is neither a frame nor a range such as 1-24 or 1-24x2", item));
    if (range.step < 0 || (range.step == 0 && item.find_first_of("x:") != std::string::npos))
        fail(fmt::format("the step of \"{}\" must be at least 1", item));
    if (range.last < range.first)
        fail(fmt::format("the last frame, {}, comes before the first, {}", range.last, range.first));
    if (range.first < -kLastFrameNumber || range.last > kLastFrameNumber)
        fail(fmt::format("frames are numbered from {} to {}", -kLastFrameNumber, kLastFrameNumber));
    return range;
}

FrameList FrameList::parse(const std::string &text) {
    FrameList list;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(',', start), text.size());
        list.ranges_.push_back(parseItem(text.substr(start, end - start), start + 1));
        start = end + 1;
    }
    return list;
}

std::vector<int> FrameList::frames(int usualStep) const {
    std::vector<int> all;
    std::unordered_set<int> listed;
    for (const Range &range : ranges_)
        for (const int frame : framesBetween(range.first, range.last, range.step > 0 ? range.step : usualStep))
            if (listed.insert(frame).second) all.push_back(frame);
    return all;
}

std::vector<int> framesBetween(int first, int last, int step) {
    std::vector<int> frames;
    for (long long frame = first; frame <= last; frame += step) frames.push_back(static_cast<int>(frame));
    return frames;
}

std::string frameText(const std::vector<int> &frames, int usualStep) {
    std::string text;
    for (std::size_t start = 0; start < frames.size();) {
        std::size_t count = runLength(frames, start);
        if (count < kShortestRange) count = 1;
        if (start > 0) text += ',';
        text += std::to_string(frames[start]);
        if (count > 1) {
            text += fmt::format("-{}", frames[start + count - 1]);
            if (const int step = frames[start + 1] - frames[start]; step != usualStep) text += fmt::format(":{}", step);
        }
        start += count;
    }
    return text;
}

} // namespace velm::host

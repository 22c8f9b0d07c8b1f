#include "host/cli/frame_names.h"

#include "host/cli/run.h"

#include <fmt/format.h>
#include <regex>

namespace velm::host {

namespace {

constexpr int kAppendedDigits = 4;

} // namespace

FrameNames::FrameNames(const std::string &pattern, bool several) {
    const auto slash = pattern.rfind('/');
    const std::size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
    const std::string name = pattern.substr(nameStart);

    static const std::regex placeholder("#+|%(0?)([0-9]?)d");
    std::smatch match;
    if (std::regex_search(name, match, placeholder)) {
        if (std::regex_search(match.suffix().first, name.end(), placeholder))
            throw UsageError(fmt::format("\"{}\" has two places for the frame's number", name));
        before_ = pattern.substr(0, nameStart) + match.prefix().str();
        after_ = match.suffix();
        numbered_ = true;
        digits_ = match.str()[0] == '#' ? static_cast<int>(match.length())
                                        : (match.length(2) > 0 ? std::stoi(match.str(2)) : 1);
        return;
    }
    before_ = pattern;
    if (!several) return;
    const auto dot = name.rfind('.');
    const std::size_t end = nameStart + (dot == std::string::npos ? name.size() : dot);
    before_ = pattern.substr(0, end) + '_';
    after_ = pattern.substr(end);
    numbered_ = true;
    digits_ = kAppendedDigits;
}

std::string FrameNames::operator()(int frame) const {
    if (!numbered_) return before_;
    // The sign does not count as a digit: frame -1 of "####" is "-0001".
    return fmt::format("{}{}{:0{}}{}", before_, frame < 0 ? "-" : "", frame < 0 ? -frame : frame, digits_, after_);
}

} // namespace velm::host

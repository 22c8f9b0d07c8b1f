// How a check can end.
#pragma once

namespace velm::host {

enum class Outcome { pass, warn, fail, crash, hang, skip };

// The outcome's name in reports: "PASS", "WARN" and so on.
constexpr const char *outcomeName(Outcome outcome) {
    constexpr const char *kNames[] = {"PASS", "WARN", "FAIL", "CRASH", "HANG", "SKIP"};
    return kNames[static_cast<int>(outcome)];
}

} // namespace velm::host

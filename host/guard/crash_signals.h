// The signals by which the system ends a process that has failed.
#pragma once

#include <array>
#include <csignal>

namespace velm::host {

inline constexpr std::array kCrashSignals = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS};

} // namespace velm::host

// The checks, a file for each level. A level's checks suppose that those of the levels before it pass.
#pragma once

#include "host/check/check.h"

#include <span>

namespace velm::host {

std::span<const Check> fileChecks();     // 1
std::span<const Check> identityChecks(); // 2
std::span<const Check> lifeChecks();     // 3
std::span<const Check> evaluateChecks(); // 4
std::span<const Check> settingsChecks(); // 5
std::span<const Check> threadChecks();   // 6
std::span<const Check> inputChecks();    // 7
std::span<const Check> dataChecks();     // 8
std::span<const Check> resourceChecks(); // 9
std::span<const Check> togetherChecks(); // 10

constexpr std::span<const Check> (*kLevels[])() = {fileChecks,     identityChecks, lifeChecks,  evaluateChecks,
                                                   settingsChecks, threadChecks,   inputChecks, dataChecks,
                                                   resourceChecks, togetherChecks};
constexpr int kHighestLevel = static_cast<int>(sizeof kLevels / sizeof *kLevels);

} // namespace velm::host

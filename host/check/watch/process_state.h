// What a process has about it that a module could change behind its host's back.
#pragma once

#include <string>
#include <vector>

namespace velm::host {

// The control bits of the floating-point units: rounding, precision, masks, what becomes of tiny numbers.
unsigned long floatingPointMode();

struct Surroundings {
    unsigned long floatingPoint = 0;
    std::string locale, directory, environment;
    std::vector<std::string> descriptors; // open files: number and what it is
    std::vector<std::string> signals;     // the handlers, by number
    int threads = 0;
    long printed = 0; // bytes written to standard output and standard error, where they are files
    unsigned int fileMask = 0;
};

// As it is now. [interface thread]
Surroundings lookAround();

// What is not the same, in words; empty when all is. The floating-point mode is not among it.
std::string changesBetween(const Surroundings &before, const Surroundings &after);

} // namespace velm::host

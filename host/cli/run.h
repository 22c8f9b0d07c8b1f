// The command line as a function, so that tests call it as a person would.
#pragma once

#include <iosfwd>
#include <stdexcept>

namespace velm {

// What the program ends with.
enum ExitStatus {
    kExitDone = 0,
    kExitInput = 1,         // a scene, a module or a file in them is wrong
    kExitUsage = 2,         // the command line is wrong
    kExitMachine = 3,       // disk full, no memory, a file that cannot be written
    kExitInterrupted = 130, // ended by SIGINT, as shells count it
};

// The command line asks for what cannot be. Status 2.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Runs one command. Results go to `out`; progress and errors, each in one line that starts with "velm: ", to `err`.
// [interface thread; one call at a time]
int run(int argc, const char *const *argv, std::ostream &out, std::ostream &err);

} // namespace velm

// The command line as a function, so that tests call it as a person would.
#pragma once

#include <iosfwd>
#include <stdexcept>
#include <string>

namespace velm::host {

// The exit status of the program.
enum ExitStatus {
    kExitDone = 0,
    kExitInput = 1,         // a scene, a module or a file in them is wrong
    kExitUsage = 2,         // the command line is wrong
    kExitMachine = 3,       // disk full, no memory, a file that cannot be written, a module that crashed
    kExitInterrupted = 130, // ended by SIGINT, as shells count it
};

// The exit status of "velm compare" instead, so that a script can tell "different" from "not compared".
enum CompareStatus {
    kCompareSame = 0,
    kCompareDifferent = 1,
    kCompareOtherSize = 2,
    kCompareFailed = 3, // a file that cannot be read, a wrong command line, a difference picture that cannot be written
};

// The command line is wrong. Status 2, except for "velm compare".
class UsageError : public std::runtime_error {
  public:
    explicit UsageError(const std::string &message, int status = kExitUsage)
        : std::runtime_error(message), status_(status) {}
    int status() const { return status_; }

  private:
    int status_;
};

// Runs one command in this process, without a guard. Results go to `out`; progress and errors, each in one line that
// starts with "velm: ", to `err`. [interface thread; one call at a time]
int run(int argc, const char *const *argv, std::ostream &out, std::ostream &err);

// The same, but commands that load a module run in a process of their own unless the options say otherwise. If the
// module crashes or hangs in that process, this one reports it as an error with status 3. Both processes write to the
// streams, which therefore have to be backed by file descriptors.
// [main thread; others are idle]
int runGuarded(int argc, const char *const *argv, std::ostream &out, std::ostream &err);

} // namespace velm::host

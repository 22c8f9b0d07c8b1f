// The command line as a function, so that tests call it as a person would.
#pragma once

#include <iosfwd>
#include <stdexcept>
#include <string>

namespace velm::host {

// What the program ends with.
enum ExitStatus {
    kExitDone = 0,
    kExitInput = 1,         // a scene, a module or a file in them is wrong
    kExitUsage = 2,         // the command line is wrong
    kExitMachine = 3,       // disk full, no memory, a file that cannot be written, a module that fell
    kExitInterrupted = 130, // ended by SIGINT, as shells count it
};

// What "velm compare" ends with instead, so that a script can tell "not the same" from "not compared".
enum CompareStatus {
    kCompareSame = 0,
    kCompareDifferent = 1,
    kCompareOtherSize = 2,
    kCompareFailed = 3, // a file that cannot be read, a wrong command line, a difference picture that cannot be written
};

// The command line asks for what cannot be. Status 2, but for "velm compare".
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

// The same, but that commands that work with a module do so in another process, as the options say: what the module
// makes of that one is an error here, with status 3. The streams have to go where both processes can write.
// [main thread; others are idle]
int runGuarded(int argc, const char *const *argv, std::ostream &out, std::ostream &err);

} // namespace velm::host

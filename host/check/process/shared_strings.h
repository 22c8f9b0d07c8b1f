// A list of byte strings in shared memory, by which a child process hands its results to its parent.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// Create the list before forking; parent and child then share it. [one process at a time]
class SharedStrings {
  public:
    SharedStrings(); // MachineError if there is no memory
    ~SharedStrings();
    SharedStrings(const SharedStrings &) = delete;
    SharedStrings &operator=(const SharedStrings &) = delete;

    void add(std::string_view text);      // appends; MachineError if there is no memory
    std::vector<std::string> all() const; // those that any process has added, in order; MachineError

  private:
    int file_;
};

} // namespace velm::host

// A temporary directory of a run of checks.
#pragma once

#include <filesystem>

namespace velm::host {

// Creates a directory, and removes it with everything in it at the end. It belongs to the process that starts the
// checks, since those of the module may be killed at any time. [interface thread]
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

    const std::filesystem::path &path() const { return path_; } // empty if it could not be created

  private:
    std::filesystem::path path_;
};

} // namespace velm::host

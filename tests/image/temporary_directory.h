// A directory of a test's own, gone with all that is in it when the test ends.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace velm::host::test {

class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

    std::string operator/(const std::string &name) const { return (path_ / name).string(); }
    const std::filesystem::path &path() const { return path_; }
    std::vector<std::string> names() const; // of what is in it, sorted

  private:
    std::filesystem::path path_;
};

// Writes a file of those bytes.
void writeText(const std::string &file, const std::string &text);

} // namespace velm::host::test

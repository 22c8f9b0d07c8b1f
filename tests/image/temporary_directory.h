// A temporary directory for a test.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace velm::host::test {

// An empty directory; the destructor removes it with everything in it.
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

    std::string operator/(const std::string &name) const { return (path_ / name).string(); }
    const std::filesystem::path &path() const { return path_; }
    std::vector<std::string> names() const; // of its entries, sorted

  private:
    std::filesystem::path path_;
};

// Writes a file with these bytes.
void writeText(const std::string &file, const std::string &text);

} // namespace velm::host::test

// A temporary directory for a test.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace velm::host::test {

// Writes a file with these bytes.
inline void writeText(const std::string &file, const std::string &text) {
    std::ofstream(file, std::ios::binary) << text;
}

// An empty directory; the destructor removes it with everything in it.
class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::string pattern = (std::filesystem::temp_directory_path() / "velm-test-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) throw std::runtime_error("cannot create a temporary directory");
        path_ = pattern;
    }
    ~TemporaryDirectory() {
        std::error_code ignored; // no test depends on the removal
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

    const std::filesystem::path &path() const { return path_; }
    std::string operator/(const std::string &name) const { return (path_ / name).string(); }
    // Writes a file, in directories that are created where they are missing; gives its path.
    std::string write(const std::string &name, const std::string &text) const {
        std::filesystem::create_directories((path_ / name).parent_path());
        writeText(*this / name, text);
        return *this / name;
    }
    std::vector<std::string> names() const { // of its entries, sorted
        std::vector<std::string> result;
        for (const auto &entry : std::filesystem::directory_iterator(path_))
            result.push_back(entry.path().filename().string());
        std::ranges::sort(result);
        return result;
    }

  private:
    std::filesystem::path path_;
};

} // namespace velm::host::test

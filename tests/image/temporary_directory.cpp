#include "tests/image/temporary_directory.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace velm::host::test {

TemporaryDirectory::TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "velm-test-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("cannot create a temporary directory");
    path_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored; // no test depends on the removal
    std::filesystem::remove_all(path_, ignored);
}

std::vector<std::string> TemporaryDirectory::names() const {
    std::vector<std::string> result;
    for (const auto &entry : std::filesystem::directory_iterator(path_))
        result.push_back(entry.path().filename().string());
    std::sort(result.begin(), result.end());
    return result;
}

void writeText(const std::string &file, const std::string &text) { std::ofstream(file, std::ios::binary) << text; }

} // namespace velm::host::test

// The fuzz targets read inputs that once failed, and small valid ones. A requirement that is not met ends the program.
#include "fuzz/require.h"

#include "host/io/files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <vector>

namespace velm::host::test {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> savedInputs() {
    std::vector<std::string> files;
    for (const auto &entry : fs::directory_iterator(VELM_SOURCE_DIR "/fuzz/regressions/" VELM_FUZZ_READER))
        files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    return files;
}

std::string nameOf(const ::testing::TestParamInfo<std::string> &input) {
    std::string name = fs::path(input.param).filename().string();
    std::replace_if(
        name.begin(), name.end(), [](unsigned char letter) { return std::isalnum(letter) == 0; }, '_');
    return name;
}

class Regressions : public ::testing::TestWithParam<std::string> {};

TEST_P(Regressions, AreRead) {
    const std::string bytes = readFile(GetParam());
    EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char *>(bytes.data()), bytes.size()), 0);
}

INSTANTIATE_TEST_SUITE_P(, Regressions, ::testing::ValuesIn(savedInputs()), nameOf);

} // namespace
} // namespace velm::host::test

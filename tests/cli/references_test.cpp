// Compares a small rendering of each example scene with the picture in tests/references. After a change that is meant
// to be visible, "./run references" renders these pictures again.
#include "tests/cli/command.h"
#include "tests/cli/example_names.h"
#include "tests/scene/scene_text.h"
#include "tests/temporary_directory.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace velm::host {
namespace {

namespace fs = std::filesystem;

constexpr const char *kReferences = VELM_SOURCE_DIR "/tests/references";

// These need meshes or images that "./run examples" installs.
constexpr const char *kNeedFetchedFiles[] = {"glass", "metal", "pixels"};

// One thread, since some nodes count evaluations or draw from one random stream.
const std::vector<std::string> kRenderOptions = {"--size", "96x54",    "--samples", "1",      "--threads",
                                                 "1",      "--frames", "1",         "--quiet"};

// The mathematics library and ray tracer of another machine round the last bit differently. That changes a few 8-bit
// values by one step. Rarely, a ray misses an edge that it hit before, which changes a whole pixel. The limits
// therefore tolerate two steps, and 10 of the 5184 pixels beyond that. The limit of the mean is so tight that any
// change of brightness, colour, position or shape exceeds it.
const std::vector<std::string> kLimits = {"--tolerance", "0.008", "--share", "0.002",
                                          "--rms",       "0.015", "--mean",  "0.0005"};

std::vector<std::string> comparedExamples() {
    std::vector<std::string> names = test::exampleNames();
    for (const char *name : kNeedFetchedFiles) std::erase(names, name);
    return names;
}

std::string referenceOf(const std::string &name) { return std::string(kReferences) + "/" + name + ".png"; }

test::Outcome render(const std::string &name, const std::string &file) {
    std::vector<std::string> words = {"render", test::exampleFile(name), "-o", file};
    words.insert(words.end(), kRenderOptions.begin(), kRenderOptions.end());
    return test::velm(words);
}

class Reference : public testing::TestWithParam<std::string> {};

TEST_P(Reference, LooksAsBefore) {
    if (std::getenv("VELM_RENEW_REFERENCES")) {
        const test::Outcome outcome = render(GetParam(), referenceOf(GetParam()));
        ASSERT_EQ(outcome.status, kExitDone) << outcome.err;
        GTEST_SKIP() << "renewed " << referenceOf(GetParam());
    }
    const test::TemporaryDirectory directory;
    const std::string file = directory / (GetParam() + ".png");
    const test::Outcome rendered = render(GetParam(), file);
    ASSERT_EQ(rendered.status, kExitDone) << rendered.err;
    std::vector<std::string> words = {"compare", referenceOf(GetParam()), file};
    words.insert(words.end(), kLimits.begin(), kLimits.end());
    const test::Outcome compared = test::velm(words, false);
    EXPECT_EQ(compared.status, kCompareSame)
        << compared.out << compared.err
        << "If the change is intended, ./run references renders the references again; inspect them before you commit.";
}

INSTANTIATE_TEST_SUITE_P(All, Reference, testing::ValuesIn(comparedExamples()),
                         [](const auto &name) { return name.param; });

TEST(References, ExistForEveryComparedSceneAndNoOther) {
    EXPECT_EQ(test::stemsIn(kReferences, ".png"), comparedExamples());
}

TEST(References, AreSmall) {
    constexpr std::uintmax_t kMostBytes = 60'000;
    for (const auto &entry : fs::directory_iterator(kReferences))
        EXPECT_LT(fs::file_size(entry.path()), kMostBytes) << entry.path();
}

} // namespace
} // namespace velm::host

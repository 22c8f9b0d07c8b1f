// The command "velm check".
#include "tests/cli/command.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace velm::host::test {
namespace {

std::string contentOf(const std::string &file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(CheckCommand, PrintsTheResultsForTheNamedModule) {
    const Outcome outcome =
        velm({"check", VELM_MODULE_FILE, "--level", "2", "--filter", "identity.table", "--seed", "9"}, false);
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_NE(outcome.out.find(" 2  PASS   identity.table"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("PASS 1  (level 2, seed 9)"), std::string::npos) << outcome.out;
}

TEST(CheckCommand, AFailureHasItsStatus) {
    const std::string name =
        (std::filesystem::temp_directory_path() / ("velm_no_module_" + std::to_string(getpid()))).string();
    std::ofstream(name) << "no module";
    const Outcome outcome = velm({"check", name, "--filter", "file.loads"}, false);
    std::filesystem::remove(name);
    EXPECT_EQ(outcome.status, kExitInput);
    EXPECT_NE(outcome.out.find("it is not a shared object"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("--filter 'file.loads' --reproduce"), std::string::npos) << outcome.out;
}

TEST(CheckCommand, UnreadableFilesAreNotChecked) {
    for (const auto &[file, why] : {std::pair("/nowhere/at/all.p", "No such file or directory"),
                                    std::pair("/dev/zero", "it is a device"), std::pair("/", "it is a directory")}) {
        const Outcome outcome = velm({"check", file, "--filter", "file.loads"}, false);
        EXPECT_EQ(outcome.status, kExitInput);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, std::string("velm: ") + file + ": cannot read the module: " + why + '\n');
    }
}

TEST(CheckCommand, WritesReportsToFiles) {
    const std::string name =
        (std::filesystem::temp_directory_path() / ("velm_check_" + std::to_string(getpid()))).string();
    const Outcome outcome = velm(
        {"check", VELM_MODULE_FILE, "--filter", "identity.table", "--json", name + ".json", "--junit", name + ".xml"},
        false);
    EXPECT_EQ(outcome.status, kExitDone) << outcome.err;
    EXPECT_NE(contentOf(name + ".json").find("\"outcome\": \"PASS\""), std::string::npos);
    EXPECT_NE(contentOf(name + ".xml").find("<testsuite name=\"identity.table\""), std::string::npos);
    std::filesystem::remove(name + ".json");
    std::filesystem::remove(name + ".xml");
    for (const char *option : {"--json", "--junit"}) { // reported before the checks run
        const Outcome wrong =
            velm({"check", VELM_MODULE_FILE, "--filter", "identity.table", option, "/nowhere/x"}, false);
        EXPECT_EQ(wrong.status, kExitMachine);
        EXPECT_EQ(wrong.out, "");
        EXPECT_EQ(wrong.err, "velm: cannot write \"/nowhere/x\": No such file or directory\n");
    }
}

TEST(CheckCommand, DoesNotReplaceItsModule) {
    const std::filesystem::path name =
        std::filesystem::temp_directory_path() / ("velm_module_" + std::to_string(getpid()));
    std::filesystem::copy_file(VELM_MODULE_FILE, name);
    const auto size = std::filesystem::file_size(name);
    for (const char *option : {"--json", "--junit"}) {
        const Outcome outcome = velm({"check", name, "--filter", "identity.table", option, name}, false);
        EXPECT_EQ(outcome.status, kExitUsage);
        EXPECT_NE(outcome.err.find("it is read, as"), std::string::npos) << outcome.err;
    }
    EXPECT_EQ(std::filesystem::file_size(name), size);
    std::filesystem::remove(name);
}

TEST(CheckCommand, AFilterThatSelectsNothingIsAnError) {
    const Outcome outcome = velm({"check", VELM_MODULE_FILE, "--level", "1", "--filter", "no such check"}, false);
    EXPECT_EQ(outcome.status, kExitInput);
    EXPECT_NE(outcome.err.find("is selected by \"no such check\""), std::string::npos) << outcome.err;
    EXPECT_EQ(velm({"check", "--level", "99"}, false).status, kExitUsage);
    const Outcome minutes = velm({"check", VELM_MODULE_FILE, "--level", "1", "--minutes", "1"}, false);
    EXPECT_EQ(minutes.status, kExitInput);
    EXPECT_NE(minutes.err.find("goes on with new seeds"), std::string::npos) << minutes.err;
    EXPECT_EQ(velm({"check", "--minutes", "0"}, false).status, kExitUsage);
    EXPECT_EQ(velm({"check", "--minutes", "1", "--reproduce"}, false).status, kExitUsage);
}

} // namespace
} // namespace velm::host::test

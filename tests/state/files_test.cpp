#include "host/state/files.h"

#include "host/error.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

using namespace velm;

namespace {

class Files : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string name = (std::filesystem::temp_directory_path() / "velm-files-XXXXXX").string();
        ASSERT_NE(::mkdtemp(name.data()), nullptr);
        directory_ = name;
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    std::size_t entries() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(directory_), std::filesystem::directory_iterator()));
    }

    std::filesystem::path directory_;
};

TEST_F(Files, WritesAndReadsAnyBytes) {
    const std::string path = (directory_ / "file").string();
    std::string bytes(300000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 31);
    writeFileAtomically(path, bytes);
    EXPECT_EQ(readFile(path), bytes);
    writeFileAtomically(path, "");
    EXPECT_EQ(readFile(path), "");
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Files, KeepsTheModeOfWhatItReplaces) {
    const std::filesystem::path path = directory_ / "file";
    writeFileAtomically(path.string(), "a");
    EXPECT_NE(std::filesystem::status(path).permissions() & std::filesystem::perms::owner_read,
              std::filesystem::perms::none);
    std::filesystem::permissions(path, std::filesystem::perms{0640});
    writeFileAtomically(path.string(), "b");
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms{0640});
}

TEST_F(Files, LeavesNothingBehindWhenItFails) {
    const std::filesystem::path taken = directory_ / "taken"; // a directory with something in it cannot be replaced
    std::filesystem::create_directories(taken / "inside");
    try {
        writeFileAtomically(taken.string(), "bytes");
        FAIL();
    } catch (const MachineError &error) {
        EXPECT_NE(std::string(error.what()).find("cannot write \"" + taken.string() + "\": "), std::string::npos);
    }
    EXPECT_EQ(entries(), 1U);
    EXPECT_THROW(writeFileAtomically((directory_ / "missing" / "file").string(), "bytes"), MachineError);
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Files, TellsWhatCannotBeRead) {
    const std::string path = (directory_ / "missing").string();
    try {
        readFile(path);
        FAIL();
    } catch (const InputError &error) {
        EXPECT_EQ(std::string(error.what()), "cannot read \"" + path + "\": No such file or directory");
    }
    EXPECT_THROW(readFile(directory_.string()), InputError);
}

} // namespace

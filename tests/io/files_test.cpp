#include "host/io/files.h"

#include "host/base/error.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace velm::host;

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

// Runs something as a user without privileges, whom permissions bind.
template <class Act>
void asNobody(Act act) {
    constexpr uid_t kNobody = 65534;
    const uid_t own = ::geteuid();
    const auto become = [own](uid_t user) { return own != 0 || ::seteuid(user) == 0; };
    ASSERT_TRUE(become(kNobody));
    act();
    ASSERT_TRUE(become(own));
}

TEST_F(Files, WriteProtectedFilesStay) {
    const std::string path = (directory_ / "file").string();
    writeFileAtomically(path, "old");
    std::filesystem::permissions(directory_, std::filesystem::perms{0777});
    std::filesystem::permissions(path, std::filesystem::perms{0444});
    asNobody([&] {
        for (const auto &write :
             {std::function([&] { writeFileAtomically(path, "new"); }), {[&] { tryToWrite(path); }}})
            try {
                write();
                ADD_FAILURE() << "it was written";
            } catch (const MachineError &error) {
                EXPECT_EQ(std::string(error.what()), "cannot write \"" + path + "\": Permission denied");
            }
    });
    EXPECT_EQ(readFile(path), "old");
    EXPECT_EQ(entries(), 1U);
    if (::geteuid() != 0) return;
    writeFileAtomically(path, "by root");
    EXPECT_EQ(readFile(path), "by root");
}

TEST_F(Files, NewContentsDoNotRunAsTheOwner) {
    const std::filesystem::path path = directory_ / "file";
    writeFileAtomically(path.string(), "old");
    ASSERT_EQ(::chmod(path.c_str(), 06755), 0);
    writeFileAtomically(path.string(), "new");
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms{0755});
}

TEST_F(Files, KeepsTheOwnerOfWhatRootReplaces) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root may give files to others";
    const std::filesystem::path path = directory_ / "file";
    writeFileAtomically(path.string(), "old");
    ASSERT_EQ(::chown(path.c_str(), 65534, 65534), 0);
    writeFileAtomically(path.string(), "new");
    struct stat found {};
    ASSERT_EQ(::stat(path.c_str(), &found), 0);
    EXPECT_EQ(found.st_uid, 65534U);
    EXPECT_EQ(found.st_gid, 65534U);
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

// Writes a file in a child process that the system kills when the file exceeds `atMost` bytes, in the middle of a
// write. Returns the signal that ended the child; 0: none did.
int endedBy(const std::string &path, const std::string &bytes, rlim_t atMost) {
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit none{.rlim_cur = 0, .rlim_max = 0}, size{.rlim_cur = atMost, .rlim_max = atMost};
        ::setrlimit(RLIMIT_CORE, &none);
        ::setrlimit(RLIMIT_FSIZE, &size);
        std::signal(SIGXFSZ, SIG_DFL);
        writeFileAtomically(path, bytes);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

TEST_F(Files, AProcessThatIsKilledWhileWritingLeavesTheOldFile) {
    const std::string path = (directory_ / "file").string(), bytes(200000, 'n');
    writeFileAtomically(path, "old");
    for (const rlim_t atMost : {rlim_t{0}, rlim_t{1}, rlim_t{70000}, rlim_t{199999}}) {
        // The write that reaches the limit is cut short there; the next one raises the signal.
        EXPECT_EQ(endedBy(path, bytes, atMost), SIGXFSZ) << atMost;
        EXPECT_EQ(readFile(path), "old") << atMost;
    }
    EXPECT_EQ(endedBy(path, bytes, bytes.size()), 0);
    EXPECT_EQ(readFile(path), bytes);
}

TEST_F(Files, AProcessThatIsKilledAtAnyMomentLeavesOneFileOrTheOther) {
    const std::string path = (directory_ / "file").string(), one(1 << 20, '1'), two(1 << 20, '2');
    writeFileAtomically(path, one);
    for (int kills = 0; kills < 10; ++kills) {
        int pipe[2];
        ASSERT_EQ(::pipe(pipe), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            for (int turn = 0;; ++turn) {
                if (::write(pipe[1], "x", 1) != 1) ::_exit(1);
                writeFileAtomically(path, turn % 2 == 0 ? two : one);
            }
        }
        char begun = 0; // waits for one to three writes to begin; the last may be at any point when it is interrupted
        for (int writes = 0; writes <= kills % 3; ++writes) ASSERT_EQ(::read(pipe[0], &begun, 1), 1);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        ::close(pipe[0]);
        ::close(pipe[1]);
        const std::string found = readFile(path);
        EXPECT_TRUE(found == one || found == two) << found.size();
    }
}

TEST_F(Files, ReportsWhyAFileCannotBeRead) {
    const std::string path = (directory_ / "missing").string();
    try {
        readFile(path);
        FAIL();
    } catch (const InputError &error) {
        EXPECT_EQ(std::string(error.what()), "cannot read \"" + path + "\": No such file or directory");
    }
}

// Reading a device might never end, and opening a pipe might never return.
TEST_F(Files, OnlyRegularFilesAreRead) {
    const std::string pipe = (directory_ / "pipe").string();
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::pair<std::string, std::string> others[] = {
        {"/dev/zero", "it is a device"}, {pipe, "it is a pipe"}, {directory_.string(), "it is a directory"}};
    for (const auto &[path, kind] : others) {
        EXPECT_EQ(whyUnreadable(path), kind) << path;
        try {
            readFile(path);
            ADD_FAILURE() << path << " was read";
        } catch (const InputError &error) {
            EXPECT_EQ(std::string(error.what()), "cannot read \"" + path + "\": " + kind);
        }
    }
    EXPECT_EQ(whyUnreadable((directory_ / "missing").string()), "No such file or directory");
    const std::filesystem::path file = directory_ / "file", link = directory_ / "link";
    writeFileAtomically(file.string(), "bytes");
    std::filesystem::create_symlink(file, link);
    EXPECT_EQ(whyUnreadable(link.string()), std::nullopt);
    EXPECT_EQ(readFile(link.string()), "bytes");
}

TEST_F(Files, AMissingPermissionIsReported) {
    if (::geteuid() == 0) GTEST_SKIP() << "root may read every file";
    const std::filesystem::path file = directory_ / "file";
    writeFileAtomically(file.string(), "bytes");
    std::filesystem::permissions(file, std::filesystem::perms::none);
    EXPECT_EQ(whyUnreadable(file.string()), "Permission denied");
}

std::string refusalToWrite(const std::string &path, const std::function<void(const std::string &)> &write) {
    try {
        write(path);
    } catch (const MachineError &error) {
        return error.what();
    }
    return {};
}

// No device is written to: with root's permissions, a bug in the tested code would replace it for the whole machine.
TEST_F(Files, OnlyRegularFilesAreReplaced) {
    const std::string pipe = (directory_ / "pipe").string(), link = (directory_ / "link").string();
    const std::string loop = (directory_ / "loop").string();
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::filesystem::create_symlink("pipe", link);
    std::filesystem::create_symlink("loop", loop);
    const std::pair<std::string, std::string> others[] = {{pipe, "it is a pipe"},
                                                          {link, "it is a pipe"},
                                                          {directory_.string(), "it is a directory"},
                                                          {loop, "Too many levels of symbolic links"}};
    for (const auto &[path, kind] : others) {
        EXPECT_EQ(whyIrreplaceable(path), kind);
        const std::string expected = "cannot write \"" + path + "\": " + kind;
        EXPECT_EQ(refusalToWrite(path, tryToWrite), expected);
        EXPECT_EQ(refusalToWrite(path, [](const std::string &file) { writeFileAtomically(file, "bytes"); }), expected);
    }
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_TRUE(std::filesystem::is_symlink(loop));
    EXPECT_EQ(entries(), 3U);
    EXPECT_EQ(whyIrreplaceable("/dev/null"), "it is a device");
    EXPECT_EQ(whyIrreplaceable((directory_ / "missing").string()), std::nullopt);
}

TEST_F(Files, LinksAreKeptAndTheirTargetsReplaced) {
    std::filesystem::create_directory(directory_ / "store");
    const std::filesystem::path first = directory_ / "first", second = directory_ / "second";
    std::filesystem::create_symlink("second", first);
    std::filesystem::create_symlink("store/file", second); // not there yet
    for (const char *bytes : {"new", "newer"}) {
        writeFileAtomically(first.string(), bytes);
        EXPECT_EQ(readFile((directory_ / "store" / "file").string()), bytes);
        EXPECT_TRUE(std::filesystem::is_symlink(first) && std::filesystem::is_symlink(second));
    }
    EXPECT_EQ(entries(), 3U);
}

TEST_F(Files, WritingCanBeTriedInAdvance) {
    const std::string path = (directory_ / "file").string();
    tryToWrite(path);
    EXPECT_EQ(entries(), 0U);
    writeFileAtomically(path, "bytes");
    tryToWrite(path);
    EXPECT_EQ(readFile(path), "bytes");
    EXPECT_EQ(entries(), 1U);
    // The name is short enough for the system, but that of the temporary file beside it would not be.
    const std::string tooLong = (directory_ / std::string(250, 'x')).string();
    EXPECT_EQ(refusalToWrite(tooLong, tryToWrite), "cannot write \"" + tooLong + "\": File name too long");
    const std::string nowhere = (directory_ / "missing" / "file").string();
    EXPECT_EQ(refusalToWrite(nowhere, tryToWrite), "cannot write \"" + nowhere + "\": No such file or directory");
}

} // namespace

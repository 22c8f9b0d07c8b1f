// What a module changes in the whole process is put back.
#include "host/guard/module_call.h"
#include "host/guard/process_settings.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cfenv>
#include <csignal>
#include <filesystem>

namespace velm::host {
namespace {

mode_t fileMask() {
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}

void (*handlerOf(int signal))(int) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler;
}

int server() { return numberOfServer("Mover"); }

TEST(KeptSettings, PutsBackTheDirectoryAfterEachCall) {
    const std::filesystem::path here = std::filesystem::current_path();
    {
        const KeptSettings kept;
        callModule(server(), "create", [] { ASSERT_EQ(chdir("/proc"), 0); });
        EXPECT_EQ(std::filesystem::current_path(), here);
        EXPECT_THROW(callModule(server(), "create",
                                [] {
                                    EXPECT_EQ(chdir("/proc"), 0);
                                    throw 7;
                                }),
                     std::runtime_error);
        EXPECT_EQ(std::filesystem::current_path(), here);
    }
    callModule(server(), "create", [] { ASSERT_EQ(chdir("/proc"), 0); });
    EXPECT_EQ(std::filesystem::current_path(), "/proc") << "nothing is kept without the object";
    std::filesystem::current_path(here);
}

TEST(KeptSettings, PutsBackTheFloatingPointModeAfterEachCall) {
    const KeptSettings kept;
    callModule(server(), "create", [] {
        std::fesetround(FE_UPWARD);
        std::feraiseexcept(FE_INEXACT);
        feenableexcept(FE_ALL_EXCEPT);
    });
    EXPECT_EQ(std::fegetround(), FE_TONEAREST);
    EXPECT_EQ(fegetexcept(), 0);
}

// Closed descriptors would be given to the next files that the host opens.
TEST(KeptSettings, PutsBackTheStandardStreamsAfterEachCall) {
    struct stat before[3], after[3];
    const KeptSettings kept;
    for (int i = 0; i < 3; ++i) ASSERT_EQ(fstat(i, &before[i]), 0);
    callModule(server(), "create", [] {
        const int other = open("/proc/self/stat", O_RDONLY);
        dup2(other, STDOUT_FILENO);
        close(other);
        close(STDERR_FILENO);
        close(STDIN_FILENO);
    });
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(fstat(i, &after[i]), 0) << "descriptor " << i;
        EXPECT_EQ(after[i].st_ino, before[i].st_ino) << "descriptor " << i;
        EXPECT_EQ(after[i].st_dev, before[i].st_dev) << "descriptor " << i;
    }
}

TEST(KeptSettings, PutsBackTheFileMaskAndSignals) {
    const KeptSettings kept;
    const mode_t mask = fileMask();
    const auto handler = handlerOf(SIGTERM);
    callModule(server(), "create", [] {
        umask(0777);
        std::signal(SIGTERM, SIG_IGN);
        std::signal(SIGSEGV, SIG_IGN);
    });
    putBackSettings();
    EXPECT_EQ(fileMask(), mask);
    EXPECT_EQ(handlerOf(SIGTERM), handler);
    EXPECT_NE(handlerOf(SIGSEGV), SIG_IGN);
}

TEST(KeptSettings, LeavesWhatTheHostItselfHasChanged) {
    const KeptSettings kept;
    const auto before = std::signal(SIGINT, SIG_IGN);
    keepSignals();
    putBackSettings();
    EXPECT_EQ(handlerOf(SIGINT), SIG_IGN);
    std::signal(SIGINT, before);
}

} // namespace
} // namespace velm::host

// What a module changes in the whole process is put back.
#include "host/guard/module_call.h"
#include "host/guard/process_settings.h"

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

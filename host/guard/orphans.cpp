#include "host/guard/orphans.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

namespace velm::host {

namespace {

constexpr std::chrono::seconds kLongestKill{2};

// The children of all threads of this process, including those that have ended and wait to be reaped.
std::vector<pid_t> ownChildren() {
    std::vector<pid_t> children;
    std::error_code error;
    for (const auto &thread : std::filesystem::directory_iterator("/proc/self/task", error)) {
        std::ifstream list(thread.path() / "children");
        for (pid_t child = 0; list >> child;) children.push_back(child);
    }
    return children;
}

std::vector<pid_t> ownChildrenBut(std::span<const pid_t> workers) {
    std::vector<pid_t> children = ownChildren();
    std::erase_if(children, [&](pid_t child) { return std::ranges::find(workers, child) != workers.end(); });
    return children;
}

} // namespace

Orphans::Orphans() {
    prctl(PR_GET_CHILD_SUBREAPER, &before_);
    adopts_ = ownChildren().empty() && prctl(PR_SET_CHILD_SUBREAPER, 1) == 0;
}

Orphans::~Orphans() {
    if (adopts_) prctl(PR_SET_CHILD_SUBREAPER, before_);
}

// Only children are killed, whose numbers cannot belong to other processes before they are reaped here. When they end,
// their own children are adopted, and come next.
void Orphans::kill(std::span<const pid_t> workers) const {
    if (!adopts_) return;
    const auto deadline = std::chrono::steady_clock::now() + kLongestKill;
    for (;;) {
        const std::vector<pid_t> orphans = ownChildrenBut(workers);
        if (orphans.empty() || std::chrono::steady_clock::now() > deadline) return;
        for (const pid_t orphan : orphans) ::kill(orphan, SIGKILL);
        const auto reaped =
            std::ranges::count_if(orphans, [](pid_t orphan) { return waitpid(orphan, nullptr, WNOHANG) == orphan; });
        if (reaped == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void Orphans::reap(std::span<const pid_t> workers) const {
    if (!adopts_) return;
    for (const pid_t orphan : ownChildrenBut(workers)) waitpid(orphan, nullptr, WNOHANG);
}

} // namespace velm::host

// Which checks run, each in its process, and what becomes of them.
#include "host/check/check.h"
#include "host/check/child.h"
#include "host/check/dice.h"
#include "host/check/levels.h"
#include "host/check/watch.h"
#include "host/error.h"
#include "host/load/module.h"

#include <poll.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <thread>

namespace velm {

namespace {

constexpr unsigned kMostAtOnce = 2;
constexpr double kDiscoveryLimit = 30; // seconds

std::vector<Check> makeList() {
    std::vector<Check> all;
    for (const auto level : kLevels) {
        const std::span<const Check> checks = level();
        all.insert(all.end(), checks.begin(), checks.end());
    }
    return all;
}

// What the checks of nodes are run with.
struct Discovery {
    SharedBoard board;
    std::vector<std::string> servers;
    std::optional<ChildEnd> failure;
};

void writeNames(const std::string &file) {
    const CallScope noted(-1, "loading the module");
    const Module module = Module::open(file);
    Blackboard &board = blackboard();
    for (const std::string &name : nodeNames(module.servers()))
        std::snprintf(board.servers[board.serverCount++], kLongestServer, "%s", name.c_str());
}

void discover(Discovery &found, const std::string &file) {
    Child child(
        *found.board, [&] { writeNames(file); }, kDiscoveryLimit);
    const ChildEnd end = waitFor(child);
    if (end.outcome != Outcome::pass) {
        found.failure = end;
        return;
    }
    found.board->serverCount = child.board().serverCount;
    std::copy_n(&child.board().servers[0][0], sizeof child.board().servers, &found.board->servers[0][0]);
    for (int i = 0; i < found.board->serverCount; ++i) found.servers.emplace_back(found.board->servers[i]);
}

bool isSelected(const CheckResult &one, const CheckOptions &options) {
    return one.check->level <= options.level && one.fullName().find(options.filter) != std::string::npos;
}

std::vector<CheckResult> select(const CheckOptions &options, const Discovery &found) {
    std::vector<CheckResult> selected;
    const auto add = [&](const Check &check, const std::string &server) {
        CheckResult one{.check = &check, .server = server, .outcome = {}, .message = {}, .printed = {}};
        one.seed = seedFor(options.seed, one.fullName());
        if (isSelected(one, options)) selected.push_back(std::move(one));
    };
    for (const Check &check : allChecks()) {
        if (check.scope == CheckScope::module || found.failure) {
            add(check, "");
            continue;
        }
        for (const std::string &server : found.servers) add(check, server);
    }
    const auto exact = [&](const CheckResult &one) { return one.fullName() == options.filter; };
    if (std::any_of(selected.begin(), selected.end(), exact))
        std::erase_if(selected, [&](const CheckResult &one) { return !exact(one); });
    if (selected.empty())
        throw InputError("no check up to level " + std::to_string(options.level) + " is selected by \"" +
                         options.filter + "\"");
    return selected;
}

class Runner {
  public:
    Runner(const CheckOptions &options, const Discovery &found, std::vector<CheckResult> &results,
           const std::function<void(const CheckResult &)> &done)
        : options_(options), found_(found), results_(results), done_(done) {}

    void run() {
        while (next_ < results_.size() || !running_.empty()) {
            while (next_ < results_.size() && running_.size() < atOnce()) start(results_[next_++]);
            waitForOne();
        }
    }

  private:
    struct Running {
        CheckResult *result;
        std::unique_ptr<Child> child;
    };

    static unsigned atOnce() { return std::clamp(std::thread::hardware_concurrency(), 1U, kMostAtOnce); }

    void start(CheckResult &result) {
        if (result.check->scope == CheckScope::node && found_.failure) {
            result.outcome = found_.failure->outcome;
            result.message = "the module's nodes cannot be listed: " + found_.failure->message;
            done_(result);
            return;
        }
        const CheckTask task{.module = options_.module, .server = result.server, .seed = result.seed};
        const Check &check = *result.check;
        running_.push_back({&result, std::make_unique<Child>(
                                         *found_.board, [&check, task] { check.run(task); }, options_.limit)});
    }

    void waitForOne() {
        if (running_.empty()) return;
        std::vector<pollfd> ends;
        auto deadline = Child::Clock::time_point::max();
        for (const Running &one : running_) {
            ends.push_back({.fd = one.child->descriptor(), .events = POLLIN, .revents = 0});
            deadline = std::min(deadline, one.child->deadline());
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Child::Clock::now());
        poll(ends.data(), ends.size(), static_cast<int>(std::max<long>(0, left.count())));
        for (std::size_t i = ends.size(); i-- > 0;)
            if (ends[i].revents != 0 || running_[i].child->isOver()) finish(i);
    }

    void finish(std::size_t index) {
        Running one = std::move(running_[index]);
        running_.erase(running_.begin() + static_cast<std::ptrdiff_t>(index));
        one.result->seconds = one.child->seconds();
        ChildEnd end = one.child->finish();
        one.result->outcome = end.outcome;
        one.result->message = std::move(end.message);
        one.result->printed = std::move(end.printed);
        done_(*one.result);
    }

    const CheckOptions &options_;
    const Discovery &found_;
    std::vector<CheckResult> &results_;
    const std::function<void(const CheckResult &)> &done_;
    std::vector<Running> running_;
    std::size_t next_ = 0;
};

} // namespace

std::span<const Check> allChecks() {
    static const std::vector<Check> list = makeList();
    return list;
}

const char *outcomeName(Outcome outcome) {
    constexpr const char *kNames[] = {"PASS", "WARN", "FAIL", "CRASH", "HANG", "SKIP"};
    return kNames[static_cast<int>(outcome)];
}

std::string CheckResult::fullName() const { return server.empty() ? check->name : check->name + ("/" + server); }

std::vector<CheckResult> runChecks(const CheckOptions &options, const std::function<void(const CheckResult &)> &done) {
    Discovery found;
    discover(found, options.module);
    std::vector<CheckResult> results = select(options, found);
    Runner(options, found, results, done).run();
    return results;
}

CheckResult reproduceCheck(const CheckOptions &options) {
    Discovery found;
    discover(found, options.module);
    std::vector<CheckResult> selected = select(options, found);
    if (selected.size() != 1)
        throw InputError(std::to_string(selected.size()) + " checks are selected, \"" + selected[0].fullName() +
                         "\" and \"" + selected[1].fullName() + "\" among them; one can be reproduced at a time");
    CheckResult result = selected[0];
    useBlackboard(&*found.board);
    reproduceHere(true);
    result.check->run({.module = options.module, .server = result.server, .seed = result.seed});
    reproduceHere(false);
    result.message = found.board->notes;
    result.outcome = result.message.empty() ? Outcome::pass : Outcome::warn;
    static Blackboard own{};
    useBlackboard(&own);
    return result;
}

bool allWell(const std::vector<CheckResult> &results) {
    return std::none_of(results.begin(), results.end(), [](const CheckResult &one) {
        return one.outcome == Outcome::fail || one.outcome == Outcome::crash || one.outcome == Outcome::hang;
    });
}

} // namespace velm

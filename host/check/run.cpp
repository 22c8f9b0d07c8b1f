// Which checks run, each in its process, and what becomes of them.
#include "host/base/error.h"
#include "host/check/check.h"
#include "host/check/process/child.h"
#include "host/check/fixture/generator.h"
#include "host/check/levels/levels.h"
#include "host/check/watch/watch.h"
#include "host/load/module.h"

#include <poll.h>

#include <algorithm>
#include <cstdio>
#include <deque>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

namespace velm::host {

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

CheckResult makeResult(const Check &check, const std::string &server, std::uint64_t master) {
    CheckResult one{.check = &check, .server = server, .outcome = {}, .message = {}, .printed = {}, .master = master};
    one.seed = seedFor(master, one.fullName());
    return one;
}

std::vector<CheckResult> select(const CheckOptions &options, const Discovery &found) {
    std::vector<CheckResult> selected;
    const auto add = [&](const Check &check, const std::string &server) {
        CheckResult one = makeResult(check, server, options.seed);
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

// Further turns of the checks that run more than once: one after the other has its second turn, then its third.
class FurtherTurns {
  public:
    FurtherTurns(const CheckOptions &options, const std::vector<CheckResult> &first)
        : seed_(options.seed), hasTime_(options.minutes > 0),
          end_(Child::Clock::now() + std::chrono::duration_cast<Child::Clock::duration>(
                                         std::chrono::duration<double>(60 * options.minutes))) {
        for (const CheckResult &one : first)
            if (one.check->turns > 1) again_.push_back(one);
        for (const CheckResult &one : again_) turns_ = std::max(turns_, one.check->turns);
        if (hasTime_ && again_.empty())
            throw InputError("none of the selected checks goes on with new seeds, as those of level 10 do");
    }

    // Nothing when all have had theirs, and the time is over.
    std::optional<CheckResult> next() {
        for (; turn_ < turns_ || isTimeLeft(); ++turn_, at_ = 0)
            while (at_ < again_.size()) {
                const CheckResult &one = again_[at_++];
                if (turn_ < one.check->turns || isTimeLeft())
                    return makeResult(*one.check, one.server, seedFor(seed_, "turn " + std::to_string(turn_)));
            }
        return {};
    }

  private:
    bool isTimeLeft() const { return hasTime_ && Child::Clock::now() < end_; }

    std::uint64_t seed_;
    bool hasTime_;
    Child::Clock::time_point end_;
    std::vector<CheckResult> again_;
    int turns_ = 1, turn_ = 1; // counted from 0
    std::size_t at_ = 0;
};

class Runner {
  public:
    Runner(const CheckOptions &options, const Discovery &found, std::vector<CheckResult> first,
           const std::function<void(const CheckResult &)> &done)
        : options_(options), found_(found), further_(options, first), results_(first.begin(), first.end()),
          done_(done) {}

    std::vector<CheckResult> run() {
        for (;;) {
            while (running_.size() < atOnce() && hasNext()) start(results_[next_++]);
            if (running_.empty()) break;
            waitForOne();
        }
        std::vector<CheckResult> all(results_.begin(), results_.end());
        // All turns of a node together.
        std::stable_sort(all.begin(), all.end(), [&](const CheckResult &one, const CheckResult &other) {
            return std::pair(one.check, placeOf(one)) < std::pair(other.check, placeOf(other));
        });
        return all;
    }

  private:
    struct Running {
        CheckResult *result;
        std::unique_ptr<Child> child;
    };

    bool hasNext() {
        if (next_ == results_.size())
            if (std::optional<CheckResult> further = further_.next()) results_.push_back(std::move(*further));
        return next_ < results_.size();
    }

    std::size_t placeOf(const CheckResult &one) const {
        return static_cast<std::size_t>(std::find(found_.servers.begin(), found_.servers.end(), one.server) -
                                        found_.servers.begin());
    }

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
    FurtherTurns further_;
    std::deque<CheckResult> results_; // those that run are pointed at
    const std::function<void(const CheckResult &)> &done_;
    std::vector<Running> running_;
    std::size_t next_ = 0;
};

} // namespace

std::span<const Check> allChecks() {
    static const std::vector<Check> list = makeList();
    return list;
}

std::string CheckResult::fullName() const { return server.empty() ? check->name : check->name + ("/" + server); }

std::vector<CheckResult> runChecks(const CheckOptions &options, const std::function<void(const CheckResult &)> &done) {
    Discovery found;
    discover(found, options.module);
    return Runner(options, found, select(options, found), done).run();
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

} // namespace velm::host

#include "host/check/check.h"

#include "host/base/error.h"
#include "host/check/fixture/generator.h"
#include "host/check/levels/levels.h"
#include "host/check/process/child.h"
#include "host/check/process/ending_signals.h"
#include "host/check/process/temporary_directory.h"
#include "host/check/watch/watch.h"
#include "host/load/module.h"

#include <fmt/format.h>
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

// The module's nodes, as listed by a process of its own.
struct Discovery {
    SharedCheckRecord record; // with the nodes' server names
    std::vector<std::string> servers;
    std::optional<ChildEnd> failure; // how that process ended, unless it passed
};

void writeNames(const std::string &file) {
    const CallScope scope(kModuleItself, "loading the module");
    const Module module = Module::open(file);
    CheckRecord &record = checkRecord();
    for (const std::string &name : nodeNames(module.servers()))
        std::snprintf(record.servers[record.serverCount++], kLongestServer, "%s", name.c_str());
}

void discover(Discovery &found, const std::string &file, const EndingSignals *signals) {
    Child child(
        *found.record, [&] { writeNames(file); }, kDiscoveryLimit);
    std::vector<pollfd> ended{{.fd = child.descriptor(), .events = POLLIN, .revents = 0}};
    while (signals && ended[0].revents == 0 && !child.isOver()) signals->wait(ended, child.deadline());
    const ChildEnd end = waitFor(child);
    if (end.outcome != Outcome::pass) {
        found.failure = end;
        return;
    }
    found.record->serverCount = std::min(child.record().serverCount, kMostServers);
    std::copy_n(&child.record().servers[0][0], sizeof child.record().servers, &found.record->servers[0][0]);
    for (int i = 0; i < found.record->serverCount; ++i) found.servers.emplace_back(found.record->servers[i]);
}

bool isSelected(const CheckResult &one, const CheckOptions &options) {
    return one.check->level <= options.level && one.fullName().find(options.filter) != std::string::npos;
}

CheckResult makeResult(const Check &check, const std::string &server, std::uint64_t master) {
    CheckResult one{.check = &check, .server = server, .outcome = {}, .message = {}, .printed = {}, .master = master};
    one.seed = seedFor(master, one.fullName());
    return one;
}

// The result for a module that cannot be loaded, for which no other check can say anything.
CheckResult unloadable(const CheckOptions &options, const ChildEnd &end) {
    CheckResult one = makeResult(fileChecks().front(), "", options.seed);
    one.outcome = end.outcome;
    one.message = end.message;
    one.printed = end.printed;
    return one;
}

std::vector<CheckResult> select(const CheckOptions &options, const Discovery &found) {
    std::vector<CheckResult> selected;
    const auto add = [&](const Check &check, const std::string &server) {
        CheckResult one = makeResult(check, server, options.seed);
        if (isSelected(one, options)) selected.push_back(std::move(one));
    };
    for (const Check &check : allChecks()) {
        if (check.scope == CheckScope::module) {
            add(check, "");
            continue;
        }
        for (const std::string &server : found.servers) add(check, server);
    }
    const auto exact = [&](const CheckResult &one) { return one.fullName() == options.filter; };
    if (std::any_of(selected.begin(), selected.end(), exact))
        std::erase_if(selected, [&](const CheckResult &one) { return !exact(one); });
    if (selected.empty())
        throw InputError(fmt::format("no check up to level {} is selected by \"{}\"", options.level, options.filter));
    return selected;
}

// The further turns of the checks that run more than once: the second turns of all these checks, then the third ones,
// and so on; with a duration, until it is over.
class FurtherTurns {
  public:
    FurtherTurns(const CheckOptions &options, const std::vector<CheckResult> &first)
        : seed_(options.seed), hasTime_(options.minutes > 0),
          end_(Child::Clock::now() + std::chrono::duration_cast<Child::Clock::duration>(
                                         std::chrono::duration<double>(60 * options.minutes))) {
        for (const CheckResult &one : first)
            if (one.check->turns > 1) repeated_.push_back(one);
        for (const CheckResult &one : repeated_) turns_ = std::max(turns_, one.check->turns);
        if (hasTime_ && repeated_.empty())
            throw InputError("none of the selected checks goes on with new seeds; those of level 10 do");
    }

    // The next turn to run; nothing when there is none left.
    std::optional<CheckResult> next() {
        for (; turn_ < turns_ || isTimeLeft(); ++turn_, next_ = 0)
            while (next_ < repeated_.size()) {
                const CheckResult &one = repeated_[next_++];
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
    std::vector<CheckResult> repeated_;
    int turns_ = 1, turn_ = 1; // the number of turns, and the current one from 0
    std::size_t next_ = 0;     // index of the check whose turn is next
};

class Runner {
  public:
    Runner(const CheckOptions &options, const Discovery &found, const EndingSignals &signals,
           const std::function<void(const CheckResult &)> &done)
        : Runner(options, found, signals, done, select(options, found)) {}

    std::vector<CheckResult> run() {
        for (;;) {
            while (running_.size() < atOnce() && hasNext()) start(results_[next_++]);
            if (running_.empty()) break;
            waitForOne();
        }
        std::vector<CheckResult> all(results_.begin(), results_.end());
        // Puts all turns of a node together.
        std::stable_sort(all.begin(), all.end(), [&](const CheckResult &one, const CheckResult &other) {
            return std::pair(one.check, indexOf(one)) < std::pair(other.check, indexOf(other));
        });
        return all;
    }

  private:
    Runner(const CheckOptions &options, const Discovery &found, const EndingSignals &signals,
           const std::function<void(const CheckResult &)> &done, const std::vector<CheckResult> &first)
        : options_(options), found_(found), signals_(signals), further_(options, first),
          results_(first.begin(), first.end()), done_(done) {}

    struct Running {
        CheckResult *result;
        std::unique_ptr<Child> child;
    };

    bool hasNext() {
        if (next_ == results_.size())
            if (std::optional<CheckResult> further = further_.next()) results_.push_back(std::move(*further));
        return next_ < results_.size();
    }

    std::size_t indexOf(const CheckResult &one) const {
        return static_cast<std::size_t>(std::find(found_.servers.begin(), found_.servers.end(), one.server) -
                                        found_.servers.begin());
    }

    static unsigned atOnce() { return std::clamp(std::thread::hardware_concurrency(), 1U, kMostAtOnce); }

    void start(CheckResult &result) {
        const CheckTask task{.module = options_.module,
                             .server = result.server,
                             .seed = result.seed,
                             .directory = directory_.path().string()};
        const Check &check = *result.check;
        running_.push_back({&result, std::make_unique<Child>(
                                         *found_.record, [&check, task] { check.run(task); }, options_.limit)});
    }

    void waitForOne() {
        std::vector<pollfd> ends;
        auto deadline = Child::Clock::time_point::max();
        for (const Running &one : running_) {
            ends.push_back({.fd = one.child->descriptor(), .events = POLLIN, .revents = 0});
            deadline = std::min(deadline, one.child->deadline());
        }
        signals_.wait(ends, deadline);
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
    const EndingSignals &signals_;
    const TemporaryDirectory directory_;
    FurtherTurns further_;
    std::deque<CheckResult> results_; // a deque, since running checks point at their results
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
    const EndingSignals signals;
    try {
        Discovery found;
        discover(found, options.module, &signals);
        if (!found.failure) return Runner(options, found, signals, done).run();
        const CheckResult one = unloadable(options, *found.failure);
        done(one);
        return {one};
    } catch (const EndingSignal &ending) { // the checks' processes and their directory are gone now
        signals.dieOf(ending);
    }
}

CheckResult reproduceCheck(const CheckOptions &options) {
    Discovery found;
    discover(found, options.module, nullptr);
    std::vector<CheckResult> selected =
        found.failure ? std::vector{unloadable(options, *found.failure)} : select(options, found);
    if (selected.size() != 1)
        throw InputError(
            fmt::format("{} checks are selected, \"{}\" and \"{}\" among them; only one can be reproduced at a time",
                        selected.size(), selected[0].fullName(), selected[1].fullName()));
    CheckResult result = selected[0];
    useCheckRecord(&*found.record);
    setReproducing(true);
    const TemporaryDirectory directory;
    result.check->run({.module = options.module,
                       .server = result.server,
                       .seed = result.seed,
                       .directory = directory.path().string()});
    setReproducing(false);
    result.message = found.record->notes;
    result.outcome = result.message.empty() ? Outcome::pass : Outcome::warn;
    static CheckRecord ownRecord{}; // the shared one ends with this function
    useCheckRecord(&ownRecord);
    return result;
}

bool allWell(const std::vector<CheckResult> &results) {
    return std::none_of(results.begin(), results.end(), [](const CheckResult &one) {
        return one.outcome == Outcome::fail || one.outcome == Outcome::crash || one.outcome == Outcome::hang;
    });
}

} // namespace velm::host

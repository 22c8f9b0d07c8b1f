#include "host/check/report.h"

#include "host/base/one_line.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <ostream>

namespace velm::host {

namespace {

constexpr std::array kOutcomes = {Outcome::pass,  Outcome::warn, Outcome::fail,
                                  Outcome::crash, Outcome::hang, Outcome::skip};

long countOf(std::span<const CheckResult> results, Outcome outcome) {
    return std::count_if(results.begin(), results.end(), [&](const auto &one) { return one.outcome == outcome; });
}

bool isBad(Outcome outcome) {
    return outcome == Outcome::fail || outcome == Outcome::crash || outcome == Outcome::hang;
}

// The worst of some outcomes; SKIP only if all are skipped.
Outcome worst(std::span<const CheckResult> some) {
    constexpr std::array kBySeverity = {Outcome::crash, Outcome::hang, Outcome::fail, Outcome::warn, Outcome::pass};
    for (const Outcome outcome : kBySeverity)
        if (countOf(some, outcome) > 0) return outcome;
    return Outcome::skip;
}

std::string shellQuoted(const std::string &word) {
    std::string quoted = "'";
    for (const char character : word) quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return quoted + "'";
}

std::string reproduction(const CheckResult &one, const CheckOptions &options) {
    return fmt::format("velm check {} --level {} --seed {} --filter {} --reproduce", shellQuoted(options.module),
                       one.check->level, one.master, shellQuoted(one.fullName()));
}

std::string indented(const std::string &text) {
    std::string result = "        ";
    for (const char character : text) {
        result += character;
        if (character == '\n') result += "        ";
    }
    return result;
}

// Prints a result that is the same for all of the named nodes.
void printOne(const CheckResult &one, const std::string &nodes, const CheckOptions &options, std::ostream &out) {
    out << "    " << outcomeName(one.outcome) << "  " << nodes << ": " << one.message << '\n';
    if (!one.printed.empty()) out << indented(one.printed) << '\n';
    if (isBad(one.outcome)) out << "        again: " << reproduction(one, options) << '\n';
}

void printBad(std::span<const CheckResult> some, const CheckOptions &options, std::ostream &out) {
    for (auto one = some.begin(); one != some.end(); ++one) {
        if (one->outcome == Outcome::pass) continue;
        const auto isLike = [&](const CheckResult &other) {
            return !isBad(one->outcome) && other.outcome == one->outcome && other.message == one->message;
        };
        if (std::any_of(some.begin(), one, isLike)) continue; // printed with the first of them
        std::string nodes = one->server.empty() ? "the module" : one->server;
        std::string last = one->server; // turns of one node follow each other
        for (auto other = one + 1; other != some.end(); ++other)
            if (isLike(*other) && other->server != last) nodes += ", " + (last = other->server);
        printOne(*one, nodes, options, out);
    }
}

// Escapes a text for XML attributes and contents. Other control characters than line ends, which XML does not allow,
// are spelt as in messages.
std::string xml(const std::string &text) {
    std::string escaped;
    for (std::size_t at = 0, end = 0; end != std::string::npos; at = end + 1) {
        end = text.find('\n', at);
        for (const char character : onOneLine(std::string_view(text).substr(at, end - at))) switch (character) {
            case '&': escaped += "&amp;"; break;
            case '<': escaped += "&lt;"; break;
            case '>': escaped += "&gt;"; break;
            case '"': escaped += "&quot;"; break;
            default: escaped += character;
            }
        if (end != std::string::npos) escaped += "&#10;";
    }
    return escaped;
}

std::string testCase(const CheckResult &one, const CheckOptions &options) {
    std::string name = one.server.empty() ? "module" : one.server;
    if (one.master != options.seed) name += fmt::format(" (seed {})", one.master); // a further turn
    std::string text = fmt::format("    <testcase classname=\"{}\" name=\"{}\" time=\"{:.3f}\">", xml(one.check->name),
                                   xml(name), one.seconds);
    const std::string message = xml(one.message);
    if (isBad(one.outcome))
        text += fmt::format("<failure type=\"{}\" message=\"{}\">{}</failure>", outcomeName(one.outcome), message,
                            xml(reproduction(one, options) + "\n" + one.printed));
    else if (one.outcome == Outcome::skip)
        text += fmt::format("<skipped message=\"{}\"/>", message);
    else if (one.outcome == Outcome::warn)
        text += fmt::format("<system-out>{}</system-out>", message);
    return text + "</testcase>\n";
}

} // namespace

void printResults(std::span<const CheckResult> results, const CheckOptions &options, std::ostream &out) {
    for (std::size_t first = 0, end; first < results.size(); first = end) {
        const Check &check = *results[first].check;
        end = first + 1;
        while (end < results.size() && results[end].check == &check) ++end;
        const std::span<const CheckResult> some = results.subspan(first, end - first);
        out << fmt::format("{:2}  {:5}  {:26} {}\n", check.level, outcomeName(worst(some)), check.name, check.demands);
        printBad(some, options, out);
    }
    out << '\n';
    for (const Outcome outcome : kOutcomes)
        if (const long count = countOf(results, outcome); count > 0)
            out << outcomeName(outcome) << ' ' << count << "  ";
    out << "(level " << options.level << ", seed " << options.seed << ")\n";
}

std::string resultsAsJson(std::span<const CheckResult> results, const CheckOptions &options) {
    nlohmann::ordered_json counts;
    for (const Outcome outcome : kOutcomes) counts[outcomeName(outcome)] = countOf(results, outcome);
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const CheckResult &one : results)
        list.push_back({{"name", one.check->name},
                        {"level", one.check->level},
                        {"server", one.server},
                        {"demands", one.check->demands},
                        {"outcome", outcomeName(one.outcome)},
                        {"message", one.message},
                        {"printed", one.printed},
                        {"seed", one.seed},
                        {"master", one.master},
                        {"seconds", one.seconds}});
    const nlohmann::ordered_json all = {{"module", options.module},
                                        {"seed", options.seed},
                                        {"level", options.level},
                                        {"counts", counts},
                                        {"results", list}};
    // A module's texts may be invalid UTF-8.
    return escapedJson(all.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace)) + "\n";
}

std::string resultsAsJunit(std::span<const CheckResult> results, const CheckOptions &options) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n";
    for (std::size_t first = 0, end; first < results.size(); first = end) {
        const Check &check = *results[first].check;
        std::string cases;
        for (end = first; end < results.size() && results[end].check == &check; ++end)
            cases += testCase(results[end], options);
        const auto some = results.subspan(first, end - first);
        const auto bad = std::count_if(some.begin(), some.end(), [](const auto &one) { return isBad(one.outcome); });
        text += fmt::format("  <testsuite name=\"{}\" tests=\"{}\" failures=\"{}\" skipped=\"{}\">\n{}  </testsuite>\n",
                            xml(check.name), some.size(), bad, countOf(some, Outcome::skip), cases);
    }
    return text + "</testsuites>\n";
}

} // namespace velm::host

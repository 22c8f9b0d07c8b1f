#include "host/check/report.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
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

// The worst of some outcomes; they count as skipped where all are.
Outcome worst(std::span<const CheckResult> some) {
    constexpr std::array kByWeight = {Outcome::crash, Outcome::hang, Outcome::fail, Outcome::warn, Outcome::pass};
    for (const Outcome outcome : kByWeight)
        if (countOf(some, outcome) > 0) return outcome;
    return Outcome::skip;
}

std::string shellQuoted(const std::string &word) {
    std::string quoted = "'";
    for (const char character : word) quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return quoted + "'";
}

std::string reproduction(const CheckResult &one, const CheckOptions &options) {
    return "velm check " + shellQuoted(options.module) + " --level " + std::to_string(one.check->level) + " --seed " +
           std::to_string(one.master) + " --filter " + shellQuoted(one.fullName()) + " --reproduce";
}

std::string indented(const std::string &text) {
    std::string result = "        ";
    for (const char character : text) {
        result += character;
        if (character == '\n') result += "        ";
    }
    return result;
}

// `who`: the nodes of which all this is the same.
void printOne(const CheckResult &one, const std::string &who, const CheckOptions &options, std::ostream &out) {
    out << "    " << outcomeName(one.outcome) << "  " << who << ": " << one.message << '\n';
    if (!one.printed.empty()) out << indented(one.printed) << '\n';
    if (isBad(one.outcome)) out << "        again: " << reproduction(one, options) << '\n';
}

void printBad(std::span<const CheckResult> some, const CheckOptions &options, std::ostream &out) {
    for (auto one = some.begin(); one != some.end(); ++one) {
        if (one->outcome == Outcome::pass) continue;
        const auto isLike = [&](const CheckResult &other) {
            return !isBad(one->outcome) && other.outcome == one->outcome && other.message == one->message;
        };
        if (std::any_of(some.begin(), one, isLike)) continue; // told with the first of them
        std::string who = one->server.empty() ? "the module" : one->server;
        std::string last = one->server; // turns of one node follow each other
        for (auto other = one + 1; other != some.end(); ++other)
            if (isLike(*other) && other->server != last) who += ", " + (last = other->server);
        printOne(*one, who, options, out);
    }
}

// As XML takes it in attributes and texts; control characters have no place there.
std::string xml(const std::string &text) {
    std::string escaped;
    for (const char character : text) switch (character) {
        case '&': escaped += "&amp;"; break;
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        case '"': escaped += "&quot;"; break;
        case '\n': escaped += "&#10;"; break;
        default:
            if (static_cast<unsigned char>(character) >= ' ') escaped += character;
        }
    return escaped;
}

std::string secondsText(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", seconds);
    return text;
}

std::string testCase(const CheckResult &one, const CheckOptions &options) {
    std::string name = one.server.empty() ? "module" : one.server;
    if (one.master != options.seed) name += " (seed " + std::to_string(one.master) + ")"; // a further turn
    std::string text = "    <testcase classname=\"" + xml(one.check->name) + "\" name=\"" + xml(name) + "\" time=\"" +
                       secondsText(one.seconds) + "\">";
    const std::string message = xml(one.message);
    if (isBad(one.outcome))
        text += "<failure type=\"" + std::string(outcomeName(one.outcome)) + "\" message=\"" + message + "\">" +
                xml(reproduction(one, options) + "\n" + one.printed) + "</failure>";
    else if (one.outcome == Outcome::skip)
        text += "<skipped message=\"" + message + "\"/>";
    else if (one.outcome == Outcome::warn)
        text += "<system-out>" + message + "</system-out>";
    return text + "</testcase>\n";
}

} // namespace

void printResults(std::span<const CheckResult> results, const CheckOptions &options, std::ostream &out) {
    for (std::size_t first = 0, end; first < results.size(); first = end) {
        const Check &check = *results[first].check;
        end = first + 1;
        while (end < results.size() && results[end].check == &check) ++end;
        const std::span<const CheckResult> some = results.subspan(first, end - first);
        char start[80];
        std::snprintf(start, sizeof start, "%2d  %-5s  %-26s ", check.level, outcomeName(worst(some)), check.name);
        out << start << check.demands << '\n';
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
    // A module's texts may be anything.
    return all.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
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
        text += "  <testsuite name=\"" + xml(check.name) + "\" tests=\"" + std::to_string(some.size()) +
                "\" failures=\"" + std::to_string(bad) + "\" skipped=\"" +
                std::to_string(countOf(some, Outcome::skip)) + "\">\n" + cases + "  </testsuite>\n";
    }
    return text + "</testsuites>\n";
}

} // namespace velm::host

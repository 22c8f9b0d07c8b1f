#include "tests/platforms/hex_float.h"
#include "tests/platforms/report.h"

#include <algorithm>
#include <sstream>

namespace velm::plugin {
namespace {

std::vector<std::string> wordsOf(const std::string &line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

bool isNumber(const std::string &word) {
    return word.find("0x") != std::string::npos || word == "inf" || word == "nan" || word == "-inf";
}

uint64_t allowedTo(const std::string &node) {
    for (const Tolerance &tolerance : tolerances())
        if (node == tolerance.node) return tolerance.units;
    return 0;
}

constexpr char kReciprocalOfPower[] =
    "pow, within a unit; the result is its reciprocal, whose units may be half as large";

// Whether the lines are equal, except for numbers whose distance is allowed. Adds the numbers to `comparison`.
bool compareLines(const std::string &line, const std::string &expected, Comparison &comparison) {
    const std::vector<std::string> words = wordsOf(line), wanted = wordsOf(expected);
    if (words.size() != wanted.size()) return false;
    bool same = true;
    for (size_t i = 0; i < words.size(); ++i) {
        const bool numbers = isNumber(words[i]) && isNumber(wanted[i]);
        if (numbers) ++comparison.numbers;
        if (words[i] == wanted[i]) continue;
        if (!numbers) return false;
        const uint64_t apart = unitsApart(fromHexFloat(words[i]), fromHexFloat(wanted[i]));
        ++comparison.different;
        comparison.worst = std::max(comparison.worst, apart);
        same = same && apart <= comparison.allowed;
    }
    return same;
}

} // namespace

const std::vector<Tolerance> &tolerances() {
    static const std::vector<Tolerance> rows = {
        {.node = "Velm Ambient Occlusion",
         .units = 8,
         .because = "sin, cos and atan2 make the directions of its rays; its result is a sum over them"},
        {.node = "Velm Exponential Decay (Color)", .units = 2, .because = kReciprocalOfPower},
        {.node = "Velm Exponential Decay (Scalar)", .units = 2, .because = kReciprocalOfPower},
    };
    return rows;
}

std::vector<Comparison> compare(const Report &report, const Report &reference, std::vector<std::string> &faults) {
    std::vector<Comparison> nodes;
    for (size_t i = 0; i < std::max(report.size(), reference.size()); ++i) {
        const std::string &line = i < report.size() ? report[i] : "nothing",
                          &expected = i < reference.size() ? reference[i] : "nothing";
        if (expected.starts_with("node ")) {
            const std::string name = expected.substr(5);
            nodes.push_back({.node = name, .allowed = allowedTo(name)});
        }
        if (nodes.empty()) nodes.push_back({.node = "(before the first node)"});
        if (!compareLines(line, expected, nodes.back()))
            faults.push_back(nodes.back().node + ", line " + std::to_string(i + 1) + "\n  is      " + line +
                             "\n  expected " + expected);
    }
    return nodes;
}

} // namespace velm::plugin

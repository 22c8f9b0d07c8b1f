#include "bench/compare.h"

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace velm::host::bench {
namespace {

constexpr const char *kLine = "%-54s %-42s %9s %9s  %-12s %6s  %-8s %s\n";

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, value < 100 ? "%.2f" : "%.0f", value);
    return text;
}

struct GoalText {
    const char *sign, *name;
};
GoalText textOf(Goal goal) {
    switch (goal) {
    case Goal::ratioAtLeast: return {">= ", "ratio at least"};
    case Goal::ratioAtMost: return {"<= ", "ratio at most"};
    case Goal::differenceAtMost: break;
    }
    return {"+ ", "difference at most"};
}

} // namespace

bool Row::held() const {
    switch (goal) {
    case Goal::ratioAtLeast: return ratio >= target;
    case Goal::ratioAtMost: return ratio <= target;
    case Goal::differenceAtMost: break;
    }
    return difference <= target;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void Table::compare(Row row, int rounds, const std::function<double()> &ours,
                    const std::function<double()> &reference) {
    if (row.what.find(wanted_) == std::string::npos) return;
    if (rounds > 1) { // warm-up
        ours();
        reference();
    }
    std::vector<double> all, others, ratios, differences;
    for (int round = 0; round < rounds; ++round) {
        all.push_back(ours());
        others.push_back(reference());
        ratios.push_back(all.back() / others.back());
        differences.push_back(all.back() - others.back());
    }
    row.ours = median(all);
    row.reference = median(others);
    row.ratio = median(ratios);
    row.difference = median(differences);
    const bool differs = row.goal == Goal::differenceAtMost;
    const std::string outcome = differs ? (row.difference < 0 ? "" : "+") + number(row.difference) : number(row.ratio);
    if (rows_.empty()) std::printf(kLine, "what", "against", "ours", "reference", "unit", "ratio", "target", "held");
    std::printf(kLine, row.what.c_str(), row.against.c_str(), number(row.ours).c_str(), number(row.reference).c_str(),
                row.unit.c_str(), outcome.c_str(), (textOf(row.goal).sign + number(row.target)).c_str(),
                row.held() ? "yes" : "NO");
    std::fflush(stdout);
    rows_.push_back(std::move(row));
}

void Table::writeJson(const std::string &file) const {
    nlohmann::json list = nlohmann::json::array();
    for (const Row &row : rows_)
        list.push_back({{"what", row.what},
                        {"against", row.against},
                        {"unit", row.unit},
                        {"goal", textOf(row.goal).name},
                        {"target", row.target},
                        {"ours", row.ours},
                        {"reference", row.reference},
                        {"ratio", row.ratio},
                        {"difference", row.difference},
                        {"held", row.held()}});
    std::ofstream stream(file);
    stream << list.dump(2) << '\n';
    if (!stream.flush()) throw std::runtime_error("cannot write " + file);
}

} // namespace velm::host::bench

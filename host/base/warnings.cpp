#include "host/base/warnings.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace velm::host {

std::string Warning::text() const {
    std::string whole;
    for (const std::string &part : {location.text(), path, message})
        if (!part.empty()) whole += (whole.empty() ? "" : ": ") + part;
    return onOneLine(whole);
}

std::string pathTo(const std::string &parent, std::string_view name) {
    const bool plain = !name.empty() && std::all_of(name.begin(), name.end(), [](unsigned char letter) {
        return std::isalnum(letter) != 0 || letter == '_' || letter == '-';
    });
    const std::string step = plain ? std::string(name) : '"' + std::string(name) + '"';
    return parent.empty() ? step : parent + '.' + step;
}

Warnings::Warnings(Policy policy, std::function<void(const Warning &)> tell)
    : policy_(policy), tell_(std::move(tell)) {}

void Warnings::add(Warning warning) {
    const std::string text = warning.text();
    if (policy_ == Policy::strict) throw InputError(text);
    if (!texts_.insert(text).second) return;
    all_.push_back(std::move(warning));
    if (tell_) tell_(all_.back());
}

std::string Warnings::summary() const {
    std::unordered_set<std::string_view> things;
    std::string list;
    for (const Warning &warning : all_)
        if (things.insert(warning.brief).second && things.size() <= kMostInSummary)
            list += (list.empty() ? "" : "; ") + warning.brief;
    if (things.empty()) return {};
    if (things.size() > kMostInSummary) list += "; and " + std::to_string(things.size() - kMostInSummary) + " more";
    return std::to_string(things.size()) + (things.size() == 1 ? " warning: " : " warnings: ") + onOneLine(list);
}

} // namespace velm::host

#include "host/graph/node_names.h"

#include "host/graph/node.h"

#include <fmt/format.h>

namespace velm::host {

namespace {

std::string_view withoutNumber(std::string_view name) {
    const auto open = name.rfind(" (");
    const bool hasNumber = open != std::string_view::npos && name.back() == ')' && open + 3 < name.size() &&
                           name.find_first_not_of("0123456789", open + 2) == name.size() - 1;
    return hasNumber ? name.substr(0, open) : name;
}

} // namespace

void NodeNames::add(HostNode &node) { nodes_.emplace(node.name, &node); }

void NodeNames::remove(const HostNode &node) {
    nodes_.erase(node.name);
    lowestToTry_.erase(std::string(withoutNumber(node.name))); // its number may now be the lowest free one
}

HostNode *NodeNames::find(std::string_view name) const {
    const auto found = nodes_.find(name);
    return found == nodes_.end() ? nullptr : found->second;
}

std::string NodeNames::unique(std::string_view wanted) {
    if (!find(wanted)) return std::string(wanted);
    const std::string base(withoutNumber(wanted));
    // The number that is found remains the first to try, since the caller may not use it after all.
    for (int &number = lowestToTry_.emplace(base, 2).first->second;; ++number) {
        std::string name = fmt::format("{} ({})", base, number);
        if (!find(name)) return name;
    }
}

} // namespace velm::host

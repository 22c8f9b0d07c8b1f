// Unique names for new things.
#pragma once

#include <fmt/format.h>

#include <string>
#include <unordered_map>
#include <unordered_set>

namespace velm::host {

class UnusedNames {
  public:
    // `before` and `after` enclose the number that is appended to a name, such as " (" and ")".
    UnusedNames(const char *before, const char *after) : before_(before), after_(after) {}

    // Marks a name as used.
    void add(const std::string &name) { used_.insert(name); }

    // Returns the name if it is not used, or else the name with the lowest unused number from 2 on. Marks the result as
    // used.
    std::string take(const std::string &wanted) {
        if (used_.insert(wanted).second) return wanted;
        int &number = nextNumbers_.try_emplace(wanted, 2).first->second;
        for (;;) {
            std::string name = fmt::format("{}{}{}{}", wanted, before_, number++, after_);
            if (used_.insert(name).second) return name;
        }
    }

  private:
    const char *before_, *after_;
    std::unordered_set<std::string> used_;
    std::unordered_map<std::string, int> nextNumbers_; // by name: all smaller numbers are used
};

} // namespace velm::host

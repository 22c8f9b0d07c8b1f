// The names of the nodes of one network: who has which, and which are free.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

struct HostNode;

namespace velm::host {

// Refers to the nodes and to their names: a node stands in here as long as it is in its network, and is taken out
// before its name changes. Everything takes the time of a few look-ups, since files may have thousands of nodes of one
// name. For the interface thread.
class NodeNames {
  public:
    // The node's name is one that `unique` gave.
    void add(HostNode &node);
    void remove(const HostNode &node);

    // Null when there is none.
    HostNode *find(std::string_view name) const;

    // The name itself when it is free, else the name with the lowest free number from 2 on: "Counter (2)". A number
    // that is there already is replaced instead of getting a second one behind it.
    std::string unique(std::string_view wanted);

  private:
    std::unordered_map<std::string_view, HostNode *> nodes_;
    // By name without number: all numbers from 2 to below this one are taken.
    std::unordered_map<std::string, int> lowestToTry_;
};

} // namespace velm::host

// The names of the nodes of one network: which node has which name, and which names are free.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

struct HostNode;

namespace velm::host {

// Refers to the nodes and to their names. A node is listed here for as long as it is in its network, and is removed
// before its name changes. Each function takes a few look-ups, whatever the number of nodes: files may have thousands
// of nodes of one name. [interface thread; not while rendering]
class NodeNames {
  public:
    // The name must be one that `unique` returned.
    void add(HostNode &node);
    void remove(const HostNode &node);

    // Null when there is none.
    HostNode *find(std::string_view name) const;

    // The name itself when it is free; otherwise the name with the lowest free number from 2 on: "Counter (2)". A
    // number that the name already ends in is replaced.
    std::string unique(std::string_view wanted);

  private:
    std::unordered_map<std::string_view, HostNode *> nodes_;
    // By name without number: all numbers from 2 to the one before this are taken.
    std::unordered_map<std::string, int> lowestToTry_;
};

} // namespace velm::host

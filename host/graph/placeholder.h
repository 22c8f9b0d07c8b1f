// Nodes whose server is missing, such as those of a module that is not loaded. They keep what a file says of them, and
// can be connected. They evaluate to magenta, which cannot be overlooked, for an input that is a colour or a material.
// For any other input they set nothing, so that the input keeps its own value.
#pragma once

#include "host/graph/server_list.h"

#include <array>
#include <memory>
#include <string>

namespace velm::host {

constexpr std::array<double, 3> kMagenta{1, 0, 1};

// A node class that no server offers. Its nodes share it.
class Placeholder {
  public:
    // The server's name, and the name under which its nodes are shown.
    Placeholder(std::string server, std::string displayName);
    Placeholder(const Placeholder &) = delete;
    Placeholder &operator=(const Placeholder &) = delete;

    // Its nodes are created without inputs and outputs, and get them from connections; see Network::connectAsSaved.
    ServerClass &serverClass() { return class_; }

  private:
    std::string server_, displayName_;
    std::array<HostTag, 2> tags_;
    HostServer record_;
    ServerClass class_;
};

} // namespace velm::host

// Nodes whose server is not there, as of a module that is not loaded. They keep what a file says of them, take part in
// connections, and evaluate to something that cannot be overlooked: magenta where a colour or a material is asked for.
// Where a number, a vector or an integer is asked for they set nothing, and whoever asks keeps its own value.
#pragma once

#include "host/graph/server_list.h"

#include <array>
#include <memory>
#include <string>

namespace velm::host {

constexpr std::array<double, 3> kMagenta{1, 0, 1};

// A kind of node that no server offers. Its nodes share it.
class Placeholder {
  public:
    // The server's name, and the name that its nodes are shown by.
    Placeholder(std::string server, std::string displayName);
    Placeholder(const Placeholder &) = delete;
    Placeholder &operator=(const Placeholder &) = delete;

    // Its nodes are made without inputs and outputs; they get them as connections are made, see connectAsSaved.
    ServerClass &serverClass() { return class_; }

  private:
    std::string server_, displayName_;
    std::array<HostTag, 2> tags_;
    HostServer record_;
    ServerClass class_;
};

} // namespace velm::host

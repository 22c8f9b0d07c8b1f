// What one process of a check leaves for another: texts of bytes, in their order.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

class PassedOn {
  public:
    PassedOn(); // before the processes part; MachineError
    ~PassedOn();
    PassedOn(const PassedOn &) = delete;
    PassedOn &operator=(const PassedOn &) = delete;

    void add(std::string_view text); // MachineError
    // All that were added, by whichever process.
    std::vector<std::string> all() const; // MachineError

  private:
    int file_;
};

} // namespace velm::host

// A script of calls as bytes: whoever follows one takes each choice from the next bytes. Any bytes are a script, so
// that chance can write one, and so can a fuzzer that changes those that led somewhere.
#pragma once

#include "host/check/fixture/generator.h"

#include <string>
#include <string_view>

namespace velm::host {

class Script {
  public:
    explicit Script(std::string_view bytes) : rest_(bytes) {}

    bool isOver() const { return rest_.empty(); }
    // 0 to n - 1 from one byte, n from 1 to 256; 0 when the script is over.
    int below(std::size_t n) { return static_cast<int>(byte() % n); }
    bool flag() { return below(2) == 1; }
    // For what takes many numbers, of which none is worth a byte.
    Dice dice() {
        const unsigned int high = byte();
        return Dice(high << 8 | byte());
    }

  private:
    unsigned int byte() {
        if (rest_.empty()) return 0;
        const unsigned int first = static_cast<unsigned char>(rest_.front());
        rest_.remove_prefix(1);
        return first;
    }

    std::string_view rest_;
};

inline std::string randomScript(std::uint64_t seed, std::size_t size) {
    Dice dice(seed);
    std::string bytes(size, '\0');
    for (char &each : bytes) each = static_cast<char>(dice.below(256));
    return bytes;
}

} // namespace velm::host

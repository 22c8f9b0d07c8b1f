// A call script: a byte string that encodes a sequence of calls. Whoever follows one takes each choice from the next
// bytes. Any byte string is a valid script, so one can be made at random, and a fuzzer can mutate one.
#pragma once

#include "host/check/fixture/generator.h"

#include <string>
#include <string_view>

namespace velm::host {

class CallScript {
  public:
    explicit CallScript(std::string_view bytes) : rest_(bytes) {} // `bytes` has to outlive the script

    bool isOver() const { return rest_.empty(); }
    // A choice from 0 to n - 1, n from 1 to 256, taken from one byte; 0 when the script is over.
    int below(std::size_t n) { return static_cast<int>(byte() % n); }
    bool flag() { return below(2) == 1; }
    // A generator seeded from two bytes, where a step needs many numbers that are not worth a byte each.
    Generator generator() {
        const unsigned int high = byte();
        return Generator(high << 8 | byte());
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

// A random script of `size` bytes.
inline std::string randomCallScript(std::uint64_t seed, std::size_t size) {
    Generator random(seed);
    std::string bytes(size, '\0');
    for (char &each : bytes) each = static_cast<char>(random.below(256));
    return bytes;
}

} // namespace velm::host

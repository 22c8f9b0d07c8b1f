// Digests of data: short texts that differ where the data do.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace velm::host {

// A 128-bit hash (XXH3) of texts and files, for noticing that pictures were made from different things. It is no
// protection against forgery.
class Digest {
  public:
    Digest(); // MachineError when there is no memory
    ~Digest();
    Digest(const Digest &other);
    Digest &operator=(const Digest &) = delete;

    // Texts that are added one after the other count as different from their concatenation.
    void add(std::string_view text);
    // The contents of a file; a file that cannot be read counts as an empty one.
    void addFile(const std::string &path);

    // 32 hexadecimal digits.
    std::string text() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace velm::host

#include "host/io/digest.h"

#include "host/io/files.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <vector>

namespace velm::host {

struct Digest::State {
    XXH3_state_t hash;
};

Digest::Digest() : state_(std::make_unique<State>()) { XXH3_128bits_reset(&state_->hash); }
Digest::~Digest() = default;
Digest::Digest(const Digest &other) : state_(std::make_unique<State>()) {
    XXH3_copyState(&state_->hash, &other.state_->hash);
}

void Digest::add(std::string_view text) {
    const std::string length = std::to_string(text.size()) + ':';
    XXH3_128bits_update(&state_->hash, length.data(), length.size());
    XXH3_128bits_update(&state_->hash, text.data(), text.size());
}

void Digest::addFile(const std::string &path) {
    std::uint64_t size = 0;
    if (!whyUnreadable(path)) {
        std::ifstream file(path, std::ios::binary);
        std::vector<char> block(std::size_t{1} << 20);
        while (file.read(block.data(), static_cast<std::streamsize>(block.size())) || file.gcount() > 0) {
            const auto count = static_cast<std::size_t>(file.gcount());
            XXH3_128bits_update(&state_->hash, block.data(), count);
            size += count;
        }
    }
    add(std::to_string(size));
}

std::string Digest::text() const {
    const XXH128_hash_t hash = XXH3_128bits_digest(&state_->hash);
    char digits[33];
    std::snprintf(digits, sizeof digits, "%016llx%016llx", static_cast<unsigned long long>(hash.high64),
                  static_cast<unsigned long long>(hash.low64));
    return digits;
}

} // namespace velm::host

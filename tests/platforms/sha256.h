// The hash of code signatures, after FIPS 180-4, "Secure Hash Standard".
#pragma once

#include <string>
#include <string_view>

namespace velm::plugin {

// The 32 bytes of the hash SHA-256 of the bytes.
std::string sha256(std::string_view bytes);

} // namespace velm::plugin

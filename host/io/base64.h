// Data in base 64 (RFC 4648).
#pragma once

#include <string>
#include <string_view>

namespace velm::host {

// Decodes a text up to the first character that is not a base-64 digit, such as the padding. [any thread]
std::string bytesOfBase64(std::string_view text);

} // namespace velm::host

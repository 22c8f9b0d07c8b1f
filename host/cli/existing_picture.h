// Whether a picture need not be rendered again.
#pragma once

#include <string>
#include <string_view>

namespace velm::host {

// Whether a picture of that name exists that was rendered from the same: one whose header has this digest, or, in a
// format without such a header, any. Pictures appear under their names only when they are complete. [any thread]
bool isCurrentPicture(const std::string &file, std::string_view digest);

} // namespace velm::host

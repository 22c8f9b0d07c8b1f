// Whether a picture need not be rendered again.
#pragma once

#include <string>
#include <string_view>

namespace velm::host {

// Whether a regular file of that name exists. Pictures appear under their names only when they are complete, so the
// file is a whole picture. `digest` identifies what the picture would be rendered from. [any thread]
bool isCurrentPicture(const std::string &file, std::string_view digest);

} // namespace velm::host

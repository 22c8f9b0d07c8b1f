// The command line as the headers of pictures have it.
#pragma once

#include <span>
#include <string>

namespace velm::host {

// The command line of "velm render" or "velm bake", without the options that do not change a picture: equal pictures
// are equal files. `words` follow the program's name. [any thread]
std::string pictureCommand(std::span<const std::string> words);

} // namespace velm::host

// Files that other files name, such as a mesh file its materials and images. Programs write such names in several ways.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// The text with the characters that its percent escapes stand for: "my%20wood.png" gives "my wood.png". A percent sign
// without two hexadecimal digits after it stays, and so does an escaped zero. [any thread]
std::string withoutEscapes(std::string_view text);

// The file that a file in `directory`, which is empty or ends with a slash, calls `name`: with its escapes, without
// them, and with slashes for backslashes, whichever can be read. The directory with the name as it is if none can.
// [any thread]
std::string namedFile(const std::string &directory, const std::string &name);

// Runs `work`, which gives names of files, in a process of its own, and gives these names. Throws as readApart does.
// [interface thread]
std::vector<std::string> namesReadApart(const std::string &file, const char *what,
                                        const std::function<std::vector<std::string>()> &work);

} // namespace velm::host

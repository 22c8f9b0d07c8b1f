// Files that other files name: a mesh file names its materials and images. Programs write such names in several ways.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// Decodes percent escapes: "my%20wood.png" becomes "my wood.png". A percent sign
// without two hexadecimal digits after it stays, and so does an escaped zero. [any thread]
std::string withoutEscapes(std::string_view text);

// The path of the file that a file in `directory` calls `name`. Tries the name as it is and with its percent escapes
// decoded, each also with slashes for backslashes, and returns the first path that can be read. Returns `directory` +
// `name` if none can. `directory` is empty or ends with a slash.
// [any thread]
std::string namedFile(const std::string &directory, const std::string &name);

// Runs `work` in a process of its own, and returns the file names that it returns. `file` and `what` are for error
// messages; throws as readApart does.
// [interface thread]
std::vector<std::string> namesReadApart(const std::string &file, const char *what,
                                        const std::function<std::vector<std::string>()> &work);

} // namespace velm::host

// Whole files in and out of memory.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velm {

// What speaks against reading the file whole: "it is not a regular file", or the system's reason; nothing when it is a
// regular file, if perhaps one that may not be read. Names in files from outside may be those of devices, which never
// end, and of pipes, which keep whoever opens them waiting: to be asked before a library opens a file by its name.
std::optional<std::string> whyNoRegularFile(const std::string &path);

// The bytes of a regular file. Throws InputError, naming the file and the reason, when it is none or cannot be read.
std::string readFile(const std::string &path);

// Replaces or creates the file as a whole: writes beside it, makes sure that the bytes are on the disk, and renames. On
// failure throws MachineError with the system's reason; the old file, if any, is untouched and nothing is left behind.
void writeFileAtomically(const std::string &path, std::string_view bytes);

} // namespace velm

// Whole files in and out of memory.
#pragma once

#include <string>
#include <string_view>

namespace velm {

// The bytes of a file. Throws InputError, naming the file and the system's reason, when it cannot be read.
std::string readFile(const std::string &path);

// Replaces or creates the file as a whole: writes beside it, makes sure that the bytes are on the disk, and renames. On
// failure throws MachineError with the system's reason; the old file, if any, is untouched and nothing is left behind.
void writeFileAtomically(const std::string &path, std::string_view bytes);

} // namespace velm

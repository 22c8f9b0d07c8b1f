// Reads and writes whole files.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velm::host {

// Why a file cannot be read as a whole: "it is a directory", "it is a pipe", or the system's reason; nothing for a
// regular file that may be read. To be called before a library opens a file by a name that comes from another file: it
// may be the name of a device, which has no end, or of a pipe, on which opening blocks.
std::optional<std::string> whyUnreadable(const std::string &path);

// Why the file of that name cannot be replaced: "it is a device" and so on, or that links form a circle; nothing for a
// regular file, and where no file is visible under that name.
std::optional<std::string> whyIrreplaceable(const std::string &path);

// The bytes of a regular file. Throws InputError, naming the file and the reason, if it is not one or cannot be read.
std::string readFile(const std::string &path);

// Replaces or creates the file atomically: writes a temporary file beside it, syncs it to the disk, and renames it. A
// link is kept, and its target is replaced, with its permissions and, where the system allows that, its owner. On
// failure, and for a device, a pipe or a file that this process may not write to, throws MachineError with the reason;
// the old file, if any, is unchanged and no temporary file is left.
void writeFileAtomically(const std::string &path, std::string_view bytes);

// Tries beforehand whether writeFileAtomically can create the file. Throws as it does; leaves no file behind.
void tryToWrite(const std::string &path);

} // namespace velm::host

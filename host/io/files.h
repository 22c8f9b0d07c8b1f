// Whole files in and out of memory.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velm::host {

// What speaks against reading the file whole: "it is a directory", "it is a pipe", or the system's reason; nothing when
// it is a regular file that may be read. Names in files from outside may be those of devices, which never end, and of
// pipes, which keep whoever opens them waiting: to be asked before a library opens a file by its name.
std::optional<std::string> whyUnreadable(const std::string &path);

// What speaks against a new file in the place of what stands there: "it is a device" and so on, or that links lead in a
// circle; nothing when a regular file stands there, or nothing that can be seen.
std::optional<std::string> whyIrreplaceable(const std::string &path);

// The bytes of a regular file. Throws InputError, naming the file and the reason, when it is none or cannot be read.
std::string readFile(const std::string &path);

// Replaces or creates the file as a whole: writes beside it, makes sure that the bytes are on the disk, and renames. A
// link stays, and the file that it leads to is replaced. On failure throws MachineError with the system's reason; the
// old file, if any, is untouched and nothing is left behind. A device or a pipe is no file, and a failure.
void writeFileAtomically(const std::string &path, std::string_view bytes);

// What can be told of that beforehand: tries that a file can be made in its place. Throws as above; leaves nothing.
void tryToWrite(const std::string &path);

} // namespace velm::host

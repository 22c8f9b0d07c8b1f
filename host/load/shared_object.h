// Checks a file before the system loader opens it: the loader gives poor messages, and may crash on a truncated file.
#pragma once

#include <string>

namespace velm::host {

// Throws InputError, naming the file, unless it is a whole shared object for the machine that this program runs on.
void checkSharedObject(const std::string &path);

} // namespace velm::host

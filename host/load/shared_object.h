// What a file is, before the system's loader is let at it: the loader says little, and may crash on a file that was cut
// short.
#pragma once

#include <string>

namespace velm::host {

// Throws InputError, naming the file, unless it is a whole shared object for the machine that this program runs on.
void checkSharedObject(const std::string &path);

} // namespace velm::host

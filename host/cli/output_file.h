// Making sure, before the work, that its result can be kept.
#pragma once

#include <string>

namespace velm {

// Creates the directories that a picture's file needs and tries that a file can be made there. UsageError for an
// ending that names no picture format and for a name that is a directory's; MachineError, with the system's reason,
// when nothing can be written there. Leaves no file behind.
void prepareOutput(const std::string &file);

} // namespace velm

// Making sure, before the work, that its result can be kept.
#pragma once

#include <string>

namespace velm::host {

// UsageError for an ending that names no picture format, and for a name under which something stands that is no file,
// such as a directory or a device.
void checkOutputName(const std::string &file);

// The same; creates the directories that a picture's file needs, and tries that the file can be made. MachineError,
// with the system's reason, when it cannot. Leaves no file behind.
void prepareOutput(const std::string &file);

// UsageError when `input`, which is read, is the same file as `output`, by whatever name.
void refuseToReplace(const std::string &output, const std::string &input);

} // namespace velm::host

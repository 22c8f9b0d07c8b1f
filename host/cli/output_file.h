// Checks, before the work starts, that its result can be written.
#pragma once

#include "host/scene/read_scene.h"

#include <span>
#include <string>

namespace velm::host {

// UsageError for an extension that is not one of a picture format, and where something other than a file has that name,
// such as a directory or a device.
void checkOutputName(const std::string &file);

// As checkOutputName; also creates the missing directories of the path, and tries whether the file can be created.
// MachineError, with the system's reason, when it cannot. Leaves no file behind.
void prepareOutput(const std::string &file);

// The same for a file with any extension.
void prepareFile(const std::string &file);

// UsageError when `output` is the same file as `input`, which is read, under whatever name.
void refuseToReplace(const std::string &output, const std::string &input);
// The same for each of these images that was found.
void refuseToReplaceImages(const std::string &output, std::span<const ImageDescription> images);

} // namespace velm::host

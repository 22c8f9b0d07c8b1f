// The "File Request 2" service. A request gets the file that was prepared for it, or else the one that the person
// chooses in a dialog.
#pragma once

#include "module/host.h"

#include <string>

namespace velm::host {

// The function that the lookup gives. Without a prepared file it asks Dialogs::chooseFile. The request's result is 1
// when there is a file, 0 when the person cancels or there is no dialog, and -1 when the file's name does not fit the
// request's buffers. Returns 0; for an unknown version of the request, returns 1 and leaves the request alone.
// [interface thread; not while rendering]
HostFileRequestFunc *fileRequest();

// Sets the file that the next request gets, without a dialog; an empty path for none. Only that request gets it.
// [interface thread; not while rendering]
void prepareFileChoice(std::string path);

} // namespace velm::host

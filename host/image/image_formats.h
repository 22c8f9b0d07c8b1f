// The formats of image files that are read.
#pragma once

#include "host/image/library/image_library.h"

#include <memory>
#include <string>

namespace velm::host {

// The names of the formats, in one line: "PNG, JPEG, ...".
std::string imageFormats();

// Opens an image by the reader of the format that its contents have, whatever the file is called; `file` may also name
// an image inside of a file (see embedded_images.h). Colours that the file does not multiply by alpha stay so. Throws
// InputError, which begins with "cannot read the image: ", for a file that cannot be opened, and for one of another
// format, with the list of formats. To be called in a process of its own: see readApart.
std::unique_ptr<ImageFile> openImage(const std::string &file);

// Opens the image library, if it is not open yet, and sets OpenImageIO up: without readers and writers from other
// files, which environment variables may name, and without threads of OpenEXR, which a process that is forked later
// could not use. To be called before any other use of OpenImageIO in this process, and before reading in other
// processes, which would each open it. Throws MachineError as imageLibrary does. [interface thread]
void setUpImageLibrary();

} // namespace velm::host

// The formats of image files that are read, and the only use of OpenImageIO's readers.
#pragma once

#include <OpenImageIO/imageio.h>

#include <memory>
#include <string>

namespace velm::host {

// The names of the formats, in one line: "PNG, JPEG, ...".
std::string imageFormats();

// Opens an image by the reader of the format that its contents have, whatever the file is called; `file` may also name
// an image inside of a file (see embedded_images.h). Colours that the file does not multiply by alpha stay so. Throws
// InputError, which begins with "cannot read the image: ", for a file that cannot be opened, and for one of another
// format, with the list of formats. To be called in a process of its own: see readApart.
std::unique_ptr<OIIO::ImageInput> openImage(const std::string &file);

// Sets OpenImageIO up: without readers and writers from other files, which environment variables may name, and without
// threads of OpenEXR, which a process that is forked later could not use. To be called before any other use of the
// library in this process. [interface thread]
void setUpImageLibrary();

// The index of the image's channel for alpha, or depth; -1 if it has none. Readers may give an index outside of the
// image, as OpenImageIO's for GIF does; it is ignored, and alpha is then looked for by its name.
int alphaChannelOf(const OIIO::ImageSpec &spec);
int depthChannelOf(const OIIO::ImageSpec &spec);

} // namespace velm::host

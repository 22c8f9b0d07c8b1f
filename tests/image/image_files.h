// Writes image files with given pixels.
#pragma once

#include "host/image/image_formats.h"

#include <OpenImageIO/imageio.h>

#include <cstdint>
#include <string>
#include <vector>

namespace velm::host::test {

inline OIIO::TypeDesc typeOf(std::uint8_t) { return OIIO::TypeDesc::UINT8; }
inline OIIO::TypeDesc typeOf(std::uint16_t) { return OIIO::TypeDesc::UINT16; }
inline OIIO::TypeDesc typeOf(float) { return OIIO::TypeDesc::FLOAT; }

// Writes the values unchanged; false if the file cannot be written. The last of two or four channels is alpha, by which
// the colours are not multiplied.
template <typename Value>
bool writeImageFile(const std::string &file, int width, int height, int channels, const std::vector<Value> &values) {
    setUpImageLibrary();
    const auto output = OIIO::ImageOutput::create(file);
    OIIO::ImageSpec spec(width, height, channels, typeOf(Value{}));
    spec.attribute("oiio:UnassociatedAlpha", 1);
    return output && output->open(file, spec) && output->write_image(typeOf(Value{}), values.data()) && output->close();
}

} // namespace velm::host::test

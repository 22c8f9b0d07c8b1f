// Image files made to measure.
#pragma once

#include <OpenImageIO/imageio.h>

#include <cstdint>
#include <string>
#include <vector>

namespace velm::host::test {

inline OIIO::TypeDesc typeOf(std::uint8_t) { return OIIO::TypeDesc::UINT8; }
inline OIIO::TypeDesc typeOf(std::uint16_t) { return OIIO::TypeDesc::UINT16; }
inline OIIO::TypeDesc typeOf(float) { return OIIO::TypeDesc::FLOAT; }

// Writes these numbers as they are; alpha, in files of two or four channels, is not multiplied in.
template <typename Value>
bool writeImageFile(const std::string &file, int width, int height, int channels, const std::vector<Value> &values) {
    const auto output = OIIO::ImageOutput::create(file);
    OIIO::ImageSpec spec(width, height, channels, typeOf(Value{}));
    spec.attribute("oiio:UnassociatedAlpha", 1);
    return output && output->open(file, spec) && output->write_image(typeOf(Value{}), values.data()) && output->close();
}

} // namespace velm::host::test

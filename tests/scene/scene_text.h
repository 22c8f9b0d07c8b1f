// Reading scene texts in tests.
#pragma once

#include "host/base/error.h"
#include "host/scene/read_scene.h"

#include <string>

namespace velm::host::test {

inline SceneDescription read(const std::string &text) { return readSceneText(text, "scene.json", {}); }

// The error message for a text; empty when it can be read.
inline std::string refusal(const std::string &text) {
    try {
        read(text);
    } catch (const InputError &error) {
        return error.what();
    }
    return {};
}

// An HDR image with a header for this size, such as "-Y 1 +X 1", and the data of one pixel of red light.
inline std::string redHdr(const std::string &size) {
    const std::string pixel = {'\x80', '\0', '\0', '\x81'};
    return "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n" + size + "\n" + pixel;
}

} // namespace velm::host::test

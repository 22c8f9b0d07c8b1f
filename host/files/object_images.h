// The images of object files: their clips.
#pragma once

#include "host/base/image_sequence.h"
#include "host/object/iff.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velm::host {

// An image that the object uses.
struct ObjectImage {
    std::uint32_t number = 0;
    std::string file;                        // on the machine that wrote the object; of a sequence, the pattern
    std::optional<ImageSequence> sequence{}; // nothing for an image of one file
    bool isNegative = false;                 // the object shows its negative
    bool isFiltered = false;                 // the object changes its brightness, contrast and so on
};

// The image of a chunk CLIP; nothing for clips of other kinds than stills and sequences. Throws InputError with the
// byte's offset for a chunk that is too short. [any thread]
std::optional<ObjectImage> readClip(const IffFile &file, const Chunk &clip);

} // namespace velm::host

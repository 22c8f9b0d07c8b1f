// The images of object files: their clips.
#pragma once

#include "host/base/image_filter.h"
#include "host/base/image_sequence.h"
#include "host/object/iff.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// An image that the object uses.
struct ObjectImage {
    std::uint32_t number = 0;
    std::string file;                        // on the machine that wrote the object; of a sequence, the pattern
    std::optional<ImageSequence> sequence{}; // nothing for an image of one file
    std::vector<ImageFilter> filters{};      // without those that change nothing
    bool hasPlugIn = false;                  // a plug-in changes the image
    bool hasEnvelope = false;                // an envelope drives a filter
    // The object may have several images of files of one name. They are numbered from 1; images that are equal have the
    // same number.
    int variant = 1;
};

// The images of an object's chunks CLIP, in their order. Clips of other kinds than stills, sequences and instances of
// these are left out. Throws InputError with the byte's offset for a chunk that is too short. [any thread]
std::vector<ObjectImage> readImages(const IffFile &file, const std::vector<Chunk> &chunks);

// The last part of a file's name on the machine that wrote an object; empty where the name ends with a separator.
std::string lastPart(std::string_view file);

} // namespace velm::host

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
    std::string file; // its path on the machine that wrote the object; for a sequence, the pattern
    std::optional<ImageSequence> sequence{}; // nothing for an image of one file
    std::vector<ImageFilter> filters{};      // without those that change nothing
    bool hasPlugIn = false;                  // a plug-in changes the image
    bool hasEnvelope = false;                // an envelope drives a filter
    // Different images of an object may have the same file name (see lastPart). They are numbered from 1; images that
    // are equal have the same number.
    int variant = 1;
};

// The images of an object's chunks CLIP, in their order. Clips of other kinds than stills, sequences and instances of
// these are left out. Throws InputError with the byte's offset for a chunk that is too short, and
// for names that take too much memory in total. [any thread]
std::vector<ObjectImage> readImages(const IffFile &file, const std::vector<Chunk> &chunks);

// The file name in a path of any system, without the directories; empty if the path ends with a separator.
std::string lastPart(std::string_view file);

} // namespace velm::host

// Pictures that were rendered in parts: reading them, and putting them together.
#pragma once

#include "host/image/picture.h"

#include <string>
#include <vector>

namespace velm::host {

// The digest in the headers of a picture file (see PictureMetadata); empty for files that have none, that are missing,
// or whose format has no place for it. [any thread]
std::string digestOfFile(const std::string &file);

// Samples of each pixel: first to end - 1, of `count`.
struct SamplesOfPart {
    int first = 0, end = 0, count = 0;
    bool operator==(const SamplesOfPart &) const = default;
};

// "0-3 of 16", as PictureMetadata has it.
std::string samplesText(const SamplesOfPart &samples);

// A part of a picture, as an EXR file has it.
struct PartFile {
    std::string file;
    Picture picture;
    PictureMetadata metadata;
    SamplesOfPart samples;
};

// InputError, naming the file, for one that is no EXR file of red, green, blue and alpha with the headers of a render.
// All other channels are layers.
PartFile readPart(const std::string &file);

// Pastes parts by tiles, and averages parts by samples with their numbers of samples as weights. Where there is one
// value for a pixel, it stays as it is, bit for bit. Layers are put together by the rules of their channels.
// InputError, naming the files or what is missing, where two parts overlap, where not all pixels have all their
// samples, and where the parts are of different pictures. `expected`: the number of parts; 0: any. There is at least
// one part.
PartFile mergeParts(std::vector<PartFile> parts, int expected = 0);

} // namespace velm::host

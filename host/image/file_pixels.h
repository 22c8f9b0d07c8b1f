// The numbers of an image file as they are in it: not converted to linear light, with all channels. For comparing
// files; nodes and scenes read images by readImage.
#pragma once

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <string>
#include <vector>

namespace velm::host {

struct FilePixels {
    const std::shared_ptr<void> memory = nullptr; // where the values of a file are; see readApart
    int width = 0, height = 0;
    int left = 0, top = 0; // the origin of the pixels in the coordinates of the file; 0 in most formats
    // Whether the values are linear light: those of float files, except pictures of the classic workflow. All others
    // are display values; integers are mapped to 0..1.
    bool isLight = false;
    std::vector<std::string> channels;
    int alpha = -1, grey = -1;      // the indices of alpha, and of a channel for red, green and blue alike; -1: none
    std::pmr::vector<float> values; // interleaved channels, pixel by pixel, rows from the top

    // The index of the channel with that name, or -1.
    int find(const std::string &name) const;
    const float *pixel(int x, int y) const {
        const std::size_t index =
            static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
        return values.data() + index * channels.size();
    }
};

// Reads an image in a process of its own, as readImage does; the first picture of files that hold several. Throws
// InputError with the file's name when it is missing, broken, empty, deep, of another format, or exceeds a limit.
// [interface thread]
FilePixels readFilePixels(const std::string &file);

} // namespace velm::host

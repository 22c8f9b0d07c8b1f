// An image file's numbers as they stand in it: nothing made linear, nothing left out. For whoever compares files;
// nodes and scenes read images with readImage.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace velm::host {

struct FilePixels {
    int width = 0, height = 0;
    int left = 0, top = 0; // where the pixels begin in the file's own coordinates; 0 in most formats
    bool isLight = false;  // float numbers, which are light; else integers, meant for screens, as 0 to 1
    std::vector<std::string> channels;
    int alpha = -1, grey = -1; // which channel is alpha, and which stands for red, green and blue alike; -1: none
    std::vector<float> values; // a number for each channel, pixel by pixel, rows from the top

    // Which channel has that name, or -1.
    int find(const std::string &name) const;
    const float *pixel(int x, int y) const {
        const std::size_t index =
            static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
        return values.data() + index * channels.size();
    }
};

// Reads any format that OpenImageIO knows; the first picture of files that hold several. Throws InputError with the
// file's name when it is missing, broken, empty, deep, or needs more than 4 GiB.
FilePixels readFilePixels(const std::string &file);

} // namespace velm::host

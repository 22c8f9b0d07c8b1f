// Sequences of image files that show an animation: one file for each frame, with a number in its name.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velm::host {

// Which file of a sequence a frame shows.
struct ImageSequence {
    int first = 1, last = 1; // the smallest and the largest number in the names of the files
    int offset = 0;          // is added to the number of the frame
    bool loop = false;       // whether the sequence is repeated; else the file with the nearest number is shown

    // The number of the file for a frame: first to last. [any thread]
    int numberAt(int frame) const;

    bool has(int number) const { return first <= number && number <= last; }

    bool operator==(const ImageSequence &) const = default;
};

// The names of the files of a sequence have a pattern such as "fire/flame_####.png". The last run of "#" is where the
// number is, with zeros before it to have at least as many characters. [any thread]

// Whether the file name of the pattern has a place for the number.
bool isSequencePattern(std::string_view pattern);

// The name of the file with that number: "fire/flame_0012.png". The pattern has a place for it.
std::string numberedFile(std::string_view pattern, int number);

// The number for which the pattern gives that name; nothing for other names.
std::optional<int> numberOfFile(std::string_view pattern, std::string_view file);

} // namespace velm::host

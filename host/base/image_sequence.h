// Sequences of image files that show an animation: one file for each frame, with a number in its name.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velm::host {

// Which file of a sequence a frame shows.
struct ImageSequence {
    int first = 1, last = 1; // the smallest and the largest number in the names of the files
    int offset = 0;          // added to the number of the frame
    bool loop = false;       // whether the sequence repeats; if not, its first or last file is shown outside of it

    // The number of the file for a frame: first to last. [any thread]
    int numberAt(int frame) const;

    // Whether the sequence has a file with that number.
    bool has(int number) const { return first <= number && number <= last; }

    bool operator==(const ImageSequence &) const = default;
};

// A pattern such as "fire/flame_####.png" describes the file names of a sequence. The number of the file replaces the
// last run of "#", padded with zeros to the length of the run. [any thread]

// Whether there is a "#" in the last part of the path.
bool isSequencePattern(std::string_view pattern);

// The name of the file with that number: "fire/flame_0012.png". `pattern` must be a sequence pattern.
std::string numberedFile(std::string_view pattern, int number);

// The number that makes the pattern that name; nothing for names that do not fit the pattern.
std::optional<int> numberOfFile(std::string_view pattern, std::string_view file);

} // namespace velm::host

// The lines of OBJ files, and of the files of materials that they name.
#pragma once

#include "host/render/geometry/mesh_words.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace velm::host {

// The text without the blanks at both ends. [any thread]
inline std::string_view withoutBlanks(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

// Takes the next word off a line; empty at the end of the line, or where a comment begins. [any thread]
inline std::string_view takeObjWord(std::string_view &line) {
    const std::string_view word = takeWord(line);
    return word.starts_with('#') ? std::string_view() : word;
}

// Iterates over the lines of a text. A line that ends with a backslash continues on the next one, unless it is a
// comment.
class ObjLines {
  public:
    // `text` begins with a line, which `before` lines precede in the file. It has to outlive this object.
    explicit ObjLines(std::string_view text, std::size_t before = 0) : rest_(text), read_(before) {}

    // Goes to the next line. Returns false at the end of the text.
    bool next() {
        if (rest_.empty()) return false;
        line_ = takeLine(rest_);
        number_ = ++read_;
        if (line_.ends_with('\\') && !withoutBlanks(line_).starts_with('#')) join();
        return true;
    }

    // The line, joined with its continuation lines, without its end. Valid until the next call of next.
    std::string_view line() const { return line_; }
    // The number of the line in the file, counted from 1; of joined lines, that of the first.
    std::size_t number() const { return number_; }
    // The number of lines of the file up to here.
    std::size_t linesRead() const { return read_; }

  private:
    void join() {
        joined_.assign(line_);
        while (joined_.ends_with('\\')) {
            joined_.back() = ' ';
            if (rest_.empty()) break;
            joined_ += takeLine(rest_);
            ++read_;
        }
        line_ = joined_;
    }

    std::string_view rest_, line_;
    std::string joined_;
    std::size_t read_, number_ = 0;
};

} // namespace velm::host

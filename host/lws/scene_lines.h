// The text of LightWave's scene files, line by line: "LWSC", the version, then lines with a keyword, and blocks in
// braces.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velm::host::lws {

// The words of a line, from left to right. A word ends at a blank. A function that cannot read the next word as its
// type returns nothing and does not advance.
class Words {
  public:
    explicit Words(std::string_view text) : rest_(text) {}

    std::optional<std::string_view> word();
    std::optional<double> number(); // at most 1e30 in size; with "." whatever the locale is
    std::optional<int> integer();
    std::optional<std::uint32_t> hex(); // of exactly eight digits
    // All that is left, without the blanks around it. Names and paths reach to the end of their line.
    std::string_view rest() const;

  private:
    std::string_view nextWord(std::string_view &after) const;

    std::string_view rest_;
};

struct Line {
    std::string_view text; // without its end and the blanks around it; not empty
    int number = 0;        // counted from 1

    bool opensBlock() const { return text.starts_with('{'); }
    bool closesBlock() const { return text.starts_with('}'); }
};

// Goes over the lines of a file. Empty lines and comments are left out.
class Lines {
  public:
    // Reads the two lines at the head. `bytes` stay the caller's; `file` is for errors. InputError for a file that does
    // not start with "LWSC" and a version of 1 or more.
    Lines(std::string_view bytes, std::string file);

    int version() const { return version_; }
    const std::string &file() const { return file_; }

    std::optional<Line> next(); // nothing at the end of the file
    std::optional<Line> peek() const;
    // Skips the rest of a block whose first line has just been read, with its nested blocks. InputError when it is not
    // closed.
    void skipBlock(const Line &opening);
    // The next line of the block that begins with `opening`; nothing at the end of the block, after reading its "}".
    // Nested blocks are skipped. InputError when the block is not closed.
    std::optional<Line> nextInBlock(const Line &opening);
    // Skips to the line that ends a "Plugin" whose first line has just been read. InputError when there is none.
    void skipPlugin(const Line &opening);

    // Throws InputError with the file and that line.
    [[noreturn]] void fail(int line, const std::string &what) const;
    // The same with the last line that was read, for a file that ends too early.
    [[noreturn]] void failAtEnd(const std::string &what) const;

  private:
    std::optional<Line> lineAt(std::size_t &at, int &number) const;

    std::string_view bytes_;
    std::string file_;
    std::size_t at_ = 0; // of the next line
    int number_ = 1;     // of the next line
    int version_ = 0;
};

} // namespace velm::host::lws

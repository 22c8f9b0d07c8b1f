// What goes wrong in the stand-alone host, by who has to act on it. The command line turns each into its exit status.
#pragma once

#include "host/base/one_line.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace velm::host {

// Where in the user's files something is. A line of 0 means the file as a whole; an empty file, an unknown location.
struct SourceLocation {
    std::string file;
    int line = 0;

    bool operator==(const SourceLocation &) const = default;

    // "scene.json:12", "scene.json" or "".
    std::string text() const { return line > 0 && !file.empty() ? file + ":" + std::to_string(line) : file; }
};

// what() of each of these errors is one line, whatever characters the names and texts that it quotes contain.

// The input is wrong: a scene, a module, an image, a name in them. The message says what was found and what was
// expected. what() is that message after the location, where one is known. Exit status 1.
class InputError : public std::runtime_error {
  public:
    explicit InputError(const std::string &message) : InputError(SourceLocation{}, message) {}
    InputError(const SourceLocation &location, const std::string &message, std::string path = {})
        : std::runtime_error(onOneLine(location.file.empty() ? message : location.text() + ": " + message)),
          location_(location), path_(std::move(path)), message_(onOneLine(message)) {}

    const SourceLocation &location() const { return location_; }
    // The path to what is wrong inside that file, such as "surfaces.Chrome.nodes.Mirror.settings.Image"; may be empty.
    const std::string &path() const { return path_; }
    // what() without the location.
    const std::string &message() const { return message_; }

  private:
    SourceLocation location_;
    std::string path_, message_;
};

// The machine failed: disk full, no memory, a file that cannot be written. Exit status 3.
class MachineError : public std::runtime_error {
  public:
    explicit MachineError(const std::string &message) : std::runtime_error(onOneLine(message)) {}
};

// A module crashed, hung, threw or ended the process. The message names its file, its server and the call. Exit
// status 3.
class ModuleError : public std::runtime_error {
  public:
    explicit ModuleError(const std::string &message) : std::runtime_error(onOneLine(message)) {}
};

} // namespace velm::host

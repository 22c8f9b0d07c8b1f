// Checks PLY files before assimp reads them: it never returns from a header without an end.
#include "host/render/geometry/mesh_formats.h"

#include "host/base/error.h"

#include <cstdint>
#include <fmt/format.h>
#include <fstream>
#include <sstream>
#include <string>

namespace velm::host {
namespace {

// A text file line by line, with any line ends.
class Lines {
  public:
    explicit Lines(const std::string &file) : stream_(file, std::ios::binary) {}

    // The next line, or false at the end.
    bool next(std::string &line) {
        if (!std::getline(stream_, line)) return false;
        if (line.ends_with('\r')) line.pop_back();
        return true;
    }

  private:
    std::ifstream stream_;
};

} // namespace

// A PLY file begins with a header of text lines up to "end_header". In the text form, one line for each vertex and
// polygon follows; for missing lines assimp repeats the last one.
void requireWholePly(const std::string &file) {
    const auto fail = [&file](const std::string &why) {
        throw InputError({.file = file}, "cannot read the mesh: " + why);
    };
    Lines lines(file);
    std::string line;
    bool isText = false;
    std::uint64_t expected = 0, found = 0;
    do {
        if (!lines.next(line)) fail("its header does not end; a line \"end_header\" is expected");
        std::istringstream words(line); // such as "format ascii 1.0" and "element vertex 3"
        std::string keyword, name;
        std::uint64_t count = 0;
        words >> keyword >> name >> count;
        if (keyword == "format") isText = name == "ascii";
        if (keyword == "element") expected += count;
    } while (line != "end_header");
    if (!isText) return;
    while (found < expected && lines.next(line))
        if (line.find_first_not_of(" \t") != std::string::npos) ++found;
    if (found < expected)
        fail(fmt::format("it ends too early: of {} lines after its header, {} are there", expected, found));
}

} // namespace velm::host

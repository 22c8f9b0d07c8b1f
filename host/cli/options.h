// What the command line asks for, one record for each command.
#pragma once

#include "host/check/check.h"
#include "host/guard/guarded.h"
#include "host/image/compare.h"
#include "host/render/renderer.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace velm::host {

struct NodesOptions {
    bool all = false; // the host's own nodes too
};

struct ShowOptions {
    std::string node; // server name or display name
};

struct FrameRange {
    int first = 1, last = 1;
};

struct PictureSize {
    int width = 0, height = 0;
};

// What is not given here goes by the scene.
struct RenderOptions {
    std::string scene;
    std::string output; // empty: the scene's name with .png, in the current directory
    std::optional<FrameRange> frames;
    std::optional<PictureSize> size;
    std::optional<Region> region;
    int samples = 0; // 0: the scene's
    int threads = 0; // 0: the machine's cores
    std::vector<std::string> data;
    bool strict = false; // warnings are errors
    bool quiet = false;
    bool stats = false;
};

struct CompareOptions {
    std::string first, second;
    CompareLimits limits;
    std::string differences; // a picture file for them; empty: none
};

struct PackOptions {
    std::string scene, object;
    std::string output; // empty: the object's name with "_packed", in the current directory
    std::vector<std::string> data;
    bool strict = false; // warnings are errors
};

struct UnpackOptions {
    std::string object;
    std::string output; // empty: standard output
    std::vector<std::string> data;
    bool strict = false;
};

struct CheckCommandOptions {
    CheckOptions run;        // but for the module
    bool reproduce = false;  // one check, in this process
    std::string json, junit; // files for the results; empty: none
};

struct Options {
    std::string module; // the file to load
    GuardOptions guard; // of the commands that load it to work with it
    std::variant<NodesOptions, ShowOptions, RenderOptions, CompareOptions, PackOptions, UnpackOptions,
                 CheckCommandOptions>
        command;
    std::string commandLine; // as given, for the headers of pictures
};

// The texts of single options; UsageError says what is wrong with them. Exposed for tests.
FrameRange parseFrames(const std::string &text); // "7" or "1-24"
PictureSize parseSize(const std::string &text);  // "960x540"
Region parseRegion(const std::string &text);     // "0,0,320,200"

// Reads the command line; or does what --help and --version ask for on `out` and gives nothing. UsageError when it is
// wrong.
std::optional<Options> parseOptions(int argc, const char *const *argv, std::ostream &out);

} // namespace velm::host

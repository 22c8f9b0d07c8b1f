// Options of the commands that write pictures: how these are stored in their files.
#pragma once

#include "host/image/picture.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace velm::host {

struct PictureFileOptions {
    std::optional<NumberFormat> bits;       // the format's default if not given, as for the compression
    std::optional<std::string> compression; // in lower case
    bool tiled = false;
    std::optional<double> exposure; // stops; 0 if not given
    std::optional<ViewTransform::Curve> viewTransform;
};

// Binds --bits, --compression, --tiled, --exposure and --view-transform to `options`.
void declarePictureFileOptions(CLI::App &command, PictureFileOptions &options);

// UsageError, naming the option and what there is, for a setting that the format of `file` does not have. The file's
// extension is one of a picture format.
FileSettings fileSettings(const PictureFileOptions &options, const std::string &file);

// UsageError for a view transform of a picture of display values, which has none.
void checkWorkflow(const PictureFileOptions &options, Workflow workflow);

// A text for digests; empty if no option is given.
std::string digestText(const PictureFileOptions &options);

} // namespace velm::host

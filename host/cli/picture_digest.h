// The digest of all that a picture is rendered from.
#pragma once

#include "host/cli/render_options.h"
#include "host/io/digest.h"
#include "host/render/scene/render_job.h"
#include "host/scene/format/description.h"

#include <optional>
#include <string>
#include <vector>

namespace velm::host {

// Only pictures whose format has room for a digest have one. For others, no file is read.
//
// The digest covers the scene as it was opened, the contents of the files that it names, the module's file, the options
// that change its values, and the job. It does not depend on what leaves the picture unchanged: the names and locations
// of files, the number of workers, and which part of the picture is rendered.
class PictureDigest {
  public:
    // `file` is the name of any of the pictures.
    PictureDigest(const std::string &file, const SceneDescription &scene, const RenderOptions &options,
                  const RenderJob &job, const std::string &module);
    // The digest of a frame's picture: 32 hexadecimal digits; empty if the format has no room for it.
    std::string of(int frame) const;

  private:
    std::optional<Digest> digest_;            // of what all frames have in common
    std::vector<ImageDescription> sequences_; // the images whose file depends on the frame
};

} // namespace velm::host

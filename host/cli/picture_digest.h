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

// For pictures whose format has room for a digest. For others there is none, and no file is read for it.
//
// Of the scene as it was opened, with the contents of the files that it names, the module's file, the options that
// change its values, and the job. Not of what does not change a picture: the names and places of files, the number of
// workers, and which part of the picture is rendered.
class PictureDigest {
  public:
    // `file`: the name of any of the pictures.
    PictureDigest(const std::string &file, const SceneDescription &scene, const RenderOptions &options,
                  const RenderJob &job, const std::string &module);
    // Of the picture of a frame: 32 hexadecimal digits; empty where there is none.
    std::string of(int frame) const;

  private:
    std::optional<Digest> digest_;            // of what all frames have in common
    std::vector<ImageDescription> sequences_; // of which each frame shows another file
};

} // namespace velm::host

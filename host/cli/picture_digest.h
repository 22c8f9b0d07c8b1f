// The digest of all that a picture is rendered from.
#pragma once

#include "host/cli/render_options.h"
#include "host/io/digest.h"
#include "host/render/scene/render_job.h"
#include "host/scene/format/description.h"

#include <string>

namespace velm::host {

// Of the scene as it was opened, with the contents of the files that it names, the module's file, the options that
// change its values, and the job. Not of what does not change a picture: the names and places of files, the number of
// workers, and which part of the picture is rendered.
class PictureDigest {
  public:
    PictureDigest(const SceneDescription &scene, const RenderOptions &options, const RenderJob &job,
                  const std::string &module);
    // Of the picture of a frame: 32 hexadecimal digits.
    std::string of(int frame) const;

  private:
    Digest digest_;
};

} // namespace velm::host

// How the colours of a scene relate to the values in image files.
#pragma once

namespace velm::host {

enum class Workflow {
    linear, // colours are linear light; the sRGB curve is applied to files of 8 and 16 bits
    classic // colours are display values, as in LightWave up to version 9; no curve is applied to files
};

// The names in scene files, options and the headers of pictures, indexed by Workflow.
inline constexpr const char *kWorkflowNames[] = {"linear", "classic"};

} // namespace velm::host

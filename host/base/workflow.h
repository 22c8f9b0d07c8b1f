// What the numbers of colours mean.
#pragma once

namespace velm::host {

enum class Workflow {
    linear, // linear light: the sRGB curve is between these numbers and those of files of 8 and 16 bits
    classic // display values, as in LightWave up to version 9: files of all kinds hold the same numbers
};

// As scene files, options and the headers of pictures have them, by Workflow.
inline constexpr const char *kWorkflowNames[] = {"linear", "classic"};

} // namespace velm::host

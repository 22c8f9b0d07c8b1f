// The help texts as they were when the program was built.
#pragma once

#include "host/base/embedded_text.h"

#include <span>

namespace velm::host {

// The files of docs/nodes, by name. The texts live as long as the program. [any thread]
std::span<const EmbeddedText> helpFiles();

} // namespace velm::host

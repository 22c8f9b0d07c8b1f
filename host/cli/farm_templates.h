// The job templates of packaging/farm, as they were when the program was built.
#pragma once

#include "host/base/embedded_text.h"

#include <span>

namespace velm::host {

// The texts live as long as the program. [any thread]
std::span<const EmbeddedText> farmTemplates();

} // namespace velm::host

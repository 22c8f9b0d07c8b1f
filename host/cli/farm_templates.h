// The job templates of packaging/farm, as they were when the program was built.
#pragma once

#include <span>
#include <string_view>

namespace velm::host {

struct FarmTemplate {
    std::string_view name; // "velm-frames.sbatch"
    std::string_view text;
};

// The texts live as long as the program. [any thread]
std::span<const FarmTemplate> farmTemplates();

} // namespace velm::host

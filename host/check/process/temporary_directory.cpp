#include "host/check/process/temporary_directory.h"

#include <cstdlib>
#include <string>

namespace velm::host {

namespace fs = std::filesystem;

TemporaryDirectory::TemporaryDirectory() {
    std::error_code error;
    std::string name = (fs::temp_directory_path(error) / "velm-check-XXXXXX").string();
    if (!error && mkdtemp(name.data())) path_ = name;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored; // a directory left behind does no harm
    if (!path_.empty()) fs::remove_all(path_, ignored);
}

} // namespace velm::host

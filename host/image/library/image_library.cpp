#include "host/image/library/image_library.h"

#include "host/base/error.h"

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <fmt/format.h>
#include <system_error>

namespace velm::host {
namespace {

// The path of the program itself, also where it was started by a symbolic link.
std::filesystem::path programFile() {
    std::error_code error;
    std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) throw MachineError(fmt::format("cannot find the program's own directory: {}", error.message()));
    return program;
}

const ImageLibrary &openLibrary() {
    const std::string file = programFile().replace_filename(kImageLibraryFile).string();
    const auto fail = [](const std::string &why) {
        throw MachineError(
            fmt::format("cannot open velm's image library, which has to be in the directory of the program: {}", why));
    };
    // Never closed: its objects are in use until the process ends. Its functions are bound when they are first called,
    // which leaves out most of those of the libraries that it needs.
    void *const library = dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (!library) fail(dlerror());
    const auto function = reinterpret_cast<ImageLibraryFunction *>(dlsym(library, kImageLibraryFunction));
    const ImageLibrary *const opened = function ? function(kImageLibraryVersion) : nullptr;
    if (!opened) fail(fmt::format("{} belongs to another version of velm", file));
    return *opened;
}

} // namespace

int ImageHeader::find(const std::string &name) const {
    const auto found = std::find(channels.begin(), channels.end(), name);
    return found == channels.end() ? -1 : static_cast<int>(found - channels.begin());
}

const ImageLibrary &imageLibrary() {
    static const ImageLibrary &library = openLibrary();
    return library;
}

} // namespace velm::host

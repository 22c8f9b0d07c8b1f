#include "host/cli/output_file.h"

#include "host/cli/run.h"
#include "host/error.h"
#include "host/image/picture.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <unistd.h>

namespace velm {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void failToWrite(const std::string &what, const std::string &reason) {
    throw MachineError(fmt::format("cannot write {}: {}", what, reason));
}

// Root may write where nobody else may, and full disks show only when used: so a file is really made.
void tryDirectory(const fs::path &directory) {
    std::string probe = (directory / ".velm-XXXXXX").string();
    const int descriptor = mkstemp(probe.data());
    if (descriptor < 0) failToWrite("in " + directory.string(), std::strerror(errno));
    close(descriptor);
    unlink(probe.c_str());
}

} // namespace

void prepareOutput(const std::string &file) {
    try {
        checkPictureEnding(file);
    } catch (const InputError &error) {
        throw UsageError(error.what());
    }
    std::error_code error;
    if (fs::is_directory(file, error)) throw UsageError(fmt::format("\"{}\" is a directory", file));
    fs::path directory = fs::path(file).parent_path();
    if (directory.empty()) directory = ".";
    fs::create_directories(directory, error);
    if (error) failToWrite(file, error.message());
    tryDirectory(directory);
}

} // namespace velm

#include "host/cli/output_file.h"

#include "host/base/error.h"
#include "host/cli/run.h"
#include "host/image/picture.h"
#include "host/io/files.h"

#include <filesystem>
#include <fmt/format.h>

namespace velm::host {

void checkOutputName(const std::string &file) {
    try {
        checkPictureEnding(file);
    } catch (const InputError &error) {
        throw UsageError(error.what());
    }
    if (const auto reason = whyIrreplaceable(file))
        throw UsageError(fmt::format("cannot write \"{}\": {}", file, *reason));
}

void prepareOutput(const std::string &file) {
    checkOutputName(file);
    prepareFile(file);
}

void prepareFile(const std::string &file) {
    if (const auto reason = whyIrreplaceable(file))
        throw UsageError(fmt::format("cannot write \"{}\": {}", file, *reason));
    std::error_code error;
    const std::filesystem::path directory = std::filesystem::path(file).parent_path();
    if (!directory.empty()) std::filesystem::create_directories(directory, error);
    if (error) throw MachineError(fmt::format("cannot write \"{}\": {}", file, error.message()));
    tryToWrite(file);
}

void refuseToReplace(const std::string &output, const std::string &input) {
    std::error_code error; // for a file that does not exist
    if (std::filesystem::equivalent(output, input, error))
        throw UsageError(fmt::format("cannot write \"{}\": it is read, as \"{}\"", output, input));
}

void refuseToReplaceImages(const std::string &output, std::span<const ImageDescription> images) {
    for (const ImageDescription &image : images) {
        if (!image.notFound.empty()) continue;
        if (!image.sequence) {
            refuseToReplace(output, image.file);
            continue;
        }
        // Of a sequence, only the file that has the output's name is compared with the output.
        const std::filesystem::path pattern(image.file), name = std::filesystem::path(output).filename();
        const auto number = numberOfFile(pattern.filename().string(), name.string());
        if (number && image.sequence->has(*number)) refuseToReplace(output, (pattern.parent_path() / name).string());
    }
}

} // namespace velm::host

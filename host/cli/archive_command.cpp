// "velm archive": a scene and all that it reads, in one directory.
#include "host/base/error.h"
#include "host/cli/commands.h"
#include "host/cli/option_types.h"
#include "host/cli/scene_archive.h"
#include "host/guard/blocked_signals.h"
#include "host/io/files.h"
#include "host/open/open_file.h"
#include "host/scene/format/write_scene.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <ostream>
#include <sys/stat.h>
#include <unistd.h>

namespace velm::host {

namespace {

namespace fs = std::filesystem;

constexpr const char *kSceneName = "scene.json";

struct ArchiveOptions : SceneSource {
    std::string directory;
    bool strict = false;
};

void declareOptions(CLI::App &command, ProgramOptions &program, ArchiveOptions &options) {
    addSceneSource(command, options);
    command.add_option("DIR", options.directory, "The directory that is made: it must not exist, or be empty")
        ->required()
        ->type_name("");
    addReadLimits(command, program.reading);
    command.add_flag("--strict", options.strict, "Treat missing images as errors: nothing is written then");
}

[[noreturn]] void fail(const std::string &directory, const std::string &why) {
    throw MachineError(fmt::format("cannot write the directory \"{}\": {}", directory, why));
}

// A directory beside the one that is to be made. It is removed unless it was renamed.
class UnfinishedDirectory {
  public:
    explicit UnfinishedDirectory(const fs::path &end) : end_(end), name_(end.string() + ".XXXXXX") {
        std::error_code error;
        if (end_.has_parent_path()) fs::create_directories(end_.parent_path(), error);
        if (error) fail(end_, error.message());
        if (!::mkdtemp(name_.data())) {
            const std::string why = std::strerror(errno);
            name_.clear();
            fail(end_, why);
        }
    }
    ~UnfinishedDirectory() {
        std::error_code ignored; // an error is on its way already
        if (!name_.empty()) fs::remove_all(name_, ignored);
    }
    UnfinishedDirectory(const UnfinishedDirectory &) = delete;
    UnfinishedDirectory &operator=(const UnfinishedDirectory &) = delete;

    const std::string &name() const { return name_; }

    // Brings everything to the disk and gives the directory its name.
    void finish() {
        const int opened = ::open(name_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        const bool isSynced = opened >= 0 && ::syncfs(opened) == 0;
        const std::string why = std::strerror(errno);
        if (opened >= 0) ::close(opened);
        if (!isSynced) fail(end_, why);
        constexpr mode_t kAll = 0777;
        const mode_t mask = ::umask(0);
        ::umask(mask);
        if (::chmod(name_.c_str(), kAll & ~mask) != 0 || ::rename(name_.c_str(), end_.c_str()) != 0)
            fail(end_, std::strerror(errno));
        name_.clear();
    }

  private:
    fs::path end_;
    std::string name_;
};

// The directory without slashes at its end. UsageError if there is something else of that name.
fs::path checkedDirectory(const std::string &directory) {
    fs::path path = fs::path(directory).lexically_normal();
    if (!path.has_filename()) path = path.parent_path();
    std::error_code error;
    if (path.empty() || (fs::exists(path, error) && !fs::is_directory(path, error)))
        throw UsageError(fmt::format("cannot write \"{}\": it is not a directory", directory));
    if (fs::exists(path, error) && !fs::is_empty(path, error))
        throw UsageError(fmt::format("cannot write \"{}\": the directory is not empty", directory));
    return path;
}

void copy(const std::string &from, const fs::path &to) {
    if (const auto reason = whyUnreadable(from)) throw InputError({.file = from}, "cannot read the file: " + *reason);
    std::error_code error;
    fs::create_directories(to.parent_path(), error);
    if (!error) fs::copy_file(from, to, error);
    if (error) throw MachineError(fmt::format("cannot copy \"{}\" to \"{}\": {}", from, to.string(), error.message()));
}

// The signal that is to end the program; 0: none has arrived.
int endingSignal(const BlockedSignals &signals) {
    while (const auto info = signals.next(0))
        if (info->si_signo != SIGCHLD) return info->si_signo;
    return 0;
}

// Writes the directory, or nothing if a signal arrives that is to end the program. Gives that signal, or 0.
int writeArchive(const SceneDescription &scene, const ArchiveLayout &layout, const fs::path &directory,
                 const BlockedSignals &signals) {
    UnfinishedDirectory unfinished(directory);
    for (const ArchiveLayout::Entry &entry : layout.entries()) {
        if (const int signal = endingSignal(signals)) return signal;
        copy(entry.from, fs::path(unfinished.name()) / entry.to);
    }
    const SceneDescription archived = archivedScene(scene, layout, unfinished.name());
    writeFileAtomically((fs::path(unfinished.name()) / kSceneName).string(), writeScene(archived, unfinished.name()));
    if (const int signal = endingSignal(signals)) return signal;
    unfinished.finish();
    return 0;
}

int run(const ProgramOptions &, const ArchiveOptions &options, std::ostream &out, std::ostream &err) {
    const fs::path directory = checkedDirectory(options.directory);
    Warnings warnings = printedWarnings(err, options.strict);
    MeshCache meshes;
    const SceneDescription scene = completeFile(
        openFile({.file = options.scene, .path = searchPath(options.data), .meshes = &meshes}), meshes, warnings);
    const ArchiveLayout layout(filesOfScene(scene, warnings), warnings);
    const BlockedSignals signals; // which would leave a part of the directory behind
    const int signal = writeArchive(scene, layout, directory, signals);
    if (signal == SIGINT) return kExitInterrupted;
    if (signal != 0) signals.dieOf(signal);
    out << (directory / kSceneName).string() << '\n';
    return kExitDone;
}

} // namespace

constinit const Command archiveCommand = makeCommand<ArchiveOptions, declareOptions, run>(
    {.name = "archive", .help = "Copy a scene and all that it reads into a directory", .needsModule = false});

} // namespace velm::host

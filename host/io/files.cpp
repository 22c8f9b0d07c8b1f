#include "host/io/files.h"

#include "host/base/error.h"
#include "host/guard/call_record.h"
#include "host/guard/process_settings.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <random>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace velm::host {

namespace {

// The kind of a file that cannot be read or replaced as a whole, such as a device; null for a regular file.
const char *otherKind(const struct stat &found) {
    switch (found.st_mode & S_IFMT) {
    case S_IFREG: return nullptr;
    case S_IFDIR: return "it is a directory";
    case S_IFIFO: return "it is a pipe";
    case S_IFSOCK: return "it is a socket";
    default: return "it is a device";
    }
}

// The target of a link, which need not exist yet: replacing the target keeps the link.
std::string behindLinks(const std::string &path) {
    constexpr int kMostLinks = 40; // the limit of the system
    std::filesystem::path end = path;
    std::error_code error;
    for (int links = 0; links < kMostLinks && std::filesystem::is_symlink(end, error); ++links)
        end = end.parent_path() / std::filesystem::read_symlink(end, error);
    return end.string();
}

[[noreturn]] void failToWrite(const std::string &path, const std::string &why) {
    throw MachineError("cannot write \"" + path + "\": " + why);
}

// A file descriptor that closes itself.
class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    Descriptor &operator=(Descriptor &&other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    int number() const { return number_; }
    bool close() { return ::close(std::exchange(number_, -1)) == 0; }

  private:
    int number_;
};

// Six random letters and digits, for the name of a new file.
std::string randomLetters() {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    std::random_device source;
    std::uniform_int_distribution<std::size_t> index(0, kLetters.size() - 1);
    std::string letters(6, ' ');
    for (char &letter : letters) letter = kLetters[index(source)];
    return letters;
}

// The new file beside the old one. The destructor removes it unless it was renamed.
class Beside {
  public:
    // If the file cannot be made, errno says why.
    explicit Beside(const std::string &path) {
        constexpr int kTries = 100;
        int file = -1;
        for (int i = 0; i < kTries && file < 0; ++i) {
            name_ = path + '.' + randomLetters();
            struct stat found {};
            if (::lstat(name_.c_str(), &found) == 0) continue;
            // Recorded before the file exists, so that the file is removed whenever a signal ends the process.
            unfinished_.emplace(name_);
            file = ::open(name_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
            if (file >= 0) break;
            unfinished_.reset();
            if (errno != EEXIST) break;
        }
        if (file < 0) name_.clear();
        file_ = Descriptor(file);
    }
    ~Beside() {
        if (!name_.empty()) ::unlink(name_.c_str());
    }
    Beside(const Beside &) = delete;
    Beside &operator=(const Beside &) = delete;

    Descriptor &file() { return file_; }
    bool rename(const std::string &path) {
        if (::rename(name_.c_str(), path.c_str()) != 0) return false;
        name_.clear();
        return true;
    }

  private:
    std::string name_;
    Descriptor file_{-1};
    std::optional<UnfinishedFile> unfinished_;
};

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

constexpr mode_t kPermissions = 0777; // without the bits that let a program run as the file's owner

// Gives the new file the owner and the permissions of the file that it replaces, or else those of a new file: a
// temporary file is readable by its owner only. The owner stays as far as the system allows that. False if it fails.
bool setAccess(int file, const std::string &replaced) {
    struct stat old {};
    if (::stat(replaced.c_str(), &old) != 0) {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        return ::fchmod(file, 0666 & ~mask) == 0;
    }
    static_cast<void>(::fchown(file, old.st_uid, old.st_gid) == 0);
    return ::fchmod(file, old.st_mode & kPermissions) == 0;
}

// Renaming needs no permission to write to the old file, so that it would be replaced even if it is write-protected.
void requirePermission(const std::string &path) {
    if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0 && errno != ENOENT)
        failToWrite(path, std::strerror(errno));
}

} // namespace

std::optional<std::string> whyUnreadable(const std::string &path) {
    struct stat found {};
    if (::stat(path.c_str(), &found) != 0) return std::strerror(errno);
    if (const char *kind = otherKind(found)) return kind;
    if (::faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) != 0) return std::strerror(errno);
    return std::nullopt;
}

std::optional<std::string> whyIrreplaceable(const std::string &path) {
    struct stat found {};
    if (::stat(path.c_str(), &found) != 0)
        return errno == ELOOP ? std::optional<std::string>(std::strerror(errno)) : std::nullopt;
    const char *kind = otherKind(found);
    return kind ? std::optional<std::string>(kind) : std::nullopt;
}

std::string readFile(const std::string &path) {
    const auto refusal = [&path](const char *why) { return InputError("cannot read \"" + path + "\": " + why); };
    const auto fail = [&]() { return refusal(std::strerror(errno)); };
    // Opening a pipe must not wait for a writer.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat opened {};
    if (file.number() < 0 || ::fstat(file.number(), &opened) != 0) throw fail();
    if (const char *kind = otherKind(opened)) throw refusal(kind);
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(std::max<off_t>(opened.st_size, 0)));
    std::vector<char> part(1 << 16);
    for (;;) {
        const ssize_t read = ::read(file.number(), part.data(), part.size());
        if (read < 0 && errno == EINTR) continue;
        if (read < 0) throw fail();
        if (read == 0) return bytes;
        bytes.append(part.data(), static_cast<std::size_t>(read));
    }
}

void tryToWrite(const std::string &path) {
    putBackSettings();
    if (const auto reason = whyIrreplaceable(path)) failToWrite(path, *reason);
    requirePermission(path);
    // Permissions do not bind root, and a full disk shows only on writing: so this really creates a file.
    if (Beside(behindLinks(path)).file().number() < 0) failToWrite(path, std::strerror(errno));
}

void writeFileAtomically(const std::string &path, std::string_view bytes) {
    putBackSettings(); // a module may have changed the working directory or the file mask while it was evaluated
    if (const auto reason = whyIrreplaceable(path)) failToWrite(path, *reason);
    requirePermission(path);
    const std::string place = behindLinks(path);
    Beside beside(place);
    const bool written = beside.file().number() >= 0 && writeAll(beside.file().number(), bytes) &&
                         setAccess(beside.file().number(), place) && ::fsync(beside.file().number()) == 0 &&
                         beside.file().close() && beside.rename(place);
    if (!written) failToWrite(path, std::strerror(errno));
}

} // namespace velm::host

#include "host/guard/process_settings.h"

#include "host/guard/crash_handler.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>

#if defined(__x86_64__) || defined(__i386__)
#include <xmmintrin.h>
#endif

namespace velm::host {

namespace {

KeptSettings *kept = nullptr;

int signalAt(std::size_t index) {
    constexpr std::array kKept = {SIGINT,  SIGQUIT, SIGTERM, SIGHUP, SIGCHLD, SIGPIPE, SIGXFSZ,
                                  SIGSEGV, SIGBUS,  SIGFPE,  SIGILL, SIGABRT, SIGTRAP};
    return index < kKept.size() ? kKept[index] : callSiteSignal();
}

// Compares what a program sets, since the rest of the record may be padding.
bool isSameAction(const struct sigaction &one, const struct sigaction &other) {
    return one.sa_sigaction == other.sa_sigaction && one.sa_flags == other.sa_flags;
}

// A copy of a descriptor with a high number, where a module that closes whatever may be open does not look; -1 if the
// descriptor is closed.
int copied(int descriptor) {
    constexpr int kHigh = 800, kLow = STDERR_FILENO + 1; // the high one may be beyond the process's limit
    const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, kHigh);
    return copy >= 0 ? copy : fcntl(descriptor, F_DUPFD_CLOEXEC, kLow);
}

// The copy alone.
int moved(int descriptor) {
    const int copy = copied(descriptor);
    if (descriptor >= 0) close(descriptor);
    return copy;
}

#if defined(__x86_64__) || defined(__i386__)
constexpr unsigned int kSimdStatus = 0x3F; // the bits that are no mode

unsigned int simdMode() { return _mm_getcsr() & ~kSimdStatus; }
unsigned short classicMode() {
    unsigned short mode = 0;
    __asm__ __volatile__("fnstcw %0" : "=m"(mode));
    return mode;
}
void setModes(unsigned int simd, unsigned short classic) {
    // An exception that has been flagged would trap as soon as its trap is on.
    __asm__ __volatile__("fnclex\n\tfldcw %0" : : "m"(classic));
    _mm_setcsr(simd);
}
#else
unsigned int simdMode() { return 0; }
unsigned short classicMode() { return 0; }
void setModes(unsigned int, unsigned short) {}
#endif

} // namespace

KeptSettings::KeptSettings()
    : directory_(noted(moved(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)))), streams_{noted(copied(STDIN_FILENO)),
                                                                                      noted(copied(STDOUT_FILENO)),
                                                                                      noted(copied(STDERR_FILENO))},
      simdMode_(simdMode()), classicMode_(classicMode()), fileMask_(umask(0)),
      locale_(std::setlocale(LC_ALL, nullptr)) {
    umask(fileMask_);
    noteSignals();
    kept = this;
}

KeptSettings::~KeptSettings() {
    kept = nullptr;
    if (directory_.descriptor >= 0) close(directory_.descriptor);
    for (const OpenFile &stream : streams_)
        if (stream.descriptor >= 0) close(stream.descriptor);
}

KeptSettings::OpenFile KeptSettings::noted(int descriptor) {
    OpenFile file{.descriptor = descriptor};
    struct stat found {};
    if (descriptor >= 0 && fstat(descriptor, &found) == 0) {
        file.device = found.st_dev;
        file.number = found.st_ino;
    }
    return file;
}

void KeptSettings::putBackFloatingPoint() const {
    if (simdMode() != simdMode_ || classicMode() != classicMode_) setModes(simdMode_, classicMode_);
}

void KeptSettings::putBackDirectory() const {
    struct stat here {};
    if (directory_.descriptor < 0 ||
        (stat(".", &here) == 0 && here.st_dev == directory_.device && here.st_ino == directory_.number))
        return;
    // It existed when it was opened. Where it cannot be entered any more, its files cannot be opened either.
    static_cast<void>(fchdir(directory_.descriptor) == 0);
}

// A stream that stayed closed would lose the host's messages, and the next file to be opened would get its descriptor:
// what is printed would then be written into that file.
void KeptSettings::putBackStreams() const {
    for (std::size_t i = 0; i < streams_.size(); ++i) {
        const OpenFile &file = streams_[i];
        const auto stream = static_cast<int>(i);
        struct stat now {};
        if (file.descriptor < 0 || (fstat(stream, &now) == 0 && now.st_dev == file.device && now.st_ino == file.number))
            continue;
        dup2(file.descriptor, stream);
    }
}

void KeptSettings::putBackOthers() const {
    for (std::size_t i = 0; i < signals_.size(); ++i) {
        struct sigaction now {};
        sigaction(signalAt(i), nullptr, &now);
        if (!isSameAction(now, signals_[i])) sigaction(signalAt(i), &signals_[i], nullptr);
    }
    umask(fileMask_);
    if (locale_ != std::setlocale(LC_ALL, nullptr)) std::setlocale(LC_ALL, locale_.c_str());
}

void KeptSettings::noteSignals() {
    for (std::size_t i = 0; i < signals_.size(); ++i) sigaction(signalAt(i), nullptr, &signals_[i]);
}

void putBackAfterCall() {
    if (!kept) return;
    kept->putBackFloatingPoint();
    kept->putBackDirectory();
    kept->putBackStreams();
}

void putBackSettings() {
    putBackAfterCall();
    if (kept) kept->putBackOthers();
}

void keepSignals() {
    if (kept) kept->noteSignals();
}

} // namespace velm::host

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
    : directory_(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)), simdMode_(simdMode()), classicMode_(classicMode()),
      fileMask_(umask(0)), locale_(std::setlocale(LC_ALL, nullptr)) {
    umask(fileMask_);
    struct stat here {};
    if (directory_ >= 0 && fstat(directory_, &here) == 0) {
        device_ = here.st_dev;
        number_ = here.st_ino;
    }
    noteSignals();
    kept = this;
}

KeptSettings::~KeptSettings() {
    kept = nullptr;
    if (directory_ >= 0) close(directory_);
}

void KeptSettings::putBackFloatingPoint() const {
    if (simdMode() != simdMode_ || classicMode() != classicMode_) setModes(simdMode_, classicMode_);
}

void KeptSettings::putBackDirectory() const {
    struct stat here {};
    if (directory_ < 0 || (stat(".", &here) == 0 && here.st_dev == device_ && here.st_ino == number_)) return;
    // It existed when it was opened. Where it cannot be entered any more, its files cannot be opened either.
    static_cast<void>(fchdir(directory_) == 0);
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
}

void putBackSettings() {
    putBackAfterCall();
    if (kept) kept->putBackOthers();
}

void keepSignals() {
    if (kept) kept->noteSignals();
}

} // namespace velm::host

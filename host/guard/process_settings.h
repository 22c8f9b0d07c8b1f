// What a module can change in the whole process: the host puts it back after the module's calls.
#pragma once

#include <array>
#include <csignal>
#include <cstddef>
#include <string>
#include <sys/types.h>

namespace velm::host {

// While it lives, this process keeps the settings that it has when the object is made. The working directory, the
// floating-point mode and the standard streams, which a module may close or redirect, are put back after each call of a
// module (see module_call.h); putBackSettings() also puts back the file mask, the locale, and the effects of signals:
// those that end the host, and those by which it sees crashes. Without such an object, nothing is put back, so that
// checks can see what a module changes. [interface thread; one at a time]
class KeptSettings {
  public:
    KeptSettings();
    ~KeptSettings();
    KeptSettings(const KeptSettings &) = delete;
    KeptSettings &operator=(const KeptSettings &) = delete;

    void putBackFloatingPoint() const;
    void putBackDirectory() const;
    void putBackStreams() const;
    void putBackOthers() const;
    void noteSignals();

  private:
    static constexpr std::size_t kSignals = 14, kStreams = 3;

    // An open file, which may have other descriptors, too.
    struct OpenFile {
        int descriptor; // owned; -1: there is none
        dev_t device = 0;
        ino_t number = 0;
    };
    static OpenFile noted(int descriptor);

    OpenFile directory_;
    std::array<OpenFile, kStreams> streams_; // copies of the descriptors 0, 1 and 2
    unsigned int simdMode_ = 0;
    unsigned short classicMode_ = 0;
    mode_t fileMask_ = 0;
    std::string locale_;
    std::array<struct sigaction, kSignals> signals_{};
};

// The three functions have no effect without a KeptSettings object. [interface thread]
void putBackAfterCall(); // the directory, the floating-point mode and the streams; costs four system calls
void putBackSettings();  // all settings
void keepSignals();      // from now on, the present effects of signals are kept: the host has changed them itself

} // namespace velm::host

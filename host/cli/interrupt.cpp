#include "host/cli/interrupt.h"

#include "host/guard/process_settings.h"

namespace velm::host {

namespace {

volatile std::sig_atomic_t noted = 0;

extern "C" void noteInterrupt(int) { noted = 1; }

} // namespace

InterruptGuard::InterruptGuard() {
    noted = 0;
    putBackSettings(); // the module may have changed the effect of SIGINT
    struct sigaction action {};
    action.sa_handler = noteInterrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND); // a second signal gets the default action
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, nullptr, &before_);
    if (before_.sa_handler != SIG_IGN) sigaction(SIGINT, &action, nullptr);
    keepSignals();
}

InterruptGuard::~InterruptGuard() {
    sigaction(SIGINT, &before_, nullptr);
    keepSignals();
}

bool InterruptGuard::interrupted() { return noted != 0; }

} // namespace velm::host

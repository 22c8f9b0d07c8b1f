#include "host/cli/interrupt.h"

namespace velm::host {

namespace {

volatile std::sig_atomic_t noted = 0;

extern "C" void noteInterrupt(int) { noted = 1; }

} // namespace

InterruptGuard::InterruptGuard() {
    noted = 0;
    struct sigaction action {};
    action.sa_handler = noteInterrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND); // a second signal gets the default action
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, &before_);
}

InterruptGuard::~InterruptGuard() { sigaction(SIGINT, &before_, nullptr); }

bool InterruptGuard::interrupted() { return noted != 0; }

} // namespace velm::host

// The program "velm".
#include "host/cli/run.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <iostream>

namespace {

// Gives the standard streams that are closed a descriptor, which cannot be used. Otherwise the first files that the
// program opens would get their numbers, and what is printed would be written into those files.
void occupyClosedStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0) open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

} // namespace

int main(int argc, char **argv) {
    occupyClosedStreams();
    std::signal(SIGXFSZ, SIG_IGN); // reaching the file size limit becomes a write error, like a full disk
    return velm::host::runGuarded(argc, argv, std::cout, std::cerr);
}

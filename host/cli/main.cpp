// The program "velm".
#include "host/cli/run.h"

#include <csignal>
#include <iostream>

int main(int argc, char **argv) {
    std::signal(SIGXFSZ, SIG_IGN); // reaching the file size limit becomes a write error, like a full disk
    return velm::host::runGuarded(argc, argv, std::cout, std::cerr);
}

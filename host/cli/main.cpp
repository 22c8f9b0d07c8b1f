// The program "velm".
#include "host/cli/run.h"

#include <csignal>
#include <iostream>

int main(int argc, char **argv) {
    std::signal(SIGXFSZ, SIG_IGN); // a file that may not grow is an error with a name, as a full disk is
    return velm::host::runGuarded(argc, argv, std::cout, std::cerr);
}

// The program "velm".
#include "host/cli/run.h"

#include <iostream>

int main(int argc, char **argv) { return velm::runGuarded(argc, argv, std::cout, std::cerr); }

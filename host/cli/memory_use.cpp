#include "host/cli/memory_use.h"

#include <algorithm>
#include <fstream>
#include <sys/resource.h>
#include <unistd.h>

namespace velm::host {

double memoryInUse() {
    constexpr double kMebibyte = 1024.0 * 1024.0;
    double all = 0, resident = 0; // in pages
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) / kMebibyte;
}

double peakMemory() {
    rusage own{}, readers{};
    getrusage(RUSAGE_SELF, &own);
    getrusage(RUSAGE_CHILDREN, &readers);
    return static_cast<double>(std::max(own.ru_maxrss, readers.ru_maxrss)) / 1024.0; // in KiB on Linux
}

} // namespace velm::host

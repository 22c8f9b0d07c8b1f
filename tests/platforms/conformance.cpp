// Checks a built module on the platform that it was built for, using only that platform's own libraries: loads it,
// reads its descriptor and server table, activates and creates every node, and saves, loads and evaluates it.
//
//     velm_conformance MODULE             prints the report
//     velm_conformance MODULE REFERENCE   compares the report with that of another platform
//
// Exit status: 0 if everything is right, 1 if something is wrong, 2 if the command line is wrong.
#include "tests/platforms/loaded_module.h"
#include "tests/platforms/report.h"

#include <cstdio>
#include <stdexcept>

namespace velm::plugin {
namespace {

#ifdef _WIN32
constexpr unsigned int kExpectedPlatform = kPlatformWindows;
#else
constexpr unsigned int kExpectedPlatform = kPlatformMacintosh; // used by all other builds
#endif

void require(bool holds, const std::string &what) {
    if (!holds) throw std::runtime_error(what);
}

void checkDescriptor(const HostModuleDescriptor &descriptor) {
    require(descriptor.syncWord == kModuleSyncWord, "the synchronisation word is wrong");
    require(descriptor.version == kModuleVersion, "the version of the descriptor is wrong");
    require(descriptor.platform == kExpectedPlatform, "the platform code is wrong");
    void *word = descriptor.startup();
    require(word == reinterpret_cast<void *>(4), "startup does not return 4");
    descriptor.shutdown(word);
}

void *nothing(const char *, int) { return nullptr; }

// An activation must refuse another version and a host without services, and leave the record, here null, alone.
void checkRefusals(const HostModuleDescriptor &descriptor) {
    for (const HostServer *row = descriptor.servers; row->className; ++row) {
        if (!row->activate) continue;
        const bool handler = row->className == std::string(HOST_CLASS_NODE_HANDLER);
        const int version = handler ? kNodeHandlerVersion : kNodeInterfaceVersion;
        require(row->activate(version + 1, nothing, nullptr, nullptr) == kActivateBadVersion,
                std::string(row->name) + " accepts another version");
        require(row->activate(version, nothing, nullptr, nullptr) == kActivateBadGlobal,
                std::string(row->name) + " accepts a host without services");
    }
}

Report checkedReport(const std::string &path) {
    const LoadedModule module(path);
    checkDescriptor(module.descriptor());
    checkRefusals(module.descriptor());
    WholeHost whole(module.descriptor());
    return reportOf(whole);
}

Report readReport(const std::string &path) {
    std::FILE *file = std::fopen(path.c_str(), "rb");
    require(file, "cannot read " + path);
    Report lines(1);
    for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) {
        if (c == '\n')
            lines.emplace_back();
        else if (c != '\r')
            lines.back() += static_cast<char>(c);
    }
    std::fclose(file);
    lines.pop_back(); // the empty text after the last line break
    return lines;
}

int compareWith(const Report &report, const std::string &path) {
    std::vector<std::string> faults;
    std::printf("%d-bit addresses, platform code %x\n", static_cast<int>(8 * sizeof(void *)), kExpectedPlatform);
    for (const Comparison &node : compare(report, readReport(path), faults))
        std::printf("%-32s %4d numbers, %3d differ, by %llu of %llu units in the last place\n", node.node.c_str(),
                    node.numbers, node.different, static_cast<unsigned long long>(node.worst),
                    static_cast<unsigned long long>(node.allowed));
    for (const Tolerance &row : tolerances())
        std::printf("%s, %llu units: %s\n", row.node, static_cast<unsigned long long>(row.units), row.because);
    for (const std::string &fault : faults) std::printf("%s\n", fault.c_str());
    return faults.empty() ? 0 : 1;
}

int run(int count, char **arguments) {
    if (count != 2 && count != 3) {
        std::fprintf(stderr, "usage: velm_conformance MODULE [REFERENCE]\n");
        return 2;
    }
    try {
        const Report report = checkedReport(arguments[1]);
        if (count == 3) return compareWith(report, arguments[2]);
        for (const std::string &line : report) std::printf("%s\n", line.c_str());
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "velm_conformance: %s\n", error.what());
        return 1;
    }
}

} // namespace
} // namespace velm::plugin

int main(int count, char **arguments) { return velm::plugin::run(count, arguments); }

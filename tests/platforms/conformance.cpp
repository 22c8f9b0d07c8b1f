// Tries out a built module on the platform it was built for, with nothing but that platform's own libraries: opens it,
// reads its descriptor and its table, activates and creates every node, saves it, loads it, evaluates it.
//
//     velm_conformance MODULE             prints the report
//     velm_conformance MODULE REFERENCE   compares the report with that of another platform
//
// Exit status: 0 when all is as it should be, 1 when it is not, 2 when the command line is wrong.
#include "tests/platforms/loaded_module.h"
#include "tests/platforms/report.h"

#include <cstdio>
#include <stdexcept>

namespace velm::plugin {
namespace {

#ifdef _WIN32
constexpr unsigned int kExpectedPlatform = kPlatformWindows;
#else
constexpr unsigned int kExpectedPlatform = kPlatformMacintosh; // every other build's
#endif

constexpr size_t kNodes = 17;

void require(bool holds, const std::string &what) {
    if (!holds) throw std::runtime_error(what);
}

void checkDescriptor(const HostModuleDescriptor &descriptor) {
    require(descriptor.syncWord == kModuleSyncWord, "the synchronisation word is wrong");
    require(descriptor.version == kModuleVersion, "the version of the descriptor is wrong");
    require(descriptor.platform == kExpectedPlatform, "the platform code is wrong");
    void *word = descriptor.startup();
    require(word == reinterpret_cast<void *>(4), "Startup gives another word than 4");
    descriptor.shutdown(word);
}

void *nothing(const char *, int) { return nullptr; }

// A host of another version, or one that lacks the services, is refused and its record left alone.
void checkRefusals(const HostModuleDescriptor &descriptor) {
    for (const HostServer *row = descriptor.servers; row->className; ++row) {
        if (!row->activate) continue;
        const bool handler = row->className == std::string(HOST_CLASS_NODE_HANDLER);
        const int version = handler ? kNodeHandlerVersion : kNodeInterfaceVersion;
        require(row->activate(version + 1, nothing, nullptr, nullptr) == kActivateBadVersion,
                std::string(row->name) + " takes another version");
        require(row->activate(version, nothing, nullptr, nullptr) == kActivateBadGlobal,
                std::string(row->name) + " does without services");
    }
}

Report tryOut(const std::string &path) {
    const LoadedModule module(path);
    checkDescriptor(module.descriptor());
    checkRefusals(module.descriptor());
    WholeHost whole(module.descriptor());
    require(whole.servers.size() == kNodes, "there are not seventeen nodes");
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
    lines.pop_back(); // after the last line's end
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
        const Report report = tryOut(arguments[1]);
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

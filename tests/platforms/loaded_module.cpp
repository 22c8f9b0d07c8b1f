#include "tests/platforms/loaded_module.h"

#include <stdexcept>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace velm::plugin {
namespace {

#ifdef _WIN32
std::string reason() { return "error " + std::to_string(GetLastError()); }

void *open(const std::string &path) {
    char full[MAX_PATH]; // the loader needs backslashes, and searches for a bare name in the system's directories
    if (GetFullPathNameA(path.c_str(), sizeof full, full, nullptr) == 0) return nullptr;
    return reinterpret_cast<void *>(LoadLibraryA(full));
}

const void *symbol(void *file) {
    return reinterpret_cast<const void *>(GetProcAddress(static_cast<HMODULE>(file), HOST_MODULE_SYMBOL));
}
#else
std::string reason() {
    const char *text = dlerror();
    return text ? text : "no reason given";
}

void *open(const std::string &path) { return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL); }
const void *symbol(void *file) { return dlsym(file, HOST_MODULE_SYMBOL); }
#endif

} // namespace

LoadedModule::LoadedModule(const std::string &path) {
    void *file = open(path);
    if (!file) throw std::runtime_error("cannot open " + path + ": " + reason());
    descriptor_ = static_cast<const HostModuleDescriptor *>(symbol(file));
    if (!descriptor_) throw std::runtime_error(path + " does not export " HOST_MODULE_SYMBOL ": " + reason());
}

} // namespace velm::plugin

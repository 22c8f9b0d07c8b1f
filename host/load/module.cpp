#include "host/load/module.h"
#include "host/base/hex.h"

#include "host/base/error.h"
#include "host/guard/crash_handler.h"
#include "host/guard/module_call.h"
#include "host/guard/process_settings.h"
#include "host/load/shared_object.h"

#include <dlfcn.h>

#include <cstdio>
#include <filesystem>
#include <utility>

namespace velm::host {

namespace {

constexpr const char *kLoading = "loading the module";

[[noreturn]] void fail(const std::string &path, const std::string &why) {
    throw InputError("cannot load the module " + path + ": " + why);
}

void checkDescriptor(const std::string &path, const HostModuleDescriptor &descriptor) {
    if (descriptor.syncWord != kModuleSyncWord)
        fail(path, "its sync word is " + hex(descriptor.syncWord) + " instead of " + hex(kModuleSyncWord));
    if (descriptor.version != kModuleVersion)
        fail(path, "its descriptor has version " + std::to_string(descriptor.version) + " instead of " +
                       std::to_string(kModuleVersion));
    if (descriptor.platform != kPlatformMacintosh && descriptor.platform != kPlatformUnix)
        fail(path, "its platform code is " + hex(descriptor.platform) + " instead of " + hex(kPlatformMacintosh) +
                       " or " + hex(kPlatformUnix));
    if (!descriptor.startup || !descriptor.shutdown || !descriptor.servers)
        fail(path, "its descriptor leaves out the startup, the shutdown or the servers");
}

} // namespace

Module Module::open(const std::string &path) {
    checkSharedObject(path);
    nameModule(path);
    // The loader would search the system directories for a name without a slash.
    const std::string absolute = std::filesystem::absolute(path).string();
    // dlopen is declared as not throwing, but constructors of the module run inside it and may throw.
    void *(*volatile const load)(const char *, int) = dlopen;
    void *library = callModule(kModuleItself, kLoading, [&] { return load(absolute.c_str(), RTLD_NOW | RTLD_LOCAL); });
    if (!library) {
        const char *reason = dlerror();
        fail(path, reason ? reason : "the system gives no reason");
    }
    Module module(path, library); // closes the library if a check fails
    const auto *descriptor = static_cast<const HostModuleDescriptor *>(dlsym(library, HOST_MODULE_SYMBOL));
    if (!descriptor) fail(path, "it has no module descriptor " HOST_MODULE_SYMBOL);
    {
        const CallScope reading(kModuleItself, kLoading); // the descriptor may be shorter than it has to be
        checkDescriptor(path, *descriptor);
    }
    noteModuleCode(descriptor);
    module.descriptor_ = descriptor;
    module.word_ = callModule(kModuleItself, "startup", descriptor->startup);
    putBackSettings();
    if (!module.word_) fail(path, "it refuses to start");
    return module;
}

Module::~Module() { close(); }

Module::Module(Module &&other) noexcept
    : path_(std::move(other.path_)), library_(std::exchange(other.library_, nullptr)),
      descriptor_(std::exchange(other.descriptor_, nullptr)), word_(std::exchange(other.word_, nullptr)) {}

Module &Module::operator=(Module &&other) noexcept {
    if (this == &other) return *this;
    close();
    path_ = std::move(other.path_);
    library_ = std::exchange(other.library_, nullptr);
    descriptor_ = std::exchange(other.descriptor_, nullptr);
    word_ = std::exchange(other.word_, nullptr);
    return *this;
}

void Module::close() noexcept {
    try {
        if (word_) callModule(kModuleItself, "shutdown", [&] { descriptor_->shutdown(std::exchange(word_, nullptr)); });
        descriptor_ = nullptr;
        void *library = std::exchange(library_, nullptr);
#ifndef __SANITIZE_ADDRESS__ // the leak check at exit needs the module's pointers and symbol names
        if (library) callModule(kModuleItself, "unloading the module", [&] { dlclose(library); });
#else
        static_cast<void>(library);
#endif
    } catch (const ModuleError &error) {
        endByModuleError(error);
    }
}

} // namespace velm::host

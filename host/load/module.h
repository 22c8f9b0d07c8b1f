// A plug-in module as the host loads it: a shared object that exports one descriptor.
#pragma once

#include "module/host.h"

#include <string>

namespace velm::host {

class Module {
  public:
    // Opens, checks and starts a module. InputError that names the file and what is wrong with it: missing, a
    // directory, not a shared object, cut short, built for another machine, without a descriptor, with a wrong sync
    // word, version or platform code, or refusing to start. [interface thread]
    static Module open(const std::string &path);

    // Shuts the module down and unloads it. No node of it may exist then, and no entry in a server list.
    ~Module();
    Module(Module &&other) noexcept;
    Module &operator=(Module &&other) noexcept;
    Module(const Module &) = delete;
    Module &operator=(const Module &) = delete;

    const std::string &path() const { return path_; }
    const HostServer *servers() const { return descriptor_->servers; } // the end is marked by a null class
    const HostModuleDescriptor &descriptor() const { return *descriptor_; }

  private:
    Module(std::string path, void *library) : path_(std::move(path)), library_(library) {}
    void close() noexcept;

    std::string path_;
    void *library_ = nullptr;
    const HostModuleDescriptor *descriptor_ = nullptr;
    void *word_ = nullptr; // the result of startup; null: not started
};

} // namespace velm::host

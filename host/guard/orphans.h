// The processes that a module leaves behind: a process that a module forked may outlive the one that ran the module.
#pragma once

#include <span>
#include <sys/types.h>

namespace velm::host {

// While it lives, descendants of this process whose parent has ended become children of this process, instead of the
// system's first one. Processes that this one has forked itself are its children as well, and are called workers here.
//
// A process that has children when the object is made, such as a shell's background job that `exec` left to it, does
// not adopt any: their descendants could not be told from those of the workers. `kill` then does nothing.
// [main thread; objects may nest]
class Orphans {
  public:
    Orphans();
    ~Orphans(); // adopts no more; does not kill
    Orphans(const Orphans &) = delete;
    Orphans &operator=(const Orphans &) = delete;

    // Kills the adopted processes and, in turn, those that are adopted because these end. The workers, which still run,
    // are left alone. Gives up after two seconds, as when a process cannot be killed while the system waits for a disk.
    void kill(std::span<const pid_t> workers = {}) const;
    // Frees the entries of adopted processes that have ended, in the system's table. Call it on SIGCHLD.
    void reap(std::span<const pid_t> workers) const;

  private:
    bool adopts_ = false;
    int before_ = 0; // whether this process has adopted processes before
};

} // namespace velm::host

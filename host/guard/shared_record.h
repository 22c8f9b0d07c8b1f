// Memory that this process shares with the processes that it forks.
#pragma once

#include "host/base/error.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <string>

namespace velm::host {

// A value-initialised Record in shared memory. It lives as long as this object does.
template <class Record>
class SharedRecord {
  public:
    SharedRecord() { // MachineError when there is no memory
        void *memory = mmap(nullptr, sizeof(Record), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED)
            throw MachineError("no memory to share with another process: " + std::string(std::strerror(errno)));
        record_ = new (memory) Record{};
    }
    ~SharedRecord() { munmap(record_, sizeof(Record)); }
    SharedRecord(const SharedRecord &) = delete;
    SharedRecord &operator=(const SharedRecord &) = delete;
    Record &operator*() const { return *record_; }
    Record *operator->() const { return record_; }

  private:
    Record *record_;
};

} // namespace velm::host

// Memory that this process shares with the processes that it forks.
#pragma once

#include "host/base/shared_memory.h"

#include <new>

namespace velm::host {

// A value-initialised Record in shared memory. It lives as long as this object does.
template <class Record>
class SharedRecord {
  public:
    SharedRecord() : memory_(1), record_(new (memory_.data()) Record{}) {} // MachineError when there is no memory
    SharedRecord(const SharedRecord &) = delete;
    SharedRecord &operator=(const SharedRecord &) = delete;
    Record &operator*() const { return *record_; }
    Record *operator->() const { return record_; }

  private:
    SharedArray<Record> memory_;
    Record *record_;
};

} // namespace velm::host

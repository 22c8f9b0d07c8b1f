// Reads the call record of another process, in which that process may have left anything: a module can write through a
// wild pointer.
#pragma once

#include "host/guard/call_record.h"

#include <cstddef>
#include <memory>

namespace velm::host {

// Copies a record, with every value brought into its range: texts end, numbers are valid indices, calls are literals of
// this program or null. Returns false if a value was not in its range, so that the record has been overwritten. `to` is
// newly made. `from` may change meanwhile. [any thread]
bool copyRecord(const CallRecord &from, CallRecord &to);

// Whether that copy would be made without a change, as far as threads and calls are concerned; costs less.
bool isIntact(const CallRecord &record);

// Copies a text that may lack its end: at most `size` - 1 bytes.
void copyText(char *to, const char *from, std::size_t size);

// Whether the byte of a bool in shared memory is not zero. It may be neither 0 nor 1, the values of a bool.
template <class Bool>
bool isSet(const Bool &flag) {
    static_assert(sizeof flag == 1);
    return *reinterpret_cast<const volatile unsigned char *>(&flag) != 0;
}

} // namespace velm::host

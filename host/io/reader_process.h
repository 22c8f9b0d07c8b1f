// Reads files from outside by third-party libraries in a process of their own. A file may make such a library crash,
// never return, or take all memory. That ends the other process only, and is reported as an error of the file.
#pragma once

#include "host/io/shared_arena.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace velm::host {

// What reading one file may take.
struct ReadLimits {
    std::uint64_t mebibytes = 4096; // of memory, without what this process has already
    double seconds = 60;            // 0: no limit
};

// The limits of all files that this program reads. [interface thread]
ReadLimits &readLimits();
std::uint64_t readLimitInBytes();

// Runs `work` in a process that is forked from this one, with readLimits(), and waits for it. `work` reads the file and
// builds its result in the arena, from which allocations are made there; nothing else that it changes is visible in
// this process. The other process runs no exit handlers, and is killed when this thread ends.
// Throws InputError with the name of the file if `work` throws anything, and if the process crashes, ends, or exceeds a
// limit. The message then begins with "cannot read WHAT: ", unless `work` threw an InputError, whose message is kept.
// The end of what the libraries printed follows in parentheses; nothing of it reaches the standard streams. Throws
// MachineError if no process can be started. [interface thread]
void readInOtherProcess(SharedArena &arena, const std::string &file, const char *what,
                        const std::function<void()> &work);

// Throws the InputError of a file that left a result that makes no sense.
[[noreturn]] void refuseResult(const std::string &file, const char *what);

// The same for a result of the type Result. It is constructed with the arena as its std::pmr::memory_resource, and
// `work` fills it in. All that it allocates must be in the arena, which Result::isWithin(arena) checks before the
// result is used. The result, and all that is moved out of it, lives as long as the returned pointer or a copy of it.
template <class Result>
std::shared_ptr<Result> readApart(const std::string &file, const char *what,
                                  const std::function<void(Result &)> &work) {
    const auto arena = std::make_shared<SharedArena>(readLimitInBytes());
    auto *result = new (arena->place(sizeof(Result), alignof(Result))) Result(arena.get());
    readInOtherProcess(*arena, file, what, [&] { work(*result); });
    if (!result->isWithin(*arena)) refuseResult(file, what);
    return {arena, result}; // it is not destroyed: all of its memory is the arena's
}

} // namespace velm::host

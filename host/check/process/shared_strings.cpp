#include "host/check/process/shared_strings.h"

#include "host/base/error.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace velm::host {

namespace {

[[noreturn]] void fail() { throw MachineError("no memory for what the processes of a check share"); }

void writeAll(int file, const void *bytes, std::size_t size) {
    if (write(file, bytes, size) != static_cast<ssize_t>(size)) fail();
}

} // namespace

SharedStrings::SharedStrings() : file_(memfd_create("shared strings", MFD_CLOEXEC)) {
    if (file_ < 0) fail();
}

SharedStrings::~SharedStrings() { close(file_); }

void SharedStrings::add(std::string_view text) {
    const std::uint64_t size = text.size();
    writeAll(file_, &size, sizeof size);
    writeAll(file_, text.data(), text.size());
}

std::vector<std::string> SharedStrings::all() const {
    std::vector<std::string> texts;
    off_t at = 0;
    std::uint64_t size = 0;
    while (pread(file_, &size, sizeof size, at) == static_cast<ssize_t>(sizeof size)) {
        at += static_cast<off_t>(sizeof size);
        texts.emplace_back(size, '\0');
        if (pread(file_, texts.back().data(), size, at) != static_cast<ssize_t>(size)) fail();
        at += static_cast<off_t>(size);
    }
    return texts;
}

} // namespace velm::host

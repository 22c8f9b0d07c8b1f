#include "host/load/shared_object.h"

#include "host/base/error.h"

#include <elf.h>
#include <link.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

namespace velm::host {

namespace {

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);

constexpr int kOwnBits = sizeof(void *) == 8 ? 64 : 32;
constexpr unsigned char kOwnClass = kOwnBits == 64 ? ELFCLASS64 : ELFCLASS32;

// The machine that this program was built for.
constexpr unsigned kOwnMachine =
#if defined(__x86_64__)
    EM_X86_64;
#elif defined(__i386__)
    EM_386;
#elif defined(__aarch64__)
    EM_AARCH64;
#else
#error "the machine's ELF number is not listed"
#endif

class File {
  public:
    explicit File(const std::string &path) : path_(path) {
        std::error_code error;
        if (!std::filesystem::exists(path, error)) fail("there is no such file");
        if (std::filesystem::is_directory(path, error)) fail("it is a directory");
        // Opening a pipe would block.
        if (!std::filesystem::is_regular_file(path, error)) fail("it is not a regular file");
        size_ = std::filesystem::file_size(path, error);
        stream_.open(path, std::ios::binary);
        if (error || !stream_) fail("it cannot be read");
    }

    [[noreturn]] void fail(const std::string &why) const {
        throw InputError("cannot load the module " + path_ + ": " + why);
    }

    std::uintmax_t size() const { return size_; }

    // False if the file is shorter.
    bool read(std::uintmax_t offset, void *to, std::size_t bytes) {
        if (offset > size_ || bytes > size_ - offset) return false;
        stream_.seekg(static_cast<std::streamoff>(offset));
        stream_.read(static_cast<char *>(to), static_cast<std::streamsize>(bytes));
        return static_cast<bool>(stream_);
    }

  private:
    std::string path_;
    std::ifstream stream_;
    std::uintmax_t size_ = 0;
};

// The identification has the same layout in 32-bit and 64-bit files; the rest of the header does not.
void checkIdentification(File &file) {
    unsigned char identification[EI_NIDENT];
    if (!file.read(0, identification, sizeof identification) || std::memcmp(identification, ELFMAG, SELFMAG) != 0)
        file.fail("it is not a shared object");
    const int bits = identification[EI_CLASS] == ELFCLASS64 ? 64 : identification[EI_CLASS] == ELFCLASS32 ? 32 : 0;
    if (bits == 0) file.fail("it is not a shared object");
    if (identification[EI_CLASS] != kOwnClass)
        file.fail("it is a " + std::to_string(bits) + "-bit module, and this host a " + std::to_string(kOwnBits) +
                  "-bit program");
}

} // namespace

void checkSharedObject(const std::string &path) {
    constexpr const char *kCutShort = "it was cut short";
    File file(path);
    checkIdentification(file);
    Header header;
    if (!file.read(0, &header, sizeof header)) file.fail(kCutShort);
    if (header.e_machine != kOwnMachine) file.fail("it was built for another kind of machine");
    if (header.e_type != ET_DYN) file.fail("it is not a shared object");
    if (header.e_phentsize != sizeof(Segment)) file.fail("its program headers are damaged");
    std::vector<Segment> segments(header.e_phnum);
    if (!file.read(header.e_phoff, segments.data(), segments.size() * sizeof(Segment))) file.fail(kCutShort);
    for (const Segment &segment : segments)
        if (segment.p_type == PT_LOAD &&
            (segment.p_offset > file.size() || segment.p_filesz > file.size() - segment.p_offset))
            file.fail(kCutShort);
}

} // namespace velm::host

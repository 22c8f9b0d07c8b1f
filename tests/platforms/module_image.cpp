#include "tests/platforms/module_image.h"

#include <fstream>
#include <iterator>

namespace velm::plugin {

uint32_t ModuleImage::word32(uint64_t address) const { return recordAt<uint32_t>(memory, address - base); }

uint64_t ModuleImage::pointer(uint64_t address) const {
    return addressSize == 8 ? recordAt<uint64_t>(memory, address - base) : word32(address);
}

std::string ModuleImage::text(uint64_t address) const {
    if (!contains(address)) throw std::runtime_error("a text lies outside the file");
    const size_t start = address - base, end = memory.find('\0', start);
    return memory.substr(start, end - start);
}

std::vector<ModuleImage> readModule(const std::string &path) {
    std::ifstream stream(path, std::ios::binary);
    std::string file(std::istreambuf_iterator<char>(stream), {});
    if (file.starts_with("\177ELF")) return {readElf(std::move(file))};
    if (file.starts_with("MZ")) return {readPe(std::move(file))};
    if (file.starts_with("\xcf\xfa\xed\xfe")) return {readMachO(std::move(file))};
    if (file.starts_with("\xca\xfe\xba\xbe")) return readUniversal(file);
    throw std::runtime_error(path + " is not a module of a known platform");
}

} // namespace velm::plugin

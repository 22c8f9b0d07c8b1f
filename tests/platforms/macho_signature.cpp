// Ad-hoc code signatures, after the description in Apple's <kern/cs_blobs.h>: a hash of each page of the file, without
// a certificate. Their numbers are big-endian.
#include "tests/platforms/module_image.h"
#include "tests/platforms/sha256.h"

#include <algorithm>

namespace velm::plugin {
namespace {

constexpr uint32_t kSuperBlob = 0xfade0cc0, kCodeDirectory = 0xfade0c02;
constexpr uint32_t kAdHoc = 0x2; // a flag
constexpr uint8_t kSha256 = 2;   // a kind of hash
constexpr uint64_t kHashSize = 32;

uint32_t number32(std::string_view bytes, uint64_t offset) {
    return __builtin_bswap32(recordAt<uint32_t>(bytes, offset));
}

// The code directory, or empty if the signature has none.
std::string_view codeDirectory(std::string_view signature) {
    if (number32(signature, 0) != kSuperBlob) return {};
    for (uint32_t i = 0; i < number32(signature, 8); ++i) {
        const uint32_t offset = number32(signature, 12 + 8 * i + 4);
        if (number32(signature, offset) == kCodeDirectory)
            return signature.substr(offset, number32(signature, offset + 4));
    }
    return {};
}

} // namespace

std::string signatureFault(const ModuleImage &image) {
    if (image.signature.empty()) return "there is no signature";
    const std::string_view directory = codeDirectory(image.signature);
    if (directory.empty()) return "there is no code directory";
    if (!(number32(directory, 12) & kAdHoc)) return "the signature is not ad hoc";
    if (recordAt<uint8_t>(directory, 36) != kHashSize || recordAt<uint8_t>(directory, 37) != kSha256)
        return "the hashes are not SHA-256";
    const uint32_t hashes = number32(directory, 16), pages = number32(directory, 28), end = number32(directory, 32);
    const uint64_t pageSize = uint64_t{1} << std::min<int>(recordAt<uint8_t>(directory, 39), 20);
    if (end != image.file.size() - image.signature.size()) return "something but the signature itself is not signed";
    if (pages != (end + pageSize - 1) / pageSize) return "the number of pages is wrong";
    for (uint64_t page = 0; page < pages; ++page) {
        const uint64_t start = page * pageSize, size = std::min<uint64_t>(pageSize, end - start);
        if (directory.size() < hashes + (page + 1) * kHashSize) return "a hash is missing";
        if (sha256(std::string_view(image.file).substr(start, size)) !=
            directory.substr(hashes + page * kHashSize, kHashSize))
            return "page " + std::to_string(page) + " does not match its hash";
    }
    return {};
}

} // namespace velm::plugin

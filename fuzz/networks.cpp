#include "fuzz/networks.h"

#include "fuzz/require.h"

#include "host/files/network_block.h"
#include "host/graph/surface.h"
#include "host/state/save_state.h"

namespace velm::host::fuzz {

namespace {

std::string write(Surface &surface, const std::string &file) {
    StateWriter writer(kStateBinary);
    surface.save(*writer.state());
    try {
        return writer.finish();
    } catch (const InputError &error) { // it has become too long for a block
        throw InputError(file + ": " + error.what());
    }
}

std::string writtenAgain(const std::string &block, const std::string &file) {
    try {
        Surface surface("Fuzzed");
        loadNetwork(surface, block, file, 0);
        return write(surface, file);
    } catch (const InputError &error) {
        require(false, "a written network can be read", error.what());
        throw;
    }
}

} // namespace

std::string throughSurface(std::string_view block, const std::string &file, std::size_t offset) {
    Surface surface("Fuzzed");
    loadNetwork(surface, block, file, offset);
    std::string written = write(surface, file);
    require(writtenAgain(written, file) == written, "a written network is written again without a change");
    return written;
}

} // namespace velm::host::fuzz

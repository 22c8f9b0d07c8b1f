// Files for tests: small ones made by hand, and those of Debian's package assimp-testmodels.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host::test {

inline std::string big(std::size_t value, int bytes) {
    std::string text;
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) text += static_cast<char>(value >> shift & 0xff);
    return text;
}

inline std::string padded(std::string text) {
    if (text.size() % 2 != 0) text += '\0';
    return text;
}

// A string as files hold it: ended by a zero, of even length.
inline std::string cString(std::string text) { return padded(text + '\0'); }

inline std::string chunk(const std::string &id, const std::string &contents) {
    return padded(id + big(contents.size(), 4) + contents);
}
inline std::string subChunk(const std::string &id, const std::string &contents) {
    return padded(id + big(contents.size(), 2) + contents);
}
inline std::string objectFile(const std::string &chunks) {
    return "FORM" + big(4 + chunks.size(), 4) + "LWO2" + chunks;
}

// A node of a network as files hold it; `data` is what the node saved.
inline std::string nodeBlocks(const std::string &server, const std::string &name, const std::string &data) {
    return subChunk("NSRV", cString(server)) +
           subChunk("NTAG", subChunk("NRNM", cString(server)) + subChunk("NNME", cString(name)) +
                                subChunk("NCRD", big(0xfffffff6, 4) + big(22, 4)) + subChunk("NMOD", big(1, 4)) +
                                subChunk("NDTA", data) + subChunk("NPRW", cString("")) + subChunk("NCOM", cString("")));
}
inline std::string connectionBlocks(const std::string &fromNode, const std::string &output, const std::string &toNode,
                                    const std::string &input) {
    return subChunk("INME", cString(toNode)) + subChunk("IINM", cString(input)) + subChunk("IINN", cString(fromNode)) +
           subChunk("IONM", cString(output));
}
inline std::string networkBlock(const std::string &nodes, const std::string &connections) {
    return subChunk("NODS",
                    subChunk("NROT", subChunk("NLOC", big(0, 8)) + subChunk("NZOM", std::string("\x3f\x80\0\0", 4)) +
                                         subChunk("NSTA", big(0, 2))) +
                        subChunk("NVER", big(1, 4)) + subChunk("NNDS", nodes) + subChunk("NCON", connections));
}

// An object of one triangle with that surface; `surfaces` are the chunks of surfaces.
inline std::string triangleObject(const std::string &surface, const std::string &surfaces) {
    const std::string zero(4, '\0'), one("\x3f\x80\0\0", 4);
    return objectFile(chunk("TAGS", cString(surface)) + chunk("LAYR", std::string(16, '\0') + cString("")) +
                      chunk("PNTS", zero + zero + zero + one + zero + zero + zero + one + zero) +
                      chunk("POLS", "FACE" + big(3, 2) + big(0, 2) + big(2, 2) + big(1, 2)) +
                      chunk("PTAG", "SURF" + big(0, 2) + big(0, 2)) + surfaces);
}

// An object with other chunks, an image, and the surfaces "Clay" and "Plain". The network of "Clay" has a node whose
// server is not available.
inline std::string smallObject() {
    const std::string network =
        networkBlock(nodeBlocks("Surface", "Surface", "") + nodeBlocks("Weather", "Rain (1)", std::string("\1\2\3", 3)),
                     connectionBlocks("Rain (1)", "Drops", "Surface", "Color"));
    const std::string colour = subChunk("COLR", std::string("\x3f\x80\0\0\x3f\0\0\0\0\0\0\0\0\0", 14));
    return objectFile(
        chunk("TAGS", cString("Clay")) + chunk("PNTS", std::string(12, '\1')) +
        chunk("CLIP", big(1, 4) + subChunk("STIL", cString("C:images/wall.jpg"))) +
        chunk("SURF", cString("Clay") + cString("") + colour + subChunk("VERS", big(0x3a2, 4)) + network) +
        chunk("SURF", cString("Plain") + cString("Clay") + colour) + chunk("ODD ", "abc"));
}

// The files of the package with that extension, sorted; none when the package is not installed.
inline std::vector<std::filesystem::path> realFiles(std::string_view ending) {
    const std::filesystem::path directory = "/usr/share/assimp/models";
    std::vector<std::filesystem::path> found;
    if (!std::filesystem::exists(directory)) return found;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(directory))
        if (entry.is_regular_file() && entry.path().extension() == ending) found.push_back(entry.path());
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace velm::host::test

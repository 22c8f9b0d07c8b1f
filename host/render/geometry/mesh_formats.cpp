// Recognises the formats of mesh files.
#include "host/render/geometry/mesh_formats.h"

#include "host/base/error.h"
#include "host/io/file_ends.h"
#include "host/object/object_geometry.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string_view>

namespace velm::host {
namespace {

using std::string_view_literals::operator""sv;

constexpr std::string_view kBlanks = " \t\r\n";

// The head of a file as text: without its byte-order mark and, for UTF-16, without the zero byte of each ASCII letter.
std::string textOf(const FileEnds &file) {
    std::string text = file.head;
    if (text.starts_with("\xef\xbb\xbf")) return text.substr(3);
    if (text.starts_with("\xff\xfe") || text.starts_with("\xfe\xff")) std::erase(text.erase(0, 2), '\0');
    return text;
}

std::string firstWord(const std::string &text) {
    std::string word;
    std::istringstream(text) >> word;
    return word;
}

bool isLwo(const FileEnds &file) { return isObject(file.head); }

bool isLxo(const FileEnds &file) { return file.startsWith("FORM") && file.hasAt(8, "LXOB"); }

bool isPly(const FileEnds &file) {
    return file.head.size() > 3 && (file.startsWith("ply") || file.startsWith("PLY")) &&
           kBlanks.find(file.head[3]) != std::string_view::npos;
}

bool isGlb(const FileEnds &file) { return file.startsWith("glTF"); }

bool isGltf(const FileEnds &file) {
    const std::string text = textOf(file);
    constexpr std::string_view kKeys[] = {"\"asset\"", "\"accessors\"", "\"bufferViews\""};
    return firstWord(text).starts_with('{') &&
           std::any_of(std::begin(kKeys), std::end(kKeys),
                       [&](std::string_view key) { return text.find(key) != std::string::npos; });
}

bool isFbx(const FileEnds &file) {
    return file.startsWith("Kaydara FBX Binary") || textOf(file).find("FBXHeaderExtension") != std::string::npos;
}

bool isDae(const FileEnds &file) { return textOf(file).find("<COLLADA") != std::string::npos; }

// The keyword is OFF, after letters for what each vertex has besides a position.
bool isOff(const FileEnds &file) {
    const std::string word = firstWord(file.head);
    return word.ends_with("OFF") && word.size() <= 8 && word.find_first_not_of("STCN4nOF") == std::string::npos;
}

// The file is one chunk, whose length it gives.
bool is3ds(const FileEnds &file) {
    constexpr std::uint32_t kMainChunk = 0x4d4d;
    return file.number(0, 2) == kMainChunk && file.number(2, 4) >= 6 && file.number(2, 4) <= file.size;
}

// Text begins with "solid"; so do some binary files, whose size follows from the number of their triangles.
bool isStl(const FileEnds &file) {
    constexpr std::uint64_t kHeader = 84, kTriangle = 50;
    const bool isBinary = file.size >= kHeader && file.size == kHeader + file.number(80, 4) * kTriangle;
    return isBinary || (firstWord(file.head) == "solid" && file.head.find("facet") != std::string::npos);
}

// The first line that is no comment begins with a keyword.
bool isObj(const FileEnds &file) {
    constexpr std::string_view kKeywords[] = {"v", "vn", "vt", "vp", "f", "l", "p", "o", "g", "s", "mtllib", "usemtl"};
    std::istringstream lines(textOf(file));
    for (std::string line; std::getline(lines, line);) {
        const std::string word = firstWord(line);
        if (word.empty() || word.starts_with('#')) continue;
        return std::find(std::begin(kKeywords), std::end(kKeywords), word) != std::end(kKeywords);
    }
    return false;
}

struct Recogniser {
    MeshFormat format;
    bool (*recognises)(const FileEnds &file);
};

constexpr MeshFormat byAssimp(const char *name, const char *ending) {
    return {.name = name, .ending = ending, .read = readWithAssimp, .files = filesReadWithAssimp};
}

constexpr MeshFormat kObjects{.name = "LWO", .ending = "lwo", .read = readObjectMesh, .files = filesOfObjectMesh};
constexpr MeshFormat kPly{.name = "PLY", .ending = "ply", .read = readPlyMesh, .files = filesOfPlainMesh};
constexpr MeshFormat kStl{.name = "STL", .ending = "stl", .read = readStlMesh, .files = filesOfPlainMesh};
constexpr MeshFormat kObj{.name = "OBJ", .ending = "obj", .read = readObjMesh, .files = filesOfObjMesh};

// Formats with a signature come first.
constexpr Recogniser kRecognisers[] = {
    {.format = kObjects, .recognises = isLwo},
    {.format = byAssimp("LXO", "lxo"), .recognises = isLxo},
    {.format = byAssimp("FBX", "fbx"), .recognises = isFbx},
    {.format = byAssimp("GLB", "glb"), .recognises = isGlb},
    {.format = byAssimp("glTF", "gltf"), .recognises = isGltf},
    {.format = kPly, .recognises = isPly},
    {.format = byAssimp("DAE", "dae"), .recognises = isDae},
    {.format = byAssimp("3DS", "3ds"), .recognises = is3ds},
    {.format = byAssimp("OFF", "off"), .recognises = isOff},
    {.format = kStl, .recognises = isStl},
    {.format = kObj, .recognises = isObj},
};

} // namespace

std::string meshFormats() {
    std::string list;
    for (const Recogniser &one : kRecognisers) list += (list.empty() ? "" : ", ") + std::string(one.format.name);
    return list;
}

std::vector<const MeshFormat *> allMeshFormats() {
    std::vector<const MeshFormat *> all;
    for (const Recogniser &one : kRecognisers) all.push_back(&one.format);
    return all;
}

const MeshFormat *meshFormatOf(const std::string &file) {
    const FileEnds ends = readFileEnds(file);
    if (ends.size == 0) throw InputError({.file = file}, "cannot read the mesh: it is empty");
    return meshFormatOf(ends);
}

const MeshFormat *meshFormatOf(const FileEnds &ends) {
    const auto *const found = std::find_if(std::begin(kRecognisers), std::end(kRecognisers),
                                           [&](const Recogniser &one) { return one.recognises(ends); });
    return found == std::end(kRecognisers) ? nullptr : &found->format;
}

} // namespace velm::host

// Meshes from STL files: triangles, each with a normal and corners of its own.
#include "host/render/geometry/mesh_builder.h"
#include "host/render/geometry/mesh_formats.h"
#include "host/render/geometry/mesh_words.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/io/files.h"

#include <array>
#include <cstdint>
#include <fmt/format.h>
#include <utility>

namespace velm::host {
namespace {

using Triple = std::array<float, 3>;

// Builds the mesh of the facets.
class StlMesh {
  public:
    StlMesh(std::size_t facets, const std::string &file, const Transform &transform, std::pmr::memory_resource *memory)
        : file_(file), transform_(transform), builder_({}, true, memory) {
        builder_.reserve(3 * facets, facets);
    }

    // The corners run counter-clockwise as seen from the front, in right-handed axes.
    void addFacet(const Triple &normal, const std::array<Triple, 3> &corners) {
        // A normal that has no direction becomes 0: shading then uses the polygon's own normal.
        vertex_.normal = normalised(transform_.normalToWorld({normal[0], normal[1], -normal[2]}), {0, 0, 0});
        for (const Triple &corner : corners) {
            vertex_.position = transform_.pointToWorld({corner[0], corner[1], -corner[2]});
            builder_.addSeparateVertex(vertex_);
        }
    }

    Mesh build() {
        const std::uint16_t material = builder_.addMaterial("DefaultMaterial");
        const std::vector<std::uint32_t> numbers = builder_.mergeVertices();
        // The change to left-handed axes reverses every polygon, and so does a mirroring transform.
        const std::size_t second = transform_.mirrors() ? 1 : 2;
        std::vector<std::uint32_t> corners(3);
        for (std::size_t i = 0; i < numbers.size(); i += 3) {
            corners = {numbers[i], numbers[i + second], numbers[i + 3 - second]};
            builder_.addPolygon(corners, material);
        }
        if (builder_.triangleCount() == 0) throw InputError({.file = file_}, "the mesh has no polygons");
        return builder_.finish();
    }

  private:
    const std::string &file_;
    const Transform &transform_;
    MeshBuilder builder_;
    BuilderVertex vertex_;
};

// ---- Binary files: a head of 80 bytes, the number of facets, and 50 bytes for each ----

constexpr std::size_t kHead = 80, kFirstFacet = 84, kFacet = 50;

Triple tripleAt(const char *bytes) {
    return {binaryNumber<float>(bytes), binaryNumber<float>(bytes + 4), binaryNumber<float>(bytes + 8)};
}

bool isBinaryStl(std::string_view bytes) {
    return bytes.size() >= kFirstFacet &&
           bytes.size() == kFirstFacet + std::uint64_t{binaryNumber<std::uint32_t>(bytes.data() + kHead)} * kFacet;
}

// Whether a file has colours: one for all facets in its head, or one in the attribute of a facet.
bool hasColours(std::string_view bytes) {
    if (bytes.substr(0, kHead).find("COLOR=") != std::string_view::npos) return true;
    for (std::size_t at = kFirstFacet; at < bytes.size(); at += kFacet)
        if ((binaryNumber<std::uint16_t>(bytes.data() + at + 48) & 0x8000) != 0) return true;
    return false;
}

Mesh binaryStl(std::string_view bytes, const std::string &file, const Transform &transform,
               std::pmr::memory_resource *memory) {
    StlMesh mesh((bytes.size() - kFirstFacet) / kFacet, file, transform, memory);
    for (std::size_t at = kFirstFacet; at < bytes.size(); at += kFacet) {
        const char *facet = bytes.data() + at;
        mesh.addFacet(tripleAt(facet), {tripleAt(facet + 12), tripleAt(facet + 24), tripleAt(facet + 36)});
    }
    return mesh.build();
}

// ---- Text files ----

class TextStl {
  public:
    TextStl(std::string_view bytes, const std::string &file, const Transform &transform,
            std::pmr::memory_resource *memory)
        : bytes_(bytes), file_(file), mesh_(facetsIn(bytes), file, transform, memory) {}

    // Reads all solids of the file. Returns nothing if it has no facets, or has a keyword that is not known here.
    std::optional<Mesh> read() {
        while (!bytes_.empty()) {
            line_ = takeLine(bytes_);
            ++lineNumber_;
            if (!readLine()) return std::nullopt;
        }
        if (isInFacet_) fail("the file ends within a facet");
        if (!hasFacets_) return std::nullopt;
        return mesh_.build();
    }

  private:
    // About how many facets there are. Most take 250 bytes; the memory for too many is not used.
    static std::size_t facetsIn(std::string_view bytes) { return bytes.size() / 200; }

    [[noreturn]] void fail(const std::string &what) const {
        throw InputError({.file = file_}, fmt::format("cannot read the mesh: line {}: {}", lineNumber_, what));
    }

    // Several keywords may be on one line. The names of solids may be anything.
    bool readLine() {
        for (std::string_view word = takeWord(line_); !word.empty(); word = takeWord(line_)) {
            if (word == "solid" || word == "endsolid") return true;
            if (word == "facet")
                beginFacet();
            else if (word == "normal")
                normal_ = readTriple();
            else if (word == "vertex")
                addCorner(readTriple());
            else if (word == "endfacet")
                endFacet();
            else if (word != "outer" && word != "loop" && word != "endloop")
                return false;
        }
        return true;
    }

    void beginFacet() {
        if (isInFacet_) fail("a facet begins within another");
        isInFacet_ = hasFacets_ = true;
        cornerCount_ = 0;
        normal_ = {};
    }

    void addCorner(const Triple &corner) {
        if (!isInFacet_ || cornerCount_ == corners_.size()) fail("a vertex too many: a facet has three");
        corners_[cornerCount_++] = corner;
    }

    void endFacet() {
        if (!isInFacet_ || cornerCount_ != corners_.size())
            fail(fmt::format("a facet with {} vertices where three are expected", cornerCount_));
        isInFacet_ = false;
        mesh_.addFacet(normal_, corners_);
    }

    Triple readTriple() {
        Triple triple{};
        for (float &number : triple) {
            const std::string_view word = takeWord(line_);
            const auto value = realOf(word);
            if (!value)
                fail(word.empty() ? "a number is missing"
                                  : fmt::format("{} is not a number", inQuotes(std::string(word))));
            number = static_cast<float>(*value);
        }
        return triple;
    }

    std::string_view bytes_, line_;
    const std::string &file_;
    StlMesh mesh_;
    int lineNumber_ = 0;
    bool isInFacet_ = false, hasFacets_ = false;
    std::size_t cornerCount_ = 0;
    std::array<Triple, 3> corners_{};
    Triple normal_{};
};

} // namespace

std::optional<Mesh> plainStlMesh(std::string_view bytes, const std::string &file, const Transform &transform,
                                 std::pmr::memory_resource *memory) {
    if (!isBinaryStl(bytes)) return TextStl(bytes, file, transform, memory).read();
    if (hasColours(bytes)) return std::nullopt;
    return binaryStl(bytes, file, transform, memory);
}

Mesh readStlMesh(const std::string &file, const MeshFormat &format, const Transform &transform,
                 std::pmr::memory_resource *memory) {
    std::optional<Mesh> mesh = plainStlMesh(readFile(file), file, transform, memory);
    return mesh ? std::move(*mesh) : readWithAssimp(file, format, transform, memory);
}

} // namespace velm::host

// Meshes from PLY files.
#include "host/render/geometry/mesh_builder.h"
#include "host/render/geometry/mesh_formats.h"
#include "host/render/geometry/ply_values.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/io/files.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <utility>

namespace velm::host {
namespace {

[[noreturn]] void refusePly(const std::string &file, const std::string &why) {
    throw InputError({.file = file}, "cannot read the mesh: " + why);
}

const PlyElement *verticesOf(const PlyHeader &header) { return header.find("vertex"); }
const PlyElement *facesOf(const PlyHeader &header) { return header.find("face"); }

// The numbers of a vertex that the mesh uses; kOtherSlot takes all others.
enum VertexSlot : std::size_t {
    kXSlot,
    kYSlot,
    kZSlot,
    kNxSlot,
    kNySlot,
    kNzSlot,
    kUSlot,
    kVSlot,
    kRedSlot,
    kGreenSlot,
    kBlueSlot,
    kAlphaSlot,
    kOtherSlot,
    kSlotCount
};

// The names that properties have, by slot. No property has an empty name.
constexpr std::array<std::array<std::string_view, 4>, kOtherSlot> kSlotNames = {{{"x"},
                                                                                 {"y"},
                                                                                 {"z"},
                                                                                 {"nx"},
                                                                                 {"ny"},
                                                                                 {"nz"},
                                                                                 {"u", "s", "tx", "texture_u"},
                                                                                 {"v", "t", "ty", "texture_v"},
                                                                                 {"red", "r", "diffuse_red"},
                                                                                 {"green", "g", "diffuse_green"},
                                                                                 {"blue", "b", "diffuse_blue"},
                                                                                 {"alpha", "a", "diffuse_alpha"}}};
constexpr std::array<std::string_view, 2> kCornerLists = {"vertex_indices", "vertex_index"};
constexpr std::array<std::string_view, 2> kOfFacesElsewhere = {"texcoord", "material_index"};

// Whether the vertices have all of these numbers.
bool haveSlots(const PlyElement &vertices, std::initializer_list<VertexSlot> slots) {
    return std::all_of(slots.begin(), slots.end(), [&](VertexSlot slot) {
        const auto found = vertices.find(kSlotNames[slot]);
        return found && !vertices.properties[*found].countType;
    });
}

// The numbers of a colour: 0 for no colours, 3, or 4 with alpha.
std::uint32_t colourSizeOf(const PlyElement &vertices) {
    if (!haveSlots(vertices, {kRedSlot, kGreenSlot, kBlueSlot})) return 0;
    return haveSlots(vertices, {kAlphaSlot}) ? 4 : 3;
}

// What full intensity is in a colour's property. Programs that write 32-bit integers write 0 to 255, too.
constexpr float fullIntensity(PlyType type) {
    switch (type) {
    case PlyType::int8: return 127;
    case PlyType::int16: return 32767;
    case PlyType::uint16: return 65535;
    case PlyType::float32:
    case PlyType::float64: return 1;
    default: return 255;
    }
}

// Reads all elements. `Values` is one of the classes in ply_values.h.
template <class Values>
class PlyMesh {
  public:
    PlyMesh(const PlyHeader &header, Values values, const std::string &file, const Transform &transform,
            std::pmr::memory_resource *memory)
        : header_(header), values_(values), file_(file), transform_(transform), turns_(!transform.mirrors()),
          hasNormals_(haveSlots(*verticesOf(header), {kNxSlot, kNySlot, kNzSlot})),
          hasUvs_(haveSlots(*verticesOf(header), {kUSlot, kVSlot})), colourSize_(colourSizeOf(*verticesOf(header))),
          builder_(hasUvs_ ? std::vector<std::string>{"UV"} : std::vector<std::string>{}, hasNormals_, memory) {
        if (colourSize_ > 0) builder_.addVertexMap(kColourMap, colourSize_);
    }

    Mesh build() {
        try {
            readElements();
        } catch (const PlyEndsEarly &) {
            refusePly(file_, fmt::format("it ends too early: of {} {} after its header, {} are there", expected(),
                                         Values::kUnit, elementsRead_));
        } catch (const PlyBadWord &bad) {
            refusePly(file_, fmt::format("line {}: {}", bad.line,
                                         bad.word.empty() ? "a number is missing"
                                                          : inQuotes(bad.word) + " is not the number expected"));
        }
        if (builder_.triangleCount() == 0) throw InputError({.file = file_}, "the mesh has no polygons");
        Mesh mesh = builder_.finish();
        if (colourSize_ > 0) mesh.materialValues.emplace_back().colourMap = kColourMap;
        return mesh;
    }

  private:
    std::uint64_t expected() const {
        std::uint64_t sum = 0;
        for (const PlyElement &element : header_.elements) sum += element.properties.empty() ? 0 : element.count;
        return sum;
    }

    void readElements() {
        material_ = builder_.addMaterial("");
        for (const PlyElement &element : header_.elements) {
            if (element.properties.empty()) continue; // takes no space
            if (&element == verticesOf(header_))
                readVertices(element);
            else if (&element == facesOf(header_))
                readFaces(element);
            else
                forEach(element, [&] {
                    for (const PlyProperty &property : element.properties) skip(property);
                });
        }
    }

    template <class Read>
    void forEach(const PlyElement &element, const Read &read) {
        for (std::uint64_t i = 0; i < element.count; ++i) {
            values_.beginElement();
            read();
            ++elementsRead_;
        }
    }

    std::int64_t countOf(const PlyProperty &list) {
        const std::int64_t count = values_.integer(*list.countType);
        if (count < 0) refusePly(file_, "a list has a negative length");
        return count;
    }

    void skip(const PlyProperty &property) {
        for (std::int64_t left = property.countType ? countOf(property) : 1; left > 0; --left)
            values_.real(property.type);
    }

    static std::vector<VertexSlot> slotsOf(const PlyElement &vertices) {
        std::vector<VertexSlot> slots(vertices.properties.size(), kOtherSlot);
        for (std::size_t i = 0; i < kSlotNames.size(); ++i)
            if (const auto found = vertices.find(kSlotNames[i])) slots[*found] = static_cast<VertexSlot>(i);
        return slots;
    }

    // By number of a colour, what full intensity is.
    static std::array<float, 4> fullColour(const PlyElement &vertices) {
        std::array<float, 4> full{};
        for (std::size_t i = 0; i < colourSizeOf(vertices); ++i)
            full[i] = fullIntensity(vertices.properties[*vertices.find(kSlotNames[kRedSlot + i])].type);
        return full;
    }

    void readVertices(const PlyElement &vertices) {
        const std::uint64_t count = std::min(vertices.count, values_.mostOf(vertices)),
                            triangles = std::min(2 * facesOf(header_)->count, values_.mostOf(*facesOf(header_)));
        builder_.reserve(count, triangles);
        const std::vector<VertexSlot> slots = slotsOf(vertices);
        BuilderVertex vertex;
        if (hasUvs_) vertex.uvs.resize(1);
        vertex.values.resize(colourSize_);
        const std::array<float, 4> full = fullColour(vertices);
        std::array<float, kSlotCount> values{};
        forEach(vertices, [&] {
            for (std::size_t i = 0; i < slots.size(); ++i) {
                const PlyProperty &property = vertices.properties[i];
                if (property.countType)
                    skip(property);
                else
                    values[slots[i]] = values_.real(property.type);
            }
            // Files have right-handed axes.
            vertex.position = transform_.pointToWorld({values[kXSlot], values[kYSlot], -values[kZSlot]});
            if (hasNormals_)
                vertex.normal = normalised(
                    transform_.normalToWorld({values[kNxSlot], values[kNySlot], -values[kNzSlot]}), {0, 0, 0});
            if (hasUvs_) vertex.uvs[0] = {values[kUSlot], values[kVSlot]};
            for (std::size_t i = 0; i < colourSize_; ++i) vertex.values[i] = values[kRedSlot + i] / full[i];
            builder_.addSeparateVertex(vertex);
        });
        numbers_ = builder_.mergeVertices();
    }

    void readFaces(const PlyElement &faces) {
        const std::size_t list = *faces.find(kCornerLists);
        forEach(faces, [&] {
            for (std::size_t i = 0; i < faces.properties.size(); ++i)
                if (i == list)
                    readCorners(faces.properties[i]);
                else
                    skip(faces.properties[i]);
            if (corners_.size() < 3) return;
            // The change to left-handed axes reverses every polygon, and so does a mirroring transform.
            if (turns_) std::reverse(corners_.begin() + 1, corners_.end());
            builder_.addPolygon(corners_, material_);
        });
    }

    void readCorners(const PlyProperty &list) {
        corners_.clear();
        for (std::int64_t left = countOf(list); left > 0; --left) {
            const auto vertex = static_cast<std::uint64_t>(values_.integer(list.type));
            if (vertex >= numbers_.size())
                throw InputError({.file = file_}, "a polygon of the mesh has a vertex that is not there");
            corners_.push_back(numbers_[vertex]);
        }
    }

    const PlyHeader &header_;
    Values values_;
    const std::string &file_;
    const Transform &transform_;
    const bool turns_, hasNormals_, hasUvs_;
    const std::uint32_t colourSize_;
    MeshBuilder builder_;
    std::uint16_t material_ = 0;
    std::vector<std::uint32_t> numbers_; // by vertex of the file: that of the mesh
    std::vector<std::uint32_t> corners_; // of one polygon
    std::uint64_t elementsRead_ = 0;
};

// Whether this reader knows everything in the file.
bool isPlain(const PlyHeader &header) {
    const PlyElement *vertices = verticesOf(header), *faces = facesOf(header);
    return vertices && faces && vertices < faces && !header.namesTexture && !header.find("material") &&
           !header.find("tristrips") && !faces->find(kOfFacesElsewhere);
}

void requireMesh(const PlyHeader &header, const std::string &file) {
    const PlyElement *vertices = verticesOf(header), *faces = facesOf(header);
    if (!haveSlots(*vertices, {kXSlot, kYSlot, kZSlot})) refusePly(file, "its vertices have no x, y and z");
    const auto list = faces->find(kCornerLists);
    if (!list || !faces->properties[*list].countType) refusePly(file, "its faces have no list \"vertex_indices\"");
}

// Throws InputError for text that ends too early: assimp would repeat the last line in place of those missing.
void requireLines(std::string_view bytes, const PlyHeader &header, const std::string &file) {
    if (header.encoding != PlyEncoding::text) return;
    std::uint64_t wanted = 0, found = 0;
    for (const PlyElement &element : header.elements) wanted += element.count;
    for (std::string_view rest = bytes.substr(header.size); !rest.empty() && found < wanted;)
        if (takeLine(rest).find_first_not_of(" \t") != std::string_view::npos) ++found;
    if (found < wanted)
        refusePly(file, fmt::format("it ends too early: of {} lines after its header, {} are there", wanted, found));
}

} // namespace

std::optional<Mesh> plainPlyMesh(std::string_view bytes, const std::string &file, const Transform &transform,
                                 std::pmr::memory_resource *memory) {
    const PlyHeader header = readPlyHeader(bytes, file);
    if (!isPlain(header)) {
        requireLines(bytes, header, file);
        return std::nullopt;
    }
    requireMesh(header, file);
    const std::string_view rest = bytes.substr(header.size);
    const auto read = [&]<class Values>(Values values) {
        return PlyMesh<Values>(header, values, file, transform, memory).build();
    };
    switch (header.encoding) {
    case PlyEncoding::text: return read(TextPlyValues(rest, header.lines));
    case PlyEncoding::littleEndian: return read(BinaryPlyValues<std::endian::little>(rest));
    default: return read(BinaryPlyValues<std::endian::big>(rest));
    }
}

Mesh readPlyMesh(const std::string &file, const MeshFormat &format, const Transform &transform,
                 std::pmr::memory_resource *memory) {
    std::optional<Mesh> mesh = plainPlyMesh(readFile(file), file, transform, memory);
    return mesh ? std::move(*mesh) : readWithAssimp(file, format, transform, memory);
}

std::vector<std::string> filesOfPlainMesh(const std::string &file, const MeshFormat &format) {
    format.read(file, format, Transform(), std::pmr::get_default_resource());
    return {file};
}

} // namespace velm::host

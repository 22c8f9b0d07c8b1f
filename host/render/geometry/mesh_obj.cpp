// Meshes from OBJ files, with their materials.
#include "host/render/geometry/mesh_builder.h"
#include "host/render/geometry/mesh_formats.h"
#include "host/render/geometry/mtl_file.h"
#include "host/render/geometry/obj_file.h"
#include "host/render/geometry/obj_lines.h"
#include "host/render/geometry/parallel.h"

#include "host/base/error.h"
#include "host/base/names.h"
#include "host/io/files.h"
#include "host/io/named_files.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fmt/format.h>
#include <limits>
#include <map>
#include <set>
#include <unordered_map>
#include <utility>

namespace velm::host {
namespace {

// For each value, the index of the first one that equals it.
template <std::size_t size>
std::vector<std::uint32_t> firstsOfEqual(const std::vector<std::array<float, size>> &values) {
    std::vector<std::uint32_t> firsts(values.size());
    VertexTable table;
    table.reserve(values.size());
    const auto hashOf = [&](std::size_t value) {
        std::uint64_t mixed = 0;
        for (const float number : values[value]) mixed = mixIn(mixed, number);
        return endOfHash(mixed);
    };
    table.addAll(values.size(), hashOf, [&](std::size_t value, std::uint32_t hash) {
        firsts[value] = table.findOrAdd(hash, static_cast<std::uint32_t>(value), [&](std::uint32_t other) {
            return equalNumbers(values[other], values[value]);
        });
    });
    return firsts;
}

// The files of materials that an OBJ file names.
class MaterialFiles {
  public:
    MaterialFiles(const std::string &file, const ReadOther &readOther) : file_(file), readOther_(readOther) {}

    // Reads the files that a line names: one file whose name may have blanks, or several files. If none of them can be
    // read, the file with the OBJ file's own name is read instead.
    void read(const std::string &names, Losses &losses) {
        if (names.empty() || readAnyOf(pathsOf(names), losses)) return;
        std::vector<std::string> missing;
        std::size_t count = 0;
        std::string_view rest = names;
        for (std::string word(takeWord(rest)); !word.empty(); word = takeWord(rest), ++count)
            if (!readAnyOf(pathsOf(word), losses)) missing.push_back(word);
        if (missing.empty()) return;
        const bool areAllMissing = missing.size() == count;
        if (areAllMissing && readAnyOf({namesake()}, losses)) return;
        losses.add(Loss::materialFile, inQuotes(areAllMissing ? names : missing.front()));
    }

    // The materials of all files. To be called once, at the end.
    MtlMaterials takeMaterials() { return std::move(materials_); }

  private:
    // The paths that a name may mean, relative to the OBJ file's directory: the name, the same with backslashes as
    // slashes, its last component, and the name without percent escapes.
    std::vector<std::string> pathsOf(const std::string &name) const {
        const std::filesystem::path directory = std::filesystem::path(file_).parent_path();
        std::string turned = name;
        std::ranges::replace(turned, '\\', '/');
        return {(directory / name).string(), (directory / turned).string(),
                (directory / std::filesystem::path(turned).filename()).string(),
                (directory / withoutEscapes(turned)).string()};
    }

    std::string namesake() const {
        std::filesystem::path path(file_);
        return inLowerCase(path.extension().string()) == ".obj" ? path.replace_extension(".mtl").string()
                                                                : file_ + ".mtl";
    }

    // Reads the first of these files that is there, once. Returns whether there is one.
    bool readAnyOf(const std::vector<std::string> &paths, Losses &losses) {
        for (const std::string &path : paths) {
            if (read_.contains(path)) return true;
            const auto bytes = readOther_(path);
            if (!bytes) continue;
            read_.insert(path);
            materials_.read(*bytes, path, losses);
            return true;
        }
        return false;
    }

    const std::string &file_;
    const ReadOther &readOther_;
    MtlMaterials materials_;
    std::set<std::string> read_; // their paths
};

// Builds the mesh from the polygons.
class ObjMesh {
  public:
    ObjMesh(const ObjCounts &counts, ObjValues values, const Transform &transform, std::pmr::memory_resource *memory)
        : values_(std::move(values)), turns_(!transform.mirrors()), hasUvs_(counts.polygonsWithUvs > 0),
          hasNormals_(counts.polygonsWithNormals == counts.polygons),
          builder_(hasUvs_ ? std::vector<std::string>{kUvMap} : std::vector<std::string>{}, hasNormals_, memory),
          firstPositions_(firstsOfEqual(values_.positions)), newest_(values_.positions.size(), kNoObjIndex) {
        if (hasUvs_) firstUvs_ = firstsOfEqual(values_.uvs);
        if (hasNormals_) firstNormals_ = firstsOfEqual(values_.normals);
        if (hasUvs_) vertex_.uvs.resize(1);
        builder_.reserve(std::max({values_.positions.size(), firstUvs_.size(), firstNormals_.size()}),
                         counts.triangles);
        setMaterial("");
    }

    // Adds the polygons of the next part. Files of materials that it names are read.
    void add(const ObjStatements &part, MaterialFiles &files, Losses &losses) {
        auto name = part.names.begin();
        std::size_t begin = 0;
        for (std::size_t i = 0; i <= part.ends.size(); ++i) {
            for (; name != part.names.end() && name->polygon == i; ++name) {
                if (name->kind == ObjName::Kind::material)
                    setMaterial(name->name);
                else
                    files.read(name->name, losses);
            }
            if (i == part.ends.size()) break;
            addPolygon(part, begin, part.ends[i]);
            begin = part.ends[i];
        }
    }

    bool isEmpty() const { return builder_.triangleCount() == 0; }

    // The mesh with the materials that polygons have.
    Mesh finish(MtlMaterials materials, const std::string &file, const MeshFormat &format, Losses &losses) {
        std::vector<ObjMaterialUse> uses(numberOfUsed_);
        for (const auto &[name, use] : materials_)
            if (use.number) uses[*use.number] = {.name = name, .uvMap = use.hasUvs ? kUvMap : ""};
        SceneMaterials described = std::move(materials).used(uses, file, format, losses);
        Mesh mesh = builder_.finish();
        mesh.materials = std::move(described.names);
        mesh.materialValues = std::move(described.described);
        return mesh;
    }

  private:
    static constexpr const char *kUvMap = "UV";

    struct MaterialInUse {
        std::optional<std::uint16_t> number; // of the mesh's materials
        bool hasUvs = false;
    };
    // The first vertices at a position form a list, which is searched fast because it is short. Further ones are in a
    // map: searching long lists would take time in proportion to the square of their length.
    static constexpr int kMostListed = 64;
    // A vertex of the mesh: the indices of its values besides the position.
    struct ObjVertex {
        std::uint32_t uv, normal;
        std::uint32_t older; // the previous listed vertex at the same position; kNoObjIndex: none
    };

    // An empty name is that of the material of polygons that name none, which files describe as one without a name.
    void setMaterial(const std::string &name) {
        current_ = &*materials_.try_emplace(name.empty() ? AI_DEFAULT_MATERIAL_NAME : name).first;
    }

    static std::uint32_t firstOf(const std::vector<std::uint32_t> &firsts, std::uint32_t index) {
        return firsts.empty() || index == kNoObjIndex ? kNoObjIndex : firsts[index];
    }

    std::uint32_t vertexOf(const ObjCorner &corner) {
        const std::uint32_t position = firstPositions_[corner.position];
        const std::uint32_t uv = firstOf(firstUvs_, corner.uv), normal = firstOf(firstNormals_, corner.normal);
        int listed = 0;
        for (std::uint32_t i = newest_[position]; i != kNoObjIndex; i = vertices_[i].older, ++listed)
            if (vertices_[i].uv == uv && vertices_[i].normal == normal) return i;
        const auto newcomer = static_cast<std::uint32_t>(vertices_.size());
        if (listed < kMostListed) {
            vertices_.push_back({.uv = uv, .normal = normal, .older = newest_[position]});
            newest_[position] = newcomer;
        } else {
            const auto [entry, isNew] = unlisted_.try_emplace({position, uv, normal}, newcomer);
            if (!isNew) return entry->second;
            vertices_.push_back({.uv = uv, .normal = normal, .older = kNoObjIndex});
        }
        return addVertex(position, uv, normal);
    }

    std::uint32_t addVertex(std::uint32_t position, std::uint32_t uv, std::uint32_t normal) {
        const auto &[x, y, z] = values_.positions[position];
        vertex_.position = {x, y, z};
        // Without a normal, shading uses the polygon's own.
        const auto [nx, ny, nz] = normal == kNoObjIndex ? std::array<float, 3>{} : values_.normals[normal];
        vertex_.normal = {nx, ny, nz};
        constexpr float kNoUv = std::numeric_limits<float>::quiet_NaN();
        if (hasUvs_) vertex_.uvs[0] = uv == kNoObjIndex ? std::array<float, 2>{kNoUv, kNoUv} : values_.uvs[uv];
        return builder_.addSeparateVertex(vertex_);
    }

    void addPolygon(const ObjStatements &part, std::size_t begin, std::size_t end) {
        corners_.clear();
        for (std::size_t i = begin; i < end; ++i) corners_.push_back(vertexOf(part.corners[i]));
        // The change to left-handed axes reverses every polygon, and so does a mirroring transform.
        if (turns_) std::reverse(corners_.begin() + 1, corners_.end());
        MaterialInUse &material = current_->second;
        if (!material.number) {
            material.number = builder_.addMaterial(current_->first);
            ++numberOfUsed_;
        }
        if (part.corners[begin].uv != kNoObjIndex) material.hasUvs = true;
        builder_.addPolygon(corners_, *material.number);
    }

    const ObjValues values_;
    const bool turns_, hasUvs_, hasNormals_;
    MeshBuilder builder_;
    const std::vector<std::uint32_t> firstPositions_;
    std::vector<std::uint32_t> firstUvs_, firstNormals_;
    std::vector<std::uint32_t> newest_; // by position: its last listed vertex
    std::vector<ObjVertex> vertices_;
    std::map<std::array<std::uint32_t, 3>, std::uint32_t> unlisted_; // by position, UV coordinates and normal
    BuilderVertex vertex_;
    std::vector<std::uint32_t> corners_; // of one polygon
    std::unordered_map<std::string, MaterialInUse> materials_;
    std::pair<const std::string, MaterialInUse> *current_ = nullptr;
    std::size_t numberOfUsed_ = 0;
};

// Reads the polygons of a few parts at a time, so that the indices of the whole file are never in memory at once.
void addParts(const ObjParts &parts, const std::string &file, MaterialFiles &files, ObjMesh &mesh, Losses &losses) {
    constexpr std::size_t kAtATime = 64;
    std::vector<ObjStatements> read(std::min(kAtATime, parts.parts.size()));
    for (std::size_t first = 0; first < parts.parts.size(); first += kAtATime) {
        const std::size_t count = std::min(kAtATime, parts.parts.size() - first);
        forTasks(count, [&](std::size_t i) {
            const ObjPart &part = parts.parts[first + i];
            read[i] = part.hasStatements ? readObjStatements(part, parts.all, file) : ObjStatements();
        });
        for (std::size_t i = 0; i < count; ++i) {
            mesh.add(read[i], files, losses);
            if (read[i].undrawn > 0)
                losses.add(Loss::undrawnElement, fmt::format("line {}", read[i].firstUndrawn), read[i].undrawn);
        }
    }
}

bool isUtf16(std::string_view bytes) { return bytes.starts_with("\xff\xfe") || bytes.starts_with("\xfe\xff"); }

std::optional<std::string> readIfReadable(const std::string &name) {
    if (whyUnreadable(name)) return std::nullopt;
    return readFile(name);
}

} // namespace

std::optional<Mesh> plainObjMesh(std::string_view bytes, const std::string &file, const MeshFormat &format,
                                 const Transform &transform, const ReadOther &readOther,
                                 std::pmr::memory_resource *memory) {
    if (isUtf16(bytes)) return std::nullopt;
    if (bytes.starts_with("\xef\xbb\xbf")) bytes.remove_prefix(3);
    const ObjParts parts = scanObj(bytes);
    std::optional<ObjValues> values = readObjValues(parts, file, transform);
    if (!values) return std::nullopt;
    Losses losses;
    MaterialFiles files(file, readOther);
    ObjMesh mesh(parts.all, std::move(*values), transform, memory);
    addParts(parts, file, files, mesh, losses);
    if (mesh.isEmpty()) throw InputError({.file = file}, "the mesh has no polygons");
    Mesh result = mesh.finish(files.takeMaterials(), file, format, losses);
    addWarnings(losses, result);
    return result;
}

Mesh readObjMesh(const std::string &file, const MeshFormat &format, const Transform &transform,
                 std::pmr::memory_resource *memory) {
    std::optional<Mesh> mesh = plainObjMesh(readFile(file), file, format, transform, readIfReadable, memory);
    return mesh ? std::move(*mesh) : readWithAssimp(file, format, transform, memory);
}

std::vector<std::string> filesOfObjMesh(const std::string &file, const MeshFormat &format) {
    std::vector<std::string> files{file};
    const auto record = [&files](const std::string &name) {
        std::optional<std::string> bytes = readIfReadable(name);
        if (bytes) files.push_back(name);
        return bytes;
    };
    if (!plainObjMesh(readFile(file), file, format, Transform(), record)) return filesReadWithAssimp(file, format);
    return files;
}

} // namespace velm::host

#include "host/render/geometry/mtl_file.h"

#include "host/base/names.h"
#include "host/render/geometry/obj_lines.h"

#include <assimp/scene.h>

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <iterator>
#include <optional>
#include <utility>

namespace velm::host {
namespace {

// Identifies a value of the mesh library's materials.
struct MaterialKey {
    const char *name;
    unsigned type, index;
};

struct MtlNumber {
    std::string_view keyword;
    MaterialKey key;
    bool isInverse = false; // the value is 1 minus the number
};
constexpr MtlNumber kNumbers[] = {
    {.keyword = "ns", .key = {AI_MATKEY_SHININESS}},
    {.keyword = "ni", .key = {AI_MATKEY_REFRACTI}},
    {.keyword = "d", .key = {AI_MATKEY_OPACITY}},
    {.keyword = "tr", .key = {AI_MATKEY_OPACITY}, .isInverse = true},
};

struct MtlColour {
    std::string_view keyword;
    MaterialKey key;
};
constexpr MtlColour kColourKeywords[] = {
    {.keyword = "kd", .key = {AI_MATKEY_COLOR_DIFFUSE}},
    {.keyword = "ks", .key = {AI_MATKEY_COLOR_SPECULAR}},
    {.keyword = "ke", .key = {AI_MATKEY_COLOR_EMISSIVE}},
};

struct MtlTexture {
    std::string_view keyword;
    aiTextureType type;
};
constexpr MtlTexture kTextures[] = {
    {.keyword = "map_kd", .type = aiTextureType_DIFFUSE},
    {.keyword = "map_ka", .type = aiTextureType_AMBIENT},
    {.keyword = "map_ks", .type = aiTextureType_SPECULAR},
    {.keyword = "map_ke", .type = aiTextureType_EMISSIVE},
    {.keyword = "map_emissive", .type = aiTextureType_EMISSIVE},
    {.keyword = "map_d", .type = aiTextureType_OPACITY},
    {.keyword = "map_opacity", .type = aiTextureType_OPACITY},
    {.keyword = "map_ns", .type = aiTextureType_SHININESS},
    {.keyword = "map_bump", .type = aiTextureType_HEIGHT},
    {.keyword = "bump", .type = aiTextureType_HEIGHT},
    {.keyword = "norm", .type = aiTextureType_NORMALS},
    {.keyword = "map_kn", .type = aiTextureType_NORMALS},
    {.keyword = "disp", .type = aiTextureType_DISPLACEMENT},
    {.keyword = "map_disp", .type = aiTextureType_DISPLACEMENT},
    {.keyword = "refl", .type = aiTextureType_REFLECTION},
    {.keyword = "map_pr", .type = aiTextureType_DIFFUSE_ROUGHNESS},
    {.keyword = "map_pm", .type = aiTextureType_METALNESS},
    {.keyword = "map_ps", .type = aiTextureType_SHEEN},
};
constexpr aiTextureType kShownTextures[] = {aiTextureType_DIFFUSE, aiTextureType_EMISSIVE, aiTextureType_OPACITY};

// An option before the name of a texture's file. The first argument may be a word; further ones are numbers.
struct TextureOption {
    std::string_view name;
    int mostArguments = 1;
    std::optional<double> unplaced{}; // of options that place the texture: the neutral number
};
constexpr TextureOption kTextureOptions[] = {
    {.name = "-blendu"},
    {.name = "-blendv"},
    {.name = "-bm"},
    {.name = "-boost"},
    {.name = "-cc"},
    {.name = "-clamp"},
    {.name = "-imfchan"},
    {.name = "-mm", .mostArguments = 2},
    {.name = "-o", .mostArguments = 3, .unplaced = 0},
    {.name = "-s", .mostArguments = 3, .unplaced = 1},
    {.name = "-t", .mostArguments = 3, .unplaced = 0},
    {.name = "-texres"},
    {.name = "-type"},
};

template <class Rows>
auto rowOf(const Rows &rows, std::string_view keyword) {
    const auto found = std::ranges::find(rows, keyword, &std::ranges::range_value_t<Rows>::keyword);
    return found == std::end(rows) ? nullptr : &*found;
}

// Red, green and blue; nothing if a word is not a number. A single number is used for all three.
std::optional<aiColor3D> colourIn(std::string_view rest) {
    std::array<float, 3> numbers{};
    std::size_t count = 0;
    for (std::string_view word = takeObjWord(rest); !word.empty() && count < 3; word = takeObjWord(rest)) {
        const auto number = realOf(word);
        if (!number) return std::nullopt;
        numbers[count++] = static_cast<float>(*number);
    }
    if (count == 0) return std::nullopt;
    if (count == 1) return aiColor3D(numbers[0], numbers[0], numbers[0]);
    return aiColor3D(numbers[0], numbers[1], numbers[2]);
}

struct TextureOptions {
    bool clamps = false, isPlaced = false;
};

// Takes the options off a line and leaves the name of the file.
TextureOptions takeTextureOptions(std::string_view &rest) {
    TextureOptions options;
    for (;;) {
        std::string_view ahead = rest;
        const auto *const option = std::ranges::find(kTextureOptions, takeWord(ahead), &TextureOption::name);
        if (option == std::end(kTextureOptions)) return options;
        rest = ahead;
        for (int i = 0; i < option->mostArguments; ++i) {
            const std::string_view word = takeWord(ahead);
            const auto number = realOf(word);
            if (i > 0 && !number) break;
            if (option->name == "-clamp") options.clamps = word == "on";
            if (option->unplaced && number && *number != *option->unplaced) options.isPlaced = true;
            rest = ahead;
        }
    }
}

} // namespace

// The index of the material of that name, which is added if there is none.
std::size_t MtlMaterials::find(const std::string &name) {
    const auto [entry, isNew] = indices_.try_emplace(name.empty() ? AI_DEFAULT_MATERIAL_NAME : name, entries_.size());
    if (isNew) {
        Entry &added = entries_.emplace_back(Entry{.material = std::make_unique<aiMaterial>()});
        const aiString text(entry->first);
        added.material->AddProperty(&text, AI_MATKEY_NAME);
        const aiColor3D grey(0.6F, 0.6F, 0.6F);
        added.material->AddProperty(&grey, 1, AI_MATKEY_COLOR_DIFFUSE);
    }
    return entry->second;
}

bool MtlMaterials::readTexture(aiTextureType type, std::string_view rest, Entry &entry) {
    const TextureOptions options = takeTextureOptions(rest);
    rest = withoutBlanks(rest);
    if (rest.empty()) return false;
    const aiString file{std::string(rest)};
    const int uvChannel = 0, clamp = aiTextureMapMode_Clamp;
    entry.material->AddProperty(&file, AI_MATKEY_TEXTURE(type, 0));
    entry.material->AddProperty(&uvChannel, 1, AI_MATKEY_UVWSRC(type, 0));
    if (options.clamps) {
        entry.material->AddProperty(&clamp, 1, AI_MATKEY_MAPPINGMODE_U(type, 0));
        entry.material->AddProperty(&clamp, 1, AI_MATKEY_MAPPINGMODE_V(type, 0));
    }
    if (options.isPlaced && std::ranges::find(kShownTextures, type) != std::end(kShownTextures)) ++entry.placedTextures;
    return true;
}

// Returns false for a malformed line. Unknown keywords are ignored.
bool MtlMaterials::readLine(std::string_view keyword, std::string_view rest, Entry &entry) {
    if (const MtlTexture *row = rowOf(kTextures, keyword)) return readTexture(row->type, rest, entry);
    if (const MtlColour *row = rowOf(kColourKeywords, keyword)) {
        const auto colour = colourIn(rest);
        if (colour) entry.material->AddProperty(&*colour, 1, row->key.name, row->key.type, row->key.index);
        return colour.has_value();
    }
    const MtlNumber *row = rowOf(kNumbers, keyword);
    if (!row) return true;
    std::string_view word = takeObjWord(rest);
    if (word == "-halo") word = takeObjWord(rest);
    const auto number = realOf(word);
    if (!number) return false;
    const auto value = static_cast<float>(row->isInverse ? 1 - *number : *number);
    entry.material->AddProperty(&value, 1, row->key.name, row->key.type, row->key.index);
    return true;
}

void MtlMaterials::read(std::string_view bytes, const std::string &file, Losses &losses) {
    std::optional<std::size_t> current;
    ObjLines lines(bytes);
    while (lines.next()) {
        std::string_view rest = lines.line();
        const std::string keyword = inLowerCase(takeObjWord(rest));
        if (keyword == "newmtl")
            current = find(std::string(withoutBlanks(rest)));
        else if (current && !readLine(keyword, rest, entries_[*current]))
            losses.addAt(Loss::materialLine, [&] { return fmt::format("{}: line {}", file, lines.number()); });
    }
}

SceneMaterials MtlMaterials::used(const std::vector<ObjMaterialUse> &uses, const std::string &file,
                                  const MeshFormat &format, Losses &losses) && {
    std::vector<std::size_t> indices;
    for (const ObjMaterialUse &use : uses) indices.push_back(find(use.name));
    aiScene scene; // owns the array and the materials in it
    scene.mMaterials = std::make_unique<aiMaterial *[]>(entries_.size()).release();
    std::vector<bool> areUsed(entries_.size());
    std::vector<std::vector<std::string>> uvMaps(entries_.size());
    for (Entry &entry : entries_) scene.mMaterials[scene.mNumMaterials++] = entry.material.release();
    for (std::size_t i = 0; i < uses.size(); ++i) {
        areUsed[indices[i]] = true;
        uvMaps[indices[i]] = {uses[i].uvMap};
        losses.add(Loss::texturePlacing, "of the material " + inQuotes(uses[i].name),
                   entries_[indices[i]].placedTextures);
    }
    SceneMaterials all = materialsOf(scene, file, format, areUsed, uvMaps, losses);
    std::vector<std::string> names;
    for (const std::size_t index : indices) names.push_back(all.names[index]);
    all.names = std::move(names);
    return all;
}

} // namespace velm::host

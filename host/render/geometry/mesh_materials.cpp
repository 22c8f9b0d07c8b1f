// Converts assimp's materials to values of our surfaces.
//
// Metallic-roughness materials (glTF 2.0, appendix B): a microfacet lobe of the width a = roughness^2 reflects
// F0 = mix(0.04, base colour, metallic) at normal incidence. A highlight of ours is Specular x cos(h)^n, with
// n = 2^(10 Glossiness + 2).
// - n = 2 / a^2 - 2, by which both lobes have the same width (Walter et al., "Microfacet Models for Refraction through
//   Rough Surfaces", 2007), and Specular = F0 / (4 a^2), by which they have the same peak: the lobe's is
//   F0 D(h) / 4 with D = 1 / (pi a^2), and a light of intensity 1 lights a white surface to 1, which is pi times that.
// - A rough metal looks like a diffuse surface of its colour; a smooth one is a mirror. Our mirror has no colour, so
//   half of what the metal mirrors stays in Diffuse: with the mirrored part m = metallic (1 - roughness),
//   Diffuse = 1 - m / 2, and Reflection is m / 2 times the luminance of the base colour.
#include "host/render/geometry/mesh_materials.h"

#include "host/base/colour.h"
#include "host/base/names.h"
#include "host/io/embedded_images.h"
#include "host/render/geometry/unused_names.h"

#include <assimp/GltfMaterial.h>
#include <assimp/material.h>

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace velm::host {
namespace {

using Colour = std::array<double, 3>;

constexpr double kMostLight = 1e6; // that a material emits

double largestOf(const Colour &colour) { return *std::ranges::max_element(colour); }
double luminanceOf(const Colour &colour) { return luminance(colour[0], colour[1], colour[2]); }

// The glossiness for an exponent of the highlight.
double glossinessOf(double exponent) { return exponent > 0 ? std::clamp((std::log2(exponent) - 2) / 10, 0.0, 1.0) : 0; }

// The highlight of a microfacet lobe.
void setLobe(double roughness, double atNormalIncidence, MeshMaterial &material) {
    const double width = std::max(roughness * roughness, 1e-3), square = width * width;
    material.specular = std::min(1.0, atNormalIncidence / (4 * square));
    material.glossiness = glossinessOf(2 / square - 2);
}

// Reads the values of one material.
class MaterialReader {
  public:
    MaterialReader(const aiMaterial &from, bool isGltf) : from_(from), isGltf_(isGltf) {}

    // All but the emission.
    MeshMaterial values(const std::string &name) {
        material_.name = name;
        material_.colour = colour(AI_MATKEY_COLOR_DIFFUSE).value_or(Colour{1, 1, 1});
        if (const auto base = colour(AI_MATKEY_BASE_COLOR)) material_.colour = *base;
        readHighlight();
        readOpacity();
        const double index = number(AI_MATKEY_REFRACTI).value_or(1);
        material_.refractionIndex = index > 0 ? index : 1;
        // In other formats, or by their importers, every material is marked as double-sided.
        int twoSided = 1;
        if (isGltf_ && from_.Get(AI_MATKEY_TWOSIDED, twoSided) == aiReturn_SUCCESS)
            material_.doubleSided = twoSided != 0;
        return material_;
    }

    // The emission of a material that has its textures. Our luminosity has the surface's colour, so a material that
    // only glows gets the colour of its glow.
    void addEmission(MeshMaterial &material) const {
        Colour emission = colour(AI_MATKEY_COLOR_EMISSIVE).value_or(Colour{});
        const auto glow = std::ranges::find(material.textures, MeshTexture::Use::luminosity, &MeshTexture::use);
        if (glow != material.textures.end() && !isGltf_ && largestOf(emission) == 0) emission = {1, 1, 1};
        const double intensity = number(AI_MATKEY_EMISSIVE_INTENSITY).value_or(1);
        const double level = std::clamp(intensity, 0.0, kMostLight) * std::min(largestOf(emission), kMostLight);
        if (!(level > 0)) return;
        const double factor = level / largestOf(emission);
        if (largestOf(material.colour) > 0 || material.texture(MeshTexture::Use::colour)) {
            const double base = std::max(luminanceOf(material.colour), 1 / kMostLight);
            material.luminosity = std::min(kMostLight, factor * luminanceOf(emission) / base);
            return;
        }
        for (std::size_t i = 0; i < 3; ++i) material.colour[i] = emission[i] / largestOf(emission);
        material.luminosity = level;
        material.diffuse = 0;
        if (glow != material.textures.end()) glow->use = MeshTexture::Use::colour;
    }

  private:
    std::optional<double> number(const char *key, unsigned type, unsigned index) const {
        float value = 0;
        if (from_.Get(key, type, index, value) != aiReturn_SUCCESS || !std::isfinite(value)) return std::nullopt;
        return static_cast<double>(value);
    }
    std::optional<Colour> colour(const char *key, unsigned type, unsigned index) const {
        aiColor4D found;
        if (from_.Get(key, type, index, found) != aiReturn_SUCCESS) return std::nullopt;
        Colour colour{found.r, found.g, found.b};
        for (double &component : colour) component = std::isfinite(component) ? std::max(component, 0.0) : 0;
        return colour;
    }

    void readHighlight() {
        const Colour specular = colour(AI_MATKEY_COLOR_SPECULAR).value_or(Colour{});
        if (const auto metallic = number(AI_MATKEY_METALLIC_FACTOR); metallic && isGltf_)
            return readMetal(std::clamp(*metallic, 0.0, 1.0));
        if (const auto glossiness = number(AI_MATKEY_GLOSSINESS_FACTOR))
            return setLobe(1 - std::clamp(*glossiness, 0.0, 1.0), largestOf(specular), material_);
        const double exponent = number(AI_MATKEY_SHININESS).value_or(0);
        const double strength = number(AI_MATKEY_SHININESS_STRENGTH).value_or(1);
        material_.specular = exponent > 0 ? std::clamp(largestOf(specular) * strength, 0.0, 1.0) : 0;
        material_.glossiness = glossinessOf(exponent);
        const Colour reflective = colour(AI_MATKEY_COLOR_REFLECTIVE).value_or(Colour{});
        material_.reflection = std::clamp(number(AI_MATKEY_REFLECTIVITY).value_or(0) * largestOf(reflective), 0.0, 1.0);
    }

    void readMetal(double metallic) {
        double roughness = std::clamp(number(AI_MATKEY_ROUGHNESS_FACTOR).value_or(1), 0.0, 1.0);
        // The values are in a texture that is not read. Most parts of most models are not metal.
        if (from_.GetTextureCount(aiTextureType_METALNESS) > 0 || from_.GetTextureCount(aiTextureType_UNKNOWN) > 0) {
            metallic = 0;
            roughness = 0.5 * roughness;
        }
        constexpr double kDielectric = 0.04;
        setLobe(roughness, kDielectric + metallic * (largestOf(material_.colour) - kDielectric), material_);
        const double mirrored = metallic * (1 - roughness);
        material_.diffuse = 1 - mirrored / 2;
        material_.reflection = std::min(1.0, mirrored / 2 * luminanceOf(material_.colour));
    }

    void readOpacity() {
        material_.opacity = std::clamp(number(AI_MATKEY_OPACITY).value_or(1), 0.0, 1.0);
        // Programs disagree on whether 0 means opaque or invisible in OBJ and Collada. Nobody exports what is
        // invisible.
        if (!isGltf_ && material_.opacity == 0) material_.opacity = 1;
        aiString mode;
        if (from_.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) != aiReturn_SUCCESS) return;
        if (std::string_view(mode.C_Str()) == "MASK")
            material_.alphaCutoff = std::clamp(number(AI_MATKEY_GLTF_ALPHACUTOFF).value_or(0.5), 0.0, 1.0);
        else if (std::string_view(mode.C_Str()) != "BLEND")
            material_.opacity = 1;
        const double transmission = std::clamp(number(AI_MATKEY_TRANSMISSION_FACTOR).value_or(0), 0.0, 1.0);
        material_.opacity *= 1 - transmission;
    }

    const aiMaterial &from_;
    const bool isGltf_;
    MeshMaterial material_;
};

MeshTexture::Wrap wrapOf(int mode) {
    switch (mode) {
    case aiTextureMapMode_Clamp: return MeshTexture::Wrap::edge;
    case aiTextureMapMode_Decal: return MeshTexture::Wrap::reset;
    case aiTextureMapMode_Mirror: return MeshTexture::Wrap::mirror;
    default: return MeshTexture::Wrap::repeat;
    }
}

// The textures of one scene's materials.
class TextureReader {
  public:
    TextureReader(const aiScene &scene, const std::string &file, const MeshFormat &format, Losses &losses)
        : scene_(scene), file_(file), format_(format), losses_(losses) {}

    // Adds the first texture of a type. Returns false if there is none that can be shown. `uvMaps` are the names of the
    // material's UV maps, by channel.
    bool add(const aiMaterial &from, aiTextureType type, MeshTexture::Use use, const std::vector<std::string> &uvMaps,
             MeshMaterial &material) {
        aiString name;
        if (from.Get(AI_MATKEY_TEXTURE(type, 0), name) != aiReturn_SUCCESS || name.length == 0) return false;
        MeshTexture texture{.use = use, .file = fileOf(name.C_Str()), .uvMap = {}};
        int channel = 0, modes[2] = {aiTextureMapMode_Wrap, aiTextureMapMode_Wrap}, flags = 0;
        from.Get(AI_MATKEY_UVWSRC(type, 0), channel);
        from.Get(AI_MATKEY_MAPPINGMODE_U(type, 0), modes[0]);
        from.Get(AI_MATKEY_MAPPINGMODE_V(type, 0), modes[1]);
        from.Get(AI_MATKEY_TEXFLAGS(type, 0), flags);
        if (channel >= 0 && static_cast<std::size_t>(channel) < uvMaps.size())
            texture.uvMap = uvMaps[static_cast<std::size_t>(channel)];
        texture.wrap = {wrapOf(modes[0]), wrapOf(modes[1])};
        texture.isNegative = (flags & aiTextureFlags_Invert) != 0;
        if (texture.file.empty() || texture.uvMap.empty()) return false;
        shown_.emplace(name.C_Str());
        material.textures.push_back(std::move(texture));
        return true;
    }

    // Counts the images of a material that are not shown.
    void countOthers(const aiMaterial &from, const std::string &material) {
        std::set<std::string> others;
        for (int type = aiTextureType_DIFFUSE; type <= AI_TEXTURE_TYPE_MAX; ++type) {
            const auto own = static_cast<aiTextureType>(type);
            for (unsigned i = 0; i < from.GetTextureCount(own); ++i) {
                aiString name;
                if (from.Get(AI_MATKEY_TEXTURE(own, i), name) != aiReturn_SUCCESS) continue;
                if (!shown_.contains(name.C_Str())) others.emplace(name.C_Str());
            }
        }
        losses_.add(Loss::texture, "of the material " + inQuotes(material), others.size());
        shown_.clear();
    }

  private:
    // The file of a texture, which the importer calls `name`. For an image inside of the mesh file, this is its name by
    // its index there: see embedded_images.h. Empty for those that cannot be read again from the mesh file.
    const std::string &fileOf(const std::string &name) {
        const auto [entry, isNew] = files_.try_emplace(name);
        if (isNew) entry->second = findFile(name);
        return entry->second;
    }

    std::string findFile(const std::string &name) {
        const aiTexture *embedded = scene_.GetEmbeddedTexture(name.c_str());
        if (!embedded) return name.starts_with('*') ? std::string() : name; // "*0" and so on are embedded images
        if (!format_.hasImages() || embedded->mHeight != 0) return {};
        if (!images_) readImages();
        const std::string_view bytes(reinterpret_cast<const char *>(embedded->pcData), embedded->mWidth);
        const auto found = indices_.find(bytes);
        return bytes.empty() || found == indices_.end() ? std::string() : embeddedName(file_, found->second);
    }

    // The importer may number the images in another order than the file, so that they are found by their bytes.
    void readImages() {
        images_ = readEmbeddedImages(file_);
        for (std::size_t i = 0; i < images_->size(); ++i) indices_.try_emplace((*images_)[i], i);
    }

    const aiScene &scene_;
    const std::string &file_;
    const MeshFormat &format_;
    Losses &losses_;
    std::map<std::string, std::string> files_;                  // by the importer's name
    std::optional<std::vector<std::string>> images_;            // inside of the file; read when they are needed
    std::unordered_map<std::string_view, std::size_t> indices_; // of the images, by their bytes
    std::set<std::string> shown_;                               // of the material, by the importer's names
};

// Whether the importer made up this material for meshes without one: it has the importer's name for such materials, or
// it is white and has no name.
bool isMadeUp(const aiMaterial &material) {
    const std::string name = material.GetName().C_Str();
    if (name == AI_DEFAULT_MATERIAL_NAME) return material.GetTextureCount(aiTextureType_DIFFUSE) == 0;
    if (!name.empty()) return false;
    for (int type = aiTextureType_DIFFUSE; type <= AI_TEXTURE_TYPE_MAX; ++type)
        if (material.GetTextureCount(static_cast<aiTextureType>(type)) > 0) return false;
    aiColor3D colour(1, 1, 1);
    material.Get(AI_MATKEY_COLOR_DIFFUSE, colour);
    return colour == aiColor3D(1, 1, 1);
}

void addTextures(const aiMaterial &from, const std::vector<std::string> &uvMaps, TextureReader &textures,
                 MeshMaterial &material) {
    using Use = MeshTexture::Use;
    const bool hasColour = textures.add(from, aiTextureType_BASE_COLOR, Use::colour, uvMaps, material) ||
                           textures.add(from, aiTextureType_DIFFUSE, Use::colour, uvMaps, material);
    aiString mode;
    const bool isGltf = from.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == aiReturn_SUCCESS;
    if (isGltf && hasColour && std::string_view(mode.C_Str()) != "OPAQUE") {
        MeshTexture opacity = material.textures.front();
        opacity.use = Use::opacity;
        opacity.isAlpha = true;
        material.textures.push_back(std::move(opacity));
    } else if (textures.add(from, aiTextureType_OPACITY, Use::opacity, uvMaps, material)) {
        // An image of colour and opacity has the opacity in its alpha.
        MeshTexture &opacity = material.textures.back();
        opacity.isAlpha = hasColour && material.textures.front().file == opacity.file;
    }
    textures.add(from, aiTextureType_EMISSIVE, Use::luminosity, uvMaps, material);
}

bool isUtf8(std::string_view text) {
    std::size_t missing = 0; // further bytes of the character
    for (const char each : text) {
        const auto byte = static_cast<unsigned char>(each);
        const bool isFurther = (byte & 0xc0) == 0x80;
        if (isFurther != (missing > 0)) return false;
        if (isFurther)
            --missing;
        else if (byte >= 0xc0)
            missing = byte < 0xe0 ? 1 : byte < 0xf0 ? 2 : 3;
    }
    return missing == 0;
}

// The name in UTF-8, which scene files are in. Older programs write other names in Latin 1.
std::string inUtf8(const std::string &name) {
    if (isUtf8(name)) return name;
    std::string text;
    for (const char each : name) {
        const auto byte = static_cast<unsigned char>(each);
        if (byte < 0x80)
            text += each;
        else
            text.append({static_cast<char>(0xc0 | byte >> 6), static_cast<char>(0x80 | (byte & 0x3f))});
    }
    return text;
}

// The names of all materials. Different ones have different names, except those that the importer makes up.
std::vector<std::string> namesOf(const aiScene &scene) {
    UnusedNames unused(" (", ")");
    std::vector<std::string> names;
    for (unsigned i = 0; i < scene.mNumMaterials; ++i) {
        const aiMaterial &material = *scene.mMaterials[i];
        std::string name = inUtf8(material.GetName().C_Str());
        if (isMadeUp(material))
            unused.add(name);
        else
            name = unused.take(name.empty() ? fmt::format("Material {}", i + 1) : name);
        names.push_back(std::move(name));
    }
    return names;
}

} // namespace

SceneMaterials materialsOf(const aiScene &scene, const std::string &file, const MeshFormat &format,
                           const std::vector<bool> &used, const std::vector<std::vector<std::string>> &uvMaps,
                           Losses &losses) {
    const bool isGltf = format.isGltf(), multiplies = isGltf || format.ending == std::string_view("obj");
    SceneMaterials materials{.names = namesOf(scene), .described = {}};
    TextureReader textures(scene, file, format, losses);
    for (unsigned i = 0; i < scene.mNumMaterials; ++i) {
        const aiMaterial &from = *scene.mMaterials[i];
        if (!used[i] || isMadeUp(from)) continue;
        MaterialReader reader(from, isGltf);
        MeshMaterial &material = materials.described.emplace_back(reader.values(materials.names[i]));
        addTextures(from, uvMaps[i], textures, material);
        // In other formats, the texture replaces the colour. In these, some programs write black beside a texture.
        if (material.texture(MeshTexture::Use::colour) && (!multiplies || largestOf(material.colour) == 0))
            material.colour = {1, 1, 1};
        reader.addEmission(material);
        textures.countOthers(from, material.name);
    }
    return materials;
}

} // namespace velm::host

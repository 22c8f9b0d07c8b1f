// The materials of a mesh in memory that the process that reads the file shares with this one.
#pragma once

#include "host/io/shared_arena.h"
#include "host/object/mesh_material.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory_resource>
#include <string>
#include <vector>

namespace velm::host {

// The other process may have left anything in the buffers: isWithin has to be true before materials() is called.
class MaterialBuffers {
  public:
    explicit MaterialBuffers(std::pmr::memory_resource *memory) : values_(memory), textures_(memory), texts_(memory) {}

    void take(const std::vector<MeshMaterial> &materials) {
        for (const MeshMaterial &material : materials) {
            values_.push_back({.numbers = numbersOf(material),
                               .hasColourAlpha = material.hasColourAlpha ? 1U : 0U,
                               .doubleSided = material.doubleSided ? 1U : 0U,
                               .textures = static_cast<std::uint32_t>(material.textures.size())});
            texts_.emplace_back(material.name);
            texts_.emplace_back(material.colourMap);
            for (const MeshTexture &texture : material.textures) {
                textures_.push_back(
                    {.use = static_cast<std::uint32_t>(texture.use),
                     .wrap = {static_cast<std::uint32_t>(texture.wrap[0]), static_cast<std::uint32_t>(texture.wrap[1])},
                     .isNegative = texture.isNegative ? 1U : 0U,
                     .isAlpha = texture.isAlpha ? 1U : 0U});
                texts_.emplace_back(texture.file);
                texts_.emplace_back(texture.uvMap);
            }
        }
    }

    bool isWithin(const SharedArena &arena) const {
        return arena.holds(values_) && arena.holds(textures_) && arena.holds(texts_) &&
               std::ranges::all_of(texts_, [&](const std::pmr::string &text) { return arena.holds(text); }) && fits();
    }

    std::vector<MeshMaterial> materials() const {
        std::vector<MeshMaterial> all;
        auto texture = textures_.begin();
        auto text = texts_.begin();
        const auto nextText = [&text] { return std::string(*text++); };
        for (const Values &values : values_) {
            MeshMaterial &material = all.emplace_back();
            material.name = nextText();
            material.colourMap = nextText();
            material.hasColourAlpha = values.hasColourAlpha != 0;
            setNumbers(values.numbers, material);
            material.doubleSided = values.doubleSided != 0;
            for (std::uint32_t i = 0; i < values.textures; ++i, ++texture) {
                MeshTexture &added = material.textures.emplace_back();
                added.use = static_cast<MeshTexture::Use>(texture->use);
                added.file = nextText();
                added.uvMap = nextText();
                for (std::size_t k = 0; k < 2; ++k) added.wrap[k] = static_cast<MeshTexture::Wrap>(texture->wrap[k]);
                added.isNegative = texture->isNegative != 0;
                added.isAlpha = texture->isAlpha != 0;
            }
        }
        return all;
    }

  private:
    using Numbers = std::array<double, 11>;
    struct Values {
        Numbers numbers;
        std::uint32_t hasColourAlpha, doubleSided, textures; // how many of the textures are this material's
    };
    struct Texture {
        std::uint32_t use;
        std::array<std::uint32_t, 2> wrap;
        std::uint32_t isNegative, isAlpha;
    };

    static Numbers numbersOf(const MeshMaterial &from) {
        return {from.colour[0],  from.colour[1],  from.colour[2], from.luminosity,      from.diffuse,    from.specular,
                from.glossiness, from.reflection, from.opacity,   from.refractionIndex, from.alphaCutoff};
    }
    static void setNumbers(const Numbers &numbers, MeshMaterial &to) {
        to.colour = {numbers[0], numbers[1], numbers[2]};
        to.luminosity = numbers[3];
        to.diffuse = numbers[4];
        to.specular = numbers[5];
        to.glossiness = numbers[6];
        to.reflection = numbers[7];
        to.opacity = numbers[8];
        to.refractionIndex = numbers[9];
        to.alphaCutoff = numbers[10];
    }

    // Whether the buffers belong together, and have no value outside of its range.
    bool fits() const {
        std::size_t textures = 0;
        for (const Values &values : values_) {
            if (values.textures > textures_.size() - textures) return false;
            textures += values.textures;
        }
        const auto isFinite = [](double number) { return std::isfinite(number); };
        return textures == textures_.size() && texts_.size() == 2 * (values_.size() + textures) &&
               std::ranges::all_of(values_,
                                   [&](const Values &each) { return std::ranges::all_of(each.numbers, isFinite); }) &&
               std::ranges::all_of(textures_, [](const Texture &each) {
                   return each.use <= static_cast<std::uint32_t>(MeshTexture::Use::opacity) &&
                          std::ranges::all_of(each.wrap, [](std::uint32_t wrap) {
                              return wrap <= static_cast<std::uint32_t>(MeshTexture::Wrap::edge);
                          });
               });
    }

    std::pmr::vector<Values> values_;
    std::pmr::vector<Texture> textures_;
    // For each material its name and its map of colours, then the file and the UV map of each of its textures.
    std::pmr::vector<std::pmr::string> texts_;
};

} // namespace velm::host

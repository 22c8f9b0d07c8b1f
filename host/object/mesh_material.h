// The materials of mesh files, converted to the values of surfaces.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace velm::host {

// An image on a UV map.
struct MeshTexture {
    enum class Use { colour, luminosity, opacity };
    enum class Wrap { reset, repeat, mirror, edge }; // beyond the image: nothing, copies, mirrored copies, the edge

    Use use = Use::colour;
    std::string file; // as the mesh file names it, or the name of an image inside of a file: see embedded_images.h
    std::string uvMap;
    std::array<Wrap, 2> wrap{Wrap::repeat, Wrap::repeat}; // across and up
    bool isNegative = false;
    bool isAlpha = false; // of opacity: the image's alpha instead of its luminance
};

// A material. Fractions are 1 for full; colours are those of the file.
struct MeshMaterial {
    std::string name;
    std::string colourMap{};               // of the vertices, by name: multiplies the colour; empty for none
    bool hasColourAlpha = false;           // its alpha multiplies the opacity
    std::array<double, 3> colour{1, 1, 1}; // multiplies the texture of the colour
    double luminosity = 0;                 // multiplies that of the luminosity
    double diffuse = 1, specular = 0, glossiness = 0.4, reflection = 0;
    double opacity = 1; // multiplies that of the opacity
    double refractionIndex = 1;
    double alphaCutoff = 0; // above 0: the material is opaque where its opacity reaches this, and invisible elsewhere
    bool doubleSided = true;
    std::vector<MeshTexture> textures; // at most one for each use

    // The texture for a use; null for none.
    const MeshTexture *texture(MeshTexture::Use use) const {
        for (const MeshTexture &one : textures)
            if (one.use == use) return &one;
        return nullptr;
    }
};

} // namespace velm::host

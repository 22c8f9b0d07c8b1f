// The texture layers and shaders of the surfaces of object files, as the files have them.
//
// A surface has a base value for its colour, its diffuse level and so on: its channels. Each texture layer belongs to
// one channel and is blended with what the channel has so far, the base value first.
#pragma once

#include "host/object/envelopes.h"
#include "host/object/iff.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace velm::host {

// How a layer is blended with what is below it; the numbers are those of the files.
enum class TextureBlend {
    normal,
    subtractive,
    difference,
    multiply,
    divide,
    alpha,        // the layer masks the one below it
    displacement, // the layer moves the ones below it
    additive
};

// A key of a gradient.
struct GradientKey {
    float at = 0;                              // in units of the gradient's input
    std::array<float, 4> colour{};             // red, green, blue and alpha; 1 is full
    enum class Shape { linear, spline, step }; // the numbers are those of the files
    Shape shape = Shape::linear;               // of the span that ends at the key
};

// The numbers of a layer that envelopes may drive.
enum class TextureNumber { opacity, centre, size, rotation, falloff, repeatsU, repeatsV, amplitude };

// A layer or shader. The members after `negative` hold for the kinds that their comments name. Numbers that the format
// does not define count as the default.
struct SurfaceTexture {
    enum class Kind { image, procedural, gradient, shader };
    Kind kind = Kind::image;
    std::string ordinal;       // layers and shaders are in order of their ordinals, compared as unsigned bytes
    std::uint32_t channel = 0; // "COLR", "DIFF", ...; 0 for a shader
    bool isEnabled = true;
    TextureBlend blend = TextureBlend::additive;
    float opacity = 1; // 1 is full
    bool isNegative = false;
    // The envelopes that drive the layer's numbers. A number without one is not in the map.
    std::map<TextureNumber, ComponentEnvelopes> envelopes;

    // Of images and procedurals: the position of the texture.
    std::array<float, 3> centre{}, size{1, 1, 1}; // metres
    std::array<float, 3> rotation{};              // heading, pitch and bank in radians
    std::array<float, 3> falloff{};               // loss of opacity a metre
    int falloffType = 0;                          // 0 cubic, 1 spherical, 2 to 4 linear along X, Y and Z
    bool isInWorld = false;                       // the position is in world space, not the object's
    std::string reference;                        // the item that the texture follows; empty for none
    bool isMoving = false;                        // the texture has a velocity

    float amplitude = 1; // of a bump

    // Of images.
    std::uint32_t clip = 0;             // number of the image in the object; 0 for none, and where the file names it
    std::string imageFile;              // file name on the machine that wrote the object; empty where it is not known
    int imageVariant = 1;               // of the object's images of that name, counted from 1
    bool hasImagePlugIn = false;        // a plug-in changes the image
    bool hasFilterEnvelope = false;     // an envelope drives a filter of the image
    std::string alphaFile;              // of an image that masks the layer; empty for none
    int projection = 0;                 // 0 planar, 1 cylindrical, 2 spherical, 3 cubic, 4 front, 5 UV
    int axis = 0;                       // 0 X, 1 Y, 2 Z
    std::array<int, 2> wrap{1, 1};      // across and up: 0 reset, 1 repeat, 2 mirror, 3 edge
    std::array<float, 2> repeats{1, 1}; // around a cylinder or sphere, and from pole to pole
    std::string uvMap;
    float antialiasing = 1; // 0: off
    bool isBlendingPixels = true;
    bool isFrozen = false; // a front projection as it was at one time

    // Of gradients.
    std::string input, item; // what the gradient depends on, and the item or vertex map that this refers to
    std::vector<GradientKey> keys;

    // Of procedurals and shaders: the name of the procedural or plug-in.
    std::string function;
    // Of procedurals: the colour or value that the texture has where its pattern is full, and how many layers of noise
    // it has; 0 where the file does not say.
    std::array<float, 3> value{1, 1, 1};
    int octaves = 0;
};

// The layers and shaders among the sub-chunks of a surface of an LWO2 object, in their order: the lowest layer first.
// `envelopes` are those of the object. Throws InputError with the byte's offset for what is too short. [any thread]
std::vector<SurfaceTexture> readTextures(const IffFile &file, const std::vector<Chunk> &subChunks,
                                         const EnvelopeList &envelopes);

} // namespace velm::host

// Converts the texture layers of object files to networks of the host's nodes.
#pragma once

#include "host/object/losses.h"
#include "host/object/surface_textures.h"
#include "host/object/surface_values.h"
#include "host/scene/format/description.h"

#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// Adds to a surface's description the network that represents its texture layers, which are given from the lowest to
// the highest. Each layer is an image or gradient node, and a blend node that blends it with the layers below; the last
// blend node feeds the surface's input. The value below the first layer is the surface's setting; a node computes a
// colour whose components have different keys, and two nodes tint the colour by that of the vertices. `values` are
// those of the surface, which its settings have already. `losses` counts what the network cannot represent.
void describeTextures(const std::vector<SurfaceTexture> &textures, const SurfaceChunkValues &values,
                      SurfaceDescription &surface, Losses &losses);

// Counts the enabled textures and shaders of a surface that has nodes, which are left out. A network that feeds an
// input of the surface replaces the textures of that channel, as in LightWave: these are not counted. `fedInputs` are
// the names of such inputs.
void noteUnusedTextures(const std::vector<SurfaceTexture> &textures, const std::vector<std::string> &fedInputs,
                        const std::string &surface, Losses &losses);

// The name that an image of an object gets in the scene: the last part of its file's name on the machine that wrote the
// object, with the image's number if the object has several of that name: "wood.png (2)". Empty where the file's name
// ends with a separator.
std::string sceneNameOfImage(std::string_view file, int variant = 1);

} // namespace velm::host

// What is left out of an object, of its surfaces or of another mesh file, for the user to be warned of: one line for
// each kind, with a count and the first place.
#pragma once

#include "host/base/loss_counts.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velm::host {

enum class Loss {
    // What a mesh file holds besides the mesh:
    texture,        // of a material
    texturePlacing, // of a texture that is shown: its offset or scale
    materialFile,   // a material file that is missing
    materialLine,   // a malformed line of a material file
    bone,
    morphTarget,
    camera,
    fieldOfView, // of a camera that is read
    light,
    animation,
    // Of OBJ files:
    undrawnElement, // a line, a point, a curve or a free-form surface
    // Of LightWave's objects:
    unknownChunk,     // that the reader does not know
    curve,            // CRVS in objects of LightWave 5
    unreadPolygons,   // a chunk of a polygon type that is not drawn, and that could not be read
    danglingTag,      // of a polygon or tag that is not there
    danglingMapValue, // of a point or polygon that is not there
    hiddenLayer,      // its polygons are not drawn
    smallPolygon,     // fewer than three points
    undrawnPolygon,   // a curve, a metaball, a bone or another type
    cage,             // of a subdivision surface that cannot be subdivided: drawn as it is
    knottedCage,      // a polygon of a cage that has a point twice
    cageWeights,      // a map of weights by which points attract a subdivision surface
    smoothingGroup,   // normals are smoothed across its border
    unusedMap,        // a vertex map that is not used for rendering
    // Of surfaces:
    animatedValue,     // a value that an envelope drives
    envelopeModifier,  // a plug-in that changes an envelope
    vertexColours,     // that tint the surface
    shader,            // a plug-in
    layersBesideNodes, // texture layers of a surface that has a network
    procedural,        // a texture that a function computes
    similarPattern,    // one that is shown by a similar pattern
    otherChannel,      // a texture of a channel that is not rendered
    alphaLayer,        // a texture that masks the one below it, but is the lowest one
    displacementLayer, // a texture that moves those below it
    otherImage,        // an image that is neither a still nor a sequence of numbered files
    imageFilter,       // a plug-in that changes an image
    filterEnvelope,    // the envelope of a change to an image
    alphaImage,        // an image that masks a texture
    gradientInput,     // a gradient whose input is not supported
    gradientKeys,      // a key of a gradient that has too many
    animatedTexture,   // a texture that moves, or whose envelope is missing
    referenceObject,   // that a texture follows
    frozenProjection,  // a front projection as it was at one time
};

// True for things that a scene file describes itself. Their loss only matters when the mesh file is opened directly.
constexpr bool isBesideMesh(Loss kind) { return kind <= Loss::animation; }

// A place is in the file or in the object: "polygon 3 of layer 0".
class Losses : public LossCounts<Loss, static_cast<std::size_t>(Loss::frozenProjection) + 1, std::string> {
  public:
    struct Text {
        Loss kind;
        std::string brief;   // the kind: "hidden layers"
        std::string message; // a line: "2 layers are hidden and not drawn (the first: layer 3 \"Wheels\")"
    };
    // One for each kind of which there is anything, in the order of the kinds.
    std::vector<Text> texts() const;
};

} // namespace velm::host

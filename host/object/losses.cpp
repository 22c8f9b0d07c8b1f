#include "host/object/losses.h"

#include <fmt/format.h>

namespace velm::host {
namespace {

struct Wording {
    Loss kind;
    const char *brief;
    const char *one, *many; // `many` with the count for {}
};

constexpr Wording kWordings[] = {
    {.kind = Loss::material,
     .brief = "materials",
     .one = "a material is not read",
     .many = "{} materials are not read"},
    {.kind = Loss::texture, .brief = "textures", .one = "a texture is not read", .many = "{} textures are not read"},
    {.kind = Loss::colourMap,
     .brief = "vertex colours",
     .one = "a map of vertex colours is not read",
     .many = "{} maps of vertex colours are not read"},
    {.kind = Loss::bone, .brief = "bones", .one = "a bone is not read", .many = "{} bones are not read"},
    {.kind = Loss::morphTarget,
     .brief = "morph targets",
     .one = "a morph target is not read",
     .many = "{} morph targets are not read"},
    {.kind = Loss::camera, .brief = "cameras", .one = "a camera is not read", .many = "{} cameras are not read"},
    {.kind = Loss::light, .brief = "lights", .one = "a light is not read", .many = "{} lights are not read"},
    {.kind = Loss::animation,
     .brief = "animations",
     .one = "an animation is not read",
     .many = "{} animations are not read"},
    {.kind = Loss::unknownChunk,
     .brief = "unknown chunks",
     .one = "a chunk of an unknown kind is left out",
     .many = "{} chunks of unknown kinds are left out"},
    {.kind = Loss::curve, .brief = "curves", .one = "a curve is left out", .many = "{} curves are left out"},
    {.kind = Loss::unreadPolygons,
     .brief = "polygons of other types",
     .one = "a chunk of polygons of another type than FACE, PTCH and SUBD could not be read to its end",
     .many = "{} chunks of polygons of other types than FACE, PTCH and SUBD could not be read to their ends"},
    {.kind = Loss::danglingTag,
     .brief = "tags without a polygon",
     .one = "a tag for a polygon is ignored: the object has no such polygon or tag",
     .many = "{} tags for polygons are ignored: the object has no such polygons or tags"},
    {.kind = Loss::danglingMapValue,
     .brief = "map values without a point",
     .one = "a value of a vertex map is ignored: the object has no such point or polygon",
     .many = "{} values of vertex maps are ignored: the object has no such points or polygons"},
    {.kind = Loss::hiddenLayer,
     .brief = "hidden layers",
     .one = "a layer is hidden and not drawn",
     .many = "{} layers are hidden and not drawn"},
    {.kind = Loss::smallPolygon,
     .brief = "polygons of one or two points",
     .one = "a polygon has fewer than three points and is left out",
     .many = "{} polygons have fewer than three points and are left out"},
    {.kind = Loss::undrawnPolygon,
     .brief = "polygons of other types",
     .one = "a polygon is of another type than FACE, PTCH and SUBD and is left out",
     .many = "{} polygons are of other types than FACE, PTCH and SUBD and are left out"},
    {.kind = Loss::cage,
     .brief = "subdivision surfaces",
     .one = "a polygon of a subdivision surface is drawn as it is, without subdivision",
     .many = "{} polygons of subdivision surfaces are drawn as they are, without subdivision"},
    {.kind = Loss::smoothingGroup,
     .brief = "smoothing groups",
     .one = "the smoothing group of a polygon is ignored",
     .many = "the smoothing groups of {} polygons are ignored"},
    {.kind = Loss::unusedMap,
     .brief = "vertex maps",
     .one = "a vertex map is not used: only UV maps are",
     .many = "{} vertex maps are not used: only UV maps are"},
    {.kind = Loss::animatedValue,
     .brief = "envelopes of surfaces",
     .one = "the envelope of a value of a surface is not read; the value without it counts",
     .many = "the envelopes of {} values of surfaces are not read; the values without them count"},
    {.kind = Loss::vertexColours,
     .brief = "vertex colours",
     .one = "the vertex colours of a surface are not shown",
     .many = "the vertex colours of {} surfaces are not shown"},
    {.kind = Loss::shader, .brief = "shaders", .one = "a shader is left out", .many = "{} shaders are left out"},
    {.kind = Loss::layersBesideNodes,
     .brief = "textures of surfaces with nodes",
     .one = "a texture is left out, since its surface has a network of nodes",
     .many = "{} textures are left out, since their surfaces have networks of nodes"},
    {.kind = Loss::procedural,
     .brief = "procedural textures",
     .one = "a procedural texture is left out",
     .many = "{} procedural textures are left out"},
    {.kind = Loss::otherChannel,
     .brief = "textures of other channels",
     .one = "a texture of a channel that is not rendered is left out",
     .many = "{} textures of channels that are not rendered are left out"},
    {.kind = Loss::alphaLayer,
     .brief = "alpha layers",
     .one = "a texture that is the alpha of another is left out",
     .many = "{} textures that are the alpha of others are left out"},
    {.kind = Loss::displacementLayer,
     .brief = "displacement layers",
     .one = "a texture that displaces others is left out",
     .many = "{} textures that displace others are left out"},
    {.kind = Loss::imageSequence,
     .brief = "images that are not stills",
     .one = "a texture is left out, since its image is not a still",
     .many = "{} textures are left out, since their images are not stills"},
    {.kind = Loss::imageFilter,
     .brief = "filters of images",
     .one = "the filters of an image are ignored",
     .many = "the filters of {} images are ignored"},
    {.kind = Loss::alphaImage,
     .brief = "alpha images",
     .one = "the alpha image of a texture is ignored",
     .many = "the alpha images of {} textures are ignored"},
    {.kind = Loss::gradientInput,
     .brief = "gradients",
     .one = "a gradient is left out, since its input is not known here",
     .many = "{} gradients are left out, since their inputs are not known here"},
    {.kind = Loss::gradientKeys,
     .brief = "keys of gradients",
     .one = "a key of a gradient is left out: it has more than eight",
     .many = "{} keys of gradients are left out: these have more than eight"},
    {.kind = Loss::animatedTexture,
     .brief = "animated textures",
     .one = "the animation of a texture is ignored",
     .many = "the animations of {} textures are ignored"},
    {.kind = Loss::referenceObject,
     .brief = "reference objects",
     .one = "the reference object of a texture is ignored",
     .many = "the reference objects of {} textures are ignored"},
    {.kind = Loss::frozenProjection,
     .brief = "frozen projections",
     .one = "a front projection is not frozen at its time",
     .many = "{} front projections are not frozen at their times"},
};

} // namespace

void Losses::add(Loss kind, const std::string &place, std::size_t count) {
    if (count == 0) return;
    Entry &entry = entries_[static_cast<std::size_t>(kind)];
    if (entry.count == 0) entry.first = place;
    entry.count += count;
}

std::vector<Losses::Text> Losses::texts() const {
    std::vector<Text> texts;
    for (const Wording &wording : kWordings) {
        const Entry &entry = entries_[static_cast<std::size_t>(wording.kind)];
        if (entry.count == 0) continue;
        const std::string what = entry.count == 1 ? wording.one : fmt::format(fmt::runtime(wording.many), entry.count);
        texts.push_back(
            {.kind = wording.kind,
             .brief = wording.brief,
             .message = fmt::format("{} ({}{})", what, entry.count == 1 ? "" : "the first: ", entry.first)});
    }
    return texts;
}

} // namespace velm::host

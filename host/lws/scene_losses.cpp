#include "host/lws/scene_losses.h"

#include <fmt/format.h>

namespace velm::host::lws {

namespace {

struct Wording {
    Loss kind;
    const char *brief;
    const char *one, *many; // `many` with the count for {}
};

constexpr Wording kWordings[] = {
    {.kind = Loss::unreadLine,
     .brief = "lines that could not be read",
     .one = "a line is ignored: its arguments are not those that its keyword has",
     .many = "{} lines are ignored: their arguments are not those that their keywords have"},
    {.kind = Loss::unknownItem,
     .brief = "items that are not there",
     .one = "a reference to an item is ignored: the scene has no such item",
     .many = "{} references to items are ignored: the scene has no such items"},
    {.kind = Loss::motionModifier,
     .brief = "motion modifiers",
     .one = "a plug-in that changes a motion is left out",
     .many = "{} plug-ins that change motions are left out"},
    {.kind = Loss::controller,
     .brief = "controllers",
     .one = "an axis is controlled by something else than keys and a target; its keys are used",
     .many = "{} axes are controlled by something else than keys and a target; their keys are used"},
    {.kind = Loss::sameAsItem,
     .brief = "motions copied from other items",
     .one = "an item takes part of its motion from another item; its own keys are used",
     .many = "items take part of their motion from other items {} times; their own keys are used"},
    {.kind = Loss::pivotRotation,
     .brief = "pivot rotations",
     .one = "the rotation of a pivot is ignored",
     .many = "the rotations of {} pivots are ignored"},
    {.kind = Loss::bone, .brief = "bones", .one = "a bone deforms no object", .many = "{} bones deform no objects"},
    {.kind = Loss::morph,
     .brief = "morphing",
     .one = "the morphing of an object is left out",
     .many = "the morphing of {} objects is left out"},
    {.kind = Loss::displacement,
     .brief = "displacements",
     .one = "a displacement is left out",
     .many = "{} displacements are left out"},
    {.kind = Loss::clipMap, .brief = "clip maps", .one = "a clip map is left out", .many = "{} clip maps are left out"},
    {.kind = Loss::distanceDissolve,
     .brief = "dissolving by distance",
     .one = "an object does not dissolve with its distance",
     .many = "{} objects do not dissolve with their distances"},
    {.kind = Loss::polygonSize,
     .brief = "polygon sizes",
     .one = "the polygon size of an object is ignored",
     .many = "the polygon sizes of {} objects are ignored"},
    {.kind = Loss::shadowOption,
     .brief = "shadow options",
     .one = "an object also receives shadows, its own included, against the scene",
     .many = "{} objects also receive shadows, their own included, against the scene"},
    {.kind = Loss::excludedLight,
     .brief = "excluded lights",
     .one = "the exclusion of a light from an object is ignored",
     .many = "{} exclusions of lights from objects are ignored"},
    {.kind = Loss::lightShape,
     .brief = "lights of other shapes",
     .one = "a linear, spherical or photometric light is rendered as a point light",
     .many = "{} linear, spherical or photometric lights are rendered as point lights"},
    {.kind = Loss::unknownLight,
     .brief = "lights of unknown kinds",
     .one = "a light of a kind that is not rendered is left out",
     .many = "{} lights of kinds that are not rendered are left out"},
    {.kind = Loss::negativeLight,
     .brief = "negative lights",
     .one = "a light whose intensity is negative is rendered without light",
     .many = "{} lights whose intensities are negative are rendered without light"},
    {.kind = Loss::lensFlare,
     .brief = "lens flares",
     .one = "a lens flare is left out",
     .many = "{} lens flares are left out"},
    {.kind = Loss::volumetricLight,
     .brief = "volumetric lights",
     .one = "the volumetric effect of a light is left out",
     .many = "the volumetric effects of {} lights are left out"},
    {.kind = Loss::projectedImage,
     .brief = "projected images",
     .one = "the image that a light projects is left out",
     .many = "the images that {} lights project are left out"},
    {.kind = Loss::shadowColour,
     .brief = "shadow colours",
     .one = "the shadow colour of a light is ignored",
     .many = "the shadow colours of {} lights are ignored"},
    {.kind = Loss::lightEffect,
     .brief = "lights without diffuse or specular light",
     .one = "a light that has its diffuse or specular light switched off gives both",
     .many = "diffuse or specular light that is switched off is rendered {} times"},
    {.kind = Loss::animatedValue,
     .brief = "animated values",
     .one = "a value that has keys stays as it is at its first key",
     .many = "{} values that have keys stay as they are at their first keys"},
    {.kind = Loss::globalIllumination,
     .brief = "radiosity",
     .one = "radiosity is not rendered",
     .many = "radiosity is not rendered (switched on {} times)"},
    {.kind = Loss::caustics,
     .brief = "caustics",
     .one = "caustics are not rendered",
     .many = "caustics are not rendered (switched on {} times)"},
    {.kind = Loss::fog, .brief = "fog", .one = "fog is not rendered", .many = "fog is not rendered (set {} times)"},
    {.kind = Loss::compositing,
     .brief = "background and foreground images",
     .one = "a background or foreground image is left out",
     .many = "{} background and foreground images are left out"},
    {.kind = Loss::environment,
     .brief = "environments and volumes",
     .one = "a plug-in for the environment or a volume is left out",
     .many = "{} plug-ins for the environment or volumes are left out"},
    {.kind = Loss::imageFilter,
     .brief = "image filters",
     .one = "an image or pixel filter is left out",
     .many = "{} image and pixel filters are left out"},
    {.kind = Loss::cameraKind,
     .brief = "other kinds of cameras",
     .one = "a camera of another kind is rendered in perspective",
     .many = "{} cameras of other kinds are rendered in perspective"},
    {.kind = Loss::motionBlur,
     .brief = "motion blur",
     .one = "a camera has motion blur, which is not rendered",
     .many = "{} cameras have motion blur, which is not rendered"},
    {.kind = Loss::depthOfField,
     .brief = "depth of field",
     .one = "a camera has depth of field, which is not rendered",
     .many = "{} cameras have depth of field, which is not rendered"},
    {.kind = Loss::fieldRendering,
     .brief = "fields",
     .one = "a camera renders fields; whole frames are rendered",
     .many = "{} cameras render fields; whole frames are rendered"},
    {.kind = Loss::cameraMask,
     .brief = "camera masks",
     .one = "the mask of a camera is left out",
     .many = "the masks of {} cameras are left out"},
    {.kind = Loss::limitedRegion,
     .brief = "limited regions",
     .one = "a camera renders a limited region; the whole picture is rendered",
     .many = "{} cameras render limited regions; the whole picture is rendered"},
    {.kind = Loss::pixelAspect,
     .brief = "pixels that are not square",
     .one = "the pixels of a camera are not square; they are rendered as squares",
     .many = "the pixels of {} cameras are not square; they are rendered as squares"},
    {.kind = Loss::frameSizeCode,
     .brief = "frame sizes",
     .one = "the frame size of a camera is not given in pixels; it is rendered at 640 x 480",
     .many = "the frame sizes of {} cameras are not given in pixels; they are rendered at 640 x 480"},
    {.kind = Loss::renderRange,
     .brief = "ranges of frames",
     .one = "a range of frames of another form is ignored: the frames from FirstFrame to LastFrame are rendered",
     .many = "{} ranges of frames of other forms are ignored: the frames from FirstFrame to LastFrame are rendered"},
};

} // namespace

void Losses::add(Loss kind, int line) {
    Entry &entry = entries_[static_cast<std::size_t>(kind)];
    if (entry.count++ == 0) entry.first = line;
}

std::vector<Losses::Text> Losses::texts() const {
    std::vector<Text> texts;
    for (const Wording &wording : kWordings) {
        const Entry &entry = entries_[static_cast<std::size_t>(wording.kind)];
        if (entry.count == 0) continue;
        texts.push_back(
            {.line = entry.first,
             .brief = wording.brief,
             .message = entry.count == 1 ? wording.one : fmt::format(fmt::runtime(wording.many), entry.count)});
    }
    return texts;
}

} // namespace velm::host::lws

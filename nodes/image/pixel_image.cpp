// Pixel Image: what colour is this pixel of an image? Gives the pixel at a column and a row, blended over a
// background, and its alpha.
//
// Nothing is filtered: "X" and "Y" are whole pixels, and beyond the image each axis has its own tiling rule. Without an
// image the result is the background colour, with an alpha of 1.
//
// Odd on purpose: the "Image" input is read and has no effect, since only the panel's choice counts; and "Repeat" maps
// a negative multiple of the size to the size itself, one past the last pixel, and the image is asked for that pixel.
#include "module/inputs.h"
#include "module/rows.h"
#include "module/servers.h"
#include "shading/image_popup.h"

namespace velm::plugin {
namespace {

NodeServices services;
const HostImageList *imglist;
const HostNodeUtilityFuncs *nodeutilf;
HostFileRequestFunc *filereq;
ImageRequest imageRequest;
constexpr int nodeColor[3] = {164, 50, 10};

struct PixelImage {
    Vec3Parameter background;
    ImageChoice image;
    int blending;
    ScalarParameter opacity;
    int uTiling, vTiling, x, y;
};
struct Connections {
    HostOutput *colour, *alpha;
};

constexpr const char *blendStrings[] = {"Normal",     "Additive", "Subtractive", "Multiply", "Screen",
                                        "Darken",     "Lighten",  "Difference",  "Negative", "Color Dodge",
                                        "Color Burn", "Red",      "Green",       "Blue",     nullptr};
enum Tiling { kReset, kRepeat, kMirror, kEdge, kTilings };
constexpr const char *tileStrings[] = {"Reset", "Repeat", "Mirror", "Edge", nullptr};

int getImageCount(void *instance);
const char *getImageName(void *instance, int index);
void drawThumbnail(HostPanel *panel, unsigned int control, HostDrawArea *area, int width, int height);

#define AT(field) offsetof(PixelImage, field)
constexpr Parameter parameters[] = {
    thumbnail(drawThumbnail),
    colour(AT(background), "Bg Color").input(),
    popup(AT(image.index), "Image").entries(getImageCount, getImageName).input(),
    popup(AT(blending), "Blending", blendStrings).input(),
    percent(AT(opacity), "Opacity").starting(1.0).input(),
    popup(AT(uTiling), "U Tiling", tileStrings).input(),
    popup(AT(vTiling), "V Tiling", tileStrings).input(),
    integer(AT(x), "X").input(),
    integer(AT(y), "Y").input(),
};

constexpr Output outputs[] = {
    {.name = "Color", .type = kConnectColour, .field = offsetof(Connections, colour)},
    {.name = "Alpha", .type = kConnectScalar, .field = offsetof(Connections, alpha)},
};

using Instance = InstanceRecord<PixelImage, inputCount(parameters), Connections>;

constexpr ImagePopup imagePopup = {.services = services,
                                   .imglist = imglist,
                                   .filereq = filereq,
                                   .request = imageRequest,
                                   .control = controlOf(parameters, AT(image.index)),
                                   .choice = AT(image),
                                   .panel = offsetof(Instance, panel)};

int getImageCount(void *instance) { return getImageCount(imagePopup, instance); }
const char *getImageName(void *instance, int index) { return getImageName(imagePopup, instance, index); }
HostImage *chosenImage(const PixelImage &self) {
    return self.image.index < 1 ? nullptr : getImageID(*imglist, self.image.index);
}

// ---- The thumbnail ----

int byteOf(float component) { return static_cast<int>(255 * (component > 1.0f ? 1.0f : component)); }

// Draws the image stretched to the area, without filtering; black if there is no image.
void drawThumbnail(HostPanel *panel, unsigned int, HostDrawArea *area, int width, int height) {
    const auto &self = *static_cast<const PixelImage *>(services.xpanf->getData(panel, 0));
    const HostDrawFuncs &draw = *services.xpanf->draw;
    HostImage *image = chosenImage(self);
    int imageWidth = 0, imageHeight = 0;
    if (image) imglist->size(image, &imageWidth, &imageHeight);
    if (imageWidth < 1 || imageHeight < 1) { // an image without pixels counts as missing, as in rendering
        draw.rgbBox(area, 0, 0, 0, 0, 0, width, height);
        return;
    }
    const float scaleX = static_cast<float>(imageWidth) / static_cast<float>(width);
    const float scaleY = static_cast<float>(imageHeight) / static_cast<float>(height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            float pixel[3];
            imglist->rgb(image, static_cast<int>(static_cast<float>(x) * scaleX),
                         static_cast<int>(static_cast<float>(y) * scaleY), pixel);
            draw.rgbPixel(area, byteOf(pixel[0]), byteOf(pixel[1]), byteOf(pixel[2]), x, y);
        }
}

// Every change refreshes the panel, and with it the thumbnail.
int changed(void *instance, HostPanel *panel, unsigned int control, int event) {
    if (!loadChosenImage(imagePopup, instance, panel, control, event)) services.xpanf->refresh(panel);
    return event == kEventSet ? 2 : 0;
}

constexpr FurtherService furtherServices[] = {
    {.name = HOST_IMAGE_LIST, .store = storeIn<imglist>},
    {.name = HOST_NODE_UTILITY_FUNCS, .store = storeIn<nodeutilf>},
    {.name = HOST_FILE_REQUEST, .store = storeIn<filereq>},
};

constexpr NodeClass nodeClass = withImages<imagePopup>({
    .name = "Pixel Image",
    .groupName = "PixelImage",
    .colour = nodeColor,
    .services = &services,
    .furtherServices = furtherServices,
    .parameters = parameters,
    .outputs = outputs,
    .record = layoutOf<Instance>,
    .changed = changed,
});

// ---- Evaluation ----

// A coordinate after the tiling of its axis. `size` must be above 0.
int tiled(int coordinate, int tiling, int size) {
    switch (tiling) {
    case kRepeat:
        if (coordinate >= size) coordinate %= size;
        return coordinate < 0 ? size + coordinate % size : coordinate;
    case kMirror: {
        const long long magnitude = coordinate < 0 ? -static_cast<long long>(coordinate) : coordinate;
        const int rest = static_cast<int>(magnitude % size);
        return magnitude / size % 2 == 0 ? rest : size - 1 - rest;
    }
    case kEdge: return coordinate < 0 ? 0 : coordinate >= size ? size - 1 : coordinate;
    default: return coordinate;
    }
}

bool isOutside(int coordinate, int tiling, int size) {
    return tiling == kReset && (coordinate < 0 || coordinate >= size);
}

void PixelImage_Evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    const auto &self = *static_cast<const Instance *>(instance);
    const ParameterInputs<nodeClass> inputs(instance, sample);
    const Vec3 background = inputs.read<AT(background)>();
    inputs.read<AT(image.index)>(); // has no effect; the input has always been evaluated
    double alpha = 1;
    const bool wantsColour = output == self.connections.colour;
    const auto deliver = [&](const double *colour) {
        services.nodeOutputFunc->setValue(value, wantsColour ? colour : &alpha);
    };
    if (self.fields.image.index < 1) return deliver(background.c);

    HostImage *image = chosenImage(self.fields);
    const int blending = inputs.choice<AT(blending)>(kBlendBlue + 1);
    const double opacity = inputs.read<AT(opacity)>();
    const int uTiling = inputs.choice<AT(uTiling)>(kTilings);
    const int vTiling = inputs.choice<AT(vTiling)>(kTilings);
    int x = inputs.read<AT(x)>();
    int y = inputs.read<AT(y)>();

    int width = 0, height = 0;
    imglist->size(image, &width, &height);
    if (width < 1 || height < 1) return deliver(background.c); // the image is missing: there is nothing to tile
    x = tiled(x, uTiling, width);
    y = tiled(y, vTiling, height);
    if (isOutside(x, uTiling, width) || isOutside(y, vTiling, height)) return deliver(background.c);

    if (wantsColour) {
        float pixel[3];
        imglist->rgb(image, x, y, pixel);
        const double top[3] = {pixel[0], pixel[1], pixel[2]};
        double blended[3];
        nodeutilf->blend(blended, top, background.c, opacity, blending);
        return deliver(blended);
    }
    if (imglist->hasAlpha(image)) alpha = imglist->alpha(image, x, y);
    deliver(nullptr);
}

} // namespace

VELM_DEFINE_TAGS(PixelImage, nodeClass, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(PixelImage, nodeClass)
VELM_DEFINE_PANEL(PixelImage, nodeClass, parameters, kPlainLayout)

} // namespace velm::plugin

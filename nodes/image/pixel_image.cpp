// Pixel Image: one pixel of an image, by its column and row, blended over a background; and its alpha.
//
// Nothing is filtered: "X" and "Y" are whole pixels, and beyond the image the tiling rule of each axis decides. Without
// an image the colour is the background's and the alpha 1.
//
// Odd on purpose: the "Image" input is read and has no effect, the panel's choice alone counts; and "Repeat" maps a
// negative multiple of the size to the size itself, one past the last pixel, which is read as it is.
#include "module/rows.h"
#include "module/servers.h"
#include "shading/image_popup.h"

namespace velm::plugin {

static NodeServices services;
static const HostImageList *imglist;
static const HostNodeUtilityFuncs *nodeutilf;
static HostFileRequestFunc *filereq;
static ImageRequest imageRequest;
static constexpr int nodeColor[3] = {164, 50, 10};

namespace {

struct PixelImage {
    Vec3Parameter background;
    ImageChoice image;
    int blending;
    ScalarParameter opacity;
    int uTiling, vTiling, x, y;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *backgroundInput, *imageInput, *blendingInput, *opacityInput, *uTilingInput, *vTilingInput, *xInput,
        *yInput;
    HostOutput *colourOutput, *alphaOutput;
};

constexpr const char *blendStrings[] = {"Normal",     "Additive", "Subtractive", "Multiply", "Screen",
                                        "Darken",     "Lighten",  "Difference",  "Negative", "Color Dodge",
                                        "Color Burn", "Red",      "Green",       "Blue",     nullptr};
enum Tiling { kReset, kRepeat, kMirror, kEdge, kTilings };
constexpr const char *tileStrings[] = {"Reset", "Repeat", "Mirror", "Edge", nullptr};

enum Control : unsigned int {
    kThumbnail = kFirstControl,
    kBackground,
    kImage,
    kBlending,
    kOpacity,
    kUTiling,
    kVTiling,
    kX,
    kY,
};

#define AT(field) offsetof(PixelImage, field)
constexpr ImagePopup imagePopup = {.services = services,
                                   .imglist = imglist,
                                   .filereq = filereq,
                                   .request = imageRequest,
                                   .control = kImage,
                                   .choice = AT(image),
                                   .panel = AT(panel)};

int getImageCount(void *instance) { return getImageCount(imagePopup, instance); }
const char *getImageName(void *instance, int index) { return getImageName(imagePopup, instance, index); }
HostImage *chosenImage(const PixelImage &self) {
    return self.image.index < 1 ? nullptr : getImageID(*imglist, self.image.index);
}

// ---- The thumbnail ----

int byteOf(float component) { return static_cast<int>(255 * (component > 1.0f ? 1.0f : component)); }

// Draws the image stretched to the area, one pixel read for each one drawn; black where there is none.
void drawThumbnail(HostPanel *panel, unsigned int, HostDrawArea *area, int width, int height) {
    const auto &self = *static_cast<const PixelImage *>(services.xpanf->getData(panel, 0));
    const HostDrawFuncs &draw = *services.xpanf->draw;
    HostImage *image = chosenImage(self);
    int imageWidth = 0, imageHeight = 0;
    if (image) imglist->size(image, &imageWidth, &imageHeight);
    if (imageWidth < 1 || imageHeight < 1) { // without pixels it counts as missing, as it does in rendering
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

constexpr Parameter parameters[] = {
    thumbnail(kThumbnail, drawThumbnail),
    colour(kBackground, "Bg Color").at(AT(background)).input(AT(backgroundInput)),
    popup(kImage, "Image").entries(getImageCount, getImageName).at(AT(image.index)).input(AT(imageInput)),
    popup(kBlending, "Blending", blendStrings).at(AT(blending)).input(AT(blendingInput)),
    percent(kOpacity, "Opacity").at(AT(opacity)).starting(1.0).input(AT(opacityInput)),
    popup(kUTiling, "U Tiling", tileStrings).at(AT(uTiling)).input(AT(uTilingInput)),
    popup(kVTiling, "V Tiling", tileStrings).at(AT(vTiling)).input(AT(vTilingInput)),
    integer(kX, "X").at(AT(x)).input(AT(xInput)),
    integer(kY, "Y").at(AT(y)).input(AT(yInput)),
};

constexpr Output outputs[] = {
    {.name = "Color", .type = kConnectColour, .field = AT(colourOutput)},
    {.name = "Alpha", .type = kConnectScalar, .field = AT(alphaOutput)},
};

// Every change refreshes the panel, so that the thumbnail follows.
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
    .size = sizeof(PixelImage),
    .colour = nodeColor,
    .services = &services,
    .furtherServices = furtherServices,
    .parameters = parameters,
    .outputs = outputs,
    .node = AT(node),
    .panel = AT(panel),
    .group = AT(group),
    .changed = changed,
});
#undef AT

// ---- Evaluation ----

// A coordinate after an axis's tiling. `size` is above 0.
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

} // namespace

static void PixelImage_Evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    const auto &self = *static_cast<const PixelImage *>(instance);
    const Inputs inputs(services, sample);
    double background[3];
    double alpha = 1;
    inputs.read(self.background, self.backgroundInput, background);
    inputs.read(self.image.index, self.imageInput); // read, as ever, and not heeded
    const bool wantsColour = output == self.colourOutput;
    const auto deliver = [&](const double *colour) {
        services.nodeOutputFunc->setValue(value, wantsColour ? colour : &alpha);
    };
    if (self.image.index < 1) return deliver(background);

    HostImage *image = chosenImage(self);
    const int blending = inputs.readChoice(self.blending, self.blendingInput, kBlendBlue + 1);
    const double opacity = inputs.read(self.opacity, self.opacityInput);
    const int uTiling = inputs.readChoice(self.uTiling, self.uTilingInput, kTilings);
    const int vTiling = inputs.readChoice(self.vTiling, self.vTilingInput, kTilings);
    int x = inputs.read(self.x, self.xInput);
    int y = inputs.read(self.y, self.yInput);

    int width = 0, height = 0;
    imglist->size(image, &width, &height);
    if (width < 1 || height < 1) return deliver(background); // nothing to tile: the image is missing
    x = tiled(x, uTiling, width);
    y = tiled(y, vTiling, height);
    if (isOutside(x, uTiling, width) || isOutside(y, vTiling, height)) return deliver(background);

    if (wantsColour) {
        float pixel[3];
        imglist->rgb(image, x, y, pixel);
        const double top[3] = {pixel[0], pixel[1], pixel[2]};
        double blended[3];
        nodeutilf->blend(blended, top, background, opacity, blending);
        return deliver(blended);
    }
    if (imglist->hasAlpha(image)) alpha = imglist->alpha(image, x, y);
    deliver(nullptr);
}

VELM_DEFINE_TAGS(PixelImage, nodeClass, "Velm's Nodes/Surfacing")
VELM_DEFINE_NODE(PixelImage, nodeClass)
VELM_DEFINE_PANEL(PixelImage, nodeClass, parameters, kPlainLayout)

} // namespace velm::plugin

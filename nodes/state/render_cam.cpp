// Render Cam: what does a camera of the scene see, as on a monitor? Shows its picture on a surface through a UV map.
//
// A sample's coordinates on the map are coordinates on the camera's film. The ray through this point is traced, and its
// colour goes through the camera's filter. The node is complete and deliberately not listed among the module's servers,
// so that no host can create it.
//
// Odd on purpose: pure green means that the node cannot work (no camera, or a sample off the map), and yellow that the
// trace left no colour; the filter is applied in place, so that its later rows use components that are already
// filtered; and loading a scene restores the two choices but not the camera behind them, until the panel sets them
// again.
#include "module/panel.h"
#include "module/rows.h"
#include "shading/rays.h"

#include <cstring>

namespace velm::plugin {

VELM_DECLARE_NODE(RenderCam);
VELM_DECLARE_PANEL(RenderCam);

namespace {

NodeServices services;
const HostNodeUtilityFuncs *nodeutilf;
const HostSceneObjects *objfunc;
const HostItemInfo *iteminfo; // null, as the next two, in the modelling application
const HostCameraEvaluation *camevalfuncs;
const HostCameraInfo *caminfo;
constexpr int nodeColor[3] = {164, 50, 10};

constexpr size_t kNameSize = 256;

struct RenderCam {
    int uvMapIndex; // 0: none
    char uvMapName[kNameSize];
    int cameraIndex; // 0: none
    HostItem *camera;
    HostCameraEvaluator *evaluator; // during a render
    double time, shutterOffset, shutterLength;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostOutput *output;
};

constexpr const char *kNone = "(none)";

int popCnt_VMAP(void *) { return objfunc->vertexMapCount(kVertexMapTxuv) + 1; }

const char *popName_VMAP(void *, int index) {
    return index == 0 ? kNone : objfunc->vertexMapName(kVertexMapTxuv, index - 1);
}

HostItem *firstCamera() { return iteminfo ? iteminfo->first(kItemCamera, nullptr) : nullptr; }

int popCnt_CAMERA(void *) {
    int count = 1;
    for (HostItem *camera = firstCamera(); camera; camera = iteminfo->next(camera)) ++count;
    return count;
}

// The camera of a popup index, from 1. Null for 0 and beyond the end of the list.
HostItem *cameraID(int index) {
    if (index == 0) return nullptr;
    HostItem *camera = firstCamera();
    for (; camera && index > 1; --index) camera = iteminfo->next(camera);
    return camera;
}

const char *popName_CAMERA(void *, int index) {
    if (!iteminfo) return "(inactive)";
    if (index == 0) return kNone;
    HostItem *camera = cameraID(index);
    return camera ? iteminfo->name(camera) : "(error)";
}

#define AT(field) offsetof(RenderCam, field)
constexpr Parameter parameters[] = {
    popup(AT(uvMapIndex), "UV Map").entries(popCnt_VMAP, popName_VMAP),
    popup(AT(cameraIndex), "Camera").entries(popCnt_CAMERA, popName_CAMERA),
};

#define ID(field) controlOf(parameters, AT(field))
int setValue(void *instance, unsigned int id, void *value) {
    auto &self = *static_cast<RenderCam *>(instance);
    if (id == ID(uvMapIndex)) {
        self.uvMapIndex = *static_cast<const int *>(value);
        const char *name = popName_VMAP(nullptr, self.uvMapIndex);
        std::strncpy(self.uvMapName, name ? name : "", kNameSize - 1);
        return kSetDefault;
    }
    if (id == ID(cameraIndex)) {
        self.cameraIndex = *static_cast<const int *>(value);
        self.camera = cameraID(self.cameraIndex);
        return kSetDefault;
    }
    return kSetUnknown;
}

HostError init(void *instance, int) {
    auto &self = *static_cast<RenderCam *>(instance);
    if (!self.camera || !camevalfuncs) return nullptr;
    self.evaluator = camevalfuncs->create(self.camera);
    if (self.evaluator) camevalfuncs->init(self.evaluator, kInitRender);
    return nullptr;
}

void cleanup(void *instance) {
    auto &self = *static_cast<RenderCam *>(instance);
    if (camevalfuncs && self.evaluator) camevalfuncs->destroy(self.evaluator);
    self.evaluator = nullptr;
}

HostError newTime(void *instance, int frame, double time) {
    auto &self = *static_cast<RenderCam *>(instance);
    if (camevalfuncs && self.evaluator) {
        camevalfuncs->reset(self.evaluator);
        camevalfuncs->newTime(self.evaluator, frame, time);
    }
    if (caminfo && self.camera) {
        HostFrameTiming timing = {};
        caminfo->frameTiming(self.camera, frame, &timing);
        self.time = time;
        self.shutterOffset = timing.intervals[0].offset;
        self.shutterLength = timing.intervals[0].duration;
    }
    return nullptr;
}

constexpr Output outputs[] = {{.name = "Color", .type = kConnectColour, .field = AT(output)}};

using Rule = FurtherService::Rule;
constexpr FurtherService furtherServices[] = {
    {.name = HOST_NODE_UTILITY_FUNCS, .store = storeIn<nodeutilf>},
    {.name = HOST_SCENE_OBJECTS, .store = storeIn<objfunc>},
    {.name = HOST_SYSTEM_ID, .rule = Rule::systemWord},
    {.name = HOST_ITEM_INFO, .rule = Rule::unlessModelling, .store = storeIn<iteminfo>},
    {.name = HOST_CAMERA_EVALUATION, .rule = Rule::unlessModelling, .store = storeIn<camevalfuncs>},
    {.name = HOST_CAMERA_INFO, .rule = Rule::unlessModelling, .store = storeIn<caminfo>},
};

constexpr NodeClass nodeClass = {
    .name = "Render Cam",
    .colour = nodeColor,
    .services = &services,
    .furtherServices = furtherServices,
    .parameters = parameters,
    .outputs = outputs,
    .record = {.size = sizeof(RenderCam), .node = AT(node), .panel = AT(panel), .group = AT(group)},
    .init = init,
    .cleanup = cleanup,
    .newTime = newTime,
    .setValue = setValue,
};

// Stores the colour that the camera sees at (u, v) of its picture, each from 0 to 1. `colour` is unchanged if the
// camera has no ray there.
void seenAt(const RenderCam &self, const ShadingSample &sample, double u, double v, double colour[3]) {
    double width = 0, height = 0;
    caminfo->filmSize(self.camera, &width, &height);
    const double timeFraction = (self.time - self.shutterOffset) / self.shutterLength;
    HostCameraRay ray = {};
    if (!camevalfuncs->evaluate(self.evaluator, (u - 0.5) * width, (v - 0.5) * height, 2 * u - 1, 2 * v - 1,
                                timeFraction, &ray))
        return;
    traceRay(sample, ray.origin, ray.direction, colour, sample.refractionIndex,
             kTraceMayHitOwnPolygon | kTraceReflection);
    for (int row = 0; row < 3; ++row)
        colour[row] = colour[0] * ray.filter[row][0] + colour[1] * ray.filter[row][1] + colour[2] * ray.filter[row][2];
}

void RenderCam_Evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const auto &self = *static_cast<const RenderCam *>(instance);
    double colour[3] = {0, 1, 0};
    double u = 0, v = 0;
    if (caminfo && camevalfuncs && self.camera && self.evaluator &&
        nodeutilf->uvMapping(self.uvMapName, sample, &u, &v)) {
        colour[0] = 1;
        seenAt(self, *sample, u, v, colour);
    }
    services.nodeOutputFunc->setValue(value, colour);
}

} // namespace

VELM_DEFINE_NODE(RenderCam, nodeClass)
VELM_DEFINE_PANEL(RenderCam, nodeClass, parameters, kPlainLayout)

} // namespace velm::plugin

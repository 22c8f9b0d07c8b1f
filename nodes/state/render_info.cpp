// Render Info: which pixel of which frame is this? Facts about the running render, as integers: the sample's pixel, the
// frame range, the frame, the number of frames rendered so far, and how often a ray may bounce.
//
// The node has no settings and no panel. Before the first render, as in a preview, the scene's facts are 0. A frame
// that is rendered twice in a row counts once.
#include "module/servers.h"

namespace velm::plugin {
namespace {

NodeServices services;
const HostSceneInfo *sceneinfo; // looked up anew whenever a render starts
constexpr int nodeColor[3] = {164, 50, 10};

struct RenderInfo {
    int newRender;      // 1 until the first frame after creation or the start of a render
    HostLookup *lookup; // the host's lookup function
    int currentFrame;
    int renderedFrames;
    HostNode *node;
    HostOutput *renderX, *renderY, *startFrame, *endFrame, *currentFrameOutput, *renderedFramesOutput, *recursionLimit;
};

#define AT(field) offsetof(RenderInfo, field)
constexpr Output outputs[] = {
    {.name = "Render X", .type = kConnectInteger, .field = AT(renderX)},
    {.name = "Render Y", .type = kConnectInteger, .field = AT(renderY)},
    {.name = "Start Frame", .type = kConnectInteger, .field = AT(startFrame)},
    {.name = "End Frame", .type = kConnectInteger, .field = AT(endFrame)},
    {.name = "Current Frame", .type = kConnectInteger, .field = AT(currentFrameOutput)},
    {.name = "Rendered Frames", .type = kConnectInteger, .field = AT(renderedFramesOutput)},
    {.name = "Ray Recursion Limit", .type = kConnectInteger, .field = AT(recursionLimit)},
};

const char *prepare(void *instance, void *priv) {
    auto &self = *static_cast<RenderInfo *>(instance);
    self.newRender = 1;
    self.lookup = reinterpret_cast<HostLookup *>(priv);
    return nullptr;
}

HostError init(void *instance, int) {
    auto &self = *static_cast<RenderInfo *>(instance);
    self.newRender = 1;
    sceneinfo = static_cast<const HostSceneInfo *>(self.lookup(HOST_SCENE_INFO, kUseTransient));
    return nullptr;
}

HostError newTime(void *instance, int frame, double) {
    auto &self = *static_cast<RenderInfo *>(instance);
    if (self.newRender) {
        self.newRender = 0;
        self.currentFrame = frame;
        self.renderedFrames = 0;
    }
    if (self.currentFrame != frame) {
        self.currentFrame = frame;
        ++self.renderedFrames;
    }
    return nullptr;
}

constexpr NodeClass nodeClass = {
    .name = "Render Info",
    .colour = nodeColor,
    .previewType = kPreviewOff,
    .fetchesParameterServices = false,
    .services = &services,
    .outputs = outputs,
    .record = {.size = sizeof(RenderInfo), .node = AT(node)},
    .prepare = prepare,
    .init = init,
    .newTime = newTime,
};

// Stores the number of an output in `result`. False if the output is not one of this node.
bool fact(const RenderInfo &self, const ShadingSample &sample, const HostOutput *output, int &result) {
    const auto scene = [](int HostSceneInfo::*member) { return sceneinfo ? sceneinfo->*member : 0; };
    if (output == self.renderX)
        result = sample.pixelX;
    else if (output == self.renderY)
        result = sample.pixelY;
    else if (output == self.currentFrameOutput)
        result = self.currentFrame;
    else if (output == self.renderedFramesOutput)
        result = self.renderedFrames;
    else if (output == self.startFrame)
        result = scene(&HostSceneInfo::firstFrame);
    else if (output == self.endFrame)
        result = scene(&HostSceneInfo::lastFrame);
    else if (output == self.recursionLimit)
        result = scene(&HostSceneInfo::recursionDepth);
    else
        return false;
    return true;
}

void RenderInfo_Evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    int result = 0;
    if (fact(*static_cast<const RenderInfo *>(instance), *sample, output, result))
        services.nodeOutputFunc->setValue(value, &result);
}

} // namespace

VELM_DEFINE_TAGS(RenderInfo, nodeClass, "Velm's Nodes/Info")
VELM_DEFINE_NODE(RenderInfo, nodeClass)

} // namespace velm::plugin

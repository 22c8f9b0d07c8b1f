// The offset of every member of the plug-in interface's records, one by one. Module and host are compiled against the
// same headers: if two members of a record were swapped there, both sides would agree, and no running test would fail.
// Checked while compiling, for 64-bit and for 32-bit targets, without any other header.
#include "module/host.h"

namespace {

// Whether the members are the first of their table, in order and without a gap; all are pointer-sized.
template <unsigned int count>
constexpr bool slots(const size_t (&offsets)[count]) {
    for (unsigned int i = 0; i < count; ++i)
        if (offsets[i] != i * sizeof(void *)) return false;
    return true;
}

// The size of a member and its alignment, in bytes.
struct Size {
    unsigned int bytes, alignment;
};
constexpr unsigned int kPointerSize = sizeof(void *);
constexpr Size pointers(unsigned int count) { return {.bytes = count * kPointerSize, .alignment = kPointerSize}; }
constexpr Size ints(unsigned int count) { return {.bytes = count * 4, .alignment = 4}; }
constexpr Size floats(unsigned int count) { return {.bytes = count * 4, .alignment = 4}; }
constexpr Size doubles(unsigned int count) { return {.bytes = count * 8, .alignment = 8}; }

struct Member {
    size_t offset;
    Size size;
};

// Whether the members follow one another from the record's start, each at the next offset that its alignment allows.
template <unsigned int count>
constexpr bool members(const Member (&list)[count]) {
    size_t next = 0;
    for (const Member &member : list) {
        next = (next + member.size.alignment - 1) / member.size.alignment * member.size.alignment;
        if (member.offset != next) return false;
        next += member.size.bytes;
    }
    return true;
}

} // namespace

// ---- Tables of functions ----

#define AT(member) offsetof(HostInstanceOps, member)
static_assert(slots({AT(priv), AT(create), AT(destroy), AT(copy), AT(load), AT(save), AT(describe)}));
#undef AT

#define AT(member) offsetof(HostItemOps, member)
static_assert(slots({AT(useItems), AT(changeId), AT(changeName)}));
#undef AT

#define AT(member) offsetof(HostRenderOps, member)
static_assert(slots({AT(init), AT(cleanup), AT(newTime)}));
#undef AT

#define AT(member) offsetof(HostNodeHandler, member)
static_assert(slots({AT(instance), AT(item), AT(render), AT(evaluate), AT(customPreview), AT(flags)}));
#undef AT

#define AT(member) offsetof(HostNodeInterface, member)
static_assert(slots({AT(instance), AT(panel), AT(options), AT(command)}));
#undef AT

#define AT(member) offsetof(HostNodeFuncs, member)
static_assert(slots({AT(nodeName), AT(serverUserName), AT(channelGroup), AT(setColour), AT(setColourRgb),
                     AT(setPreviewType), AT(updatePreview)}));
#undef AT

#define AT(member) offsetof(HostNodeInputFuncs, member)
static_assert(slots({AT(create), AT(destroy), AT(evaluate), AT(isConnected), AT(first), AT(next), AT(previous),
                     AT(count), AT(byIndex), AT(indexOf), AT(disconnect), AT(node)}));
#undef AT

#define AT(member) offsetof(HostNodeOutputFuncs, member)
static_assert(slots({AT(create), AT(destroy), AT(setValue), AT(getValue), AT(askingType), AT(first), AT(next),
                     AT(previous), AT(count), AT(byIndex), AT(indexOf), AT(node)}));
#undef AT

#define AT(member) offsetof(HostNodeEditorFuncs, member)
static_assert(slots({AT(create),
                     AT(destroy),
                     AT(rename),
                     AT(setEvent),
                     AT(copy),
                     AT(save),
                     AT(load),
                     AT(init),
                     AT(newTime),
                     AT(cleanup),
                     AT(addRootInput),
                     AT(setChannelGroup),
                     AT(setAutosize),
                     AT(setUserData),
                     AT(userData),
                     AT(nodeCount),
                     AT(rootInputByName),
                     AT(rootInputByIndex),
                     AT(state),
                     AT(setState),
                     AT(openWindow),
                     AT(isWindowOpen),
                     AT(rootNode),
                     AT(connect)}));
#undef AT

#define AT(member) offsetof(HostNodeUtilityFuncs, member)
static_assert(slots({AT(blend), AT(autosize), AT(planarMapping), AT(sphericalMapping), AT(cylindricalMapping),
                     AT(cubicMapping), AT(frontMapping), AT(directionMapping), AT(uvMapping), AT(cameraMatrix)}));
#undef AT

#define AT(member) offsetof(HostVParmFuncs, member)
static_assert(slots({AT(create), AT(destroy), AT(setUp), AT(copy), AT(load), AT(save), AT(getValue), AT(setValue),
                     AT(state), AT(setState), AT(editEnvelope), AT(editTexture), AT(init), AT(envelopes),
                     AT(texture)}));
#undef AT

#define AT(member) offsetof(HostEnvelopeFuncs, member)
static_assert(slots({AT(create),    AT(destroy),    AT(createGroup), AT(destroyGroup), AT(copy),
                     AT(load),      AT(save),       AT(evaluate),    AT(edit),         AT(age),
                     AT(createKey), AT(destroyKey), AT(findKey),     AT(nextKey),      AT(previousKey),
                     AT(setKey),    AT(getKey),     AT(setEvent),    AT(set),          AT(get)}));
#undef AT

#define AT(member) offsetof(HostDrawFuncs, member)
static_assert(slots({AT(pixel), AT(rgbPixel), AT(line), AT(box), AT(rgbBox), AT(border), AT(textWidth), AT(textHeight),
                     AT(text)}));
#undef AT

#define AT(member) offsetof(HostImageList, member)
static_assert(slots({AT(first), AT(next), AT(load), AT(name), AT(fileName), AT(isColour), AT(needAntialiasing),
                     AT(size), AT(luma), AT(rgb), AT(lumaSpot), AT(rgbSpot), AT(clear), AT(loadReference),
                     AT(saveReference), AT(hasAlpha), AT(alpha), AT(alphaSpot)}));
#undef AT

#define AT(member) offsetof(HostBackdropInfo, member)
static_assert(slots({AT(backdrop), AT(type), AT(colours), AT(squeeze)}));
#undef AT

#define AT(member) offsetof(HostSceneObjects, member)
static_assert(slots({AT(objectCount), AT(fileName), AT(layerCount), AT(layerExists), AT(pivot), AT(layerMesh),
                     AT(vertexMapCount), AT(vertexMapName), AT(vertexMapDimension), AT(vertexMapType)}));
#undef AT

#define AT(member) offsetof(HostItemInfo, member)
static_assert(slots({AT(first), AT(next), AT(firstChild), AT(nextChild), AT(parent), AT(target), AT(goal), AT(type),
                     AT(name)}));
#undef AT

#define AT(member) offsetof(HostCameraEvaluation, member)
static_assert(slots({AT(create), AT(destroy), AT(init), AT(cleanup), AT(newTime), AT(preview), AT(reset),
                     AT(evaluate)}));
#undef AT

static_assert(offsetof(HostCameraInfo, reserved) == 0);
static_assert(offsetof(HostCameraInfo, filmSize) == 22 * sizeof(void *));
static_assert(offsetof(HostCameraInfo, frameTiming) == 23 * sizeof(void *));

// ---- Records of all kinds of members ----

#define IS(member, ...)                                                                                                \
    { .offset = offsetof(RECORD, member), .size = __VA_ARGS__ }

#define RECORD HostModuleDescriptor
static_assert(members({IS(syncWord, ints(1)), IS(version, ints(1)), IS(platform, ints(1)), IS(startup, pointers(1)),
                       IS(shutdown, pointers(1)), IS(servers, pointers(1))}));
#undef RECORD

#define RECORD HostServer
static_assert(members({IS(className, pointers(1)), IS(name, pointers(1)), IS(activate, pointers(1)),
                       IS(tags, pointers(1))}));
#undef RECORD

#define RECORD HostTag
static_assert(members({IS(text, pointers(1)), IS(code, ints(1))}));
#undef RECORD

#define RECORD HostBlockId
static_assert(members({IS(id, ints(1)), IS(token, pointers(1))}));
#undef RECORD

#define RECORD HostSaveState
static_assert(members({IS(mode, ints(1)), IS(data, pointers(1)), IS(write, pointers(1)), IS(writeI1, pointers(1)),
                       IS(writeI2, pointers(1)), IS(writeI4, pointers(1)), IS(writeU1, pointers(1)),
                       IS(writeU2, pointers(1)), IS(writeU4, pointers(1)), IS(writeFP, pointers(1)),
                       IS(writeString, pointers(1)), IS(writeId, pointers(1)), IS(beginBlock, pointers(1)),
                       IS(endBlock, pointers(1)), IS(depth, pointers(1)), IS(writeDP, pointers(1))}));
#undef RECORD

#define RECORD HostLoadState
static_assert(members({IS(mode, ints(1)), IS(data, pointers(1)), IS(read, pointers(1)), IS(readI1, pointers(1)),
                       IS(readI2, pointers(1)), IS(readI4, pointers(1)), IS(readU1, pointers(1)),
                       IS(readU2, pointers(1)), IS(readU4, pointers(1)), IS(readFP, pointers(1)),
                       IS(readString, pointers(1)), IS(readId, pointers(1)), IS(findBlock, pointers(1)),
                       IS(endBlock, pointers(1)), IS(depth, pointers(1)), IS(readDP, pointers(1))}));
#undef RECORD

#define RECORD ShadingSample
static_assert(members({IS(pixelX, ints(1)),
                       IS(pixelY, ints(1)),
                       IS(objectPosition, doubles(3)),
                       IS(position, doubles(3)),
                       IS(geometricNormal, doubles(3)),
                       IS(shadingNormal, doubles(3)),
                       IS(unbumpedNormal, doubles(3)),
                       IS(raySource, doubles(3)),
                       IS(rayLength, doubles(1)),
                       IS(spotSize, doubles(1)),
                       IS(cosine, doubles(1)),
                       IS(bumpHeight, doubles(1)),
                       IS(objectToWorld, doubles(9)),
                       IS(worldToObject, doubles(9)),
                       IS(illuminate, pointers(1)),
                       IS(illuminateSampled, pointers(1)),
                       IS(rayTrace, pointers(1)),
                       IS(rayCast, pointers(1)),
                       IS(rayShade, pointers(1)),
                       IS(rayTraceMode, pointers(1)),
                       IS(rayDepth, ints(1)),
                       IS(sourceItem, pointers(1)),
                       IS(objectItem, pointers(1)),
                       IS(polygonNumber, ints(1)),
                       IS(vertices, pointers(4)),
                       IS(vertexWeights, floats(4)),
                       IS(vertexPositions, floats(12)),
                       IS(polygon, pointers(1)),
                       IS(refractionIndex, doubles(1)),
                       IS(threadIndex, ints(1)),
                       IS(rayFlags, ints(1))}));
#undef RECORD

#define RECORD HostRayHit
static_assert(members({IS(pixelX, ints(1)),
                       IS(pixelY, ints(1)),
                       IS(objectPosition, doubles(3)),
                       IS(position, doubles(3)),
                       IS(geometricNormal, doubles(3)),
                       IS(spotSize, doubles(1)),
                       IS(raySource, doubles(3)),
                       IS(rayLength, doubles(1)),
                       IS(cosine, doubles(1)),
                       IS(objectToWorld, doubles(9)),
                       IS(worldToObject, doubles(9)),
                       IS(objectItem, pointers(1)),
                       IS(polygonNumber, ints(1)),
                       IS(shadingNormal, doubles(3)),
                       IS(colour, doubles(3)),
                       IS(luminosity, doubles(1)),
                       IS(diffuse, doubles(1)),
                       IS(specular, doubles(1)),
                       IS(mirror, doubles(1)),
                       IS(transparency, doubles(1)),
                       IS(eta, doubles(1)),
                       IS(roughness, doubles(1)),
                       IS(illuminate, pointers(1)),
                       IS(rayTrace, pointers(1)),
                       IS(rayCast, pointers(1)),
                       IS(rayShade, pointers(1)),
                       IS(rayFlags, ints(1)),
                       IS(rayDepth, ints(1)),
                       IS(sourceItem, pointers(1))}));
static_assert(offsetof(HostRayHitRoom, hit) == 0 && sizeof(HostRayHitRoom) == 2048);
#undef RECORD

#define RECORD HostMaterial
static_assert(members({IS(diffuse, doubles(3)), IS(specular, doubles(3)), IS(reflection, doubles(3)),
                       IS(refraction, doubles(3)), IS(transparency, doubles(1))}));
#undef RECORD

#define RECORD HostRootDescription
static_assert(members({IS(previewType, ints(1)), IS(init, pointers(1)), IS(newTime, pointers(1)),
                       IS(cleanup, pointers(1)), IS(panel, pointers(1)), IS(options, pointers(1)),
                       IS(preview, pointers(1)), IS(customPreview, pointers(1))}));
#undef RECORD

#define RECORD HostPanelValue
static_assert(members({IS(id, ints(1)), IS(label, pointers(1)), IS(type, pointers(1))}));
#undef RECORD

#define RECORD HostPanelFuncs
static_assert(members({IS(version, ints(1)), IS(draw, pointers(1)), IS(create, pointers(1)), IS(destroy, pointers(1)),
                       IS(describe, pointers(1)), IS(hint, pointers(1)), IS(getData, pointers(1)),
                       IS(setData, pointers(1)), IS(getValue, pointers(1)), IS(setValue, pointers(1)),
                       IS(viewInstance, pointers(1)), IS(refresh, pointers(1)), IS(post, pointers(1)),
                       IS(open, pointers(1))}));
#undef RECORD

#define RECORD HostFileRequest
static_assert(members({IS(type, ints(1)), IS(result, ints(1)), IS(title, pointers(1)), IS(fileType, pointers(1)),
                       IS(path, pointers(1)), IS(baseName, pointers(1)), IS(fullName, pointers(1)),
                       IS(bufferLength, ints(1)), IS(pick, pointers(1))}));
#undef RECORD

#define RECORD HostTimeInfo
static_assert(members({IS(time, doubles(1)), IS(frame, ints(1))}));
#undef RECORD

#define RECORD HostSceneInfo
static_assert(members({IS(name, pointers(1)),
                       IS(fileName, pointers(1)),
                       IS(points, ints(1)),
                       IS(polygons, ints(1)),
                       IS(renderType, ints(1)),
                       IS(renderOptions, ints(1)),
                       IS(firstFrame, ints(1)),
                       IS(lastFrame, ints(1)),
                       IS(frameStep, ints(1)),
                       IS(framesPerSecond, doubles(1)),
                       IS(width, ints(1)),
                       IS(height, ints(1)),
                       IS(pixelAspect, doubles(1)),
                       IS(minSamplesPerPixel, ints(1)),
                       IS(maxSamplesPerPixel, ints(1)),
                       IS(limitedRegion, ints(4)),
                       IS(recursionDepth, ints(1)),
                       IS(renderCamera, pointers(1)),
                       IS(threads, ints(1)),
                       IS(animationFile, pointers(1)),
                       IS(rgbPrefix, pointers(1)),
                       IS(alphaPrefix, pointers(1))}));
#undef RECORD

#define RECORD HostCameraRay
static_assert(members({IS(origin, doubles(3)), IS(direction, doubles(3)), IS(filmNormal, doubles(3)),
                       IS(filter, doubles(9))}));
#undef RECORD

#define RECORD HostFrameInterval
static_assert(members({IS(count, ints(1)), IS(offset, doubles(1)), IS(duration, doubles(1)), IS(stride, doubles(1))}));
#undef RECORD
static_assert(offsetof(HostFrameTiming, intervals) == 0 && sizeof(HostFrameTiming) == 5 * sizeof(HostFrameInterval));

// ---- Words ----

static_assert(sizeof(HostWord) == kPointerSize && sizeof(HostHint) == kPointerSize);
static_assert(sizeof(HostError) == kPointerSize);

/*
 * The layout of the records, checked by everyone who is compiled against the interface: a compiler whose settings place
 * a member elsewhere than the host does (on 32-bit Linux, one without -malign-double) gives an error here. There is
 * nothing else in this file.
 */
#ifndef VELM_MODULE_INTERFACE_LAYOUT_H
#define VELM_MODULE_INTERFACE_LAYOUT_H

#include "module/interface/camera_evaluation.h"
#include "module/interface/camera_info.h"
#include "module/interface/connections.h"
#include "module/interface/envelopes.h"
#include "module/interface/file_request.h"
#include "module/interface/handler.h"
#include "module/interface/images.h"
#include "module/interface/item_info.h"
#include "module/interface/module.h"
#include "module/interface/node_editor.h"
#include "module/interface/node_inputs.h"
#include "module/interface/node_outputs.h"
#include "module/interface/node_utility.h"
#include "module/interface/nodes.h"
#include "module/interface/panel_drawing.h"
#include "module/interface/panel_hints.h"
#include "module/interface/panels.h"
#include "module/interface/scene_info.h"
#include "module/interface/scene_objects.h"
#include "module/interface/shading_sample.h"
#include "module/interface/states.h"
#include "module/interface/time_info.h"
#include "module/interface/types.h"
#include "module/interface/vparms.h"

#ifdef __cplusplus
#define HOST_ASSERT static_assert
#else
#define HOST_ASSERT _Static_assert
#endif

/* NOLINTBEGIN(bugprone-branch-clone): many offsets are the same on both targets */

/* The member with index n of a table whose members are all as large as a pointer, or padded to it. */
#define HOST_SLOT(record, member, n)                                                                                   \
    HOST_ASSERT(offsetof(record, member) == (n) * sizeof(void *), #record "." #member " is not in its slot")
/* An offset that differs between 64-bit and 32-bit targets. */
#define HOST_OFFSET(record, member, at64, at32)                                                                        \
    HOST_ASSERT(offsetof(record, member) == (sizeof(void *) == 8 ? (size_t)(at64) : (size_t)(at32)),                   \
                #record "." #member " is misplaced")
#define HOST_SIZE(record, at64, at32)                                                                                  \
    HOST_ASSERT(sizeof(record) == (sizeof(void *) == 8 ? (size_t)(at64) : (size_t)(at32)),                             \
                #record " has the wrong size")

HOST_ASSERT(sizeof(int) == 4, "int is 32 bits");
HOST_ASSERT(sizeof(short) == 2, "short is 16 bits");
HOST_ASSERT(sizeof(HostHint) == sizeof(void *), "a hint word is pointer-sized");

HOST_OFFSET(HostModuleDescriptor, startup, 16, 12);
HOST_OFFSET(HostModuleDescriptor, servers, 32, 20);
HOST_SIZE(HostModuleDescriptor, 40, 24);
HOST_SIZE(HostServer, 32, 16);
HOST_SIZE(HostTag, 16, 8);
HOST_SIZE(HostBlockId, 16, 8);

HOST_SLOT(HostInstanceOps, create, 1);
HOST_SLOT(HostInstanceOps, destroy, 2);
HOST_SLOT(HostInstanceOps, copy, 3);
HOST_SLOT(HostInstanceOps, load, 4);
HOST_SLOT(HostInstanceOps, save, 5);
HOST_SLOT(HostInstanceOps, describe, 6);
HOST_SLOT(HostRenderOps, init, 0);
HOST_SLOT(HostRenderOps, cleanup, 1);
HOST_SLOT(HostRenderOps, newTime, 2);
HOST_SLOT(HostNodeHandler, instance, 0);
HOST_SLOT(HostNodeHandler, item, 1);
HOST_SLOT(HostNodeHandler, render, 2);
HOST_SLOT(HostNodeHandler, evaluate, 3);
HOST_SLOT(HostNodeHandler, flags, 5);
HOST_SLOT(HostNodeInterface, panel, 1);
HOST_SLOT(HostNodeInterface, command, 3);

HOST_SLOT(HostSaveState, data, 1);
HOST_SLOT(HostSaveState, writeI2, 4);
HOST_SLOT(HostSaveState, writeString, 10);
HOST_SLOT(HostSaveState, beginBlock, 12);
HOST_SLOT(HostSaveState, endBlock, 13);
HOST_SLOT(HostSaveState, writeDP, 15);
HOST_SLOT(HostLoadState, data, 1);
HOST_SLOT(HostLoadState, readI2, 4);
HOST_SLOT(HostLoadState, readString, 10);
HOST_SLOT(HostLoadState, findBlock, 12);
HOST_SLOT(HostLoadState, endBlock, 13);
HOST_SLOT(HostLoadState, readDP, 15);

HOST_OFFSET(ShadingSample, position, 32, 32);
HOST_OFFSET(ShadingSample, geometricNormal, 56, 56);
HOST_OFFSET(ShadingSample, shadingNormal, 80, 80);
HOST_OFFSET(ShadingSample, raySource, 128, 128);
HOST_OFFSET(ShadingSample, spotSize, 160, 160);
HOST_OFFSET(ShadingSample, illuminate, 328, 328);
HOST_OFFSET(ShadingSample, rayCast, 352, 340);
HOST_OFFSET(ShadingSample, rayShade, 360, 344);
HOST_OFFSET(ShadingSample, rayTraceMode, 368, 348);
HOST_OFFSET(ShadingSample, rayDepth, 376, 352);
HOST_OFFSET(ShadingSample, polygonNumber, 400, 364);
HOST_OFFSET(ShadingSample, polygon, 504, 448);
HOST_OFFSET(ShadingSample, refractionIndex, 512, 456);
HOST_OFFSET(ShadingSample, threadIndex, 520, 464);
HOST_OFFSET(ShadingSample, rayFlags, 524, 468);
HOST_SIZE(ShadingSample, 528, 472);
HOST_OFFSET(HostRayHit, objectItem, 272, 272);
HOST_OFFSET(HostRayHit, shadingNormal, 288, 280);
HOST_OFFSET(HostRayHit, colour, 312, 304);
HOST_SIZE(HostRayHitRoom, 2048, 2048);

HOST_SLOT(HostNodeFuncs, channelGroup, 2);
HOST_SLOT(HostNodeFuncs, setColour, 3);
HOST_SLOT(HostNodeFuncs, setPreviewType, 5);
HOST_SLOT(HostNodeFuncs, updatePreview, 6);
HOST_SLOT(HostNodeInputFuncs, evaluate, 2);
HOST_SLOT(HostNodeInputFuncs, isConnected, 3);
HOST_SLOT(HostNodeInputFuncs, node, 11);
HOST_SLOT(HostNodeOutputFuncs, setValue, 2);
HOST_SLOT(HostNodeOutputFuncs, getValue, 3);
HOST_SLOT(HostNodeOutputFuncs, askingType, 4);
HOST_SLOT(HostNodeOutputFuncs, node, 11);
HOST_SIZE(HostMaterial, 104, 104);
HOST_SLOT(HostNodeEditorFuncs, load, 6);
HOST_SLOT(HostNodeEditorFuncs, addRootInput, 10);
HOST_SLOT(HostNodeEditorFuncs, setAutosize, 12);
HOST_SLOT(HostNodeEditorFuncs, userData, 14);
HOST_SLOT(HostNodeEditorFuncs, openWindow, 20);
HOST_SLOT(HostNodeEditorFuncs, rootNode, 22);
HOST_SLOT(HostNodeEditorFuncs, connect, 23);
HOST_SLOT(HostRootDescription, preview, 6);
HOST_SLOT(HostNodeUtilityFuncs, autosize, 1);
HOST_SLOT(HostNodeUtilityFuncs, directionMapping, 7);
HOST_SLOT(HostNodeUtilityFuncs, uvMapping, 8);
HOST_SLOT(HostVParmFuncs, setUp, 2);
HOST_SLOT(HostVParmFuncs, save, 5);
HOST_SLOT(HostVParmFuncs, setValue, 7);
HOST_SLOT(HostVParmFuncs, texture, 14);
HOST_SLOT(HostEnvelopeFuncs, createGroup, 2);
HOST_SLOT(HostEnvelopeFuncs, evaluate, 7);
HOST_SLOT(HostEnvelopeFuncs, createKey, 10);
HOST_SLOT(HostEnvelopeFuncs, get, 19);
HOST_SLOT(HostPanelFuncs, draw, 1);
HOST_SLOT(HostPanelFuncs, describe, 4);
HOST_SLOT(HostPanelFuncs, setData, 7);
HOST_SLOT(HostPanelFuncs, setValue, 9);
HOST_SLOT(HostPanelFuncs, refresh, 11);
HOST_SLOT(HostPanelFuncs, open, 13);
HOST_SLOT(HostDrawFuncs, rgbPixel, 1);
HOST_SLOT(HostDrawFuncs, rgbBox, 4);
HOST_SLOT(HostDrawFuncs, text, 8);
HOST_SIZE(HostPanelValue, 24, 12);
HOST_SLOT(HostImageList, rgbSpot, 11);
HOST_SLOT(HostImageList, loadReference, 13);
HOST_SLOT(HostImageList, alphaSpot, 17);
HOST_OFFSET(HostFileRequest, title, 8, 8);
HOST_OFFSET(HostFileRequest, fullName, 40, 24);
HOST_OFFSET(HostFileRequest, bufferLength, 48, 28);
HOST_SIZE(HostFileRequest, 64, 36);
HOST_SIZE(HostTimeInfo, 16, 16);
HOST_OFFSET(HostSceneInfo, firstFrame, 32, 24);
HOST_OFFSET(HostSceneInfo, framesPerSecond, 48, 40);
HOST_OFFSET(HostSceneInfo, recursionDepth, 96, 88);
HOST_SLOT(HostSceneObjects, vertexMapName, 7);
HOST_SLOT(HostItemInfo, name, 8);
HOST_SLOT(HostCameraEvaluation, evaluate, 7);
HOST_SIZE(HostCameraRay, 144, 144);
HOST_SLOT(HostCameraInfo, filmSize, kCameraInfoFilmSize);
HOST_SLOT(HostCameraInfo, frameTiming, kCameraInfoFrameTiming);
HOST_SIZE(HostFrameInterval, 32, 32);

/* NOLINTEND(bugprone-branch-clone) */
#undef HOST_SLOT
#undef HOST_OFFSET
#undef HOST_SIZE
#undef HOST_ASSERT

#endif

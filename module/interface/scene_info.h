/*
 * "LW Scene Info 5": facts about the scene and its render settings. The lookup gives a HostSceneInfo. A module looks it
 * up anew for each render; the host writes it between frames, and modules read it on any thread.
 *
 * Texts are the host's, never null, and stay valid until the record changes. Without a scene, the record is that of an
 * empty one.
 */
#ifndef VELM_MODULE_INTERFACE_SCENE_INFO_H
#define VELM_MODULE_INTERFACE_SCENE_INFO_H

#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_SCENE_INFO "LW Scene Info 5"

typedef struct HostSceneInfo {
    const char *name;                     /* of the scene */
    const char *fileName;                 /* of the scene's file; empty for a scene without one */
    int points, polygons;                 /* numbers of both in all objects */
    int renderType;                       /* 2: fully shaded */
    int renderOptions;                    /* bits; 0 in the stand-alone host */
    int firstFrame, lastFrame, frameStep; /* the frames to be rendered */
    double framesPerSecond;               /* of the animation */
    int width, height;                    /* of the picture; pixels */
    double pixelAspect;                   /* width of a pixel divided by its height */
    int minSamplesPerPixel;               /* samples that every pixel gets */
    int maxSamplesPerPixel;               /* samples that a pixel gets at most */
    int limitedRegion[4];                 /* the part that is rendered: left, top, right and bottom; pixels */
    int recursionDepth;                   /* most bounces of a ray */
    /* Gives the camera that the scene is rendered through at a time in seconds, or null without one.
     * [render threads] */
    HostItem *(*renderCamera)(double time);
    int threads;               /* render threads, at most kMaxThreads */
    const char *animationFile; /* where the animation is saved; empty for nowhere */
    const char *rgbPrefix;     /* start of the names of saved pictures; empty for none */
    const char *alphaPrefix;   /* start of the names of saved alpha pictures; empty for none */
} HostSceneInfo;

#ifdef __cplusplus
}
#endif

#endif

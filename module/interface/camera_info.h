/*
 * "LW Camera Info 5": the films and shutters of the scene's cameras. The lookup gives a HostCameraInfo. The modelling
 * application does not offer it.
 */
#ifndef VELM_MODULE_INTERFACE_CAMERA_INFO_H
#define VELM_MODULE_INTERFACE_CAMERA_INFO_H

#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_CAMERA_INFO "LW Camera Info 5"

/* Intervals of equal length and distance within a frame. */
typedef struct HostFrameInterval {
    unsigned int count; /* how many there are */
    double offset;      /* when the first begins; seconds */
    double duration;    /* of each; seconds */
    double stride;      /* from the beginning of one to that of the next; seconds */
} HostFrameInterval;

/* When a camera takes a frame. */
typedef struct HostFrameTiming {
    HostFrameInterval intervals[5]; /* the first is the shutter's; no node uses the others */
} HostFrameTiming;

enum {
    kCameraInfoFilmSize = 22,    /* index of filmSize in the table */
    kCameraInfoFrameTiming = 23, /* index of frameTiming in the table */
    kCameraInfoReserved = 22     /* operations before them */
};

typedef struct HostCameraInfo {
    /* Operations that are not described here. They must not be called, and the stand-alone host leaves them null.
     * [interface thread; not while rendering] */
    void (*reserved[kCameraInfoReserved])(void);
    /* Stores the size of a camera's film in metres; 0 and 0 for what is no camera. No pointer to a size may be null.
     * [render threads] */
    void (*filmSize)(HostItem *camera, double *width, double *height);
    /* Stores in *timing when a camera takes a frame; all zeros for what is no camera. `timing` must not be null.
     * [between frames] */
    void (*frameTiming)(HostItem *camera, int frame, HostFrameTiming *timing);
} HostCameraInfo;

#ifdef __cplusplus
}
#endif

#endif

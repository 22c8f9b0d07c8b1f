/*
 * "NodeUtilityFuncs": blending of colours, the size of previews, and mappings from positions or directions to points of
 * an image. The lookup gives a HostNodeUtilityFuncs.
 *
 * Points of an image are u from the left edge (0) to the right edge (1) and v from the top edge (0) to the bottom edge
 * (1). Axes are 0 for X, 1 for Y and 2 for Z. Arguments must not be null unless a comment allows it.
 */
#ifndef VELM_MODULE_INTERFACE_NODE_UTILITY_H
#define VELM_MODULE_INTERFACE_NODE_UTILITY_H

#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_NODE_UTILITY_FUNCS "NodeUtilityFuncs"

/* Blend modes. With the top colour t laid over the bottom colour b, the blended colour before opacity is: */
enum {
    kBlendNormal,      /* t */
    kBlendAdditive,    /* b + t */
    kBlendSubtractive, /* b - t */
    kBlendMultiply,    /* b t */
    kBlendScreen,      /* 1 - (1 - b)(1 - t) */
    kBlendDarken,      /* min(b, t) */
    kBlendLighten,     /* max(b, t) */
    kBlendDifference,  /* |b - t| */
    kBlendNegative,    /* 1 - |1 - b - t| */
    kBlendColourDodge, /* b / (1 - t) */
    kBlendColourBurn,  /* 1 - (1 - b) / t */
    kBlendRed,         /* red of t, the rest of b */
    kBlendGreen,       /* green of t, the rest of b */
    kBlendBlue,        /* blue of t, the rest of b */
};

typedef struct HostNodeUtilityFuncs {
    /* Lays one colour over another: result = bottom + opacity (blended - bottom). Opacity is 1.0 for full, and nothing
     * is clamped; a mode that does not exist counts as kBlendNormal. `result` may be one of the others.
     * [render threads] */
    void (*blend)(double result[3], const double top[3], const double bottom[3], double opacity, int mode);
    /* Gives the size and the centre, in metres, of the box that previews of the node's network show. `position` may be
     * null. [interface thread; not while rendering] */
    void (*autosize)(HostNode *node, double scale[3], double position[3]);
    /* Projects a position in metres along an axis, onto an image of one metre by one metre centred on the origin. An
     * axis that does not exist counts as Z. [render threads] */
    void (*planarMapping)(const double position[3], int axis, double *u, double *v);
    /* Maps a position by its heading about the axis (u, from 0 to below 1) and its elevation (v, 0 at the positive end
     * of the axis). For Y, the heading goes from +Z at u = 0.5 towards +X. [render threads] */
    void (*sphericalMapping)(const double position[3], int axis, double *u, double *v);
    /* Maps a position by its heading about the axis, as sphericalMapping does, and v = 0.5 less its height along the
     * axis in metres. [render threads] */
    void (*cylindricalMapping)(const double position[3], int axis, double *u, double *v);
    /* As planarMapping, but mirrored on one side of the origin so that the image reads correctly from both. An axis
     * that does not exist selects the one along which the position is farthest from the origin. [render threads] */
    void (*cubicMapping)(const double position[3], int axis, double *u, double *v);
    /* Projects a world position through the camera of the render onto its picture; on the camera's own plane it gives
     * the middle, (0.5, 0.5). [render threads] */
    void (*frontMapping)(const double position[3], double *u, double *v);
    /* Maps a direction of any length onto a spherical environment image: u = 0.5 + (heading - seamAngle) / 2 pi, with
     * the heading about +Y from +Z towards +X, and v = 0 straight up. Angles are radians. A direction without length
     * gives (0.5, 0.5). [render threads] */
    void (*directionMapping)(double seamAngle, const double direction[3], double *u, double *v);
    /* Looks up the sample's coordinates in the UV map of that name, u to the right and v up, not wrapped; a null or
     * empty name selects the mesh's first map. Gives non-zero, or 0 with *u and *v unchanged, when the sample is not on
     * the map. [render threads] */
    int (*uvMapping)(const char *mapName, ShadingSample *sample, double *u, double *v);
    /* Gives the orientation of the camera of the render: by row, its right, up and forward directions in world space,
     * of unit length. [render threads] */
    void (*cameraMatrix)(double matrix[9]);
} HostNodeUtilityFuncs;

#ifdef __cplusplus
}
#endif

#endif

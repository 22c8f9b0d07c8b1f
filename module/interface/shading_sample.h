/*
 * The shading sample: what the renderer knows of the point that is being shaded, and the functions by which a node
 * sends rays from it. There is no service to look up; every evaluation is handed a sample (handler.h).
 *
 * Positions and directions are in world space unless a member says otherwise. A sample and its functions are valid
 * during the evaluation that they were handed to, on the thread that it runs on. In a sample without a scene, as in a
 * preview, any of the functions may be null; a caller then acts as if its ray had hit nothing.
 */
#ifndef VELM_MODULE_INTERFACE_SHADING_SAMPLE_H
#define VELM_MODULE_INTERFACE_SHADING_SAMPLE_H

#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Bits of `rayFlags`. */
enum {
    kRayShadow = 1 << 0,      /* the incoming ray is a shadow ray */
    kRayPreview = 1 << 1,     /* the sample belongs to a preview */
    kRayBackSide = 1 << 2,    /* the back of the polygon was hit */
    kRaySampled = 1 << 3,     /* the incoming ray is one of many samples of a soft effect */
    kRayPreprocess = 1 << 4,  /* the incoming ray belongs to a pre-process that runs before the render itself */
    kRayToOutside = 1 << 5,   /* the ray leaves the object to the outside */
    kRayDoubleSided = 1 << 6, /* the surface is double-sided */
};

/* The mode word of `rayTraceMode`: one of these kinds in the low byte, and the flags that follow. */
enum {
    kTraceDistance = 0,   /* only the distance; nothing is shaded, and the hit surface may be fully transparent */
    kTraceReflection = 1, /* shades the hit, recursively */
    kTraceRefraction = 2, /* the same, in a medium of the refraction index given */
    kTraceDissolve = 3,   /* a refraction that never hits the object that the ray starts from */
    kTraceShadow = 4,     /* the opacity along the ray, of objects that cast shadows; no recursion */
    kTraceOcclusion = 5,  /* the same, of objects that are visible to rays */
    kTraceBackdrop = 6,   /* the backdrop only; the ray hits nothing */
    kTraceKindMask = 0xff
};
#define kTraceShadeBackSides 0x08000000u    /* also hit the back sides of surfaces that are not double-sided */
#define kTraceUseBackdropColour 0x10000000u /* the colour argument replaces the backdrop */
#define kTraceOwnObjectOnly 0x20000000u     /* hit only the object that the ray starts from */
#define kTraceSampled 0x40000000u           /* the ray is one of many samples of a soft effect */
#define kTraceMayHitOwnPolygon 0x80000000u  /* also hit the polygon that the ray starts from */

#define HOST_RAY_MISS (-1.0) /* the distance that a ray function gives for a ray that hits nothing */

typedef struct HostRayHit HostRayHit;

/* Evaluates the light `light` at a position in metres. Stores the unit direction from the light to the position and the
 * light's colour there, with falloff and shadows, and gives 1. Where none of its light arrives, or for an item that is
 * no light or null, it stores zeros as the direction and black, and gives 0. [render threads] */
typedef int HostIlluminate(HostItem *light, const double position[3], double direction[3], double colour[3]);
/* The same, but an area light is evaluated at one point of its area. `sampler` is the host's random sequence; null is
 * allowed. [render threads] */
typedef int HostIlluminateSampled(HostItem *light, const double position[3], double direction[3], double colour[3],
                                  void *sampler);
/* Traces a ray and shades what it hits, as rayTraceMode does with kTraceReflection. The direction need not have unit
 * length. Stores the shaded colour, or the backdrop's, and gives the distance to the hit in metres, or HOST_RAY_MISS.
 * Beyond the recursion limit, a hit is black. [render threads] */
typedef double HostRayTrace(const double position[3], const double direction[3], double colour[3]);
/* Gives the distance in metres to the nearest hit along a ray, or HOST_RAY_MISS. The direction need not have unit
 * length; one without length hits nothing. [render threads] */
typedef double HostRayCast(const double position[3], const double direction[3]);
/* Traces a ray and leaves in *hit the shading record of what it hits, with the shaded colour; for a ray that hits
 * nothing, the backdrop's colour. Beyond the recursion limit, a hit is described and not shaded. `hit` must point into
 * a HostRayHitRoom. Gives the distance in metres, or HOST_RAY_MISS. [render threads] */
typedef double HostRayShade(const double position[3], const double direction[3], HostRayHit *hit);
/* Traces a ray as the mode word says. `eta` is the index of refraction of the medium that the ray travels in. The
 * shading kinds leave the hit's colour, or the backdrop's; shadow and occlusion rays leave their opacity, 0 to 1, in
 * all three components. Gives the distance in metres, or HOST_RAY_MISS. A ray without a direction leaves the colour
 * alone. [render threads] */
typedef double HostRayTraceMode(const double position[3], const double direction[3], double colour[3], double eta,
                                int mode);

/* What the renderer hands to every evaluation. Later hosts append members; none of these ever moves. The module reads
 * it and never writes to it. */
struct ShadingSample {
    int pixelX, pixelY;        /* column and row of the picture, from its upper left, from 0 */
    double objectPosition[3];  /* the point that is shaded, in the object's space; metres */
    double position[3];        /* the same point in world space; metres */
    double geometricNormal[3]; /* of the polygon, unit length, on the side that the ray came from */
    double shadingNormal[3];   /* interpolated and bumped, unit length */
    double unbumpedNormal[3];  /* interpolated, before bump, unit length */
    double raySource[3];       /* origin of the incoming ray; metres */
    double rayLength;          /* from the ray's origin to the position; metres */
    double spotSize;           /* width of the sample's footprint at the position; metres */
    double cosine;             /* of the angle between the geometric normal and the direction to the ray's origin */
    double bumpHeight;         /* of the bump at the position; metres */
    double objectToWorld[9];   /* rotation and scale from the object's space to world space, by row */
    double worldToObject[9];   /* the inverse of it */
    /* Evaluates a light, all of an area light. May be null. [render threads] */
    HostIlluminate *illuminate;
    /* Evaluates a light, one point of an area light. May be null. [render threads] */
    HostIlluminateSampled *illuminateSampled;
    /* Traces a ray and shades its hit. May be null. [render threads] */
    HostRayTrace *rayTrace;
    /* Finds the distance to a ray's hit. May be null. [render threads] */
    HostRayCast *rayCast;
    /* Traces a ray and describes its hit. May be null. [render threads] */
    HostRayShade *rayShade;
    /* Traces a ray of a kind. May be null. [render threads] */
    HostRayTraceMode *rayTraceMode;
    int rayDepth;                /* bounces before this sample; 0 for what the camera sees */
    HostItem *sourceItem;        /* what the incoming ray started from: a camera, a light or an object; may be null */
    HostItem *objectItem;        /* the object that is shaded; may be null */
    int polygonNumber;           /* index of the polygon in its mesh, from 0 */
    HostPoint *vertices[4];      /* of the polygon, around the position; the last is null for a triangle */
    float vertexWeights[4];      /* barycentric coordinates of the position: they add up to 1 */
    float vertexPositions[4][3]; /* of the vertices, in world space; metres */
    HostPolygon *polygon;        /* the polygon that was hit; may be null */
    double refractionIndex;      /* of the medium that the incoming ray travelled in */
    int threadIndex;             /* of the calling thread, from 0 to kMaxThreads - 1, the same for its whole life */
    int rayFlags;                /* kRayShadow and so on */
};

/* What rayShade leaves: the shading record of the point that was hit. Members that the sample has, too, mean the same
 * here, at the hit. For a ray that hits nothing, only the pixel, the ray's members, the functions and the colour are
 * set; the rest is zero. */
struct HostRayHit {
    int pixelX, pixelY;        /* column and row of the picture */
    double objectPosition[3];  /* of the hit, in the hit object's space; metres */
    double position[3];        /* of the hit, in world space; metres */
    double geometricNormal[3]; /* of the polygon, unit length */
    double spotSize;           /* width of the footprint; metres */
    double raySource[3];       /* origin of the ray; metres */
    double rayLength;          /* metres */
    double cosine;             /* between the geometric normal and the direction to the ray's origin */
    double objectToWorld[9];   /* by row */
    double worldToObject[9];   /* by row */
    HostItem *objectItem;      /* what was hit; null for nothing */
    int polygonNumber;         /* index of the polygon in its mesh */
    double shadingNormal[3];   /* as the surface bumps it, unit length */
    double colour[3];          /* the shaded colour; 1.0 is full */
    double luminosity;         /* the surface's own values, as fractions: light that it emits by itself */
    double diffuse;            /* diffuse reflection */
    double specular;           /* specular highlights */
    double mirror;             /* mirror reflection */
    double transparency;       /* light that passes through */
    double eta;                /* index of refraction of the surface */
    double roughness;          /* 1 less the glossiness */
    /* As the sample's illuminate, for the hit. May be null. [render threads] */
    HostIlluminate *illuminate;
    /* As the sample's rayTrace, for the hit. May be null. [render threads] */
    HostRayTrace *rayTrace;
    /* As the sample's rayCast, for the hit. May be null. [render threads] */
    HostRayCast *rayCast;
    /* As the sample's rayShade, for the hit. May be null. [render threads] */
    HostRayShade *rayShade;
    int rayFlags;         /* kRayShadow and so on */
    int rayDepth;         /* bounces before the hit */
    HostItem *sourceItem; /* what the ray started from */
};

enum { kRayHitReserve = 2048 }; /* bytes that a host may fill */

/* Room for a hit record of any host: later hosts append members to HostRayHit and fill them, too. */
typedef union HostRayHitRoom {
    HostRayHit hit;                                  /* the members described here */
    double reserve[kRayHitReserve / sizeof(double)]; /* makes the room large enough; never read */
} HostRayHitRoom;

#ifdef __cplusplus
}
#endif

#endif

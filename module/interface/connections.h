/*
 * Connections: the types that inputs and outputs have, what a value of each type is, and the event that tells a node of
 * a change. Inputs and outputs themselves are made by "NodeInputFuncs" (node_inputs.h) and "NodeOutputFuncs"
 * (node_outputs.h). There is no service to look up here.
 *
 * Where a connection joins unlike types, the host converts the value:
 *   - colour or material to scalar: the luminance, 0.299 R + 0.587 G + 0.114 B; a vector likewise, its components
 *     taken as red, green and blue
 *   - scalar or integer to colour or vector: the value in each component
 *   - anything to integer: converted to a scalar, then truncated towards zero
 *   - material to colour or vector: its diffuse colour
 *   - anything to material: the value as the diffuse colour, and the rest 0
 *   - a function transforms whatever the asking input holds, each component by itself
 */
#ifndef VELM_MODULE_INTERFACE_CONNECTIONS_H
#define VELM_MODULE_INTERFACE_CONNECTIONS_H

#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Connection types, and what a value of each is. */
enum {
    kConnectColour = 1,   /* three doubles */
    kConnectScalar = 2,   /* a double */
    kConnectVector = 3,   /* three doubles */
    kConnectInteger = 4,  /* an int */
    kConnectFunction = 5, /* a double, which the connected node reads, transforms and sets */
    kConnectMaterial = 6, /* a HostMaterial */
};

/* A value of the type kConnectMaterial. Colours and the fraction are 1.0 for full. */
typedef struct HostMaterial {
    double diffuse[3];    /* colour of the diffuse reflection */
    double specular[3];   /* colour of the specular highlights */
    double reflection[3]; /* colour of the mirror reflection */
    double refraction[3]; /* colour of the refracted light */
    double transparency;  /* fraction of the light that passes through */
} HostMaterial;

/* What has happened to an input. */
enum {
    kInputConnected = 0,      /* an output was connected, in place of any other */
    kInputDisconnected = 1,   /* the connection was broken */
    kInputSourceDestroyed = 2 /* the connection was broken because the connected node was destroyed */
};

/* Called after every change of an input's connection. `instance` is that of the input's node, or the editor's user data
 * for a root input; `event` is one of the codes above; `type` is the connection type of the connected output for
 * kInputConnected, else 0. The result is 1. Not called while the input's own node is being destroyed.
 * [interface thread; not while rendering] */
typedef int HostInputEvent(void *instance, HostInput *input, int event, int type);

#ifdef __cplusplus
}
#endif

#endif

/*
 * "Scene Objects 6": the objects of the scene, their layers, and the vertex maps of their meshes. The lookup gives a
 * HostSceneObjects.
 *
 * Objects, layers and vertex maps are numbered from 0. What does not exist has no file, no name and no mesh (null), and
 * 0 of everything else. In the stand-alone host an object has one layer, and all vertex maps are UV maps.
 */
#ifndef VELM_MODULE_INTERFACE_SCENE_OBJECTS_H
#define VELM_MODULE_INTERFACE_SCENE_OBJECTS_H

#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_SCENE_OBJECTS "Scene Objects 6"

/* A type of vertex map is four characters, the first in the high byte. */
enum { kVertexMapTxuv = 0x54585556 /* "TXUV": UV coordinates */ };

typedef struct HostSceneObjects {
    /* Gives the number of objects. [interface thread; not while rendering] */
    int (*objectCount)(void);
    /* Gives the file that an object was loaded from, or null. The text is the host's.
     * [interface thread; not while rendering] */
    const char *(*fileName)(int object);
    /* Gives the number of an object's layers. [interface thread; not while rendering] */
    int (*layerCount)(int object);
    /* Gives non-zero when the object has the layer. [interface thread; not while rendering] */
    int (*layerExists)(int object, int layer);
    /* Stores the point that a layer turns about, in the object's space, in metres.
     * [interface thread; not while rendering] */
    void (*pivot)(int object, int layer, double pivot[3]);
    /* Gives the mesh of a layer, or null. [interface thread; not while rendering] */
    HostMesh *(*layerMesh)(int object, int layer);
    /* Gives the number of vertex maps of a type, in all objects together. [interface thread; not while rendering] */
    int (*vertexMapCount)(int type);
    /* Gives the name of a vertex map, by its index among those of its type, or null. The text is the host's.
     * [interface thread; not while rendering] */
    const char *(*vertexMapName)(int type, int index);
    /* Gives how many numbers a vertex map has for each vertex; 2 for a UV map.
     * [interface thread; not while rendering] */
    int (*vertexMapDimension)(int type, int index);
    /* Gives the type of a vertex map, by its index among all. [interface thread; not while rendering] */
    int (*vertexMapType)(int index);
} HostSceneObjects;

#ifdef __cplusplus
}
#endif

#endif

/*
 * Handles and common types: what every other header of the plug-in interface builds on. There is no service to look up
 * here.
 *
 * A handle points to a record that only the host can read. The host owns the record unless the function that makes it
 * says that the caller does. A handle is compared and handed back, never dereferenced.
 */
#ifndef VELM_MODULE_INTERFACE_TYPES_H
#define VELM_MODULE_INTERFACE_TYPES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The result of an operation that can fail: null for success, else a zero-terminated message in English. The message
 * belongs to whoever returned it, is never freed by the receiver, and stays valid until the next call that fails. */
typedef const char *HostError;

typedef struct HostNode HostNode;                       /* a node in an editor; an instance belongs to one */
typedef struct HostInput HostInput;                     /* an input of a node */
typedef struct HostOutput HostOutput;                   /* an output of a node */
typedef struct HostNodeValue HostNodeValue;             /* where one evaluation leaves its result */
typedef struct HostNodeEditor HostNodeEditor;           /* a network of nodes with a root node */
typedef struct HostVParm HostVParm;                     /* an animatable parameter of one or three components */
typedef struct HostEnvelope HostEnvelope;               /* one animated channel */
typedef struct HostKey HostKey;                         /* a key of an envelope */
typedef struct HostChannelGroup HostChannelGroup;       /* a folder of envelopes and further groups */
typedef struct HostTexture HostTexture;                 /* a texture attached to a parameter */
typedef struct HostPanel HostPanel;                     /* a settings panel */
typedef struct HostDrawArea HostDrawArea;               /* a rectangle of a panel that is being drawn */
typedef struct HostImage HostImage;                     /* an image of the host's list; null is allowed everywhere */
typedef struct HostItem HostItem;                       /* an object, light, camera or bone of the scene */
typedef struct HostPoint HostPoint;                     /* a vertex of a mesh */
typedef struct HostPolygon HostPolygon;                 /* a polygon of a mesh */
typedef struct HostMesh HostMesh;                       /* the geometry of a layer of an object */
typedef struct HostCameraEvaluator HostCameraEvaluator; /* a camera prepared to generate rays */

/* What the renderer hands to every evaluation: see shading_sample.h. */
typedef struct ShadingSample ShadingSample;

/* An unsigned integer as wide as a pointer, 32 or 64 bits: one word of a panel's hint list. */
typedef uintptr_t HostWord;

enum {
    kMaxThreads = 16 /* render threads, numbered from 0; an array of per-thread state has this many elements */
};

#ifdef __cplusplus
}
#endif

#endif

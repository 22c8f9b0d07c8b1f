/*
 * What the servers of a node give to the host: the operations of a "NodeHandler" (the life of an instance, rendering,
 * evaluation) and of a "NodeInterface" (its panel). There is no service to look up; an activation (module.h) fills
 * these records, which the host allocates and presets as described below. Functions that it sets must stay valid while
 * the module is loaded.
 *
 * An instance is the module's own record behind one node. Its life: create; any number of copy, load and save; for each
 * render init, newTime for each frame with evaluate on many threads, and cleanup; destroy. The host runs no other
 * callback of an instance while that instance is being evaluated, so evaluation needs no lock.
 */
#ifndef VELM_MODULE_INTERFACE_HANDLER_H
#define VELM_MODULE_INTERFACE_HANDLER_H

#include "module/interface/states.h"
#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The life of an instance. All members are null before the activation, which must set create and destroy. */
typedef struct HostInstanceOps {
    void *priv; /* any word of the module's; the host hands it to create and does not look into it */
    /* Makes the instance of a new node with default settings, and the node's inputs and outputs. `node` is the
     * HostNode, valid as long as the instance. Gives the instance, which the module owns until destroy; on failure
     * null, with *error set to a message that the module owns. [interface thread; not while rendering] */
    void *(*create)(void *priv, void *node, const char **error);
    /* Frees an instance and what it made, its parameters and nested editors included. The node's inputs, outputs,
     * channel group and panel are the host's to free. [interface thread; not while rendering] */
    void (*destroy)(void *instance);
    /* Gives `to` the settings of `from`, another instance of the same class; state left by rendering is not copied. A
     * message fails the copy. May be null: nothing is copied. [interface thread; not while rendering] */
    HostError (*copy)(void *to, void *from);
    /* Reads settings as save wrote them. The state is inside the node's own block, which the host enters and leaves. A
     * message fails the load. May be null: nothing is loaded. [interface thread; not while rendering] */
    HostError (*load)(void *instance, const HostLoadState *state);
    /* Writes the settings. The state is inside the node's own block, which the host begins and ends. A message fails
     * the save. May be null: nothing is saved. [interface thread; not while rendering] */
    HostError (*save)(void *instance, const HostSaveState *state);
    /* Gives a line that describes the instance for lists, which the module owns. May be null. The stand-alone host does
     * not ask for it. [interface thread; not while rendering] */
    const char *(*describe)(void *instance);
} HostInstanceOps;

/* How an instance refers to items of the scene. The activation may leave all of them null, as this module does. The
 * stand-alone host never calls them. */
typedef struct HostItemOps {
    /* Gives the items that the instance refers to, as an array ended by null that the module owns; null for none.
     * [interface thread; not while rendering] */
    const HostItem **(*useItems)(void *instance);
    /* Tells that the handles of items have changed: `changed` lists pairs of an old and a new handle, ended by null.
     * [interface thread; not while rendering] */
    void (*changeId)(void *instance, const HostItem *const *changed);
    /* Tells that an item which the instance refers to has another name. [interface thread; not while rendering] */
    void (*changeName)(void *instance);
} HostItemOps;

/* What a render, or a preparation for evaluation, is for. */
enum {
    kInitPreview = 0, /* a preview in the interface */
    kInitRender = 1   /* a render */
};

/* Rendering. All members are null before the activation and may stay so: nothing is called then. */
typedef struct HostRenderOps {
    /* A render starts; `mode` is kInitPreview or kInitRender. The instance resets its per-thread state. A message makes
     * the render fail before its first frame; cleanup is then not called for this instance. [between frames] */
    HostError (*init)(void *instance, int mode);
    /* The render that init began has ended, or has failed. [between frames] */
    void (*cleanup)(void *instance);
    /* A frame starts: `frame` is its number, `time` its time in seconds. The instance reads its animated parameters for
     * that time. A message makes the render fail. [between frames] */
    HostError (*newTime)(void *instance, int frame, double time);
} HostRenderOps;

/* The record that the activation of a "NodeHandler" server fills. */
typedef struct HostNodeHandler {
    HostInstanceOps *instance; /* to be filled; never null */
    HostItemOps *item;         /* to be filled or left alone; null in the modelling application */
    HostRenderOps *render;     /* to be filled; never null */
    /* Computes one output for one sample and hands it to setValue of "NodeOutputFuncs" with `value`. When it sets
     * nothing, the asking input keeps its value. It only reads the instance, except for the per-thread state at the
     * index sample->threadIndex. The arguments are valid during the call and never null. [render threads] */
    void (*evaluate)(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value);
    /* Draws the node's preview, `width` by `height` pixels, for a node of the preview type kPreviewDrawnByNode. May be
     * null. The stand-alone host draws no previews and never calls it. [interface thread; not while rendering] */
    void (*customPreview)(void *instance, int width, int height);
    /* Gives flags of the node, 0 for none. May be null, which means 0. The stand-alone host never asks for them.
     * [interface thread; not while rendering] */
    unsigned int (*flags)(void *instance);
} HostNodeHandler;

/* The record that the activation of a "NodeInterface" server fills, anew each time the user opens a node's panel. */
typedef struct HostNodeInterface {
    void *instance;   /* given by the host: the instance whose panel is wanted */
    HostPanel *panel; /* to be set: the instance's panel, always the same one; null for none. The host destroys it */
    /* Shows the settings in a window of the module's own, for a node without a panel. Gives a message on failure. Null
     * where there is a panel; the stand-alone host never calls it. [interface thread; not while rendering] */
    HostError (*options)(void *instance);
    /* Carries out a command given as text. Gives a message on failure. May be null; the stand-alone host never calls
     * it. [interface thread; not while rendering] */
    HostError (*command)(void *instance, const char *text);
} HostNodeInterface;

#ifdef __cplusplus
}
#endif

#endif

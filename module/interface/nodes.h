/*
 * "NodeFuncs": what a node asks and tells about itself: its names, its channel group, and how the node editor shows it.
 * The lookup gives a HostNodeFuncs. No argument may be null.
 */
#ifndef VELM_MODULE_INTERFACE_NODES_H
#define VELM_MODULE_INTERFACE_NODES_H

#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_NODE_FUNCS "NodeFuncs"

/* How a node's preview comes about. */
enum {
    kPreviewRendered = 0,    /* the host renders it from the node's outputs */
    kPreviewDrawnByNode = 1, /* the node draws it, by customPreview of its handler */
    kPreviewOff = 2          /* there is none */
};

typedef struct HostNodeFuncs {
    /* Gives the node's name, unique in its editor, as in "Counter (2)". The text is the host's and stays valid until
     * the node is renamed or destroyed. [interface thread; not while rendering] */
    const char *(*nodeName)(HostNode *node);
    /* Gives the display name of the node's class, as in "Counter"; for a root node without a server, its editor's name.
     * The text is the host's and stays valid as long as the node. [interface thread; not while rendering] */
    const char *(*serverUserName)(HostNode *node);
    /* Gives the node's channel group, under which its envelopes belong. The host makes it when it is first asked for,
     * and destroys it with the node. [interface thread; not while rendering] */
    HostChannelGroup *(*channelGroup)(HostNode *node);
    /* Sets the colour of the node's title in the editor: red, green and blue, from 0 to 255, as one pointer to three
     * ints. [interface thread; not while rendering] */
    void (*setColour)(HostNode *node, const int rgb[3]);
    /* The same, with the components as separate arguments. [interface thread; not while rendering] */
    void (*setColourRgb)(HostNode *node, int red, int green, int blue);
    /* Sets how the node is previewed: kPreviewRendered and so on. [interface thread; not while rendering] */
    void (*setPreviewType)(HostNode *node, int type);
    /* Asks the host to redraw the node's preview, after one of its settings has changed.
     * [interface thread; not while rendering] */
    void (*updatePreview)(HostNode *node);
} HostNodeFuncs;

#ifdef __cplusplus
}
#endif

#endif

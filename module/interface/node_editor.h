/*
 * "NodeEditorFuncs": networks of nodes that a plug-in owns, such as the one inside a group node. A network has a root
 * node, whose inputs its owner adds and evaluates. The lookup gives a HostNodeEditorFuncs.
 *
 * The `editor` of every operation must not be null unless a comment allows it. Error texts belong to the editor and
 * stay valid until its next error.
 */
#ifndef VELM_MODULE_INTERFACE_NODE_EDITOR_H
#define VELM_MODULE_INTERFACE_NODE_EDITOR_H

#include "module/interface/connections.h"
#include "module/interface/states.h"
#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_NODE_EDITOR_FUNCS "NodeEditorFuncs"

/* How the root node of an editor behaves. Any function may be null: the root then does nothing there. The editor's user
 * data tells the functions which owner they work for. */
typedef struct HostRootDescription {
    int previewType; /* of the root node: kPreviewRendered and so on (nodes.h) */
    /* A render of the network starts; `mode` is kInitPreview or kInitRender (handler.h). A message makes it fail.
     * [between frames] */
    HostError (*init)(HostNodeEditor *editor, int mode);
    /* A frame starts: its number, and its time in seconds. A message makes the render fail. [between frames] */
    HostError (*newTime)(HostNodeEditor *editor, int frame, double time);
    /* The render has ended. [between frames] */
    void (*cleanup)(HostNodeEditor *editor);
    /* Gives the root node's panel, which stays the owner's, or null for none.
     * [interface thread; not while rendering] */
    HostPanel *(*panel)(HostNodeEditor *editor);
    /* Shows the root node's settings in a window of the owner's own, for a root without a panel. Gives a message on
     * failure. The stand-alone host never calls it. [interface thread; not while rendering] */
    HostError (*options)(HostNodeEditor *editor);
    /* Stores in `colour` what the root node's preview shows for a sample. [render threads] */
    void (*preview)(HostNodeEditor *editor, ShadingSample *sample, double colour[3]);
    /* Draws the root node's preview, `width` by `height` pixels, for the preview type kPreviewDrawnByNode. The
     * stand-alone host never calls it. [interface thread; not while rendering] */
    void (*customPreview)(HostNodeEditor *editor, int width, int height);
} HostRootDescription;

/* Called after every change of a network: a node added, removed or renamed, or a connection made or broken. Gives the
 * editor's user data; the stand-alone host ignores the result. [interface thread; not while rendering] */
typedef void *HostEditorEvent(HostNodeEditor *editor);

/* Asks the owner which box previews are to show. Stores its low and high end along x, y and z in `bounds`, in metres;
 * before the call these are -0.5 and 0.5. [interface thread; not while rendering] */
typedef void HostEditorAutosize(HostNodeEditor *editor, void *userData, double bounds[3][2]);

typedef struct HostNodeEditorFuncs {
    /* Makes a network with a root node of that name. The host copies the texts and *root, which may be null; a null
     * title is the same as the name. The caller owns the editor and destroys it; null when it cannot be made, as in the
     * stand-alone host for networks nested more than 16 deep. [interface thread; not while rendering] */
    HostNodeEditor *(*create)(const char *name, const char *title, const HostRootDescription *root, void *userData);
    /* Destroys a network, all its nodes and its root; its events are not called any more. Null is ignored.
     * [interface thread; not while rendering] */
    void (*destroy)(HostNodeEditor *editor);
    /* Sets the title of the editor's window. The host copies it; null counts as an empty one.
     * [interface thread; not while rendering] */
    void (*rename)(const char *title, HostNodeEditor *editor);
    /* Sets the function to be called after changes of the network; null for none.
     * [interface thread; not while rendering] */
    void (*setEvent)(HostNodeEditor *editor, HostEditorEvent *event);
    /* Makes `to` like `from`: its nodes, their settings, and the connections. Both have root inputs of the same names.
     * On failure `to` holds what was copied until then. [interface thread; not while rendering] */
    HostError (*copy)(HostNodeEditor *to, HostNodeEditor *from);
    /* Writes the network into the present block of the state, which the caller began and ends.
     * [interface thread; not while rendering] */
    HostError (*save)(HostNodeEditor *editor, const HostSaveState *state);
    /* Replaces the network by the one in the present block of the state, which the caller entered and leaves. On
     * failure the editor holds what was read until then. [interface thread; not while rendering] */
    HostError (*load)(HostNodeEditor *editor, const HostLoadState *state);
    /* Starts a render: calls init of the root and of all nodes, with kInitPreview or kInitRender (handler.h). When one
     * fails, those before it are cleaned up. The owner calls it from its own init. [between frames] */
    HostError (*init)(HostNodeEditor *editor, int mode);
    /* Starts a frame: calls newTime of the root and of all nodes, with the frame's number and its time in seconds.
     * [between frames] */
    HostError (*newTime)(HostNodeEditor *editor, int frame, double time);
    /* Ends a render: calls cleanup of the root and of all nodes. [between frames] */
    void (*cleanup)(HostNodeEditor *editor);
    /* Adds an input to the root node. `type` is a connection type; the host copies `name`; `event` may be null, and is
     * called with the editor's user data as its instance. Gives the input, which belongs to the editor, or null for a
     * type that does not exist. [interface thread; not while rendering] */
    HostInput *(*addRootInput)(HostNodeEditor *editor, int type, const char *name, HostInputEvent *event);
    /* Sets the group under which nodes get their channel groups from now on, which has to outlive the editor; null for
     * a group of the editor's own. [interface thread; not while rendering] */
    void (*setChannelGroup)(HostNodeEditor *editor, HostChannelGroup *group);
    /* Sets the function that gives the box to be previewed; null for a box of one metre around the origin.
     * [interface thread; not while rendering] */
    void (*setAutosize)(HostNodeEditor *editor, HostEditorAutosize *autosize);
    /* Replaces the user data that create was given; the host does not look into it.
     * [interface thread; not while rendering] */
    void (*setUserData)(HostNodeEditor *editor, void *userData);
    /* Gives the user data. [any thread] */
    void *(*userData)(HostNodeEditor *editor);
    /* Gives the number of nodes without the root. [interface thread; not while rendering] */
    int (*nodeCount)(HostNodeEditor *editor);
    /* Gives the root input of that name, or null when there is none. [interface thread; not while rendering] */
    HostInput *(*rootInputByName)(HostNodeEditor *editor, const char *name);
    /* Gives the root input of that index, from 1, or null when there is none.
     * [interface thread; not while rendering] */
    HostInput *(*rootInputByIndex)(HostNodeEditor *editor, int index);
    /* Gives the network's state, which is saved with it: 0 in use, anything else switched off.
     * [interface thread; not while rendering] */
    int (*state)(HostNodeEditor *editor);
    /* Sets the network's state. [interface thread; not while rendering] */
    void (*setState)(HostNodeEditor *editor, int state);
    /* Opens the editor's window, or brings it to the front. Gives non-zero when it is open; 0 from a host without
     * windows. [interface thread; not while rendering] */
    int (*openWindow)(HostNodeEditor *editor);
    /* Gives non-zero while the editor's window is open. [interface thread; not while rendering] */
    int (*isWindowOpen)(HostNodeEditor *editor);
    /* Gives the root node, which belongs to the editor. [interface thread; not while rendering] */
    HostNode *(*rootNode)(HostNodeEditor *editor);
    /* Connects an output to an input of the same network, in place of what the input had. Nothing changes when either
     * is null, when the nodes are not in one network, or when a circle would arise.
     * [interface thread; not while rendering] */
    void (*connect)(HostOutput *output, HostInput *input);
} HostNodeEditorFuncs;

#ifdef __cplusplus
}
#endif

#endif

/*
 * "NodeInputFuncs": the inputs of a node. A node makes them while it is created, shows them in the order in which they
 * were made, and evaluates them from its own evaluation. The lookup gives a HostNodeInputFuncs.
 *
 * An input belongs to its node and is destroyed with it. Arguments must not be null unless a comment allows it.
 */
#ifndef VELM_MODULE_INTERFACE_NODE_INPUTS_H
#define VELM_MODULE_INTERFACE_NODE_INPUTS_H

#include "module/interface/connections.h"
#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_NODE_INPUT_FUNCS "NodeInputFuncs"

typedef struct HostNodeInputFuncs {
    /* Adds an input to a node, after those it has. `type` is a connection type; the host copies `name`; `event` may be
     * null. Gives the input, or null for a type that does not exist. [interface thread; not while rendering] */
    HostInput *(*create)(HostNode *node, int type, const char *name, HostInputEvent *event);
    /* Removes an input from its node and breaks its connection. A null input is ignored.
     * [interface thread; not while rendering] */
    void (*destroy)(HostNode *node, HostInput *input);
    /* Evaluates what is connected and overwrites *value, which is of the input's type, with the result. Gives non-zero
     * when the input is connected. *value keeps what it held when the input is unconnected or null, or when the
     * connected node sets nothing. `sample` is the one that the caller was handed. [render threads] */
    int (*evaluate)(HostInput *input, ShadingSample *sample, void *value);
    /* Gives non-zero when something is connected to the input; 0 for null. [interface thread; not while rendering] */
    int (*isConnected)(HostInput *input);
    /* Gives the node's first input, or null when it has none. [interface thread; not while rendering] */
    HostInput *(*first)(HostNode *node);
    /* Gives the input after this one, or null after the last. [interface thread; not while rendering] */
    HostInput *(*next)(HostInput *input);
    /* Gives the input before this one, or null before the first. [interface thread; not while rendering] */
    HostInput *(*previous)(HostInput *input);
    /* Gives the number of the node's inputs. [interface thread; not while rendering] */
    int (*count)(HostNode *node);
    /* Gives the node's input of that index, from 1, or null when there is none.
     * [interface thread; not while rendering] */
    HostInput *(*byIndex)(HostNode *node, int index);
    /* Gives the input's index in its node, from 1. [interface thread; not while rendering] */
    int (*indexOf)(HostInput *input);
    /* Breaks the input's connection, if there is one, and tells the input's event. A null input is ignored.
     * [interface thread; not while rendering] */
    void (*disconnect)(HostNode *node, HostInput *input);
    /* Gives the node that the input belongs to. [interface thread; not while rendering] */
    HostNode *(*node)(HostInput *input);
} HostNodeInputFuncs;

#ifdef __cplusplus
}
#endif

#endif

/*
 * "NodeOutputFuncs": the outputs of a node, and how an evaluation returns its result. A node makes its outputs while it
 * is created and shows them in the order in which they were made. The lookup gives a HostNodeOutputFuncs.
 *
 * An output belongs to its node and is destroyed with it. Arguments must not be null unless a comment allows it.
 */
#ifndef VELM_MODULE_INTERFACE_NODE_OUTPUTS_H
#define VELM_MODULE_INTERFACE_NODE_OUTPUTS_H

#include "module/interface/connections.h"
#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_NODE_OUTPUT_FUNCS "NodeOutputFuncs"

typedef struct HostNodeOutputFuncs {
    /* Adds an output to a node, after those it has. `type` is a connection type; the host copies `name`. Gives the
     * output, or null for a type that does not exist. [interface thread; not while rendering] */
    HostOutput *(*create)(HostNode *node, int type, const char *name);
    /* Removes an output from its node and breaks its connections. A null output is ignored.
     * [interface thread; not while rendering] */
    void (*destroy)(HostNode *node, HostOutput *output);
    /* Sets the result of an evaluation: the host copies *result, which is of the type of the output being evaluated,
     * and converts it to the asking input's type. It may be the memory that getValue gives. [render threads] */
    void (*setValue)(HostNodeValue *value, const void *result);
    /* Gives what the asking input holds before the evaluation, as a value of askingType; a node of the connection type
     * kConnectFunction transforms it. Valid during the evaluation, and not to be freed. [render threads] */
    void *(*getValue)(HostNodeValue *value);
    /* Gives the connection type of what getValue gives: the asking input's. [render threads] */
    int (*askingType)(HostNodeValue *value);
    /* Gives the node's first output, or null when it has none. [interface thread; not while rendering] */
    HostOutput *(*first)(HostNode *node);
    /* Gives the output after this one, or null after the last. [interface thread; not while rendering] */
    HostOutput *(*next)(HostOutput *output);
    /* Gives the output before this one, or null before the first. [interface thread; not while rendering] */
    HostOutput *(*previous)(HostOutput *output);
    /* Gives the number of the node's outputs. [interface thread; not while rendering] */
    int (*count)(HostNode *node);
    /* Gives the node's output of that index, from 1, or null when there is none.
     * [interface thread; not while rendering] */
    HostOutput *(*byIndex)(HostNode *node, int index);
    /* Gives the output's index in its node, from 1. [interface thread; not while rendering] */
    int (*indexOf)(HostOutput *output);
    /* Gives the node that the output belongs to. [interface thread; not while rendering] */
    HostNode *(*node)(HostOutput *output);
} HostNodeOutputFuncs;

#ifdef __cplusplus
}
#endif

#endif

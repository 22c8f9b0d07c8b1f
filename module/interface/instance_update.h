/*
 * "Instance Update": tells the host that an instance has changed. The lookup gives a pointer to the function itself, a
 * HostInstanceUpdate.
 */
#ifndef VELM_MODULE_INTERFACE_INSTANCE_UPDATE_H
#define VELM_MODULE_INTERFACE_INSTANCE_UPDATE_H

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_INSTANCE_UPDATE "Instance Update"

/* Tells the host that an instance's settings have changed, so that it evaluates the instance anew and redraws what
 * shows it. `className` is the class of its server, HOST_CLASS_NODE_HANDLER for a node.
 * [interface thread; not while rendering] */
typedef void HostInstanceUpdate(const char *className, void *instance);

#ifdef __cplusplus
}
#endif

#endif

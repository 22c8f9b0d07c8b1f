/*
 * "LW Item Info 4": the items of the scene, in its order, and how they are linked. The lookup gives a HostItemInfo. The
 * modelling application does not offer it.
 *
 * Null means no item: it is allowed as an argument everywhere, and as a result it says that there is none. In the
 * stand-alone host no item has a parent, a target, a goal or bones.
 */
#ifndef VELM_MODULE_INTERFACE_ITEM_INFO_H
#define VELM_MODULE_INTERFACE_ITEM_INFO_H

#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_ITEM_INFO "LW Item Info 4"

/* Types of items. */
enum { kItemObject, kItemLight, kItemCamera, kItemBone };

typedef struct HostItemInfo {
    /* Gives the first item of a type; `parent` is the object of bones, and null for every other type. Null when there
     * is none. [interface thread; not while rendering] */
    HostItem *(*first)(int type, HostItem *parent);
    /* Gives the item of the same type after this one, or null after the last.
     * [interface thread; not while rendering] */
    HostItem *(*next)(HostItem *item);
    /* Gives the first item whose parent this is, or null. [interface thread; not while rendering] */
    HostItem *(*firstChild)(HostItem *parent);
    /* Gives the child of `parent` after `previous`, or null after the last. [interface thread; not while rendering] */
    HostItem *(*nextChild)(HostItem *parent, HostItem *previous);
    /* Gives the item that this one moves with, or null. [interface thread; not while rendering] */
    HostItem *(*parent)(HostItem *item);
    /* Gives the item that this one looks at, or null. [interface thread; not while rendering] */
    HostItem *(*target)(HostItem *item);
    /* Gives the item that this one reaches for by inverse kinematics, or null.
     * [interface thread; not while rendering] */
    HostItem *(*goal)(HostItem *item);
    /* Gives the item's type; -1 for what is no item of the scene. [interface thread; not while rendering] */
    int (*type)(HostItem *item);
    /* Gives the item's name, or null for what is no item of the scene. The text is the host's and stays valid as long
     * as the item. [interface thread; not while rendering] */
    const char *(*name)(HostItem *item);
} HostItemInfo;

#ifdef __cplusplus
}
#endif

#endif

/*
 * "System ID": which application has loaded the module. The looked-up pointer is itself the word, not an address, and
 * may be null: a module converts it to a HostWord. Of the word's 32 bits the top four name the application; the rest
 * is a serial number.
 */
#ifndef VELM_MODULE_INTERFACE_SYSTEM_ID_H
#define VELM_MODULE_INTERFACE_SYSTEM_ID_H

#include "module/interface/types.h"

#define HOST_SYSTEM_ID "System ID"
#define kSystemIdMask 0xf0000000u     /* the bits that name the application */
#define kSystemLayout 0x00000000u     /* the layout application, which animates and renders */
#define kSystemModelling 0x10000000u  /* the modelling application: there are no scene items, cameras or renders */
#define kSystemRenderNode 0x20000000u /* a machine that renders without an interface */

#endif

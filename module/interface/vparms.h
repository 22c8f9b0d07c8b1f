/*
 * "LWVParmFuncs 2": animatable parameters, called VParms. A VParm holds one or three numbers, either constant or
 * animated by one envelope (envelopes.h) for each component. The lookup gives a HostVParmFuncs.
 *
 * Values are in the units of storage: metres, radians, fractions. The channels of three components are named after the
 * parameter with .X .Y .Z, or .R .G .B for a colour. A null VParm gives null, 0 or no effect; copy, load, save and init
 * give a message for it.
 */
#ifndef VELM_MODULE_INTERFACE_VPARMS_H
#define VELM_MODULE_INTERFACE_VPARMS_H

#include "module/interface/states.h"
#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_VPARM_FUNCS "LWVParmFuncs 2"

/* Type codes. A multiple of 16 has one component; with one added, three. */
enum {
    kParmPlainTriple = 1,     /* three components without a unit */
    kParmFloat = 16,          /* a number */
    kParmFloatTriple = 17,    /* three numbers */
    kParmPercent = 32,        /* a fraction, shown in per cent */
    kParmDistance = 48,       /* metres */
    kParmDistanceTriple = 49, /* three of them */
    kParmAngle = 64,          /* radians, shown in degrees */
    kParmAngleTriple = 65,    /* three of them */
    kParmColour = 81,         /* red, green and blue */
};

/* Bits of a parameter's state. */
enum {
    kParmHasEnvelope = 1, /* it is animated */
    kParmHasTexture = 2   /* it has a texture */
};

/* Called after a parameter has changed. `userData` is what setUp was given. The stand-alone host calls it with `event`
 * 1 when a value was set or keys changed, 2 when envelopes were created or removed, and 3 when all of it was replaced
 * by copy or load, and ignores the result. [interface thread; not while rendering] */
typedef int HostParmEvent(void *userData, HostVParm *parm, int event);

typedef struct HostVParmFuncs {
    /* Makes a parameter with the value 0. `type` is a type code; `subtype` is -1 for the type's own. Gives the
     * parameter, which the caller owns and destroys, or null for an unknown type.
     * [interface thread; not while rendering] */
    HostVParm *(*create)(int type, int subtype);
    /* Destroys a parameter and its envelopes. Null is ignored. [interface thread; not while rendering] */
    void (*destroy)(HostVParm *parm);
    /* Sets the parameter's name and the group for its envelopes. The host copies `channelName`. Null is allowed for the
     * rest: no group, no textures, no event, no plug-in's name, no user data. Existing envelopes move to the new group.
     * [interface thread; not while rendering] */
    void (*setUp)(HostVParm *parm, const char *channelName, HostChannelGroup *group, void *textureContext,
                  HostParmEvent *event, const char *plugInName, void *userData);
    /* Gives `to` the value and the envelopes of `from`; its name, group and event stay. A message, and no change, when
     * the numbers of components differ. [interface thread; not while rendering] */
    HostError (*copy)(HostVParm *to, HostVParm *from);
    /* Reads the next parameter of the state's present block. On failure the parameter stays as it was.
     * [interface thread; not while rendering] */
    HostError (*load)(HostVParm *parm, const HostLoadState *state);
    /* Writes the parameter, as a block of its own. [interface thread; not while rendering] */
    HostError (*save)(HostVParm *parm, const HostSaveState *state);
    /* Writes the value at a time in seconds to `value` and gives its first component. One or three components are
     * written, but `value` must have room for three. `sample` is null; only textures would need one.
     * [between frames] */
    double (*getValue)(HostVParm *parm, double time, ShadingSample *sample, double value[3]);
    /* Sets the constant value from one or three doubles. Gives the number of components taken: 0, without a change,
     * when the parameter has envelopes. [interface thread; not while rendering] */
    int (*setValue)(HostVParm *parm, const double *value);
    /* Gives kParmHasEnvelope and kParmHasTexture as they hold. [interface thread; not while rendering] */
    int (*state)(HostVParm *parm);
    /* Creates envelopes, each with a key of the present value at time 0, or removes them, keeping their value at time
     * 0, as kParmHasEnvelope says. kParmHasTexture has no effect in the stand-alone host, which has no textures.
     * [interface thread; not while rendering] */
    void (*setState)(HostVParm *parm, int state);
    /* Opens a window in which the user edits the envelopes. Gives non-zero when it opened; 0 from a host without
     * windows. [interface thread; not while rendering] */
    int (*editEnvelope)(HostVParm *parm);
    /* Opens a window in which the user edits the texture. Gives non-zero when it opened; 0 from a host without windows.
     * [interface thread; not while rendering] */
    int (*editTexture)(HostVParm *parm);
    /* Prepares a textured parameter for evaluation; nothing to do for any other. [between frames] */
    HostError (*init)(HostVParm *parm);
    /* Stores the envelopes of the components in `handles`, which may be null, with null where there is none, and gives
     * how many there are. They belong to the parameter. [interface thread; not while rendering] */
    int (*envelopes)(HostVParm *parm, HostEnvelope *handles[3]);
    /* Gives the texture, which belongs to the parameter, or null for none; always null in the stand-alone host.
     * [interface thread; not while rendering] */
    HostTexture *(*texture)(HostVParm *parm);
} HostVParmFuncs;

#ifdef __cplusplus
}
#endif

#endif

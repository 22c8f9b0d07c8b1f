/*
 * "Animation Envelopes": animated channels, the groups that they live in, and their keys. The lookup gives a
 * HostEnvelopeFuncs.
 *
 * An envelope is a list of keys in order of time, no two at the same time, with a behaviour before the first key and
 * one after the last. Names are unique within a group: the host numbers a name that is taken, as in "Value (2)". Null
 * handles give null, 0 or no effect; copy, load and save give a message for them. Times are seconds.
 */
#ifndef VELM_MODULE_INTERFACE_ENVELOPES_H
#define VELM_MODULE_INTERFACE_ENVELOPES_H

#include "module/interface/states.h"
#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_ENVELOPE_FUNCS "Animation Envelopes"

/* Shape of the span that ends at a key. The key's tangents on both sides follow from it, too. */
enum {
    kShapeTcb,     /* a spline with tension, continuity and bias */
    kShapeHermite, /* a spline with given tangents */
    kShapeBezier1, /* the same as kShapeHermite */
    kShapeLinear,
    kShapeStepped, /* the value of the key before, up to this key */
    kShapeBezier2  /* a Bezier curve whose handles have a time and a value */
};

/* What an envelope does before its first key and after its last. An envelope with one key is constant. */
enum {
    kBehaveReset,        /* 0 */
    kBehaveConstant,     /* the value of the nearest key */
    kBehaveRepeat,       /* the keys over and over */
    kBehaveOscillate,    /* the same, every other time backwards */
    kBehaveOffsetRepeat, /* over and over, each time beginning at the value that the one before ended with */
    kBehaveLinear        /* straight on at the slope of the nearest key */
};

/* Tags of setKey and getKey: which member of a key, and what `value` points to. */
enum {
    kKeyValue = 1,      /* double */
    kKeyTime = 2,       /* double, seconds */
    kKeyShape = 3,      /* int: kShapeTcb and so on */
    kKeyTension = 4,    /* double, of kShapeTcb */
    kKeyContinuity = 5, /* double, of kShapeTcb */
    kKeyBias = 6,       /* double, of kShapeTcb */
    kKeyParameter0 = 7  /* double; 7 to 10 are the four numbers of the Hermite and Bezier shapes */
};

/* Tags of set and get; `value` points to an int, kBehaveReset and so on. */
enum { kEnvelopePreBehaviour = 1, kEnvelopePostBehaviour = 2 };

/* Called after a change of an envelope. `userData` is what setEvent was given. The stand-alone host calls it with
 * `event` 0 as the envelope is destroyed, 1 when a key was created, 2 before one is destroyed, 3 when one was changed,
 * 4 for a behaviour, and 5 when copy or load replaced everything. `data` is the key of events 1 to 3, else null. The
 * result is ignored. [interface thread; not while rendering] */
typedef int HostEnvelopeEvent(void *userData, HostEnvelope *envelope, int event, void *data);

typedef struct HostEnvelopeFuncs {
    /* Adds an envelope without keys to a group, which owns it. The host copies `name`. `type` says how values are
     * shown: 2 as numbers, 3 as distances, 4 as percentages, 5 as angles. Null when the group is null.
     * [interface thread; not while rendering] */
    HostEnvelope *(*create)(HostChannelGroup *group, const char *name, int type);
    /* Removes an envelope from its group and destroys it. [interface thread; not while rendering] */
    void (*destroy)(HostEnvelope *envelope);
    /* Adds a group to a parent group, which owns it. The host copies `name`. Null when the parent is null.
     * [interface thread; not while rendering] */
    HostChannelGroup *(*createGroup)(HostChannelGroup *parent, const char *name);
    /* Destroys a group that createGroup made, and everything in it; others are left alone.
     * [interface thread; not while rendering] */
    void (*destroyGroup)(HostChannelGroup *group);
    /* Gives `to` the keys and behaviours of `from`; its name and group stay. [interface thread; not while rendering] */
    HostError (*copy)(HostEnvelope *to, HostEnvelope *from);
    /* Reads the next envelope of the state's present block. On failure the envelope stays as it was.
     * [interface thread; not while rendering] */
    HostError (*load)(HostEnvelope *envelope, const HostLoadState *state);
    /* Writes the envelope, as a block of its own. [interface thread; not while rendering] */
    HostError (*save)(HostEnvelope *envelope, const HostSaveState *state);
    /* Gives the value at a time; 0 without keys. [between frames] */
    double (*evaluate)(HostEnvelope *envelope, double time);
    /* Opens a window in which the user edits the envelope. Gives non-zero when it opened; 0 from a host without
     * windows. [interface thread; not while rendering] */
    int (*edit)(HostEnvelope *envelope);
    /* Gives a number that grows with every change. [interface thread; not while rendering] */
    int (*age)(HostEnvelope *envelope);
    /* Creates a key, or gives the one at that time the value. Gives the key, which belongs to the envelope; null for a
     * time or value that is not finite. [interface thread; not while rendering] */
    HostKey *(*createKey)(HostEnvelope *envelope, double time, double value);
    /* Destroys a key of the envelope; others are left alone. [interface thread; not while rendering] */
    void (*destroyKey)(HostEnvelope *envelope, HostKey *key);
    /* Gives the key at that time, to within a microsecond, or null. [interface thread; not while rendering] */
    HostKey *(*findKey)(HostEnvelope *envelope, double time);
    /* Gives the key after this one, or the first for a null key; null after the last.
     * [interface thread; not while rendering] */
    HostKey *(*nextKey)(HostEnvelope *envelope, HostKey *key);
    /* Gives the key before this one, or the last for a null key; null before the first.
     * [interface thread; not while rendering] */
    HostKey *(*previousKey)(HostEnvelope *envelope, HostKey *key);
    /* Sets the member of a key that `tag` (kKeyValue and so on) names. Gives 1; 0, without a change, for an unknown tag
     * or key, a null value, a number that is not finite, a shape that does not exist, or the time of another key.
     * [interface thread; not while rendering] */
    int (*setKey)(HostEnvelope *envelope, HostKey *key, int tag, const void *value);
    /* Stores the member of a key that `tag` names in *value and gives 1; gives 0, with *value unchanged, for an unknown
     * tag or key or a null value. [interface thread; not while rendering] */
    int (*getKey)(HostEnvelope *envelope, HostKey *key, int tag, void *value);
    /* Adds a function to be called after changes, until the envelope is destroyed; the same function with the same user
     * data is added once. Gives 1, or 0 for null. [interface thread; not while rendering] */
    int (*setEvent)(HostEnvelope *envelope, HostEnvelopeEvent *event, void *userData);
    /* Sets the behaviour that `tag` (kEnvelopePreBehaviour and so on) names. Gives 1; 0, without a change, for an
     * unknown tag, a null value or a behaviour that does not exist. [interface thread; not while rendering] */
    int (*set)(HostEnvelope *envelope, int tag, const void *value);
    /* Stores the behaviour that `tag` names in *value and gives 1; gives 0, with *value unchanged, for an unknown tag
     * or a null value. [interface thread; not while rendering] */
    int (*get)(HostEnvelope *envelope, int tag, void *value);
} HostEnvelopeFuncs;

#ifdef __cplusplus
}
#endif

#endif

/*
 * "LWXPanel": settings panels. A module makes a panel, gives it hints (panel_hints.h) that add its controls, describes
 * its values, and sets the instance that it shows; the host draws the panel, and gets and sets the values by callbacks.
 * The lookup gives a HostPanelFuncs.
 *
 * A null panel gives null, 0 or no effect. The host destroys the panel of a node with the node. Texts that are values
 * hold at most 255 bytes and a zero.
 */
#ifndef VELM_MODULE_INTERFACE_PANELS_H
#define VELM_MODULE_INTERFACE_PANELS_H

#include "module/interface/panel_drawing.h"
#include "module/interface/panel_hints.h"
#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_PANEL_FUNCS "LWXPanel"

/* Kinds of panels. */
enum {
    kPanelForm = 1, /* values live in an instance and pass through the getter and setter */
    kPanelOwn = 2   /* values live in the panel */
};

/* Results of a setter. */
enum {
    kSetUnknown = 0, /* there is no such value; nothing was set */
    kSetDefault = 1, /* the value was set */
    kSetRedraw = 2,  /* the same, and other controls have to be redrawn */
    kSetRebuild = 3  /* the same, and the panel has to be laid out anew */
};

/* One value of a panel; a row of zeros ends the table. */
typedef struct HostPanelValue {
    unsigned int id;   /* not 0, unique in the panel */
    const char *label; /* shown where no hint gives the control a label */
    const char *type;  /* a type of control that holds the value: "integer", "float-env" and so on */
} HostPanelValue;

/* Gives where a value of the viewed instance is, as the value's type tells (panel_hints.h): an int, a double, three
 * doubles, characters or a HostVParm. It stays the module's. Null for an unknown identifier, and for a value that
 * cannot be edited now because a connection feeds it; its control is then greyed out.
 * [interface thread; not while rendering] */
typedef void *HostPanelGetter(void *instance, unsigned int id);
/* Takes a new value for the viewed instance; `value` points to one of the value's type and is valid during the call.
 * For an animated value it is the instance's own HostVParm, which the host has already changed. Gives kSetUnknown and
 * so on. [interface thread; not while rendering] */
typedef int HostPanelSetter(void *instance, unsigned int id, void *value);

typedef struct HostPanelFuncs {
    int version;               /* of this table */
    const HostDrawFuncs *draw; /* for draw callbacks; never null */
    /* Makes a panel of a kind, kPanelForm or kPanelOwn; `controls` is null, since hints add the controls. Gives the
     * panel, or null when it cannot be made. [interface thread; not while rendering] */
    HostPanel *(*create)(int kind, const void *controls);
    /* Destroys a panel, after calling its destroy notification. For panels that were not handed to the host.
     * [interface thread; not while rendering] */
    void (*destroy)(HostPanel *panel);
    /* Describes the panel's values: a table that a row of zeros ends, and the getter and setter. All have to outlive
     * the panel; a panel of the kind kPanelOwn needs neither getter nor setter.
     * [interface thread; not while rendering] */
    void (*describe)(HostPanel *panel, const HostPanelValue *values, HostPanelGetter *get, HostPanelSetter *set);
    /* Reads a list of hints. `id` is 0, for the whole panel; null hints are ignored. The host reports a mistake in them
     * when the panel is opened. [interface thread; not while rendering] */
    void (*hint)(HostPanel *panel, unsigned int id, const HostHint *hints);
    /* Gives what setData stored under an identifier, or null. [interface thread; not while rendering] */
    void *(*getData)(HostPanel *panel, unsigned int id);
    /* Stores a pointer of the module's choice under an identifier; the destroy notification gets the one under 0.
     * [interface thread; not while rendering] */
    void (*setData)(HostPanel *panel, unsigned int id, void *data);
    /* Gives where the present value of a control is: while its setter runs, the value being set; else what the getter
     * gives. Null for what is no control. Valid during the call that is running.
     * [interface thread; not while rendering] */
    void *(*getValue)(HostPanel *panel, unsigned int id);
    /* Sets the value of a control through the setter, without calling the change callback, so that callbacks may use
     * it; for an animated value, `value` is a HostVParm, which is copied. Null values and what is no control are
     * ignored. [interface thread; not while rendering] */
    void (*setValue)(HostPanel *panel, unsigned int id, void *value);
    /* Sets the instance whose values the panel shows, and which the callbacks are given.
     * [interface thread; not while rendering] */
    void (*viewInstance)(HostPanel *panel, void *instance);
    /* Redraws the panel, after values or connections have changed otherwise. [interface thread; not while rendering] */
    void (*refresh)(HostPanel *panel);
    /* Shows the panel as a dialog and waits until the user closes it. Gives non-zero when the user accepted; 0 from a
     * host without windows. [interface thread; not while rendering] */
    int (*post)(HostPanel *panel);
    /* Shows the panel and returns at once. Gives non-zero when it is open; 0 from a host without windows.
     * [interface thread; not while rendering] */
    int (*open)(HostPanel *panel);
} HostPanelFuncs;

#ifdef __cplusplus
}
#endif

#endif

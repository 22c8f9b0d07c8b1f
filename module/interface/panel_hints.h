/*
 * Hints: what a panel has on it and how it behaves, as lists of words that "LWXPanel" (panels.h) reads, with the
 * callbacks that hints attach. There is no service to look up here.
 *
 * A hint is a tag and the words that follow it; a list ends with kHintEnd. Every control, group, stack and set of tabs
 * has an identifier of the module's choice, unique in its panel and not 0; a value has the identifier of its row in the
 * panel's description. Hints may speak of an identifier before the hint that adds it. Lists, and what they point to,
 * have to outlive the panel, as static tables do.
 */
#ifndef VELM_MODULE_INTERFACE_PANEL_HINTS_H
#define VELM_MODULE_INTERFACE_PANEL_HINTS_H

#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What has happened to a control. */
enum {
    kEventChanging = 1, /* the user is changing its value, as while dragging */
    kEventSet = 2,      /* its value was set */
    kEventHit = 3,      /* it was clicked */
    kEventFocus = 4,    /* it got the input focus */
    kEventFocusLost = 5 /* it lost the input focus */
};

/* Called after an event of any control: its identifier, its value's identifier, and kEventChanging and so on. A result
 * of kSetRedraw or kSetRebuild (panels.h) has the panel redrawn; any other does nothing.
 * [interface thread; not while rendering] */
typedef int HostPanelChange(HostPanel *panel, unsigned int control, unsigned int value, int event);
/* Called as the host destroys a panel, whose handle is then no longer valid. `userData` is what setData stored under
 * identifier 0, or null. [interface thread; not while rendering] */
typedef void HostPanelDestroyed(void *userData);
/* Called when the user presses a button; `control` is its identifier. [interface thread; not while rendering] */
typedef void HostPanelButton(HostPanel *panel, int control);
/* Gives the number of entries of a popup menu, at least 0. `userData` is the viewed instance, or null.
 * [interface thread; not while rendering] */
typedef int HostPopupCount(void *userData);
/* Gives the text of a popup menu's entry, whose index is from 0 to below the count. The text belongs to the module and
 * stays valid until the next call; null counts as an empty one. `userData` is the viewed instance, or null.
 * [interface thread; not while rendering] */
typedef const char *HostPopupName(void *userData, int index);
/* Draws a control of the type "dThumbnail" with the functions of panel_drawing.h. `area` is `width` by `height` pixels
 * and valid during the call. [interface thread; while drawing] */
typedef void HostPanelDraw(HostPanel *panel, unsigned int control, HostDrawArea *area, int width, int height);

/* One word of a hint list: a tag, a number, or a pointer, whichever the tag asks for at that place. */
typedef union HostHint {
    HostWord word;                 /* a tag, an identifier or a number */
    const char *text;              /* a zero-terminated text */
    const char *const *texts;      /* texts, ended by null */
    const int *numbers;            /* a map, or values */
    const union HostHint *list;    /* a nested list */
    HostPanelChange *change;       /* of kHintChangeNotify [interface thread; not while rendering] */
    HostPanelDestroyed *destroyed; /* of kHintDestroyNotify [interface thread; not while rendering] */
    HostPanelButton *button;       /* of kHintButton [interface thread; not while rendering] */
    HostPopupCount *popupCount;    /* of kHintPopupFunctions [interface thread; not while rendering] */
    HostPopupName *popupName;      /* of kHintPopupFunctions [interface thread; not while rendering] */
    HostPanelDraw *draw;           /* of kHintDraw [interface thread; while drawing] */
} HostHint;

/* Tags of hints, each with the words that follow it. `ids` are one or more identifiers, ended by 0. Limits are whole
 * numbers in the unit that the control shows (degrees, per cent). A map is an array of ints with an element for each
 * value that the control which drives it can have.
 *   - kHintEnable enables what `ids` name while the map has a non-zero element for the value, or, without a map (0),
 *     while the value is not 0. The message, or null, is shown when the user touches a disabled control.
 *   - kHintStack shows one of its members at a time: the one whose index the map has for the value, none for -1, or,
 *     without a map (0), the one whose index is the value. */
#define kHintEnd 0u                     /* ends a list */
#define kHintLabel 0x3D000B03u          /* id text 0: the label of a control, group, stack or tab */
#define kHintAddControl 0x3D000D03u     /* id type value-id: adds a control; for the types, see below */
#define kHintChangeNotify 0x3D000F01u   /* function: called after every event */
#define kHintDestroyNotify 0x3D001302u  /* function 0: called as the panel is destroyed */
#define kHintMinimum 0x3D014002u        /* id n */
#define kHintMaximum 0x3D014102u        /* id n */
#define kHintStep 0x3D014202u           /* id n: how far one step changes the value */
#define kHintRange 0x3D014304u          /* id min max step */
#define kHintSensitivity 0x3D014402u    /* id n: how fast dragging changes the value */
#define kHintStringList 0x3D014503u     /* id texts 0: the entries of a choice */
#define kHintEnforceLimits 0x3D014703u  /* id min? max?: whether typed values keep to the limits, too */
#define kHintButton 0x3D015F02u         /* id function */
#define kHintPopupFunctions 0x3D016203u /* id count name: the entries, asked for whenever they are shown */
#define kHintValueTransform 0x3D016303u /* id count ints: the values of the entries of an "iPopTransform" */
#define kHintDraw 0x3D016502u           /* id function */
#define kHintVectorLabels 0x3D017202u   /* id texts: the labels of three components */
#define kHintControlOptions 0x3D017403u /* id 0 options: kThumbSmall and so on */
#define kHintEnable 0x3D01F984u         /* value-id message 0 map ids 0 */
#define kHintGroup 0x3D01FE81u          /* group-id ids 0 */
#define kHintStack 0x3D020983u          /* group-id value-id map ids 0 */
#define kHintTabs 0x3D020A81u           /* group-id ids 0 */
#define kHintLeftAlign 0x3D021280u      /* ids 0 */
#define kHintNarrow 0x3D021380u         /* ids 0 */
#define kHintDividerAfter 0x3D021481u   /* ids 0: a line below each */
#define kHintNestedList 0xDD002u        /* 0 list: reads the hints of another list */

/* Types of controls, and what the value of each is. The description of a value names a type whose value is of the same
 * kind: "integer" for any int.
 *   "integer"                 an int, shown as a number
 *   "iBoolean"                an int, 0 or 1, shown as a check box
 *   "iPopChoice", "iChoice"   an int, the index of the chosen entry, shown as a popup menu or a row of buttons
 *   "iPopTransform"           an int, one of the entries' values, shown as a popup menu
 *   "string"                  a zero-terminated text
 *   "vButton"                 no value: a button; the value's identifier is 0
 *   "dThumbnail"              no value: an area that the module draws; the value's identifier is 0
 *   "float", "percent", "distance", "angle"
 *                             a double: a number, a fraction, metres or radians
 *   "float3", "percent3", "distance3", "angle3", "color", "vector"
 *                             three doubles
 *   "float-env" and so on     the same as "float" and so on, animated: a HostVParm of as many components. There is no
 *                             "vector-env" */

/* Options of a "dThumbnail" control: one bit for its height and one for its shape. */
enum {
    kThumbSmall = 1 << 0,      /* the stand-alone host's height: 32 pixels */
    kThumbMedium = 1 << 1,     /* 64 pixels, as without an option */
    kThumbLarge = 1 << 2,      /* 128 pixels */
    kThumbExtraLarge = 1 << 3, /* 256 pixels */
    kThumbSquare = 1 << 16,    /* as wide as high, as without an option */
    kThumb4To3 = 1 << 17,      /* 4:3 */
    kThumbWide = 1 << 20       /* 16:9 */
};

#ifdef __cplusplus
}
#endif

#endif

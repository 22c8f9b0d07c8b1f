/*
 * The wall between the module and the host application: the records, function tables and codes of the host's
 * plug-in interface, as plain C. The module is compiled against this file and nothing else of the host; the
 * stand-alone host is compiled against this file and nothing else of the module. It declares no functions.
 *
 * Rules that hold throughout
 *   - C calling convention, natural alignment with 8-byte aligned `double`, `int` of 32 bits. (On 32-bit Linux
 *     this needs -malign-double.) The assertions at the end pin the layout for 32-bit and 64-bit targets.
 *   - Vectors are three doubles; colours are red, green, blue, 1.0 being full; matrices are nine doubles by row.
 *   - Lengths are metres, angles radians, fractions 1.0 for 100 %. Axes are left-handed: +X right, +Y up,
 *     +Z forward.
 *   - Handles point to records that only the host can look into. Their lifetime is the host's unless a comment
 *     says otherwise.
 *   - `HostError` results: null is success, anything else is a message owned by whoever returned it.
 *   - The bracketed tag that ends a comment says which thread may call the function, and when:
 *       [interface thread; not while rendering]   creation, panels, files, and everything not marked otherwise
 *       [between frames]                          the render controller, while no sample is being evaluated
 *       [render threads]                          up to sixteen threads at once
 */
#ifndef VELM_MODULE_HOST_H
#define VELM_MODULE_HOST_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define HOST_ASSERT static_assert
extern "C" {
#else
#define HOST_ASSERT _Static_assert
#endif

/* ---- Handles and common types ------------------------------------------------------------------------------ */

typedef const char *HostError;

typedef struct HostNode HostNode;                       /* a node in an editor; an instance belongs to one */
typedef struct HostInput HostInput;                     /* an input of a node */
typedef struct HostOutput HostOutput;                   /* an output of a node */
typedef struct HostNodeValue HostNodeValue;             /* where one evaluation leaves its result */
typedef struct HostNodeEditor HostNodeEditor;           /* a network of nodes with a root node */
typedef struct HostVParm HostVParm;                     /* an animatable parameter of one or three components */
typedef struct HostEnvelope HostEnvelope;               /* one animated channel */
typedef struct HostKey HostKey;                         /* a key of an envelope */
typedef struct HostChannelGroup HostChannelGroup;       /* a folder of envelopes and further groups */
typedef struct HostTexture HostTexture;                 /* a texture attached to a parameter */
typedef struct HostPanel HostPanel;                     /* a settings panel */
typedef struct HostDrawArea HostDrawArea;               /* a rectangle of a panel that is being drawn */
typedef struct HostImage HostImage;                     /* an image of the host's list; null is allowed everywhere */
typedef struct HostItem HostItem;                       /* an object, light, camera or bone of the scene */
typedef struct HostPoint HostPoint;                     /* a vertex of a mesh */
typedef struct HostPolygon HostPolygon;                 /* a polygon of a mesh */
typedef struct HostMesh HostMesh;                       /* the geometry of a layer */
typedef struct HostCameraEvaluator HostCameraEvaluator; /* a camera made ready to give rays */
typedef struct ShadingSample ShadingSample;

/* A 32-bit word on 32-bit targets and a 64-bit one on 64-bit targets: what panels pass as a value. */
typedef uintptr_t HostWord;

enum {
    kMaxThreads = 16 /* render threads, numbered from 0; per-thread state has this many slots */
};

/* ---- Modules ----------------------------------------------------------------------------------------------- */

enum {
    kModuleSyncWord = 0x04121994, /* the first word of every module descriptor */
    kModuleVersion = 3            /* the layout of the descriptor */
};

/* The platform a build was made for. A build for Windows carries its own code; all others carry the third. */
enum { kPlatformUnix = 0x200, kPlatformWindows = 0x300, kPlatformMacintosh = 0x400 };

/* Server classes that the module offers, and the activation versions that it understands. */
#define HOST_CLASS_NODE_HANDLER "NodeHandler"
#define HOST_CLASS_NODE_INTERFACE "NodeInterface"
enum { kNodeHandlerVersion = 1, kNodeInterfaceVersion = 4 };

/* Results of an activation. */
enum {
    kActivateOk = 0,
    kActivateBadVersion = 1,
    kActivateBadGlobal = 2,           /* a required service is missing */
    kActivateBadLocal = 3,            /* the record to be filled is unusable */
    kActivateBadApplication = 4,      /* not for the application that asks */
    kActivateBadApplicationQuiet = 5, /* the same, without a message to the user */
};

/* How long a looked-up service is wanted for. */
enum { kUseTransient = 0 };

/* Gives a service by name: a function table, a record, a function or, for "System ID", a word; null when the host
 * does not offer it. What it gives stays valid while the host runs. [any thread that the host calls from] */
typedef void *HostLookup(const char *service, int use);

/* Fills `local`, a handler or interface record, for one server. Two servers are never activated at the same moment.
 * [interface thread; not while rendering] */
typedef int HostActivate(int version, HostLookup *lookup, void *local, void *serverData);

/* Codes of a server's tag records. */
enum {
    kTagUserName = 0x0, /* the display name */
    kTagMenu = 0x70000  /* the node-menu group */
};

typedef struct HostTag {
    const char *text; /* null ends the list */
    unsigned int code;
} HostTag;

typedef struct HostServer {
    const char *className;  /* null ends the table */
    const char *name;       /* unique within its class */
    HostActivate *activate; /* may be null: the server is listed, and never activated */
    const HostTag *tags;
} HostServer;

/* A module exports one of these under the name below; the host reads it before it calls anything. */
typedef struct HostModuleDescriptor {
    unsigned int syncWord;
    unsigned int version;
    unsigned int platform;
    void *(*startup)(void);       /* called once after loading; null means that the module refuses */
    void (*shutdown)(void *word); /* called once before unloading, with the word that startup gave */
    const HostServer *servers;
} HostModuleDescriptor;

#define HOST_MODULE_SYMBOL "_mod_descrip"

/* ---- Save and load states ---------------------------------------------------------------------------------- */

enum {
    kStateBinary = 0, /* as in object files: big-endian, 4-byte block identifiers */
    kStateText = 1    /* as in scene files: lines, tokens, braces */
};

typedef struct HostBlockId {
    unsigned int id;   /* four characters, the first in the high byte; 0 ends a table */
    const char *token; /* the same block's name in text form; a reader looks for the longest that fits, since some
                          of the module's have blanks */
} HostBlockId;

/* Handed to every save callback; valid during the call. `data` is the first argument of every operation. Counts are
 * numbers of values, not of bytes. [interface thread; not while rendering] */
typedef struct HostSaveState {
    int mode;
    void *data;
    void (*write)(void *data, const char *bytes, int count);
    void (*writeI1)(void *data, const char *values, int count);
    void (*writeI2)(void *data, const short *values, int count);
    void (*writeI4)(void *data, const int *values, int count);
    void (*writeU1)(void *data, const unsigned char *values, int count);
    void (*writeU2)(void *data, const unsigned short *values, int count);
    void (*writeU4)(void *data, const unsigned int *values, int count);
    void (*writeFP)(void *data, const float *values, int count);
    void (*writeString)(void *data, const char *text);
    void (*writeId)(void *data, const HostBlockId *id);
    void (*beginBlock)(void *data, const HostBlockId *id, int leaf); /* a leaf holds values only, on one line of text */
    void (*endBlock)(void *data);
    int (*depth)(void *data); /* open blocks */
    void (*writeDP)(void *data, const double *values, int count);
} HostSaveState;

/* Handed to every load callback; the mirror of the save state. Reads give the number of values that were there; a
 * reader never passes the end of its block or, in text form, of its line. [interface thread; not while rendering] */
typedef struct HostLoadState {
    int mode;
    void *data;
    int (*read)(void *data, char *bytes, int count);
    int (*readI1)(void *data, char *values, int count);
    int (*readI2)(void *data, short *values, int count);
    int (*readI4)(void *data, int *values, int count);
    int (*readU1)(void *data, unsigned char *values, int count);
    int (*readU2)(void *data, unsigned short *values, int count);
    int (*readU4)(void *data, unsigned int *values, int count);
    int (*readFP)(void *data, float *values, int count);
    int (*readString)(void *data, char *buffer, int size); /* length read; cut to size - 1 and terminated */
    unsigned int (*readId)(void *data, const HostBlockId *table);
    unsigned int (*findBlock)(void *data, const HostBlockId *table); /* enters the next known block; 0 when none */
    void (*endBlock)(void *data);                                    /* leaves it, skipping what was not read */
    int (*depth)(void *data);
    int (*readDP)(void *data, double *values, int count);
} HostLoadState;

/* ---- Handler and interface records -------------------------------------------------------------------------- */

/* Life of an instance. All of these: [interface thread; not while rendering] */
typedef struct HostInstanceOps {
    void *priv;                                                  /* handed back as the first argument of create */
    void *(*create)(void *priv, void *node, const char **error); /* null, and a message in *error, on failure */
    void (*destroy)(void *instance);
    HostError (*copy)(void *to, void *from);
    HostError (*load)(void *instance, const HostLoadState *state);
    HostError (*save)(void *instance, const HostSaveState *state);
    const char *(*describe)(void *instance);
} HostInstanceOps;

/* What an instance says of the scene items that it uses; the module leaves these alone. */
typedef struct HostItemOps {
    const HostItem **(*useItems)(void *instance);
    void (*changeId)(void *instance, const HostItem *const *changed);
    void (*changeName)(void *instance);
} HostItemOps;

enum { kInitPreview = 0, kInitRender = 1 };

typedef struct HostRenderOps {
    HostError (*init)(void *instance, int mode);                  /* rendering starts [between frames] */
    void (*cleanup)(void *instance);                              /* rendering has ended [between frames] */
    HostError (*newTime)(void *instance, int frame, double time); /* a frame starts; seconds [between frames] */
} HostRenderOps;

/* Filled by the activation of a "NodeHandler" server. */
typedef struct HostNodeHandler {
    HostInstanceOps *instance;
    HostItemOps *item; /* null in the modelling application */
    HostRenderOps *render;
    /* Computes one output for one sample and sets it on `value`. Reads the instance only, but for the state slot of
     * the sample's own thread. [render threads] */
    void (*evaluate)(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value);
    void (*customPreview)(void *instance, int width, int height);
    unsigned int (*flags)(void *instance);
} HostNodeHandler;

/* Filled by the activation of a "NodeInterface" server. */
typedef struct HostNodeInterface {
    void *instance;   /* given by the host */
    HostPanel *panel; /* null: no panel */
    HostError (*options)(void *instance);
    HostError (*command)(void *instance, const char *text);
} HostNodeInterface;

/* ---- The shading sample ------------------------------------------------------------------------------------- */

/* Bits of `rayFlags`. */
enum {
    kRayShadow = 1 << 0,      /* the incoming ray is a shadow ray */
    kRayPreview = 1 << 1,     /* the sample belongs to a preview */
    kRayBackSide = 1 << 2,    /* the back of the polygon was hit */
    kRaySampled = 1 << 3,     /* the incoming ray is one of many samples of a soft effect */
    kRayPreprocess = 1 << 4,  /* a pre-process ray, before rendering proper */
    kRayToOutside = 1 << 5,   /* the ray leaves to the outside */
    kRayDoubleSided = 1 << 6, /* the surface is double-sided */
};

/* The mode word of `rayTraceMode`: a kind in the low byte, and flags. */
enum {
    kTraceDistance = 0,   /* distance only, nothing is shaded; may hit a fully transparent surface */
    kTraceReflection = 1, /* shades the hit, recursively */
    kTraceRefraction = 2, /* the same, with the index of refraction given */
    kTraceDissolve = 3,   /* a refraction that never hits the casting object */
    kTraceShadow = 4,     /* opacity along the ray, no recursion */
    kTraceOcclusion = 5,  /* the same, heeding the objects' visibility to rays */
    kTraceBackdrop = 6,   /* the backdrop only; the distance is -1 */
    kTraceKindMask = 0xff
};
#define kTraceShadeBackSides 0x08000000u
#define kTraceUseBackdropColour 0x10000000u /* the colour argument stands for the backdrop */
#define kTraceOwnObjectOnly 0x20000000u     /* hit the casting object and nothing else */
#define kTraceSampled 0x40000000u           /* the ray is one of many samples */
#define kTraceMayHitOwnPolygon 0x80000000u  /* the casting polygon may be hit */

#define HOST_RAY_MISS (-1.0) /* what a ray function returns when nothing is hit */

typedef struct HostRayHit HostRayHit;

/* Ray functions. Positions are world space; directions need not be of unit length, and are normalised by the host.
 * They return the distance to the hit in metres, or HOST_RAY_MISS. Any of them may be null in a sample that has no
 * scene about it, as in a preview. [render threads, on behalf of the sample that carries them] */
typedef int HostIlluminate(HostItem *light, const double position[3], double direction[3], double colour[3]);
typedef int HostIlluminateSampled(HostItem *light, const double position[3], double direction[3], double colour[3],
                                  void *sampler);
typedef double HostRayTrace(const double position[3], const double direction[3], double colour[3]);
typedef double HostRayCast(const double position[3], const double direction[3]);
typedef double HostRayShade(const double position[3], const double direction[3], HostRayHit *hit);
typedef double HostRayTraceMode(const double position[3], const double direction[3], double colour[3], double eta,
                                int mode);

/* What the renderer hands to every evaluation. Later hosts append members; none before them moves. The module reads
 * it and never writes to it. */
struct ShadingSample {
    int pixelX, pixelY;        /* column and row of the picture */
    double objectPosition[3];  /* in object space */
    double position[3];        /* in world space */
    double geometricNormal[3]; /* of the polygon, unit length, world space */
    double shadingNormal[3];   /* interpolated and bumped, unit length, world space */
    double unbumpedNormal[3];  /* interpolated, before bump */
    double raySource[3];       /* origin of the ray that came here */
    double rayLength;          /* from there to the position */
    double spotSize;           /* width of the sample's footprint at the position */
    double cosine;             /* between the geometric normal and the direction back to the ray source */
    double bumpHeight;
    double objectToWorld[9];
    double worldToObject[9];
    HostIlluminate *illuminate;
    HostIlluminateSampled *illuminateSampled;
    HostRayTrace *rayTrace;
    HostRayCast *rayCast;
    HostRayShade *rayShade;
    HostRayTraceMode *rayTraceMode;
    int rayDepth;         /* bounces before this sample; 0 for what the camera sees */
    HostItem *sourceItem; /* what cast the ray: a camera, a light or an object */
    HostItem *objectItem; /* what was hit */
    int polygonNumber;
    HostPoint *vertices[4];      /* of the polygon about the position */
    float vertexWeights[4];      /* barycentric; they add up to 1 */
    float vertexPositions[4][3]; /* world space */
    HostPolygon *polygon;
    double refractionIndex; /* of the medium that the incoming ray travelled in */
    int threadIndex;        /* 0 to kMaxThreads - 1; a thread keeps its number for its life */
    int rayFlags;           /* kRayShadow and so on */
};

/* What ray shade leaves: the shading record of the point that was hit. Callers pass a HostRayHitRoom, since later
 * hosts append members. */
struct HostRayHit {
    int pixelX, pixelY;
    double objectPosition[3];
    double position[3];
    double geometricNormal[3];
    double spotSize;
    double raySource[3];
    double rayLength;
    double cosine;
    double objectToWorld[9];
    double worldToObject[9];
    HostItem *objectItem;
    int polygonNumber;
    double shadingNormal[3];
    double colour[3]; /* the shaded colour */
    double luminosity, diffuse, specular, mirror, transparency, eta, roughness;
    HostIlluminate *illuminate;
    HostRayTrace *rayTrace;
    HostRayCast *rayCast;
    HostRayShade *rayShade;
    int rayFlags;
    int rayDepth;
    HostItem *sourceItem;
};

enum { kRayHitReserve = 2048 }; /* bytes that a host may fill */

typedef union HostRayHitRoom {
    HostRayHit hit;
    double reserve[kRayHitReserve / sizeof(double)];
} HostRayHitRoom;

/* ---- "NodeFuncs" -------------------------------------------------------------------------------------------- */

#define HOST_NODE_FUNCS "NodeFuncs"

enum { kPreviewRendered = 0, kPreviewDrawnByNode = 1, kPreviewOff = 2 };

typedef struct HostNodeFuncs {                     /* [interface thread; not while rendering] */
    const char *(*nodeName)(HostNode *node);       /* numbered in its editor: "Counter (2)"; the host's text */
    const char *(*serverUserName)(HostNode *node); /* the class's display name */
    HostChannelGroup *(*channelGroup)(HostNode *node);
    void (*setColour)(HostNode *node, const int rgb[3]); /* one pointer to three ints, 0 to 255 */
    void (*setColourRgb)(HostNode *node, int red, int green, int blue);
    void (*setPreviewType)(HostNode *node, int type);
    void (*updatePreview)(HostNode *node);
} HostNodeFuncs;

/* ---- "NodeInputFuncs" and "NodeOutputFuncs" ----------------------------------------------------------------- */

#define HOST_NODE_INPUT_FUNCS "NodeInputFuncs"
#define HOST_NODE_OUTPUT_FUNCS "NodeOutputFuncs"

/* Connection types, and what a value of each is. */
enum {
    kConnectColour = 1,   /* three doubles */
    kConnectScalar = 2,   /* a double */
    kConnectVector = 3,   /* three doubles */
    kConnectInteger = 4,  /* an int */
    kConnectFunction = 5, /* a double, transformed in place by the connected node */
    kConnectMaterial = 6, /* a HostMaterial */
};

typedef struct HostMaterial {
    double diffuse[3], specular[3], reflection[3], refraction[3];
    double transparency;
} HostMaterial;

enum { kInputConnected = 0, kInputDisconnected = 1, kInputSourceDestroyed = 2 };

/* Told of every change to an input's connection. `type` is the connection type of the connected output for
 * kInputConnected, else 0. The result is 1. [interface thread; not while rendering] */
typedef int HostInputEvent(void *instance, HostInput *input, int event, int type);

typedef struct HostNodeInputFuncs {
    HostInput *(*create)(HostNode *node, int type, const char *name, HostInputEvent *event);
    void (*destroy)(HostNode *node, HostInput *input);
    /* Overwrites *value, of the input's type, with what is connected; leaves it alone when nothing is.
     * [render threads] */
    int (*evaluate)(HostInput *input, ShadingSample *sample, void *value);
    int (*isConnected)(HostInput *input);
    HostInput *(*first)(HostNode *node);
    HostInput *(*next)(HostInput *input);
    HostInput *(*previous)(HostInput *input);
    int (*count)(HostNode *node);
    HostInput *(*byIndex)(HostNode *node, int index); /* from 1 */
    int (*indexOf)(HostInput *input);                 /* from 1 */
    void (*disconnect)(HostNode *node, HostInput *input);
    HostNode *(*node)(HostInput *input);
} HostNodeInputFuncs;

typedef struct HostNodeOutputFuncs {
    HostOutput *(*create)(HostNode *node, int type, const char *name);
    void (*destroy)(HostNode *node, HostOutput *output);
    void (*setValue)(HostNodeValue *value, const void *result); /* of the output's type [render threads] */
    void *(*getValue)(HostNodeValue *value);                    /* what the asking input holds [render threads] */
    int (*askingType)(HostNodeValue *value);                    /* the asking input's type [render threads] */
    HostOutput *(*first)(HostNode *node);
    HostOutput *(*next)(HostOutput *output);
    HostOutput *(*previous)(HostOutput *output);
    int (*count)(HostNode *node);
    HostOutput *(*byIndex)(HostNode *node, int index); /* from 1 */
    int (*indexOf)(HostOutput *output);                /* from 1 */
    HostNode *(*node)(HostOutput *output);
} HostNodeOutputFuncs;

/* ---- "NodeEditorFuncs" -------------------------------------------------------------------------------------- */

#define HOST_NODE_EDITOR_FUNCS "NodeEditorFuncs"

/* How the root node of an editor behaves; any function may be null. */
typedef struct HostRootDescription {
    int previewType;
    HostError (*init)(HostNodeEditor *editor, int mode);
    HostError (*newTime)(HostNodeEditor *editor, int frame, double time);
    void (*cleanup)(HostNodeEditor *editor);
    HostPanel *(*panel)(HostNodeEditor *editor);
    HostError (*options)(HostNodeEditor *editor);
    void (*preview)(HostNodeEditor *editor, ShadingSample *sample, double colour[3]); /* [render threads] */
    void (*customPreview)(HostNodeEditor *editor, int width, int height);
} HostRootDescription;

typedef void *HostEditorEvent(HostNodeEditor *editor);
/* Leaves the bounds to be previewed in `bounds`: low and high of x, y and z. */
typedef void HostEditorAutosize(HostNodeEditor *editor, void *userData, double bounds[3][2]);

typedef struct HostNodeEditorFuncs { /* [interface thread; not while rendering], but for init, newTime and cleanup */
    HostNodeEditor *(*create)(const char *name, const char *title, const HostRootDescription *root, void *userData);
    void (*destroy)(HostNodeEditor *editor);
    void (*rename)(const char *title, HostNodeEditor *editor);
    void (*setEvent)(HostNodeEditor *editor, HostEditorEvent *event);
    HostError (*copy)(HostNodeEditor *to, HostNodeEditor *from);
    HostError (*save)(HostNodeEditor *editor, const HostSaveState *state);
    HostError (*load)(HostNodeEditor *editor, const HostLoadState *state);
    HostError (*init)(HostNodeEditor *editor, int mode);                  /* [between frames] */
    HostError (*newTime)(HostNodeEditor *editor, int frame, double time); /* [between frames] */
    void (*cleanup)(HostNodeEditor *editor);                              /* [between frames] */
    HostInput *(*addRootInput)(HostNodeEditor *editor, int type, const char *name, HostInputEvent *event);
    void (*setChannelGroup)(HostNodeEditor *editor, HostChannelGroup *group);
    void (*setAutosize)(HostNodeEditor *editor, HostEditorAutosize *autosize);
    void (*setUserData)(HostNodeEditor *editor, void *userData);
    void *(*userData)(HostNodeEditor *editor);
    int (*nodeCount)(HostNodeEditor *editor);
    HostInput *(*rootInputByName)(HostNodeEditor *editor, const char *name);
    HostInput *(*rootInputByIndex)(HostNodeEditor *editor, int index); /* from 1 */
    int (*state)(HostNodeEditor *editor);
    void (*setState)(HostNodeEditor *editor, int state);
    int (*openWindow)(HostNodeEditor *editor);
    int (*isWindowOpen)(HostNodeEditor *editor);
    HostNode *(*rootNode)(HostNodeEditor *editor);
    void (*connect)(HostOutput *output, HostInput *input);
} HostNodeEditorFuncs;

/* ---- "NodeUtilityFuncs" ------------------------------------------------------------------------------------- */

#define HOST_NODE_UTILITY_FUNCS "NodeUtilityFuncs"

/* Blend modes. With t the layer laid over b, the blended colour is, before opacity: */
enum {
    kBlendNormal,      /* t */
    kBlendAdditive,    /* b + t */
    kBlendSubtractive, /* b - t */
    kBlendMultiply,    /* b t */
    kBlendScreen,      /* 1 - (1 - b)(1 - t) */
    kBlendDarken,      /* min(b, t) */
    kBlendLighten,     /* max(b, t) */
    kBlendDifference,  /* |b - t| */
    kBlendNegative,    /* 1 - |1 - b - t| */
    kBlendColourDodge, /* b / (1 - t) */
    kBlendColourBurn,  /* 1 - (1 - b) / t */
    kBlendRed,         /* red of t, the rest of b */
    kBlendGreen,       /* green of t, the rest of b */
    kBlendBlue,        /* blue of t, the rest of b */
};

typedef struct HostNodeUtilityFuncs { /* [render threads] but for autosize */
    void (*blend)(double result[3], const double top[3], const double bottom[3], double opacity, int mode);
    void (*autosize)(HostNode *node, double scale[3], double position[3]);
    void (*planarMapping)(const double position[3], int axis, double *u, double *v);
    void (*sphericalMapping)(const double position[3], int axis, double *u, double *v);
    void (*cylindricalMapping)(const double position[3], int axis, double *u, double *v);
    void (*cubicMapping)(const double position[3], int axis, double *u, double *v);
    void (*frontMapping)(const double position[3], double *u, double *v);
    /* A direction onto a spherical environment image, turned by the seam angle. */
    void (*directionMapping)(double seamAngle, const double direction[3], double *u, double *v);
    int (*uvMapping)(const char *mapName, ShadingSample *sample, double *u, double *v); /* non-zero: on the map */
    void (*cameraMatrix)(double matrix[9]);
} HostNodeUtilityFuncs;

/* ---- "LWVParmFuncs 2" and "Animation Envelopes" -------------------------------------------------------------- */

#define HOST_VPARM_FUNCS "LWVParmFuncs 2"
#define HOST_ENVELOPE_FUNCS "Animation Envelopes"

/* Type codes of parameters. One is added for three components. */
enum {
    kParmPlainTriple = 1, /* three components without a unit */
    kParmFloat = 16,
    kParmFloatTriple = 17,
    kParmPercent = 32,
    kParmDistance = 48,
    kParmDistanceTriple = 49,
    kParmAngle = 64,
    kParmAngleTriple = 65,
    kParmColour = 81,
};

enum { kParmHasEnvelope = 1, kParmHasTexture = 2 }; /* bits of a parameter's state */

typedef int HostParmEvent(void *userData, HostVParm *parm, int event);

typedef struct HostVParmFuncs {                  /* [interface thread; not while rendering], but for getValue */
    HostVParm *(*create)(int type, int subtype); /* subtype -1: as the type has it */
    void (*destroy)(HostVParm *parm);
    void (*setUp)(HostVParm *parm, const char *channelName, HostChannelGroup *group, void *textureContext,
                  HostParmEvent *event, const char *plugInName, void *userData);
    HostError (*copy)(HostVParm *to, HostVParm *from);
    HostError (*load)(HostVParm *parm, const HostLoadState *state);
    HostError (*save)(HostVParm *parm, const HostSaveState *state);
    /* Writes one or three components; `value` has room for three all the same. [between frames] */
    double (*getValue)(HostVParm *parm, double time, ShadingSample *sample, double value[3]);
    int (*setValue)(HostVParm *parm, const double *value); /* components taken: 0 when it has an envelope */
    int (*state)(HostVParm *parm);
    void (*setState)(HostVParm *parm, int state);
    int (*editEnvelope)(HostVParm *parm);
    int (*editTexture)(HostVParm *parm);
    HostError (*init)(HostVParm *parm);
    int (*envelopes)(HostVParm *parm, HostEnvelope *handles[3]);
    HostTexture *(*texture)(HostVParm *parm);
} HostVParmFuncs;

/* Shapes of the span that ends at a key, and behaviours beyond the first and last keys. */
enum { kShapeTcb, kShapeHermite, kShapeBezier1, kShapeLinear, kShapeStepped, kShapeBezier2 };
enum { kBehaveReset, kBehaveConstant, kBehaveRepeat, kBehaveOscillate, kBehaveOffsetRepeat, kBehaveLinear };

/* What set key and get key address: the value a double, the rest as the name says. */
enum {
    kKeyValue = 1,   /* double */
    kKeyTime = 2,    /* double, seconds */
    kKeyShape = 3,   /* int */
    kKeyTension = 4, /* double, as the next two */
    kKeyContinuity = 5,
    kKeyBias = 6,
    kKeyParameter0 = 7 /* double; 7 to 10 are the four numbers of the Hermite and Bezier shapes */
};
enum { kEnvelopePreBehaviour = 1, kEnvelopePostBehaviour = 2 }; /* tags of set and get */

typedef int HostEnvelopeEvent(void *userData, HostEnvelope *envelope, int event, void *data);

typedef struct HostEnvelopeFuncs { /* [interface thread; not while rendering], but for evaluate */
    HostEnvelope *(*create)(HostChannelGroup *group, const char *name, int type);
    void (*destroy)(HostEnvelope *envelope);
    HostChannelGroup *(*createGroup)(HostChannelGroup *parent, const char *name);
    void (*destroyGroup)(HostChannelGroup *group);
    HostError (*copy)(HostEnvelope *to, HostEnvelope *from);
    HostError (*load)(HostEnvelope *envelope, const HostLoadState *state);
    HostError (*save)(HostEnvelope *envelope, const HostSaveState *state);
    double (*evaluate)(HostEnvelope *envelope, double time); /* [between frames] */
    int (*edit)(HostEnvelope *envelope);
    int (*age)(HostEnvelope *envelope);
    HostKey *(*createKey)(HostEnvelope *envelope, double time, double value);
    void (*destroyKey)(HostEnvelope *envelope, HostKey *key);
    HostKey *(*findKey)(HostEnvelope *envelope, double time);
    HostKey *(*nextKey)(HostEnvelope *envelope, HostKey *key); /* null gives the first */
    HostKey *(*previousKey)(HostEnvelope *envelope, HostKey *key);
    int (*setKey)(HostEnvelope *envelope, HostKey *key, int tag, const void *value);
    int (*getKey)(HostEnvelope *envelope, HostKey *key, int tag, void *value);
    int (*setEvent)(HostEnvelope *envelope, HostEnvelopeEvent *event, void *userData);
    int (*set)(HostEnvelope *envelope, int tag, const void *value);
    int (*get)(HostEnvelope *envelope, int tag, void *value);
} HostEnvelopeFuncs;

/* ---- "LWXPanel" --------------------------------------------------------------------------------------------- */

#define HOST_PANEL_FUNCS "LWXPanel"

enum {
    kPanelForm = 1, /* values live in an instance and pass through the getter and setter */
    kPanelOwn = 2   /* values live in the panel */
};
enum { kSetUnknown = 0, kSetDefault = 1, kSetRedraw = 2, kSetRebuild = 3 }; /* a setter's results */
enum { kEventChanging = 1, kEventSet = 2, kEventHit = 3, kEventFocus = 4, kEventFocusLost = 5 };

/* One value of a panel; a row of zeros ends the table. */
typedef struct HostPanelValue {
    unsigned int id;
    const char *label;
    const char *type; /* "integer", "float-env" and so on */
} HostPanelValue;

/* The callbacks of a panel. [interface thread; not while rendering] */
typedef void *HostPanelGetter(void *instance, unsigned int id);
typedef int HostPanelSetter(void *instance, unsigned int id, void *value);
typedef int HostPanelChange(HostPanel *panel, unsigned int control, unsigned int value, int event);
typedef void HostPanelDestroyed(void *userData);
typedef void HostPanelButton(HostPanel *panel, int control);
typedef int HostPopupCount(void *userData);
typedef const char *HostPopupName(void *userData, int index);
typedef void HostPanelDraw(HostPanel *panel, unsigned int control, HostDrawArea *area, int width, int height);

/* One word of a hint list: a tag, a number, or a pointer to a text, a list or a function. */
typedef union HostHint {
    HostWord word;
    const char *text;
    const char *const *texts; /* ended by null */
    const int *numbers;
    const union HostHint *list;
    HostPanelChange *change;
    HostPanelDestroyed *destroyed;
    HostPanelButton *button;
    HostPopupCount *popupCount;
    HostPopupName *popupName;
    HostPanelDraw *draw;
} HostHint;

/* Tags of hints, each with the words that follow it. `ids` are one or more, ended by 0. Limits are whole numbers in
 * the control's shown unit (degrees, per cent). */
#define kHintEnd 0u
#define kHintLabel 0x3D000B03u          /* id text 0 */
#define kHintAddControl 0x3D000D03u     /* id type value-id */
#define kHintChangeNotify 0x3D000F01u   /* function */
#define kHintDestroyNotify 0x3D001302u  /* function 0 */
#define kHintMinimum 0x3D014002u        /* id n */
#define kHintMaximum 0x3D014102u        /* id n */
#define kHintStep 0x3D014202u           /* id n */
#define kHintRange 0x3D014304u          /* id min max step */
#define kHintSensitivity 0x3D014402u    /* id n */
#define kHintStringList 0x3D014503u     /* id texts 0 */
#define kHintEnforceLimits 0x3D014703u  /* id min? max? */
#define kHintButton 0x3D015F02u         /* id function */
#define kHintPopupFunctions 0x3D016203u /* id count name */
#define kHintValueTransform 0x3D016303u /* id count ints */
#define kHintDraw 0x3D016502u           /* id function */
#define kHintVectorLabels 0x3D017202u   /* id texts */
#define kHintControlOptions 0x3D017403u /* id 0 options */
#define kHintEnable 0x3D01F984u         /* value-id message 0 map ids 0; without a map: enabled while non-zero */
#define kHintGroup 0x3D01FE81u          /* group-id ids 0 */
#define kHintStack 0x3D020983u          /* group-id value-id map ids 0; the map gives the shown place, -1 for none */
#define kHintTabs 0x3D020A81u           /* group-id ids 0 */
#define kHintLeftAlign 0x3D021280u      /* ids 0 */
#define kHintNarrow 0x3D021380u         /* ids 0 */
#define kHintDividerAfter 0x3D021481u   /* ids 0 */
#define kHintNestedList 0xDD002u        /* 0 list */

/* Options of a "dThumbnail" control: one height bit and one width bit. */
enum {
    kThumbSmall = 1 << 0,
    kThumbMedium = 1 << 1,
    kThumbLarge = 1 << 2,
    kThumbExtraLarge = 1 << 3,
    kThumbSquare = 1 << 16,
    kThumb4To3 = 1 << 17,
    kThumbWide = 1 << 20
};

/* Pixels count from the area's upper left corner; components from 0 to 255. [interface thread; while drawing] */
typedef struct HostDrawFuncs {
    void (*pixel)(HostDrawArea *area, int colour, int x, int y);
    void (*rgbPixel)(HostDrawArea *area, int red, int green, int blue, int x, int y);
    void (*line)(HostDrawArea *area, int colour, int x0, int y0, int x1, int y1);
    void (*box)(HostDrawArea *area, int colour, int x, int y, int width, int height);
    void (*rgbBox)(HostDrawArea *area, int red, int green, int blue, int x, int y, int width, int height);
    void (*border)(HostDrawArea *area, int indent, int x, int y, int width, int height);
    int (*textWidth)(HostDrawArea *area, const char *text);
    int (*textHeight)(HostDrawArea *area, const char *text);
    void (*text)(HostDrawArea *area, const char *text, int colour, int x, int y);
} HostDrawFuncs;

typedef struct HostPanelFuncs { /* [interface thread; not while rendering] */
    int version;
    const HostDrawFuncs *draw;
    HostPanel *(*create)(int kind, const void *controls);
    void (*destroy)(HostPanel *panel);
    void (*describe)(HostPanel *panel, const HostPanelValue *values, HostPanelGetter *get, HostPanelSetter *set);
    void (*hint)(HostPanel *panel, unsigned int id, const HostHint *hints); /* id 0: the whole panel */
    void *(*getData)(HostPanel *panel, unsigned int id);
    void (*setData)(HostPanel *panel, unsigned int id, void *data);
    void *(*getValue)(HostPanel *panel, unsigned int id);
    void (*setValue)(HostPanel *panel, unsigned int id, void *value);
    void (*viewInstance)(HostPanel *panel, void *instance);
    void (*refresh)(HostPanel *panel);
    int (*post)(HostPanel *panel);
    int (*open)(HostPanel *panel);
} HostPanelFuncs;

/* ---- Single functions and words ------------------------------------------------------------------------------ */

#define HOST_INSTANCE_UPDATE "Instance Update"
typedef void HostInstanceUpdate(const char *className, void *instance); /* [interface thread; not while rendering] */

/* The looked-up pointer *is* the word; its top four bits (of 32) name the application. */
#define HOST_SYSTEM_ID "System ID"
#define kSystemIdMask 0xf0000000u
#define kSystemLayout 0x00000000u
#define kSystemModelling 0x10000000u
#define kSystemRenderNode 0x20000000u

/* ---- "LW Image List 5" --------------------------------------------------------------------------------------- */

#define HOST_IMAGE_LIST "LW Image List 5"

/* The null image is allowed throughout: it is 0 by 0, black, without alpha. Pixels are addressed from the upper left;
 * map coordinates from 0 to 1. Looking up is for [render threads]; the rest: [interface thread; not while rendering] */
typedef struct HostImageList {
    HostImage *(*first)(void);
    HostImage *(*next)(HostImage *image);
    HostImage *(*load)(const char *fileName);
    const char *(*name)(HostImage *image);
    const char *(*fileName)(HostImage *image, int frame);
    int (*isColour)(HostImage *image);
    void (*needAntialiasing)(HostImage *image);
    void (*size)(HostImage *image, int *width, int *height);
    float (*luma)(HostImage *image, int x, int y);
    void (*rgb)(HostImage *image, int x, int y, float colour[3]);
    double (*lumaSpot)(HostImage *image, double u, double v, double spotSize, int blend);
    void (*rgbSpot)(HostImage *image, double u, double v, double spotSize, int blend, double colour[3]);
    void (*clear)(HostImage *image);
    HostImage *(*loadReference)(const HostLoadState *state);
    void (*saveReference)(const HostSaveState *state, HostImage *image);
    int (*hasAlpha)(HostImage *image);
    float (*alpha)(HostImage *image, int x, int y);
    double (*alphaSpot)(HostImage *image, double u, double v, double spotSize, int blend);
} HostImageList;

/* ---- "File Request 2" ---------------------------------------------------------------------------------------- */

#define HOST_FILE_REQUEST "File Request 2"
enum { kFileRequestVersion = 3, kFileRequestLoad = 1 };

typedef struct HostFileRequest {
    int type;   /* kFileRequestLoad */
    int result; /* set by the host: 1 chosen, 0 cancelled, negative on an error */
    const char *title;
    const char *fileType; /* the kind of file that is offered, as "Images" */
    char *path;           /* buffers of bufferLength bytes, kept by the caller between requests */
    char *baseName;
    char *fullName;
    int bufferLength;
    int (*pick)(struct HostFileRequest *request); /* called on every choice in the window; may be null */
} HostFileRequest;

typedef int HostFileRequestFunc(int version, HostFileRequest *request); /* 0 when it ran [interface thread] */

/* ---- Scene facts --------------------------------------------------------------------------------------------- */

#define HOST_BACKDROP_INFO "LW Backdrop Info 2"
typedef struct HostBackdropInfo {
    /* The backdrop's colour as seen in a direction. Seconds; unit direction. [render threads] */
    void (*backdrop)(double time, const double direction[3], double colour[3]);
    int (*type)(double time);
    void (*colours)(double time, double zenith[3], double sky[3], double ground[3], double nadir[3]);
    void (*squeeze)(double time, double *sky, double *ground);
} HostBackdropInfo;

#define HOST_TIME_INFO "LW Time Info"
typedef struct HostTimeInfo { /* written between frames; read on [render threads] */
    double time;              /* seconds */
    int frame;
} HostTimeInfo;

#define HOST_SCENE_INFO "LW Scene Info 5"
typedef struct HostSceneInfo { /* written between frames; read on [render threads] */
    const char *name;
    const char *fileName;
    int points, polygons;
    int renderType, renderOptions;
    int firstFrame, lastFrame, frameStep;
    double framesPerSecond;
    int width, height;
    double pixelAspect;
    int minSamplesPerPixel, maxSamplesPerPixel;
    int limitedRegion[4];
    int recursionDepth;
    HostItem *(*renderCamera)(double time);
    int threads;
    const char *animationFile;
    const char *rgbPrefix;
    const char *alphaPrefix;
} HostSceneInfo;

#define HOST_SCENE_OBJECTS "Scene Objects 6"
enum { kVertexMapTxuv = 0x54585556 }; /* "TXUV", the first character in the high byte */
/* Objects, layers and vertex maps are numbered from 0. What is not there has no file, no name, no mesh (null), and 0 of
 * everything else. [interface thread; not while rendering] */
typedef struct HostSceneObjects {
    int (*objectCount)(void);
    const char *(*fileName)(int object);
    int (*layerCount)(int object);
    int (*layerExists)(int object, int layer);
    void (*pivot)(int object, int layer, double pivot[3]);
    HostMesh *(*layerMesh)(int object, int layer);
    int (*vertexMapCount)(int type);
    const char *(*vertexMapName)(int type, int index);
    int (*vertexMapDimension)(int type, int index);
    int (*vertexMapType)(int index);
} HostSceneObjects;

#define HOST_ITEM_INFO "LW Item Info 4"
enum { kItemObject, kItemLight, kItemCamera, kItemBone };
/* Items come in the scene's order. Null stands for no item: beyond the last one, and where nothing is linked.
 * [interface thread; not while rendering] */
typedef struct HostItemInfo {
    HostItem *(*first)(int type, HostItem *parent);
    HostItem *(*next)(HostItem *item);
    HostItem *(*firstChild)(HostItem *parent);
    HostItem *(*nextChild)(HostItem *parent, HostItem *previous);
    HostItem *(*parent)(HostItem *item);
    HostItem *(*target)(HostItem *item);
    HostItem *(*goal)(HostItem *item);
    int (*type)(HostItem *item);         /* -1 for what is no item */
    const char *(*name)(HostItem *item); /* null for what is no item */
} HostItemInfo;

#define HOST_CAMERA_EVALUATION "LW Camera Evaluation Funcs 2"
typedef struct HostCameraRay {
    double origin[3];     /* world space */
    double direction[3];  /* unit length, world space */
    double filmNormal[3]; /* towards what the camera sees, unit length, world space */
    double filter[3][3];  /* applied to the colour that the ray brings */
} HostCameraRay;

typedef struct HostCameraEvaluation {                 /* [between frames], but for evaluate */
    HostCameraEvaluator *(*create)(HostItem *camera); /* null when it cannot be made */
    void (*destroy)(HostCameraEvaluator *evaluator);
    HostError (*init)(HostCameraEvaluator *evaluator, int mode);
    void (*cleanup)(HostCameraEvaluator *evaluator);
    HostError (*newTime)(HostCameraEvaluator *evaluator, int frame, double time);
    void (*preview)(HostCameraEvaluator *evaluator, int mode);
    void (*reset)(HostCameraEvaluator *evaluator); /* before a new frame */
    /* Film positions are metres from the film's middle, to the picture's right and to its top; lens positions -1 to 1;
     * the time fraction 0 to 1 across the shutter's opening. 0: there is no ray there. [render threads] */
    int (*evaluate)(HostCameraEvaluator *evaluator, double filmX, double filmY, double lensX, double lensY,
                    double timeFraction, HostCameraRay *ray);
} HostCameraEvaluation;

#define HOST_CAMERA_INFO "LW Camera Info 5"
typedef struct HostFrameInterval {
    unsigned int count;
    double offset; /* the time at which the first one begins; seconds, as the two that follow */
    double duration;
    double stride; /* from the beginning of one to that of the next */
} HostFrameInterval;

typedef struct HostFrameTiming {
    HostFrameInterval intervals[5]; /* the first is the shutter's */
} HostFrameTiming;

enum { kCameraInfoFilmSize = 22, kCameraInfoFrameTiming = 23, kCameraInfoReserved = 22 };
typedef struct HostCameraInfo {
    void (*reserved[kCameraInfoReserved])(void);                               /* not used by any node */
    void (*filmSize)(HostItem *camera, double *width, double *height);         /* metres [render threads] */
    void (*frameTiming)(HostItem *camera, int frame, HostFrameTiming *timing); /* [between frames] */
} HostCameraInfo;

/* ---- Layout -------------------------------------------------------------------------------------------------- */
/* NOLINTBEGIN(bugprone-branch-clone): many offsets are the same on both targets */

/* The n-th pointer-sized member of a table. */
#define HOST_SLOT(record, member, n)                                                                                   \
    HOST_ASSERT(offsetof(record, member) == (n) * sizeof(void *), #record "." #member " is not in its slot")
/* An offset that differs between 64-bit and 32-bit targets. */
#define HOST_OFFSET(record, member, at64, at32)                                                                        \
    HOST_ASSERT(offsetof(record, member) == (sizeof(void *) == 8 ? (size_t)(at64) : (size_t)(at32)),                   \
                #record "." #member " is misplaced")
#define HOST_SIZE(record, at64, at32)                                                                                  \
    HOST_ASSERT(sizeof(record) == (sizeof(void *) == 8 ? (size_t)(at64) : (size_t)(at32)),                             \
                #record " has the wrong size")

HOST_ASSERT(sizeof(int) == 4, "int is 32 bits");
HOST_ASSERT(sizeof(short) == 2, "short is 16 bits");
HOST_ASSERT(sizeof(HostHint) == sizeof(void *), "a hint word is pointer-sized");

HOST_OFFSET(HostModuleDescriptor, startup, 16, 12);
HOST_OFFSET(HostModuleDescriptor, servers, 32, 20);
HOST_SIZE(HostModuleDescriptor, 40, 24);
HOST_SIZE(HostServer, 32, 16);
HOST_SIZE(HostTag, 16, 8);
HOST_SIZE(HostBlockId, 16, 8);

HOST_SLOT(HostInstanceOps, create, 1);
HOST_SLOT(HostInstanceOps, destroy, 2);
HOST_SLOT(HostInstanceOps, copy, 3);
HOST_SLOT(HostInstanceOps, load, 4);
HOST_SLOT(HostInstanceOps, save, 5);
HOST_SLOT(HostInstanceOps, describe, 6);
HOST_SLOT(HostRenderOps, init, 0);
HOST_SLOT(HostRenderOps, cleanup, 1);
HOST_SLOT(HostRenderOps, newTime, 2);
HOST_SLOT(HostNodeHandler, instance, 0);
HOST_SLOT(HostNodeHandler, item, 1);
HOST_SLOT(HostNodeHandler, render, 2);
HOST_SLOT(HostNodeHandler, evaluate, 3);
HOST_SLOT(HostNodeHandler, flags, 5);
HOST_SLOT(HostNodeInterface, panel, 1);
HOST_SLOT(HostNodeInterface, command, 3);

HOST_SLOT(HostSaveState, data, 1);
HOST_SLOT(HostSaveState, writeI2, 4);
HOST_SLOT(HostSaveState, writeString, 10);
HOST_SLOT(HostSaveState, beginBlock, 12);
HOST_SLOT(HostSaveState, endBlock, 13);
HOST_SLOT(HostSaveState, writeDP, 15);
HOST_SLOT(HostLoadState, data, 1);
HOST_SLOT(HostLoadState, readI2, 4);
HOST_SLOT(HostLoadState, readString, 10);
HOST_SLOT(HostLoadState, findBlock, 12);
HOST_SLOT(HostLoadState, endBlock, 13);
HOST_SLOT(HostLoadState, readDP, 15);

HOST_OFFSET(ShadingSample, position, 32, 32);
HOST_OFFSET(ShadingSample, geometricNormal, 56, 56);
HOST_OFFSET(ShadingSample, shadingNormal, 80, 80);
HOST_OFFSET(ShadingSample, raySource, 128, 128);
HOST_OFFSET(ShadingSample, spotSize, 160, 160);
HOST_OFFSET(ShadingSample, illuminate, 328, 328);
HOST_OFFSET(ShadingSample, rayCast, 352, 340);
HOST_OFFSET(ShadingSample, rayShade, 360, 344);
HOST_OFFSET(ShadingSample, rayTraceMode, 368, 348);
HOST_OFFSET(ShadingSample, rayDepth, 376, 352);
HOST_OFFSET(ShadingSample, polygonNumber, 400, 364);
HOST_OFFSET(ShadingSample, polygon, 504, 448);
HOST_OFFSET(ShadingSample, refractionIndex, 512, 456);
HOST_OFFSET(ShadingSample, threadIndex, 520, 464);
HOST_OFFSET(ShadingSample, rayFlags, 524, 468);
HOST_SIZE(ShadingSample, 528, 472);
HOST_OFFSET(HostRayHit, objectItem, 272, 272);
HOST_OFFSET(HostRayHit, shadingNormal, 288, 280);
HOST_OFFSET(HostRayHit, colour, 312, 304);
HOST_SIZE(HostRayHitRoom, 2048, 2048);

HOST_SLOT(HostNodeFuncs, channelGroup, 2);
HOST_SLOT(HostNodeFuncs, setColour, 3);
HOST_SLOT(HostNodeFuncs, setPreviewType, 5);
HOST_SLOT(HostNodeFuncs, updatePreview, 6);
HOST_SLOT(HostNodeInputFuncs, evaluate, 2);
HOST_SLOT(HostNodeInputFuncs, isConnected, 3);
HOST_SLOT(HostNodeInputFuncs, node, 11);
HOST_SLOT(HostNodeOutputFuncs, setValue, 2);
HOST_SLOT(HostNodeOutputFuncs, getValue, 3);
HOST_SLOT(HostNodeOutputFuncs, askingType, 4);
HOST_SLOT(HostNodeOutputFuncs, node, 11);
HOST_SIZE(HostMaterial, 104, 104);
HOST_SLOT(HostNodeEditorFuncs, load, 6);
HOST_SLOT(HostNodeEditorFuncs, addRootInput, 10);
HOST_SLOT(HostNodeEditorFuncs, setAutosize, 12);
HOST_SLOT(HostNodeEditorFuncs, userData, 14);
HOST_SLOT(HostNodeEditorFuncs, openWindow, 20);
HOST_SLOT(HostNodeEditorFuncs, rootNode, 22);
HOST_SLOT(HostNodeEditorFuncs, connect, 23);
HOST_SLOT(HostRootDescription, preview, 6);
HOST_SLOT(HostNodeUtilityFuncs, autosize, 1);
HOST_SLOT(HostNodeUtilityFuncs, directionMapping, 7);
HOST_SLOT(HostNodeUtilityFuncs, uvMapping, 8);
HOST_SLOT(HostVParmFuncs, setUp, 2);
HOST_SLOT(HostVParmFuncs, save, 5);
HOST_SLOT(HostVParmFuncs, setValue, 7);
HOST_SLOT(HostVParmFuncs, texture, 14);
HOST_SLOT(HostEnvelopeFuncs, createGroup, 2);
HOST_SLOT(HostEnvelopeFuncs, evaluate, 7);
HOST_SLOT(HostEnvelopeFuncs, createKey, 10);
HOST_SLOT(HostEnvelopeFuncs, get, 19);
HOST_SLOT(HostPanelFuncs, draw, 1);
HOST_SLOT(HostPanelFuncs, describe, 4);
HOST_SLOT(HostPanelFuncs, setData, 7);
HOST_SLOT(HostPanelFuncs, setValue, 9);
HOST_SLOT(HostPanelFuncs, refresh, 11);
HOST_SLOT(HostPanelFuncs, open, 13);
HOST_SLOT(HostDrawFuncs, rgbPixel, 1);
HOST_SLOT(HostDrawFuncs, rgbBox, 4);
HOST_SLOT(HostDrawFuncs, text, 8);
HOST_SIZE(HostPanelValue, 24, 12);
HOST_SLOT(HostImageList, rgbSpot, 11);
HOST_SLOT(HostImageList, loadReference, 13);
HOST_SLOT(HostImageList, alphaSpot, 17);
HOST_OFFSET(HostFileRequest, title, 8, 8);
HOST_OFFSET(HostFileRequest, fullName, 40, 24);
HOST_OFFSET(HostFileRequest, bufferLength, 48, 28);
HOST_SIZE(HostFileRequest, 64, 36);
HOST_SIZE(HostTimeInfo, 16, 16);
HOST_OFFSET(HostSceneInfo, firstFrame, 32, 24);
HOST_OFFSET(HostSceneInfo, framesPerSecond, 48, 40);
HOST_OFFSET(HostSceneInfo, recursionDepth, 96, 88);
HOST_SLOT(HostSceneObjects, vertexMapName, 7);
HOST_SLOT(HostItemInfo, name, 8);
HOST_SLOT(HostCameraEvaluation, evaluate, 7);
HOST_SIZE(HostCameraRay, 144, 144);
HOST_SLOT(HostCameraInfo, filmSize, kCameraInfoFilmSize);
HOST_SLOT(HostCameraInfo, frameTiming, kCameraInfoFrameTiming);
HOST_SIZE(HostFrameInterval, 32, 32);

/* NOLINTEND(bugprone-branch-clone) */
#undef HOST_SLOT
#undef HOST_OFFSET
#undef HOST_SIZE
#undef HOST_ASSERT

#ifdef __cplusplus
}
#endif

#endif

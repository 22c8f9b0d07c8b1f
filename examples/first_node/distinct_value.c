/*
 * A complete module in one C file: one node, written against the plug-in interface alone.
 *
 * The node "Distinct Value" gives a number from 0 to 1. Each new node gets another one, from a sequence that spreads
 * evenly over the range: enough to tint one surface a little differently from the next. The number is the node's only
 * setting. It is saved with the node, and a copy of the node has the same.
 */
#include "module/host.h"

#include <math.h>
#include <stdlib.h>

/* What one node stores: the host sees only a pointer to it. */
typedef struct Instance {
    double number;
} Instance;

/* The one service that the node needs. Set at activation, it stays valid while the host runs. */
static const HostNodeOutputFuncs *outputs;

/* ---- The life of an instance ------------------------------------------------------------------------------------- */

/* Multiples of the golden ratio, without their whole parts, spread evenly however many are taken. The host creates
 * nodes on one thread only, so that the counter needs no lock. */
static double next_number(void) {
    static unsigned created;
    return fmod(++created * 0.6180339887498949, 1.0);
}

static void *create(void *priv, void *node, const char **error) {
    (void)priv;
    Instance *instance = malloc(sizeof *instance);
    if (!instance) {
        *error = "There is no memory for the node.";
        return NULL;
    }
    instance->number = next_number();
    outputs->create(node, kConnectScalar, "Value");
    return instance;
}

/* The host destroys the node's output itself. */
static void destroy(void *instance) { free(instance); }

static HostError copy(void *to, void *from) {
    *(Instance *)to = *(const Instance *)from;
    return NULL;
}

static HostError save(void *instance, const HostSaveState *state) {
    state->writeDP(state->data, &((const Instance *)instance)->number, 1);
    return NULL;
}

/* If the file ends early, readDP leaves the number as create has set it. */
static HostError load(void *instance, const HostLoadState *state) {
    state->readDP(state->data, &((Instance *)instance)->number, 1);
    return NULL;
}

/* ---- Evaluation -------------------------------------------------------------------------------------------------- */

/* Called for every sample, by up to sixteen threads at once: it only reads the instance. */
static void evaluate(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    (void)sample, (void)output;
    outputs->setValue(value, &((const Instance *)instance)->number);
}

/* ---- What the host finds in the file ----------------------------------------------------------------------------- */

/* The host calls this once, before it creates the first node: the server looks up its services and gives the host its
 * functions. Members that it leaves alone stay null, and the host then calls nothing. */
static int activate(int version, HostLookup *lookup, void *local, void *server_data) {
    (void)server_data;
    if (version != kNodeHandlerVersion) return kActivateBadVersion;
    outputs = lookup(HOST_NODE_OUTPUT_FUNCS, kUseTransient);
    if (!outputs) return kActivateBadGlobal;

    HostNodeHandler *handler = local;
    handler->instance->create = create;
    handler->instance->destroy = destroy;
    handler->instance->copy = copy;
    handler->instance->load = load;
    handler->instance->save = save;
    handler->evaluate = evaluate;
    return kActivateOk;
}

static const HostTag tags[] = {
    {.text = "Distinct Value", .code = kTagUserName},
    {.text = "Examples", .code = kTagMenu},
    {.text = NULL},
};

static const HostServer servers[] = {
    {.className = HOST_CLASS_NODE_HANDLER, .name = "Example Distinct Value", .activate = activate, .tags = tags},
    {.className = NULL},
};

/* Any word but null tells the host that the module is ready. */
static void *start(void) { return (void *)servers; }

static void shut_down(void *word) { (void)word; }

#ifdef _WIN32
#define EXPORT __declspec(dllexport)
enum { kPlatform = kPlatformWindows };
#else
#define EXPORT
enum { kPlatform = kPlatformMacintosh }; /* everything but Windows */
#endif

EXPORT const HostModuleDescriptor _mod_descrip = {
    .syncWord = kModuleSyncWord,
    .version = kModuleVersion,
    .platform = kPlatform,
    .startup = start,
    .shutdown = shut_down,
    .servers = servers,
};

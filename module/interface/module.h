/*
 * Modules: the descriptor that a module exports, its table of servers, and how the host activates a server and gives it
 * services. There is no service to look up here; the lookup function itself is declared here.
 *
 * The host loads the module, checks the descriptor, calls its startup function, and lists its servers. Before the first
 * node of a class is created, the host activates the class's "NodeHandler" server; each time the user opens a node's
 * panel, it activates the "NodeInterface" server of the same name. An activation looks up the services that the server
 * needs and fills the record that it is given (handler.h).
 */
#ifndef VELM_MODULE_INTERFACE_MODULE_H
#define VELM_MODULE_INTERFACE_MODULE_H

#ifdef __cplusplus
extern "C" {
#endif

enum {
    kModuleSyncWord = 0x04121994, /* the first word of every module descriptor */
    kModuleVersion = 3            /* the version of the descriptor's layout */
};

/* The platform a build was made for. A build for Windows carries kPlatformWindows; all others carry
 * kPlatformMacintosh. */
enum { kPlatformUnix = 0x200, kPlatformWindows = 0x300, kPlatformMacintosh = 0x400 };

/* Classes of servers, and the version of each that is described here. */
#define HOST_CLASS_NODE_HANDLER "NodeHandler"     /* a node's shading; its activation fills a HostNodeHandler */
#define HOST_CLASS_NODE_INTERFACE "NodeInterface" /* a node's panel; its activation fills a HostNodeInterface */
enum { kNodeHandlerVersion = 1, kNodeInterfaceVersion = 4 };

/* Results of an activation. */
enum {
    kActivateOk = 0,
    kActivateBadVersion = 1,          /* the version is not one that the server knows */
    kActivateBadGlobal = 2,           /* a service that the server needs is missing */
    kActivateBadLocal = 3,            /* the record to be filled is unusable */
    kActivateBadApplication = 4,      /* the server is not for the application that activates it */
    kActivateBadApplicationQuiet = 5, /* the same, and the user gets no message */
};

/* How long a service is wanted for: the second argument of a lookup. */
enum { kUseTransient = 0 };

/* Looks up a service by name. Gives a pointer to a table, a record or a function, whichever the service's header says,
 * or the word itself for "System ID"; null when the host does not offer the service, and for a null name. The caller
 * does not own the result, which stays valid while the host runs. `use` is kUseTransient. [any thread] */
typedef void *HostLookup(const char *service, int use);

/* Prepares a server for use. If `version` is not the class's, it returns kActivateBadVersion and changes nothing.
 * `local` is the class's record, never null: a HostNodeHandler, which stays valid while the module is loaded, or a
 * HostNodeInterface, which is valid during the call. `serverData` is null. Gives one of the results above; with any but
 * kActivateOk the host does not use the server. It never runs two activations at the same time.
 * [interface thread; not while rendering] */
typedef int HostActivate(int version, HostLookup *lookup, void *local, void *serverData);

/* Codes of a server's tags. */
enum {
    kTagUserName = 0x0, /* the display name; without it, the server's name is shown */
    kTagMenu = 0x70000  /* the group of the node menu, with slashes between its levels: "Velm's Nodes/Math" */
};

/* One tag of a server. A list of tags ends with a null text. */
typedef struct HostTag {
    const char *text;  /* the tag's text; null ends the list */
    unsigned int code; /* kTagUserName or kTagMenu */
} HostTag;

/* One row of a module's table of servers. Everything it points to belongs to the module and stays valid while the
 * module is loaded. */
typedef struct HostServer {
    const char *className; /* HOST_CLASS_NODE_HANDLER or HOST_CLASS_NODE_INTERFACE; null ends the table */
    const char *name;      /* unique within its class; the two servers of a node have the same name */
    /* The server's activation. A handler must have one. An interface without one (null) is listed, but its nodes have
     * no panel. [interface thread; not while rendering] */
    HostActivate *activate;
    const HostTag *tags; /* may be null: no tags */
} HostServer;

/* What a module exports, as a data symbol named HOST_MODULE_SYMBOL. The host reads it before it calls anything, and
 * refuses a module whose descriptor has a wrong word, version or platform, or lacks one of the pointers. */
typedef struct HostModuleDescriptor {
    unsigned int syncWord; /* kModuleSyncWord */
    unsigned int version;  /* kModuleVersion */
    unsigned int platform; /* kPlatformWindows for Windows, else kPlatformMacintosh */
    /* Called once, after the module was loaded. Gives a word of the module's choice, which the host hands to shutdown
     * and does not look into; null means that the module refuses to work. [interface thread; not while rendering] */
    void *(*startup)(void);
    /* Called once, before the module is unloaded, with the word that startup gave. All instances have been destroyed by
     * then. Not called when startup gave null. [interface thread; not while rendering] */
    void (*shutdown)(void *word);
    const HostServer *servers; /* the table of servers, in the order in which they are listed */
} HostModuleDescriptor;

#define HOST_MODULE_SYMBOL "_mod_descrip" /* undecorated: the symbol of a HostModuleDescriptor */

#ifdef __cplusplus
}
#endif

#endif

/* A small module. It is valid, except for what the build defines differently. */
#include "module/host.h"

#ifndef SYNC_WORD
#define SYNC_WORD kModuleSyncWord
#endif
#ifndef VERSION
#define VERSION kModuleVersion
#endif
#ifndef PLATFORM
#define PLATFORM kPlatformMacintosh
#endif
#ifndef STARTUP_WORD
#define STARTUP_WORD &starts
#endif
#ifndef SERVERS
#define SERVERS servers
#endif

#define VISIBLE __attribute__((visibility("default")))

/* Read by the tests: the number of calls of startup and shutdown, and the last argument of shutdown. */
VISIBLE int starts, stops;
VISIBLE void *stoppedWord;

static void *startup(void) {
    ++starts;
    return STARTUP_WORD;
}

static void shutdown(void *word) {
    ++stops;
    stoppedWord = word;
}

static int activate(int version, HostLookup *lookup, void *local, void *serverData) {
    (void)version, (void)lookup, (void)local, (void)serverData;
    return kActivateOk;
}

__attribute__((unused)) static const HostServer servers[] = {{HOST_CLASS_NODE_HANDLER, "Test", activate, 0},
                                                             {0, 0, 0, 0}};

#ifndef NO_DESCRIPTOR
VISIBLE
#else
static __attribute__((unused))
#endif
const HostModuleDescriptor _mod_descrip = {SYNC_WORD, VERSION, PLATFORM, startup, shutdown, SERVERS};

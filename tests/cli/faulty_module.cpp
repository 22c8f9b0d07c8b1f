// A module that fails as the environment variable VELM_FAULT says: "crash create", for example, names the fault and the
// callback in which it happens. Without the variable, the module works. Its nodes pass their input through. "Faulty
// Node" fails in its callbacks, "Tail Node" in a function that its evaluate function calls last, and "Sound Node"
// never.
#include "module/host.h"

#include <fenv.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>

namespace {

const HostNodeInputFuncs *inputs;
const HostNodeOutputFuncs *outputs;

// ---- Faults ----

int deeper(volatile int *from) {
    volatile int room[1000];
    room[0] = *from + 1;
    return room[0] == 0 ? 0 : deeper(room) + room[0];
}

void callNothing() {
    void (*volatile nothing)() = nullptr;
    nothing();
}

void crash() {
    volatile int *volatile nowhere = nullptr;
    *nowhere = 1;
}

void divide() {
    volatile int seven = 7, zero = 0;
    volatile int result = seven / zero;
    static_cast<void>(result);
}

void recurse() {
    volatile int none = 0;
    deeper(&none);
}

[[noreturn]] void hang() {
    for (;;) sleep(1);
}

[[noreturn]] void throwError() { throw std::runtime_error("no luck"); }

// Gives the function that declares one a destructor to run, so that exceptions stop in that function while they unwind
// the stack.
struct Cleanup {
    ~Cleanup() { asm volatile("" ::: "memory"); }
};

// Creates the file for which a test waits, right before the fault.
void markArrival() {
    if (const char *file = std::getenv("VELM_FAULT_FILE")) std::fclose(std::fopen(file, "w"));
}

struct Fault {
    const char *name;
    void (*act)();
};
constexpr Fault kFaults[] = {
    {"crash", crash},
    {"null", callNothing},
    {"recursion", recurse},
    {"division", divide},
    {"illegal", [] { raise(SIGILL); }},
    {"bus", [] { raise(SIGBUS); }},
    {"abort", [] { std::abort(); }},
    {"exit", [] { std::exit(0); }},
    {"_exit", [] { _exit(0); }},
    {"hang", hang},
    {"throw", throwError},
    {"terminate", [] { std::terminate(); }},
    {"move", [] { static_cast<void>(chdir("/") == 0); }},
    {"mask", [] { umask(0777); }},
    {"trap", [] { feenableexcept(FE_ALL_EXCEPT); }},
    {"ignore", [] { signal(SIGINT, SIG_IGN); }},
    {"leave", [] { pthread_exit(nullptr); }},
    {"stop", [] { kill(getpid(), SIGSTOP); }},
    {"busy",
     [] {
         for (volatile bool on = true; on;) {
         }
     }},
};

// Whether VELM_FAULT is this text.
bool isFault(const char *text) {
    const char *wanted = std::getenv("VELM_FAULT");
    return wanted && std::strcmp(wanted, text) == 0;
}

template <class Type>
Type *wild() {
    return reinterpret_cast<Type *>(16);
}

// The error that a callback reports: "wild load", for example, an address without a text; "long load", a megabyte.
HostError errorAt(const char *callback) {
    static char text[1 << 20];
    const char *wanted = std::getenv("VELM_FAULT");
    const char *blank = wanted ? std::strchr(wanted, ' ') : nullptr;
    if (!blank || std::strcmp(blank + 1, callback) != 0) return nullptr;
    if (std::strncmp(wanted, "wild", 4) == 0) return wild<const char>();
    if (std::strncmp(wanted, "long", 4) != 0) return nullptr;
    std::memset(text, 'x', sizeof text - 1);
    return text;
}

[[gnu::noinline]] void faultAt(const char *callback) {
    const char *wanted = std::getenv("VELM_FAULT");
    if (!wanted) return;
    const char *blank = std::strchr(wanted, ' ');
    if (!blank || std::strcmp(blank + 1, callback) != 0) return;
    for (const Fault &fault : kFaults)
        if (std::strncmp(fault.name, wanted, static_cast<std::size_t>(blank - wanted)) == 0 &&
            std::strlen(fault.name) == static_cast<std::size_t>(blank - wanted)) {
            markArrival();
            fault.act();
        }
}

struct AtLoad {
    AtLoad() { faultAt("loading"); }
} atLoad;

// The fault is to happen on thread 1, even if thread 0 could render everything first: thread 0 waits for it.
std::atomic<bool> secondArrived = false;

void failOnTheSecondThread(int thread, const char *callback) {
    if (!std::getenv("VELM_FAULT")) return;
    constexpr int kMostWaits = 20000;
    if (thread == 1) secondArrived = true;
    for (int waits = 0; thread == 0 && !secondArrived && waits < kMostWaits; ++waits) usleep(1000);
    if (thread == 1) faultAt(callback);
}

// ---- Nodes ----

struct Instance {
    HostInput *in;
    HostOutput *out;
};

void *make(void *node) {
    auto *own = static_cast<Instance *>(std::malloc(sizeof(Instance)));
    if (!own) return nullptr;
    own->in = inputs->create(static_cast<HostNode *>(node), kConnectColour, "In", nullptr);
    own->out = outputs->create(static_cast<HostNode *>(node), kConnectColour, "Out");
    return own;
}

void *create(void *, void *node, const char **error) {
    faultAt("create");
    *error = errorAt("create");
    return *error ? nullptr : make(node);
}
void *createSound(void *, void *node, const char **) { return make(node); }

void destroy(void *instance) {
    faultAt("destroy");
    std::free(instance);
}
void destroySound(void *instance) { std::free(instance); }

// "large save" writes more than a block of an object file can hold.
HostError save(void *, const HostSaveState *state) {
    static const char bytes[70000] = {};
    if (isFault("large save")) state->write(state->data, bytes, sizeof bytes);
    return nullptr;
}

HostError init(void *, int) {
    faultAt("init");
    return errorAt("init");
}
HostError newTime(void *, int, double) {
    faultAt("newTime");
    return errorAt("newTime");
}
void cleanup(void *) { faultAt("cleanup"); }

void passThrough(void *instance, ShadingSample *sample, HostNodeValue *value) {
    double colour[3] = {1, 1, 1};
    inputs->evaluate(static_cast<Instance *>(instance)->in, sample, colour);
    outputs->setValue(value, colour);
}

void evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const Cleanup cleanup_;
    passThrough(instance, sample, value);
    failOnTheSecondThread(sample->threadIndex, "evaluate");
}

void evaluateSound(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    passThrough(instance, sample, value);
    asm volatile("" ::: "memory");
}

[[gnu::noinline]] void finish(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    passThrough(instance, sample, value);
    failOnTheSecondThread(sample->threadIndex, "tail");
}
void evaluateTail(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value) {
    finish(instance, sample, output, value);
}

// ---- Activation ----

int activateWith(int version, HostLookup *lookup, void *local, decltype(&evaluate) evaluation) {
    if (version != kNodeHandlerVersion) return kActivateBadVersion;
    inputs = static_cast<const HostNodeInputFuncs *>(lookup(HOST_NODE_INPUT_FUNCS, kUseTransient));
    outputs = static_cast<const HostNodeOutputFuncs *>(lookup(HOST_NODE_OUTPUT_FUNCS, kUseTransient));
    if (!inputs || !outputs) return kActivateBadGlobal;
    auto *handler = static_cast<HostNodeHandler *>(local);
    handler->instance->create = createSound;
    handler->instance->destroy = destroySound;
    handler->evaluate = evaluation;
    return kActivateOk;
}

int activate(int version, HostLookup *lookup, void *local, void *) {
    faultAt("activate");
    const int result = activateWith(version, lookup, local, evaluate);
    if (result != kActivateOk) return result;
    auto *handler = static_cast<HostNodeHandler *>(local);
    handler->instance->create = create;
    handler->instance->destroy = destroy;
    handler->instance->save = save;
    *handler->render = {.init = init, .cleanup = cleanup, .newTime = newTime};
    return result;
}
int activateSound(int version, HostLookup *lookup, void *local, void *) {
    return activateWith(version, lookup, local, evaluateSound);
}
int activateTail(int version, HostLookup *lookup, void *local, void *) {
    return activateWith(version, lookup, local, evaluateTail);
}

// Not constant, since some faults are in it.
HostServer servers[] = {
    {HOST_CLASS_NODE_HANDLER, "Faulty Node", activate, nullptr},
    {HOST_CLASS_NODE_HANDLER, "Sound Node", activateSound, nullptr},
    {HOST_CLASS_NODE_HANDLER, "Tail Node", activateTail, nullptr},
    {nullptr, nullptr, nullptr, nullptr},
};

void *startup() {
    faultAt("startup");
    if (isFault("tags")) servers[0].tags = wild<const HostTag>();
    if (isFault("name")) servers[0].name = wild<const char>();
    if (isFault("class")) servers[1].className = wild<const char>();
    if (isFault("end")) servers[3] = servers[2], servers[3].className = wild<const char>();
    static int word;
    return &word;
}
void shutdown(void *) { faultAt("shutdown"); }

} // namespace

extern "C" __attribute__((visibility("default"))) const HostModuleDescriptor _mod_descrip = {
    .syncWord = kModuleSyncWord,
    .version = kModuleVersion,
    .platform = kPlatformMacintosh,
    .startup = startup,
    .shutdown = shutdown,
    .servers = servers,
};

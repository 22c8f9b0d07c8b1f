// A module that fails as the environment variable VELM_FAULT says: "crash create", for example, names the fault and the
// callback in which it happens. Without the variable, the module works. Its nodes pass their input through. "Faulty
// Node" fails in its callbacks, "Tail Node" in a function that its evaluate function calls last, and "Sound Node"
// never.
#include "module/host.h"

#include "tests/module/harm.h"
#include "tests/module/small_module.h"

#include <fenv.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>

namespace {

using namespace harm;
using small_module::Connections;

// ---- Faults ----

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
    {"hang", sleepForEver},
    {"throw", throwError},
    {"terminate", [] { std::terminate(); }},
    {"move", [] { static_cast<void>(chdir("/") == 0); }},
    {"mask", [] { umask(0777); }},
    {"silence", [] { close(STDOUT_FILENO), close(STDERR_FILENO); }},
    {"limit",
     [] {
         const rlimit none{0, 0};
         setrlimit(RLIMIT_FSIZE, &none);
     }},
    {"trap", [] { feenableexcept(FE_ALL_EXCEPT); }},
    {"ignore", [] { signal(SIGINT, SIG_IGN); }},
    {"leave", [] { pthread_exit(nullptr); }},
    {"stop", [] { kill(getpid(), SIGSTOP); }},
    {"busy", spin},
};

// Whether VELM_FAULT is this text.
bool isFault(const char *text) {
    const char *wanted = std::getenv("VELM_FAULT");
    return wanted && std::strcmp(wanted, text) == 0;
}

// A text that clears a terminal and makes it red.
constexpr const char *kTerminalText = "Red\x1b[2J\xc2\x9b"
                                      "31m";

// The error that a callback reports: "wild load", for example, an address without a text; "long load", a megabyte;
// "terminal load", control sequences of terminals.
HostError errorAt(const char *callback) {
    static char text[1 << 20];
    const char *wanted = std::getenv("VELM_FAULT");
    const char *blank = wanted ? std::strchr(wanted, ' ') : nullptr;
    if (!blank || std::strcmp(blank + 1, callback) != 0) return nullptr;
    if (std::strncmp(wanted, "wild", 4) == 0) return wild<const char>();
    if (std::strncmp(wanted, "terminal", 8) == 0) return kTerminalText;
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

void *make(void *node) {
    auto *own = static_cast<Connections *>(std::malloc(sizeof(Connections)));
    if (own) *own = small_module::connect(node, "Out");
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
    small_module::passThrough(*static_cast<Connections *>(instance), sample, value, colour);
}

void evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    const Cleanup atTheEnd;
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
    if (const int result = small_module::lookUpConnections(version, lookup); result != kActivateOk) return result;
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
    if (isFault("terminal")) servers[0].name = kTerminalText;
    if (isFault("class")) servers[1].className = wild<const char>();
    if (isFault("end")) servers[3] = servers[2], servers[3].className = wild<const char>();
    static int word;
    return &word;
}
void shutdown(void *) { faultAt("shutdown"); }

} // namespace

extern "C" __attribute__((visibility("default"))) const HostModuleDescriptor _mod_descrip =
    small_module::descriptor(servers, startup, shutdown);

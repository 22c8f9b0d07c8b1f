// Watches the calls of the module into the host.
#include "host/check/process/check_record.h"
#include "host/check/watch/watch.h"
#include "host/graph/node.h"
#include "host/load/lookup.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <type_traits>

namespace velm::host {

namespace {

// When a module may call a function, by the thread tags of the plug-in interface.
enum class Allowed {
    interface, // [interface thread; not while rendering]
    between,   // [between frames], or on the interface thread while nothing is rendered
    render,    // [render threads], or on the interface thread for previews
    always,
};

const char *const kPhaseNames[] = {"outside all callbacks, on a thread that the host did not call",
                                   "in a callback of the interface thread", "between frames", "while rendering"};

bool isAllowed(Allowed allowed, Phase phase) {
    switch (phase) {
    case Phase::none: return false;
    case Phase::interface: return true;
    case Phase::between: return allowed != Allowed::interface && allowed != Allowed::render;
    case Phase::render: return allowed == Allowed::render || allowed == Allowed::always;
    }
    return false;
}

// Whether this is the host's interface thread. The host also calls the callbacks of panels and inputs there, which are
// not watched, so calls outside all watched callbacks are legal on this thread.
thread_local bool isHostThread = false;

void requireAllowed(const char *name, Allowed allowed) {
    const Phase phase = currentPhase();
    if (phase == Phase::none && isHostThread) return;
    if (!isAllowed(allowed, phase))
        failCheck(fmt::format("it calls {} {}", name, kPhaseNames[static_cast<int>(phase)]));
}

// The live handles of a kind that modules can destroy. [interface thread]
template <class Handle>
std::set<const Handle *> &live() {
    static std::set<const Handle *> handles;
    return handles;
}

template <class Handle>
struct IsTracked : std::false_type {};
template <>
struct IsTracked<HostVParm> : std::true_type {};
template <>
struct IsTracked<HostNodeEditor> : std::true_type {};

template <class Value>
void requireLive(const char *name, Value value) {
    if constexpr (std::is_pointer_v<Value>) {
        using Handle = std::remove_cv_t<std::remove_pointer_t<Value>>;
        if constexpr (IsTracked<Handle>::value)
            if (value && !live<Handle>().contains(value))
                failCheck(fmt::format("it passes {} a handle that was destroyed or never created", name));
    }
}

template <class Value>
void markLive(Value value) {
    if constexpr (std::is_pointer_v<Value>) {
        using Handle = std::remove_cv_t<std::remove_pointer_t<Value>>;
        if constexpr (IsTracked<Handle>::value)
            if (value) live<Handle>().insert(value);
    }
}

template <class Value>
void markDestroyed(Value value) {
    if constexpr (std::is_pointer_v<Value>) {
        using Handle = std::remove_cv_t<std::remove_pointer_t<Value>>;
        if constexpr (IsTracked<Handle>::value) live<Handle>().erase(value);
    }
}

template <class Table>
Table realTable{}; // the host's own

template <auto member>
struct WatchedMember;

// The watched function that replaces one member of a table.
template <class Table, class Result, class... Arguments, Result (*Table::*member)(Arguments...)>
struct WatchedMember<member> {
    static inline const char *name = "";
    static inline Allowed allowed = Allowed::interface;
    static inline bool destroys = false;

    static Result call(Arguments... arguments) {
        requireAllowed(name, allowed);
        if (allowed == Allowed::interface) (requireLive(name, arguments), ...);
        if (destroys) (markDestroyed(arguments), ...);
        if constexpr (std::is_void_v<Result>) {
            (realTable<Table>.*member)(arguments...);
        } else {
            Result result = (realTable<Table>.*member)(arguments...);
            if (allowed == Allowed::interface) markLive(result);
            return result;
        }
    }
};

template <auto member>
struct TableOf;
template <class Table, class Function, Function *Table::*member>
struct TableOf<member> {
    using Type = Table;
};

template <class Table>
Table watchedTable{}; // what the module gets

template <auto member>
void watch(const char *name, Allowed allowed = Allowed::interface) {
    using Table = typename TableOf<member>::Type;
    WatchedMember<member>::name = name;
    WatchedMember<member>::allowed = allowed;
    WatchedMember<member>::destroys = std::string_view(name).ends_with(" destroy");
    if (realTable<Table>.*member) watchedTable<Table>.*member = WatchedMember<member>::call;
}

void replaceService(const char *name, void *(*give)()) {
    const Service row[] = {{.name = name, .give = give}};
    offerServices(row);
}

// Replaces a service of the host by a watched copy of its table. `fill` replaces the members of the copy.
template <class Table, class Fill>
void watchTable(const char *service, Fill fill) {
    const void *table = lookup(service, kUseTransient);
    if (!table) return;
    realTable<Table> = *static_cast<const Table *>(table);
    watchedTable<Table> = realTable<Table>;
    fill();
    replaceService(service, [] { return static_cast<void *>(&watchedTable<Table>); });
}

// Fails the check if the value belongs to another evaluation than the one that the thread is in.
void setValue(HostNodeValue *value, const void *result) {
    requireAllowed("NodeOutputFuncs set value", Allowed::render);
    EvaluationWatch &now = currentEvaluation();
    if (value != now.value) failCheck("it sets the value of another evaluation than the one it was called for");
    ++now.sets;
    realTable<HostNodeOutputFuncs>.setValue(value, result);
}

// The budget of the calling thread; negative: unlimited.
thread_local long inputsLeft = -1;
thread_local int largestInteger = 0;

int evaluateInput(HostInput *input, ShadingSample *sample, void *value) {
    requireAllowed("NodeInputFuncs evaluate", Allowed::render);
    if (inputsLeft < 0) return realTable<HostNodeInputFuncs>.evaluate(input, sample, value);
    if (inputsLeft == 0) return 0;
    --inputsLeft;
    const int isConnected = realTable<HostNodeInputFuncs>.evaluate(input, sample, value);
    if (isConnected && input->type == kConnectInteger) {
        int &integer = *static_cast<int *>(value);
        integer = std::clamp(integer, -largestInteger, largestInteger);
    }
    return isConnected;
}

HostInstanceUpdate *realUpdate;
void update(const char *className, void *instance) {
    requireAllowed("Instance Update", Allowed::interface);
    realUpdate(className, instance);
}

HostFileRequestFunc *realRequest;
int request(int version, HostFileRequest *record) {
    requireAllowed("File Request 2", Allowed::interface);
    return realRequest(version, record);
}

void watchNodes() {
    watchTable<HostNodeFuncs>(HOST_NODE_FUNCS, [] {
        watch<&HostNodeFuncs::nodeName>("NodeFuncs node name");
        watch<&HostNodeFuncs::serverUserName>("NodeFuncs server's user name");
        watch<&HostNodeFuncs::channelGroup>("NodeFuncs channel group");
        watch<&HostNodeFuncs::setColour>("NodeFuncs set colour");
        watch<&HostNodeFuncs::setColourRgb>("NodeFuncs set colour by three");
        watch<&HostNodeFuncs::setPreviewType>("NodeFuncs set preview type");
        watch<&HostNodeFuncs::updatePreview>("NodeFuncs update preview");
    });
    watchTable<HostNodeInputFuncs>(HOST_NODE_INPUT_FUNCS, [] {
        watch<&HostNodeInputFuncs::create>("NodeInputFuncs create");
        watch<&HostNodeInputFuncs::destroy>("NodeInputFuncs destroy");
        watchedTable<HostNodeInputFuncs>.evaluate = evaluateInput;
        watch<&HostNodeInputFuncs::isConnected>("NodeInputFuncs is connected");
        watch<&HostNodeInputFuncs::disconnect>("NodeInputFuncs disconnect");
    });
    watchTable<HostNodeOutputFuncs>(HOST_NODE_OUTPUT_FUNCS, [] {
        watch<&HostNodeOutputFuncs::create>("NodeOutputFuncs create");
        watch<&HostNodeOutputFuncs::destroy>("NodeOutputFuncs destroy");
        watchedTable<HostNodeOutputFuncs>.setValue = setValue;
        watch<&HostNodeOutputFuncs::getValue>("NodeOutputFuncs get value", Allowed::render);
        watch<&HostNodeOutputFuncs::askingType>("NodeOutputFuncs asking type", Allowed::render);
    });
    watchTable<HostNodeEditorFuncs>(HOST_NODE_EDITOR_FUNCS, [] {
        watch<&HostNodeEditorFuncs::create>("NodeEditorFuncs create");
        watch<&HostNodeEditorFuncs::destroy>("NodeEditorFuncs destroy");
        watch<&HostNodeEditorFuncs::rename>("NodeEditorFuncs rename");
        watch<&HostNodeEditorFuncs::setEvent>("NodeEditorFuncs set event");
        watch<&HostNodeEditorFuncs::copy>("NodeEditorFuncs copy");
        watch<&HostNodeEditorFuncs::save>("NodeEditorFuncs save");
        watch<&HostNodeEditorFuncs::load>("NodeEditorFuncs load");
        watch<&HostNodeEditorFuncs::init>("NodeEditorFuncs init", Allowed::between);
        watch<&HostNodeEditorFuncs::newTime>("NodeEditorFuncs new time", Allowed::between);
        watch<&HostNodeEditorFuncs::cleanup>("NodeEditorFuncs clean up", Allowed::between);
        watch<&HostNodeEditorFuncs::addRootInput>("NodeEditorFuncs add root input");
        watch<&HostNodeEditorFuncs::setChannelGroup>("NodeEditorFuncs set channel group");
        watch<&HostNodeEditorFuncs::setAutosize>("NodeEditorFuncs set autosize");
        watch<&HostNodeEditorFuncs::openWindow>("NodeEditorFuncs open window");
        watch<&HostNodeEditorFuncs::connect>("NodeEditorFuncs connect");
    });
    watchTable<HostNodeUtilityFuncs>(HOST_NODE_UTILITY_FUNCS, [] {
        watch<&HostNodeUtilityFuncs::blend>("NodeUtilityFuncs blend", Allowed::render);
        watch<&HostNodeUtilityFuncs::autosize>("NodeUtilityFuncs autosize");
        watch<&HostNodeUtilityFuncs::directionMapping>("NodeUtilityFuncs direction mapping", Allowed::render);
        watch<&HostNodeUtilityFuncs::uvMapping>("NodeUtilityFuncs UV mapping", Allowed::render);
        watch<&HostNodeUtilityFuncs::cameraMatrix>("NodeUtilityFuncs camera matrix", Allowed::render);
    });
}

void watchParameters() {
    watchTable<HostVParmFuncs>(HOST_VPARM_FUNCS, [] {
        watch<&HostVParmFuncs::create>("LWVParmFuncs create");
        watch<&HostVParmFuncs::destroy>("LWVParmFuncs destroy");
        watch<&HostVParmFuncs::setUp>("LWVParmFuncs set up");
        watch<&HostVParmFuncs::copy>("LWVParmFuncs copy");
        watch<&HostVParmFuncs::load>("LWVParmFuncs load");
        watch<&HostVParmFuncs::save>("LWVParmFuncs save");
        watch<&HostVParmFuncs::getValue>("LWVParmFuncs get value", Allowed::between);
        watch<&HostVParmFuncs::setValue>("LWVParmFuncs set value");
        watch<&HostVParmFuncs::setState>("LWVParmFuncs set state");
        watch<&HostVParmFuncs::init>("LWVParmFuncs init");
        watch<&HostVParmFuncs::envelopes>("LWVParmFuncs envelopes");
    });
    watchTable<HostEnvelopeFuncs>(HOST_ENVELOPE_FUNCS, [] {
        watch<&HostEnvelopeFuncs::create>("Animation Envelopes create");
        watch<&HostEnvelopeFuncs::destroy>("Animation Envelopes destroy");
        watch<&HostEnvelopeFuncs::createGroup>("Animation Envelopes create group");
        watch<&HostEnvelopeFuncs::destroyGroup>("Animation Envelopes destroy group");
        watch<&HostEnvelopeFuncs::evaluate>("Animation Envelopes evaluate", Allowed::between);
        watch<&HostEnvelopeFuncs::createKey>("Animation Envelopes create key");
    });
}

void watchPanels() {
    watchTable<HostPanelFuncs>(HOST_PANEL_FUNCS, [] {
        watch<&HostPanelFuncs::create>("LWXPanel create");
        watch<&HostPanelFuncs::destroy>("LWXPanel destroy");
        watch<&HostPanelFuncs::describe>("LWXPanel describe");
        watch<&HostPanelFuncs::hint>("LWXPanel hint");
        watch<&HostPanelFuncs::getData>("LWXPanel get data");
        watch<&HostPanelFuncs::setData>("LWXPanel set data");
        watch<&HostPanelFuncs::getValue>("LWXPanel get value");
        watch<&HostPanelFuncs::setValue>("LWXPanel set value");
        watch<&HostPanelFuncs::viewInstance>("LWXPanel view instance");
        watch<&HostPanelFuncs::refresh>("LWXPanel refresh");
        watch<&HostPanelFuncs::post>("LWXPanel post");
        watch<&HostPanelFuncs::open>("LWXPanel open");
    });
    if (void *service = lookup(HOST_INSTANCE_UPDATE, kUseTransient)) {
        realUpdate = reinterpret_cast<HostInstanceUpdate *>(service);
        replaceService(HOST_INSTANCE_UPDATE, [] { return reinterpret_cast<void *>(update); });
    }
    if (void *service = lookup(HOST_FILE_REQUEST, kUseTransient)) {
        realRequest = reinterpret_cast<HostFileRequestFunc *>(service);
        replaceService(HOST_FILE_REQUEST, [] { return reinterpret_cast<void *>(request); });
    }
}

void watchImages() {
    watchTable<HostImageList>(HOST_IMAGE_LIST, [] {
        watch<&HostImageList::load>("LW Image List load");
        watch<&HostImageList::needAntialiasing>("LW Image List need antialiasing");
        watch<&HostImageList::clear>("LW Image List clear");
        watch<&HostImageList::loadReference>("LW Image List load reference");
        watch<&HostImageList::saveReference>("LW Image List save reference");
        watch<&HostImageList::size>("LW Image List size", Allowed::always);
        watch<&HostImageList::rgb>("LW Image List rgb", Allowed::render);
        watch<&HostImageList::rgbSpot>("LW Image List rgb spot", Allowed::render);
        watch<&HostImageList::alpha>("LW Image List alpha", Allowed::render);
    });
}

} // namespace

EvaluationBudget::EvaluationBudget(long inputs, int largest) {
    inputsLeft = inputs;
    largestInteger = largest;
}
EvaluationBudget::~EvaluationBudget() { inputsLeft = -1; }

void watchServices() {
    isHostThread = true;
    static bool done = false;
    if (done) return;
    done = true;
    watchNodes();
    watchParameters();
    watchPanels();
    watchImages();
}

LiveHandles liveHandles() {
    return {static_cast<long>(live<HostVParm>().size()), static_cast<long>(live<HostNodeEditor>().size())};
}

} // namespace velm::host

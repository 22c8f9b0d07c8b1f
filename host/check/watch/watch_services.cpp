// The calls of the module into the host.
#include "host/check/process/check_record.h"
#include "host/check/watch/watch.h"
#include "host/graph/node.h"
#include "host/load/lookup.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <type_traits>

namespace velm::host {

namespace {

// Which of the module's callbacks may call, after the wall's tags.
enum class Allowed {
    interface, // [interface thread; not while rendering]
    between,   // [between frames], and the interface thread where nothing is rendered
    render,    // [render threads], and the interface thread for previews
    always,
};

const char *const kPhaseNames[] = {"outside of all callbacks, on a thread that the host did not call",
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

// Callbacks of panels and inputs are called by the host's own code, on the interface thread.
thread_local bool isHostThread = false;

void mayCall(const char *name, Allowed allowed) {
    const Phase phase = currentPhase();
    if (phase == Phase::none && isHostThread) return;
    if (!isAllowed(allowed, phase))
        failCheck("it calls " + std::string(name) + " " + kPhaseNames[static_cast<int>(phase)]);
}

// Handles of the kinds that a module can have destroyed. Only what is called on the interface thread looks here.
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
void mustLive(const char *name, Value value) {
    if constexpr (std::is_pointer_v<Value>) {
        using Handle = std::remove_cv_t<std::remove_pointer_t<Value>>;
        if constexpr (IsTracked<Handle>::value)
            if (value && !live<Handle>().contains(value))
                failCheck("it hands " + std::string(name) + " a handle that was destroyed or never made");
    }
}

template <class Value>
void nowLives(Value value) {
    if constexpr (std::is_pointer_v<Value>) {
        using Handle = std::remove_cv_t<std::remove_pointer_t<Value>>;
        if constexpr (IsTracked<Handle>::value)
            if (value) live<Handle>().insert(value);
    }
}

template <class Value>
void nowGone(Value value) {
    if constexpr (std::is_pointer_v<Value>) {
        using Handle = std::remove_cv_t<std::remove_pointer_t<Value>>;
        if constexpr (IsTracked<Handle>::value) live<Handle>().erase(value);
    }
}

template <class Table>
Table real{};

template <auto member>
struct Passed;

// The function that stands for one member of a table.
template <class Table, class Result, class... Arguments, Result (*Table::*member)(Arguments...)>
struct Passed<member> {
    static inline const char *name = "";
    static inline Allowed allowed = Allowed::interface;
    static inline bool destroys = false;

    static Result call(Arguments... arguments) {
        mayCall(name, allowed);
        if (allowed == Allowed::interface) (mustLive(name, arguments), ...);
        if (destroys) (nowGone(arguments), ...);
        // What the host calls in its turn is the interface thread's, or an evaluation that is entered anew.
        if constexpr (std::is_void_v<Result>) {
            (real<Table>.*member)(arguments...);
        } else {
            Result result = (real<Table>.*member)(arguments...);
            if (allowed == Allowed::interface) nowLives(result);
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
Table passing{}; // what the module is given

template <auto member>
void pass(const char *name, Allowed allowed = Allowed::interface) {
    using Table = typename TableOf<member>::Type;
    Passed<member>::name = name;
    Passed<member>::allowed = allowed;
    Passed<member>::destroys = std::string_view(name).ends_with(" destroy");
    if (real<Table>.*member) passing<Table>.*member = Passed<member>::call;
}

void replaceService(const char *name, void *(*give)()) {
    const Service row[] = {{.name = name, .give = give}};
    offerServices(row);
}

// Replaces a table of the host by its watched copy.
template <class Table, class Fill>
void watchTable(const char *service, Fill fill) {
    const void *table = lookup(service, kUseTransient);
    if (!table) return;
    real<Table> = *static_cast<const Table *>(table);
    passing<Table> = real<Table>;
    fill();
    replaceService(service, [] { return static_cast<void *>(&passing<Table>); });
}

// A result belongs to the evaluation that the thread is in, and to no other.
void setValue(HostNodeValue *value, const void *result) {
    mayCall("NodeOutputFuncs set value", Allowed::render);
    EvaluationWatch &now = currentEvaluation();
    if (value != now.value) failCheck("it sets the value of another evaluation than the one that it was called for");
    ++now.sets;
    real<HostNodeOutputFuncs>.setValue(value, result);
}

// Of a ShortEvaluation; below 0: as many as there are.
thread_local long inputsLeft = -1;
thread_local int largestWhole = 0;

int evaluateInput(HostInput *input, ShadingSample *sample, void *value) {
    mayCall("NodeInputFuncs evaluate", Allowed::render);
    if (inputsLeft < 0) return real<HostNodeInputFuncs>.evaluate(input, sample, value);
    if (inputsLeft == 0) return 0;
    --inputsLeft;
    const int given = real<HostNodeInputFuncs>.evaluate(input, sample, value);
    if (given && input->type == kConnectInteger) {
        int &whole = *static_cast<int *>(value);
        whole = std::clamp(whole, -largestWhole, largestWhole);
    }
    return given;
}

HostInstanceUpdate *realUpdate;
void update(const char *className, void *instance) {
    mayCall("Instance Update", Allowed::interface);
    realUpdate(className, instance);
}

HostFileRequestFunc *realRequest;
int request(int version, HostFileRequest *record) {
    mayCall("File Request 2", Allowed::interface);
    return realRequest(version, record);
}

void watchNodes() {
    watchTable<HostNodeFuncs>(HOST_NODE_FUNCS, [] {
        pass<&HostNodeFuncs::nodeName>("NodeFuncs node name");
        pass<&HostNodeFuncs::serverUserName>("NodeFuncs server's user name");
        pass<&HostNodeFuncs::channelGroup>("NodeFuncs channel group");
        pass<&HostNodeFuncs::setColour>("NodeFuncs set colour");
        pass<&HostNodeFuncs::setColourRgb>("NodeFuncs set colour by three");
        pass<&HostNodeFuncs::setPreviewType>("NodeFuncs set preview type");
        pass<&HostNodeFuncs::updatePreview>("NodeFuncs update preview");
    });
    watchTable<HostNodeInputFuncs>(HOST_NODE_INPUT_FUNCS, [] {
        pass<&HostNodeInputFuncs::create>("NodeInputFuncs create");
        pass<&HostNodeInputFuncs::destroy>("NodeInputFuncs destroy");
        passing<HostNodeInputFuncs>.evaluate = evaluateInput;
        pass<&HostNodeInputFuncs::isConnected>("NodeInputFuncs is connected");
        pass<&HostNodeInputFuncs::disconnect>("NodeInputFuncs disconnect");
    });
    watchTable<HostNodeOutputFuncs>(HOST_NODE_OUTPUT_FUNCS, [] {
        pass<&HostNodeOutputFuncs::create>("NodeOutputFuncs create");
        pass<&HostNodeOutputFuncs::destroy>("NodeOutputFuncs destroy");
        passing<HostNodeOutputFuncs>.setValue = setValue;
        pass<&HostNodeOutputFuncs::getValue>("NodeOutputFuncs get value", Allowed::render);
        pass<&HostNodeOutputFuncs::askingType>("NodeOutputFuncs asking type", Allowed::render);
    });
    watchTable<HostNodeEditorFuncs>(HOST_NODE_EDITOR_FUNCS, [] {
        pass<&HostNodeEditorFuncs::create>("NodeEditorFuncs create");
        pass<&HostNodeEditorFuncs::destroy>("NodeEditorFuncs destroy");
        pass<&HostNodeEditorFuncs::rename>("NodeEditorFuncs rename");
        pass<&HostNodeEditorFuncs::setEvent>("NodeEditorFuncs set event");
        pass<&HostNodeEditorFuncs::copy>("NodeEditorFuncs copy");
        pass<&HostNodeEditorFuncs::save>("NodeEditorFuncs save");
        pass<&HostNodeEditorFuncs::load>("NodeEditorFuncs load");
        pass<&HostNodeEditorFuncs::init>("NodeEditorFuncs init", Allowed::between);
        pass<&HostNodeEditorFuncs::newTime>("NodeEditorFuncs new time", Allowed::between);
        pass<&HostNodeEditorFuncs::cleanup>("NodeEditorFuncs clean up", Allowed::between);
        pass<&HostNodeEditorFuncs::addRootInput>("NodeEditorFuncs add root input");
        pass<&HostNodeEditorFuncs::setChannelGroup>("NodeEditorFuncs set channel group");
        pass<&HostNodeEditorFuncs::setAutosize>("NodeEditorFuncs set autosize");
        pass<&HostNodeEditorFuncs::openWindow>("NodeEditorFuncs open window");
        pass<&HostNodeEditorFuncs::connect>("NodeEditorFuncs connect");
    });
    watchTable<HostNodeUtilityFuncs>(HOST_NODE_UTILITY_FUNCS, [] {
        pass<&HostNodeUtilityFuncs::blend>("NodeUtilityFuncs blend", Allowed::render);
        pass<&HostNodeUtilityFuncs::autosize>("NodeUtilityFuncs autosize");
        pass<&HostNodeUtilityFuncs::directionMapping>("NodeUtilityFuncs direction mapping", Allowed::render);
        pass<&HostNodeUtilityFuncs::uvMapping>("NodeUtilityFuncs UV mapping", Allowed::render);
        pass<&HostNodeUtilityFuncs::cameraMatrix>("NodeUtilityFuncs camera matrix", Allowed::render);
    });
}

void watchParameters() {
    watchTable<HostVParmFuncs>(HOST_VPARM_FUNCS, [] {
        pass<&HostVParmFuncs::create>("LWVParmFuncs create");
        pass<&HostVParmFuncs::destroy>("LWVParmFuncs destroy");
        pass<&HostVParmFuncs::setUp>("LWVParmFuncs set up");
        pass<&HostVParmFuncs::copy>("LWVParmFuncs copy");
        pass<&HostVParmFuncs::load>("LWVParmFuncs load");
        pass<&HostVParmFuncs::save>("LWVParmFuncs save");
        pass<&HostVParmFuncs::getValue>("LWVParmFuncs get value", Allowed::between);
        pass<&HostVParmFuncs::setValue>("LWVParmFuncs set value");
        pass<&HostVParmFuncs::setState>("LWVParmFuncs set state");
        pass<&HostVParmFuncs::init>("LWVParmFuncs init");
        pass<&HostVParmFuncs::envelopes>("LWVParmFuncs envelopes");
    });
    watchTable<HostEnvelopeFuncs>(HOST_ENVELOPE_FUNCS, [] {
        pass<&HostEnvelopeFuncs::create>("Animation Envelopes create");
        pass<&HostEnvelopeFuncs::destroy>("Animation Envelopes destroy");
        pass<&HostEnvelopeFuncs::createGroup>("Animation Envelopes create group");
        pass<&HostEnvelopeFuncs::destroyGroup>("Animation Envelopes destroy group");
        pass<&HostEnvelopeFuncs::evaluate>("Animation Envelopes evaluate", Allowed::between);
        pass<&HostEnvelopeFuncs::createKey>("Animation Envelopes create key");
    });
}

void watchPanels() {
    watchTable<HostPanelFuncs>(HOST_PANEL_FUNCS, [] {
        pass<&HostPanelFuncs::create>("LWXPanel create");
        pass<&HostPanelFuncs::destroy>("LWXPanel destroy");
        pass<&HostPanelFuncs::describe>("LWXPanel describe");
        pass<&HostPanelFuncs::hint>("LWXPanel hint");
        pass<&HostPanelFuncs::getData>("LWXPanel get data");
        pass<&HostPanelFuncs::setData>("LWXPanel set data");
        pass<&HostPanelFuncs::getValue>("LWXPanel get value");
        pass<&HostPanelFuncs::setValue>("LWXPanel set value");
        pass<&HostPanelFuncs::viewInstance>("LWXPanel view instance");
        pass<&HostPanelFuncs::refresh>("LWXPanel refresh");
        pass<&HostPanelFuncs::post>("LWXPanel post");
        pass<&HostPanelFuncs::open>("LWXPanel open");
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
        pass<&HostImageList::load>("LW Image List load");
        pass<&HostImageList::needAntialiasing>("LW Image List need antialiasing");
        pass<&HostImageList::clear>("LW Image List clear");
        pass<&HostImageList::loadReference>("LW Image List load reference");
        pass<&HostImageList::saveReference>("LW Image List save reference");
        pass<&HostImageList::size>("LW Image List size", Allowed::always);
        pass<&HostImageList::rgb>("LW Image List rgb", Allowed::render);
        pass<&HostImageList::rgbSpot>("LW Image List rgb spot", Allowed::render);
        pass<&HostImageList::alpha>("LW Image List alpha", Allowed::render);
    });
}

} // namespace

ShortEvaluation::ShortEvaluation(long inputs, int largest) {
    inputsLeft = inputs;
    largestWhole = largest;
}
ShortEvaluation::~ShortEvaluation() { inputsLeft = -1; }

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

HandlesInUse handlesInUse() {
    return {static_cast<long>(live<HostVParm>().size()), static_cast<long>(live<HostNodeEditor>().size())};
}

} // namespace velm::host

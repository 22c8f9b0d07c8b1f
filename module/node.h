// The frame that every node is built on. A node class describes itself in tables: its parameters, its outputs, the
// services it needs. From these tables the frame activates the class, creates, copies, saves, loads and destroys its
// instances, and updates their parameters at each frame. A node's own file holds what is particular to the node: above
// all, what it computes.
//
// An instance is a standard-layout record, allocated zero-filled. The tables refer to its fields by their offsets.
#pragma once

#include "module/host.h"

#include <cstddef>
#include <span>
#include <type_traits>

namespace velm::plugin {

// ---- Services --------------------------------------------------------------------------------------------------

// The services that every node uses. Each node class has a record of its own, filled when the class is activated.
struct NodeServices {
    const HostNodeFuncs *nodeFunc;
    const HostNodeEditorFuncs *nodeEditorFunc;
    const HostNodeInputFuncs *nodeInputFunc;
    const HostNodeOutputFuncs *nodeOutputFunc;
    const HostVParmFuncs *vparmf;  // null in a class without parameter services
    const HostEnvelopeFuncs *envf; // likewise
    const HostPanelFuncs *xpanf;   // null, as the next, until the class's interface is activated
    HostInstanceUpdate *lwupdate;
};

// A further service that a node class looks up at activation, after the node services and before the parameter
// services.
struct FurtherService {
    enum class Rule {
        required,        // activation fails without it
        systemWord,      // "System ID", which tells the application; activation fails here if a row before has failed
        unlessModelling, // required, except in the modelling application, where it is null and not looked up
    };
    const char *name;
    Rule rule = Rule::required;
    void (*store)(void *found) = nullptr; // see storeIn; not called for systemWord
};

// Stores a service in the pointer that is the template's argument, a variable of the node class.
template <auto &pointer>
void storeIn(void *found) {
    using Pointer = std::remove_reference_t<decltype(pointer)>;
    if constexpr (std::is_function_v<std::remove_pointer_t<Pointer>>)
        pointer = reinterpret_cast<Pointer>(found);
    else
        pointer = static_cast<Pointer>(found);
}

// ---- Parameters and outputs --------------------------------------------------------------------------------------

// A colour or a vector, as connections carry it.
struct Vec3 {
    double c[3];
};

// An animated parameter: its value at the current time, and the host's parameter, which the instance owns. The host's
// parameter is null if it could not be created.
struct ScalarParameter {
    double value;
    HostVParm *parm;
};
struct Vec3Parameter {
    double value[3];
    HostVParm *parm;
};

inline constexpr size_t kNowhere = static_cast<size_t>(-1); // the offset of a field that a record does not have

// What a row of a parameter table holds in the instance.
enum class Holds : unsigned char {
    nothing,  // an input without a value, a button, a drawing
    integer,  // an int: a popup, a check box, a count
    scalar,   // a ScalarParameter
    vec3,     // a Vec3Parameter
    bareVec3, // a Vec3Parameter that the frame creates and otherwise leaves alone: it is never read, saved, loaded,
              // copied or destroyed
    text,     // a zero-terminated char array
};

// One parameter: a field of the instance and a row here. Panels show the rows in this order, and values are read,
// copied, saved and loaded in it, except that saving and loading take integers first, then texts, then animated
// parameters. Controls are numbered from kFirstControl in row order.
struct Parameter {
    const char *label = nullptr;   // on the panel; also names the channel and the input, unless they have names below
    const char *channel = nullptr; // name of the channel
    Holds holds = Holds::nothing;
    bool copied = true;       // false for an integer or a text that copying an instance leaves as it is
    bool createdLast = false; // its host parameter and its input are created after those of the rows without this
    int parmType = 0;         // kParmFloat and so on, of an animated parameter
    double initial[3] = {0, 0, 0};
    size_t field = kNowhere;          // offset of the int, ScalarParameter, Vec3Parameter or char array
    size_t textSize = 0;              // bytes of a char array, at least 256
    HostBlockId block = {0, nullptr}; // the row's own, in a class that saves tagged blocks

    int input = 0;                   // connection type of its input; 0 if it has none
    const char *inputName = nullptr; // name of the input
    size_t inputField = kNowhere;    // of an input without a parameter: offset of the HostInput * in the connections

    const char *control = nullptr;        // "iPopChoice", "float-env" and so on; null if the row is not on the panel
    const char *const *texts = nullptr;   // entries of a popup, ended by null
    HostPopupCount *popupCount = nullptr; // of a popup whose entries are made at run time
    HostPopupName *popupName = nullptr;
    std::span<const int> transform = {}; // values of the entries of an "iPopTransform"
    HostPanelButton *button = nullptr;
    HostPanelDraw *draw = nullptr;
};

// An output. The rows are in creation order.
struct Output {
    const char *name;
    int type;     // kConnectScalar and so on
    size_t field; // offset of the HostOutput * in the connections
};

// ---- The record of an instance -----------------------------------------------------------------------------------

// Where the frame finds its fields in an instance.
struct RecordLayout {
    size_t size;
    size_t node;              // offset of the HostNode *
    size_t panel = kNowhere;  // of the HostPanel *
    size_t group = kNowhere;  // of the HostChannelGroup * of the parameters' envelopes; without it none is created
    size_t inputs = kNowhere; // of the HostInput * of the parameters, in creation order
    size_t connections = 0;   // of the handles of the outputs, and of the inputs without a parameter
};

// The record of a class with parameters. The node's file defines `Fields`, which holds its state and its parameters,
// and `Connections`, which holds the handles of its inputs without a parameter, and of its outputs.
template <class Fields, size_t inputCount, class Connections>
struct InstanceRecord {
    Fields fields;
    HostChannelGroup *group;
    HostPanel *panel; // null until the panel is first built
    HostNode *node;
    HostInput *inputs[inputCount];
    Connections connections;
};

template <class Record>
inline constexpr RecordLayout layoutOf = {
    .size = sizeof(Record),
    .node = offsetof(Record, node),
    .panel = offsetof(Record, panel),
    .group = offsetof(Record, group),
    .inputs = offsetof(Record, inputs),
    .connections = offsetof(Record, connections),
};

// The field of an instance at an offset.
template <class Field>
Field &fieldAt(void *instance, size_t offset) {
    return *reinterpret_cast<Field *>(static_cast<char *>(instance) + offset);
}
template <class Field>
const Field &fieldAt(const void *instance, size_t offset) {
    return *reinterpret_cast<const Field *>(static_cast<const char *>(instance) + offset);
}

// ---- The node class ----------------------------------------------------------------------------------------------

inline constexpr int kNoPreviewType = -1; // leaves the node's preview as the host has it

// All that the frame knows of a node class. A hook that is null adds nothing to what every node does. Each is called
// from the callback of its name, on that callback's thread.
struct NodeClass {
    const char *name;                // display name
    const char *groupName = nullptr; // of the envelope group, if it is not the display name
    const int *colour;               // the node's title colour: red, green, blue, from 0 to 255
    int previewType = kNoPreviewType;
    bool fetchesParameterServices = true; // looks up "LWVParmFuncs 2" and "Animation Envelopes" at activation
    NodeServices *services;
    std::span<const FurtherService> furtherServices = {};
    std::span<const Parameter> parameters = {};
    std::span<const Output> outputs = {};
    RecordLayout record;
    size_t freshFlags = kNowhere; // offset of an int[kMaxThreads], set to 1 at creation and when rendering starts

    // Called when all services have been found.
    void (*activated)() = nullptr;
    // Called when the defaults are set and nothing has been created. `priv` is the host's lookup function. Returning a
    // text makes creation fail with this text.
    const char *(*prepare)(void *instance, void *priv) = nullptr;
    void (*created)(void *instance) = nullptr; // called last; inputs and outputs exist
    void (*destroying)(void *instance) = nullptr;
    HostError (*copied)(void *to, void *from) = nullptr;                         // called when the rows are copied
    HostError (*saveMore)(void *instance, const HostSaveState *state) = nullptr; // between texts and parameters
    HostError (*loadMore)(void *instance, const HostLoadState *state) = nullptr; // likewise
    void (*loaded)(void *instance) = nullptr;                                    // called when loading has succeeded
    HostError (*init)(void *instance, int mode) = nullptr;
    void (*cleanup)(void *instance) = nullptr;
    HostError (*newTime)(void *instance, int frame, double time) = nullptr; // called when the parameters have been read
    bool savesBlocks = false; // saves each row in a tagged block, and loads the blocks in any order

    // Stores a value that was set on the panel. Returning kSetUnknown leaves it to the frame.
    int (*setValue)(void *instance, unsigned int id, void *value) = nullptr;
    // Called after the frame has dealt with a change on the panel; gives the result of the change notification.
    int (*changed)(void *instance, HostPanel *panel, unsigned int control, int event) = nullptr;
};

// The most blocks of a class that saves blocks: loading has a table of this size on the stack.
inline constexpr size_t kMostBlocks = 32;

constexpr size_t blockCount(const NodeClass &nodeClass) {
    size_t count = 0;
    for (const Parameter &row : nodeClass.parameters)
        if (row.block.id != 0) ++count;
    return count;
}

// ---- The order of rows -------------------------------------------------------------------------------------------

// Whether a row's input is among InstanceRecord::inputs.
constexpr bool isInputOfParameter(const Parameter &row) { return row.input != 0 && row.inputField == kNowhere; }

// The length of InstanceRecord::inputs.
constexpr size_t inputCount(std::span<const Parameter> parameters) {
    size_t count = 0;
    for (const Parameter &row : parameters)
        if (isInputOfParameter(row)) ++count;
    return count;
}

// The offset of the HostInput * of the row at `index`, which has an input.
constexpr size_t inputOffset(const NodeClass &nodeClass, size_t index) {
    const auto parameters = nodeClass.parameters;
    if (!isInputOfParameter(parameters[index])) return nodeClass.record.connections + parameters[index].inputField;
    size_t createdBefore = 0;
    for (size_t i = 0; i < parameters.size(); ++i) {
        if (!isInputOfParameter(parameters[i])) continue;
        const bool isLast = parameters[i].createdLast, thisIsLast = parameters[index].createdLast;
        if (isLast == thisIsLast ? i < index : thisIsLast) ++createdBefore;
    }
    return nodeClass.record.inputs + createdBefore * sizeof(HostInput *);
}

// Not constexpr: a constant expression that comes here does not compile.
inline void noRowHasThisField() {}

// The index of the row whose field is at an offset. To be used in constant expressions only.
constexpr size_t rowWithField(std::span<const Parameter> parameters, size_t field) {
    for (size_t i = 0; i < parameters.size(); ++i)
        if (parameters[i].field == field) return i;
    noRowHasThisField();
    return 0;
}

// ---- What the callbacks of a node class call ---------------------------------------------------------------------

struct NodeCallbacks {
    void *(*create)(void *priv, void *node, const char **error);
    void (*destroy)(void *instance);
    HostError (*copy)(void *to, void *from);
    HostError (*load)(void *instance, const HostLoadState *state);
    HostError (*save)(void *instance, const HostSaveState *state);
    HostError (*init)(void *instance, int mode);
    void (*cleanup)(void *instance);
    HostError (*newTime)(void *instance, int frame, double time);
    void (*evaluate)(void *instance, ShadingSample *sample, HostOutput *output, HostNodeValue *value);
};

int activateHandler(const NodeClass &nodeClass, const NodeCallbacks &callbacks, int version, HostLookup *lookup,
                    void *local);
void *createInstance(const NodeClass &nodeClass, HostInputEvent *inputEvent, void *priv, void *node,
                     const char **error);
void destroyInstance(const NodeClass &nodeClass, void *instance);
HostError copyInstance(const NodeClass &nodeClass, void *to, void *from);
HostError loadInstance(const NodeClass &nodeClass, void *instance, const HostLoadState *state);
HostError saveInstance(const NodeClass &nodeClass, void *instance, const HostSaveState *state);
HostError initInstance(const NodeClass &nodeClass, void *instance, int mode);
void cleanUpInstance(const NodeClass &nodeClass, void *instance);
HostError newTimeInstance(const NodeClass &nodeClass, void *instance, int frame, double time);
int inputEvent(const NodeClass &nodeClass, void *instance, int event);

// Reads every animated parameter at a time, in seconds, into its stored value. [between frames]
void readParameters(const NodeClass &nodeClass, void *instance, double time);

// Creates an animated parameter of a type (kParmFloat and so on), with its channel in a group and with one or three
// numbers as its value. The caller owns it. Null if the host cannot create it. [interface thread; not while rendering]
HostVParm *createParameter(const NodeServices &services, int type, const char *name, HostChannelGroup *group,
                           const double *value);

} // namespace velm::plugin

// The functions of a node class that are visible to the rest of the module.
#define VELM_DECLARE_TAGS(Name) extern const HostTag Name##_ServerTags[]
#define VELM_DECLARE_NODE(Name)                                                                                        \
    int Name##_Activate(int version, HostLookup *lookup, void *local, void *serverData);                               \
    void Name##_get_vpValues(void *instance, double time);                                                             \
    HostVParm *Name##_create_vpenv(int type, const char *name, HostChannelGroup *group, const double *value)

// Defines the tags of a node class that the host offers: its display name, and its group of the node menu.
#define VELM_DEFINE_TAGS(Name, nodeClass, menu)                                                                        \
    const HostTag Name##_ServerTags[] = {{.text = (nodeClass).name, .code = kTagUserName},                             \
                                         {.text = (menu), .code = kTagMenu},                                           \
                                         {.text = nullptr, .code = 0}};

// Defines the callbacks of a node class under their outside names, in namespace velm::plugin. Name_Evaluate is the
// node's own and must be defined before.
#define VELM_DEFINE_NODE(Name, nodeClass)                                                                              \
    static_assert(blockCount(nodeClass) <= kMostBlocks, #Name " has more blocks than loading has room for");           \
    static int Name##_nodeInputEvent(void *instance, HostInput *, int event, int) {                                    \
        return inputEvent(nodeClass, instance, event);                                                                 \
    }                                                                                                                  \
    static void *Name##_Create(void *priv, void *node, const char **error) {                                           \
        return createInstance(nodeClass, Name##_nodeInputEvent, priv, node, error);                                    \
    }                                                                                                                  \
    static void Name##_Destroy(void *instance) { destroyInstance(nodeClass, instance); }                               \
    static HostError Name##_Copy(void *to, void *from) { return copyInstance(nodeClass, to, from); }                   \
    static HostError Name##_Load(void *instance, const HostLoadState *state) {                                         \
        return loadInstance(nodeClass, instance, state);                                                               \
    }                                                                                                                  \
    static HostError Name##_Save(void *instance, const HostSaveState *state) {                                         \
        return saveInstance(nodeClass, instance, state);                                                               \
    }                                                                                                                  \
    static HostError Name##_Init(void *instance, int mode) { return initInstance(nodeClass, instance, mode); }         \
    static void Name##_Cleanup(void *instance) { cleanUpInstance(nodeClass, instance); }                               \
    static HostError Name##_NewTime(void *instance, int frame, double time) {                                          \
        return newTimeInstance(nodeClass, instance, frame, time);                                                      \
    }                                                                                                                  \
    void Name##_get_vpValues(void *instance, double time) { readParameters(nodeClass, instance, time); }               \
    HostVParm *Name##_create_vpenv(int type, const char *name, HostChannelGroup *group, const double *value) {         \
        return createParameter(*(nodeClass).services, type, name, group, value);                                       \
    }                                                                                                                  \
    int Name##_Activate(int version, HostLookup *lookup, void *local, void *) {                                        \
        static constexpr NodeCallbacks callbacks = {.create = Name##_Create,                                           \
                                                    .destroy = Name##_Destroy,                                         \
                                                    .copy = Name##_Copy,                                               \
                                                    .load = Name##_Load,                                               \
                                                    .save = Name##_Save,                                               \
                                                    .init = Name##_Init,                                               \
                                                    .cleanup = Name##_Cleanup,                                         \
                                                    .newTime = Name##_NewTime,                                         \
                                                    .evaluate = Name##_Evaluate};                                      \
        return activateHandler(nodeClass, callbacks, version, lookup, local);                                          \
    }

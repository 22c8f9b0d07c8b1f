// The frame that every node stands on. A node describes itself in tables: its parameters, its outputs, the services it
// needs. From those tables the frame activates its class, creates, copies, saves, loads and destroys its instances,
// and reads its parameters at each frame and each sample. A node's own file keeps what is the node's own: what it
// computes.
//
// An instance is a standard-layout record, allocated zero-filled; tables name its fields by their offsets.
#pragma once

#include "module/host.h"

#include <cstddef>
#include <span>
#include <type_traits>

namespace velm::plugin {

// ---- Services --------------------------------------------------------------------------------------------------

// The services that every node fetches. Each unit keeps a record of its own, filled when its class is activated.
struct NodeServices {
    const HostNodeFuncs *nodeFunc;
    const HostNodeEditorFuncs *nodeEditorFunc;
    const HostNodeInputFuncs *nodeInputFunc;
    const HostNodeOutputFuncs *nodeOutputFunc;
    const HostVParmFuncs *vparmf;
    const HostEnvelopeFuncs *envf;
    const HostPanelFuncs *xpanf;
    HostInstanceUpdate *lwupdate;
};

// A further service that a unit fetches at activation, between the node services and the parameter services.
struct FurtherService {
    enum class Rule {
        required,        // activation fails without it
        systemWord,      // "System ID": the word that the next rule heeds; it closes the group of services before it
        unlessModelling, // required, but not fetched, and null, in the modelling application
    };
    const char *name;
    Rule rule = Rule::required;
    void (*store)(void *found) = nullptr; // see storeIn
};

// Stores a found service in a unit's own pointer, which is the template's argument.
template <auto &pointer>
void storeIn(void *found) {
    using Pointer = std::remove_reference_t<decltype(pointer)>;
    if constexpr (std::is_function_v<std::remove_pointer_t<Pointer>>)
        pointer = reinterpret_cast<Pointer>(found);
    else
        pointer = static_cast<Pointer>(found);
}

// ---- Parameters and outputs --------------------------------------------------------------------------------------

// A colour or a vector, as a value that connections carry.
struct Vec3 {
    double c[3];
};

// The current value of an animated parameter, and the host's parameter behind it.
struct ScalarParameter {
    double value;
    HostVParm *parm;
};
struct Vec3Parameter {
    double value[3];
    HostVParm *parm;
};

inline constexpr size_t kNowhere = static_cast<size_t>(-1); // an offset that a table row leaves out

// What a row of a parameter table holds in the instance.
enum class Holds : unsigned char {
    nothing,  // an input, a button, a drawing
    integer,  // an int: a popup, a check box, a count
    scalar,   // a ScalarParameter
    vec3,     // a Vec3Parameter
    bareVec3, // a Vec3Parameter that is created with the node and then left alone: neither read nor saved, loaded,
              // copied or released
    text,     // a zero-terminated char array
};

// One parameter: one field of the instance and one row here. The order of the rows is the order of the panel, and that
// in which values are read, copied, saved and loaded (integers first, then texts, then animated parameters).
struct Parameter {
    const char *label = nullptr;   // on the panel, and the name of the channel and the input unless they say otherwise
    const char *channel = nullptr; // name of the channel where it is not the label
    Holds holds = Holds::nothing;
    bool copied = true;       // false: an integer or a text of which a copy keeps its own
    bool createdLast = false; // its parameter and its input are created after those of all other rows
    int parmType = 0;         // kParmFloat and so on, of an animated parameter
    double initial[3] = {0, 0, 0};
    size_t field = kNowhere;          // the int, ScalarParameter, Vec3Parameter or char array
    size_t textSize = 0;              // bytes of a char array, 256 at least
    HostBlockId block = {0, nullptr}; // in a unit that saves tagged blocks: the row's own

    int input = 0;                   // connection type of its input; 0: none
    const char *inputName = nullptr; // where it is not the label
    size_t inputField = kNowhere;    // the HostInput *

    unsigned int id = 0;                  // of its control: 0x8001 and on, in row order; 0: not on the panel
    const char *control = nullptr;        // "iPopChoice", "float-env" and so on
    const char *const *texts = nullptr;   // entries of a popup, ended by null
    HostPopupCount *popupCount = nullptr; // a popup whose entries are made at run time
    HostPopupName *popupName = nullptr;
    std::span<const int> transform = {}; // values of the entries of an "iPopTransform"
    HostPanelButton *button = nullptr;
    HostPanelDraw *draw = nullptr;
};

struct Output {
    const char *name;
    int type;     // kConnectScalar and so on
    size_t field; // the HostOutput *
};

// ---- The unit ----------------------------------------------------------------------------------------------------

inline constexpr int kNoPreviewType = -1; // the unit leaves its node's preview as the host has it

// A node class. What a unit leaves null it does as every node does.
struct NodeClass {
    const char *name;                // display name
    const char *groupName = nullptr; // of the envelope group where it is not the display name
    size_t size;                     // of an instance
    const int *colour;               // the unit's nodeColor: red, green, blue
    int previewType = kNoPreviewType;
    bool fetchesParameterServices = true; // looks "LWVParmFuncs 2" and "Animation Envelopes" up at activation
    NodeServices *services;
    std::span<const FurtherService> furtherServices = {};
    std::span<const Parameter> parameters = {};
    std::span<const Output> outputs = {};

    size_t node;                  // offset of the HostNode *
    size_t panel = kNowhere;      // of the HostPanel *
    size_t group = kNowhere;      // of the HostChannelGroup * that holds the parameters; kNowhere: none is created
    size_t freshFlags = kNowhere; // of int[kMaxThreads]: set to 1 at creation and when rendering starts

    // What a unit adds to its life, at the places where the frame stops to ask.
    void (*activated)() = nullptr; // all services are there
    // Defaults are set, nothing is created yet; `priv` is the host's lookup function. A text makes creation fail
    // with it.
    const char *(*prepare)(void *instance, void *priv) = nullptr;
    void (*created)(void *instance) = nullptr; // inputs and outputs are there
    void (*destroying)(void *instance) = nullptr;
    HostError (*copied)(void *to, void *from) = nullptr;                         // the rows have been copied
    HostError (*saveMore)(void *instance, const HostSaveState *state) = nullptr; // between texts and parameters
    HostError (*loadMore)(void *instance, const HostLoadState *state) = nullptr;
    void (*loaded)(void *instance) = nullptr;
    HostError (*init)(void *instance, int mode) = nullptr;
    void (*cleanup)(void *instance) = nullptr;
    HostError (*newTime)(void *instance, int frame, double time) = nullptr;
    bool savesBlocks = false; // each row in a tagged block of its own, in any order when read back

    // The panel: sets one value (kSetUnknown: as every node does); and, after a change has been dealt with as in every
    // node, adds to it and gives the notification's result.
    int (*setValue)(void *instance, unsigned int id, void *value) = nullptr;
    int (*changed)(void *instance, HostPanel *panel, unsigned int control, int event) = nullptr;
};

// A unit that saves in blocks has no more of them than this; loading keeps its table on the stack.
inline constexpr size_t kMostBlocks = 32;

constexpr size_t blockCount(const NodeClass &nodeClass) {
    size_t count = 0;
    for (const Parameter &row : nodeClass.parameters)
        if (row.block.id != 0) ++count;
    return count;
}

// A field of an instance by its offset.
template <class Field>
Field &fieldAt(void *instance, size_t offset) {
    return *reinterpret_cast<Field *>(static_cast<char *>(instance) + offset);
}

// ---- Reading parameters while rendering --------------------------------------------------------------------------

// Reads a node's inputs at one sample: each read gives the stored value, or what is connected to the input, for this
// sample only. It lives as long as the evaluation. The way into the host is looked up once, since a sample reads up to
// twenty inputs. [render threads]
class Inputs {
  public:
    Inputs(const NodeServices &services, ShadingSample *sample)
        : evaluate_(services.nodeInputFunc->evaluate), sample_(sample) {}

    ShadingSample *sample() const { return sample_; }

    // Overwrites *value, of the input's type, where something is connected.
    void evaluate(HostInput *input, void *value) const { evaluate_(input, sample_, value); }

    double read(const ScalarParameter &stored, HostInput *input) const {
        double value = stored.value;
        evaluate(input, &value);
        return value;
    }
    int read(int stored, HostInput *input) const {
        evaluate(input, &stored);
        return stored;
    }
    void read(const double (&stored)[3], HostInput *input, double (&value)[3]) const {
        for (int i = 0; i < 3; ++i) value[i] = stored[i];
        evaluate(input, value);
    }
    void read(const Vec3Parameter &stored, HostInput *input, double (&value)[3]) const {
        read(stored.value, input, value);
    }
    // A popup's index, clamped into its list of `count` entries.
    int readChoice(int stored, HostInput *input, int count) const {
        const int index = read(stored, input);
        return index < 0 ? 0 : index >= count ? count - 1 : index;
    }

  private:
    int (*evaluate_)(HostInput *input, ShadingSample *sample, void *value);
    ShadingSample *sample_;
};

// Hands what an input delivers on as the result; `preset`, which is of the input's type, where nothing is connected.
template <class Value>
void passThrough(const NodeServices &services, HostInput *input, ShadingSample *sample, HostNodeValue *value,
                 Value preset) {
    services.nodeInputFunc->evaluate(input, sample, &preset);
    services.nodeOutputFunc->setValue(value, &preset);
}

// ---- What the callbacks of a unit hand on to ---------------------------------------------------------------------

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

// Reads every animated parameter at a time into its stored value.
void readParameters(const NodeClass &nodeClass, void *instance, double time);

// Creates and sets up one animated parameter with its value; null when the host cannot. Not for rendering.
HostVParm *createParameter(const NodeServices &services, int type, const char *name, HostChannelGroup *group,
                           const double *value);

} // namespace velm::plugin

// Declares what a unit shows to the rest of the module.
#define VELM_DECLARE_TAGS(Name) extern const HostTag Name##_ServerTags[]
#define VELM_DECLARE_NODE(Name)                                                                                        \
    int Name##_Activate(int version, HostLookup *lookup, void *local, void *serverData);                               \
    void Name##_get_vpValues(void *instance, double time);                                                             \
    HostVParm *Name##_create_vpenv(int type, const char *name, HostChannelGroup *group, const double *value)

// Defines the tags of a unit that the host is to offer: its display name, and its group of the node menu.
#define VELM_DEFINE_TAGS(Name, nodeClass, menu)                                                                        \
    const HostTag Name##_ServerTags[] = {{.text = (nodeClass).name, .code = kTagUserName},                             \
                                         {.text = (menu), .code = kTagMenu},                                           \
                                         {.text = nullptr, .code = 0}};

// Defines the callbacks of a unit under their outside names. `unit` is its NodeClass, which the frame walks; the unit's
// own file defines Name_Evaluate before this.
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

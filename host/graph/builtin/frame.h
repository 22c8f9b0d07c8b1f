// The frame that the host's own nodes share. A node is a table of parameters and outputs, and one evaluation function.
// From it the frame derives the instance with its channels, inputs and outputs, its panel, copying, saving and loading.
// The nodes are servers like any other: they get everything of the host from the lookup function at activation.
#pragma once

#include "host/graph/builtin/item_places.h"
#include "host/graph/builtin/vertex_maps.h"
#include "module/host.h"

#include <array>
#include <string>

namespace velm::host::builtin {

constexpr int kMaxParameters = 36;
constexpr int kMaxOutputs = 20;
constexpr int kTextSize = 256;

enum class Kind {
    // Animated numbers, each with an input of the same name. They differ in the unit that the panel shows.
    scalar,
    percent,
    distance,
    angle,
    // Animated triples, with an input.
    colour,
    vector,
    integer, // an integer that is not animated, with an input
    choice,  // an index into `texts`, with an input
    image,   // an image of the host's list, without an input; at most one in each node
    text,    // without an input; at most one in each node
};

struct Parameter {
    const char *label = nullptr; // null ends the list
    Kind kind = Kind::scalar;
    std::array<double, 3> initial{};    // radians for an angle, fractions for a percentage
    const char *const *texts = nullptr; // of a choice; ends with null
};

struct Output {
    const char *name = nullptr; // null ends the list
    int type = 0;               // a connection type
};

class Evaluation;
struct Instance;

struct Definition {
    const char *name; // of the server, and shown
    std::array<int, 3> colour;
    std::array<Parameter, kMaxParameters> parameters{};
    std::array<Output, kMaxOutputs> outputs{};
    // Computes one output, by its index in the table, and sets the result. [render threads]
    void (*evaluate)(const Evaluation &evaluation, int output) = nullptr;
    // Prepares an instance for a frame, whose time and parameters it already has; gives null, or a message that lives
    // as long as the program. May be null. [between frames]
    HostError (*newTime)(Instance &instance) = nullptr;
};

// The services that a server looks up at its activation. All nodes share one record.
struct Services {
    const HostNodeFuncs *nodes = nullptr;
    const HostNodeInputFuncs *inputs = nullptr;
    const HostNodeOutputFuncs *outputs = nullptr;
    const HostNodeUtilityFuncs *utility = nullptr;
    const HostVParmFuncs *parms = nullptr;
    const HostImageList *images = nullptr;
    const VertexMapFuncs *vertexMaps = nullptr;
    const ItemPlaceFuncs *places = nullptr;
    const HostPanelFuncs *panels = nullptr; // looked up by the interface server, as the next
    HostInstanceUpdate *update = nullptr;
};
const Services &services();

struct Instance {
    const Definition *definition = nullptr;
    HostNode *node = nullptr;
    HostPanel *panel = nullptr; // the host destroys it
    double time = 0;            // seconds; when the values were read from the parameters
    int frame = 0;
    ItemPlace item; // that the text parameter names, for nodes that find it at each frame
    std::array<std::array<double, 3>, kMaxParameters> values{};
    std::array<int, kMaxParameters> integers{};
    std::array<int, kMaxParameters> lastChoices{}; // of choices: the index of the last text
    HostImage *image = nullptr;
    std::array<char, kTextSize> text{};
    std::array<HostVParm *, kMaxParameters> parms{};  // null where the parameter is not animated
    std::array<HostInput *, kMaxParameters> inputs{}; // null where it has none
    std::array<HostOutput *, kMaxOutputs> outputs{};

    void readParameters(double atTime);
};

// One evaluation: gives the parameters, by their index, for a sample, and takes the result. [render threads]
class Evaluation {
  public:
    Evaluation(const Instance &instance, ShadingSample *sample, HostNodeValue *value)
        : instance_(instance), sample_(sample), value_(value) {}

    const ShadingSample &sample() const { return *sample_; }
    double scalar(int parameter) const;
    // The value at another sample, which is a copy of this one with another position.
    double scalarAt(int parameter, ShadingSample &other) const;
    bool isConnected(int parameter) const;
    std::array<double, 3> triple(int parameter) const;
    int integer(int parameter) const;
    int choice(int parameter) const; // clamped to the range of its texts
    HostImage *image() const { return instance_.image; }
    double time() const { return instance_.time; } // of the frame; seconds
    int frame() const { return instance_.frame; }
    const ItemPlace &item() const { return instance_.item; }
    // The sample's coordinates on the map that the text parameter names; false, with u and v 0, when there are none.
    bool uv(double &u, double &v) const;
    bool uvAt(ShadingSample &other, double &u, double &v) const; // the same at another sample

    // Red, green, blue and alpha at the sample, from the colour map that the text parameter names or, without a name,
    // from the mesh's first one. All are 1 if there is no such map.
    std::array<double, 4> vertexColour() const;
    // The same for weight maps; 0 if there is no such map.
    double vertexWeight() const;

    // Sets the result, which must have the output's type.
    void set(double result) const;
    void set(int result) const;
    void set(const std::array<double, 3> &result) const;
    void set(const double result[3]) const;
    // The number that a function output is to transform.
    double found() const;

  private:
    const Instance &instance_;
    ShadingSample *sample_;
    HostNodeValue *value_;
};

// The activation functions of a definition's handler and interface servers.
int activateHandler(const Definition &definition, int version, HostLookup *lookup, void *local);
int activateInterface(int version, HostLookup *lookup, void *local, void *serverData);

template <const Definition &definition>
int activate(int version, HostLookup *lookup, void *local, void * /*serverData*/) {
    return activateHandler(definition, version, lookup, local);
}

// The panel of an instance, created at the first call; null when the host creates none.
HostPanel *panelOf(Instance &instance);

} // namespace velm::host::builtin

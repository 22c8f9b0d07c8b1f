// The small frame under the host's own nodes. A node is a table: parameters, outputs and one evaluation. From it come
// the instance, its channels, inputs and outputs, its panel, copying and its saved form. The nodes are servers like any
// other: all that they have of the host comes from the lookup function at activation.
#pragma once

#include "module/host.h"

#include <array>
#include <string>

namespace velm::host::builtin {

constexpr int kMaxParameters = 12;
constexpr int kMaxOutputs = 20;
constexpr int kTextSize = 256;

enum class Kind {
    scalar, // animated numbers with an input of their name; in the units that the panel shows they are:
    percent,
    distance,
    angle,
    colour, // animated triples with an input
    vector,
    integer, // whole numbers with an input
    choice,  // one of `texts`
    image,   // an image of the host's list, without an input; at most one in a node
    text,    // without an input; at most one in a node
};

struct Parameter {
    const char *label = nullptr; // null ends the list
    Kind kind = Kind::scalar;
    std::array<double, 3> initial{}; // radians for an angle, fractions for a percentage
    const char *const *texts = nullptr;
};

struct Output {
    const char *name = nullptr; // null ends the list
    int type = 0;               // a connection type
};

class Evaluation;

struct Definition {
    const char *name; // of the server, and shown
    std::array<int, 3> colour;
    std::array<Parameter, kMaxParameters> parameters{};
    std::array<Output, kMaxOutputs> outputs{};
    // Computes one output, by its place in the table, and sets it. [render threads]
    void (*evaluate)(const Evaluation &evaluation, int output) = nullptr;
};

// What a server looks up when it is activated.
struct Services {
    const HostNodeFuncs *nodes = nullptr;
    const HostNodeInputFuncs *inputs = nullptr;
    const HostNodeOutputFuncs *outputs = nullptr;
    const HostNodeUtilityFuncs *utility = nullptr;
    const HostVParmFuncs *parms = nullptr;
    const HostImageList *images = nullptr;
    const HostPanelFuncs *panels = nullptr; // these two by the interface's activation
    HostInstanceUpdate *update = nullptr;
};
const Services &services();

struct Instance {
    const Definition *definition = nullptr;
    HostNode *node = nullptr;
    HostPanel *panel = nullptr; // the host's to destroy
    double time = 0;            // at which the values were read
    std::array<std::array<double, 3>, kMaxParameters> values{};
    std::array<int, kMaxParameters> integers{};
    HostImage *image = nullptr;
    std::array<char, kTextSize> text{};
    std::array<HostVParm *, kMaxParameters> parms{};  // null where the parameter is not animated
    std::array<HostInput *, kMaxParameters> inputs{}; // null where it has none
    std::array<HostOutput *, kMaxOutputs> outputs{};

    void readParameters(double atTime);
};

// One evaluation: the parameters as the sample sees them, and the way of the result. Parameters by their place.
class Evaluation {
  public:
    Evaluation(const Instance &instance, ShadingSample *sample, HostNodeValue *value)
        : instance_(instance), sample_(sample), value_(value) {}

    const ShadingSample &sample() const { return *sample_; }
    double scalar(int parameter) const;
    std::array<double, 3> triple(int parameter) const;
    int integer(int parameter) const;
    int choice(int parameter) const; // brought into its list
    HostImage *image() const { return instance_.image; }
    // The map of the text parameter at the sample; false, and u and v 0, when it is not there.
    bool uv(double &u, double &v) const;

    // Of the output's type.
    void set(double result) const;
    void set(int result) const;
    void set(const std::array<double, 3> &result) const;
    void set(const double result[3]) const;
    // What a function output is to transform.
    double found() const;

  private:
    const Instance &instance_;
    ShadingSample *sample_;
    HostNodeValue *value_;
};

// Activations of a definition's two servers.
int activateHandler(const Definition &definition, int version, HostLookup *lookup, void *local);
int activateInterface(int version, HostLookup *lookup, void *local, void *serverData);

template <const Definition &definition>
int activate(int version, HostLookup *lookup, void *local, void * /*serverData*/) {
    return activateHandler(definition, version, lookup, local);
}

// The panel of an instance, made once.
HostPanel *panelOf(Instance &instance);

} // namespace velm::host::builtin

// Reading a node's inputs while rendering. Each read gives the value of what is connected to the input, for this sample
// only, or the stored value if nothing is connected. [render threads]
#pragma once

#include "module/node.h"

namespace velm::plugin {

// The inputs of a node at one sample, for one evaluation. The host's function is looked up once, since an evaluation
// reads up to twenty inputs.
class Inputs {
  public:
    Inputs(const NodeServices &services, ShadingSample *sample)
        : evaluate_(services.nodeInputFunc->evaluate), sample_(sample) {}

    ShadingSample *sample() const { return sample_; }

    // Overwrites *value, which has the input's type, if the input is connected.
    void evaluate(HostInput *input, void *value) const { evaluate_(input, sample_, value); }

    // The value of an input without a parameter; `preset` if it is not connected.
    Vec3 evaluateOr(HostInput *input, const double (&preset)[3]) const {
        Vec3 value = {{preset[0], preset[1], preset[2]}};
        evaluate(input, value.c);
        return value;
    }

  private:
    int (*evaluate_)(HostInput *input, ShadingSample *sample, void *value);
    ShadingSample *sample_;
};

// The parameters of an instance at one sample. A parameter is named by the offset of its field; which row has it, and
// where the handle of its input is, is worked out when the node is compiled.
template <const NodeClass &nodeClass>
class ParameterInputs : public Inputs {
  public:
    ParameterInputs(const void *instance, ShadingSample *sample)
        : Inputs(*nodeClass.services, sample), instance_(instance) {}

    // The parameter's value: an int, a double or a Vec3.
    template <size_t field>
    auto read() const {
        static constexpr Holds holds = nodeClass.parameters[kRow<field>].holds;
        if constexpr (holds == Holds::integer) {
            int value = fieldAt<int>(instance_, field);
            overwrite<field>(&value);
            return value;
        } else if constexpr (holds == Holds::scalar) {
            double value = fieldAt<ScalarParameter>(instance_, field).value;
            overwrite<field>(&value);
            return value;
        } else {
            static_assert(holds == Holds::vec3, "this parameter has no value to read");
            return readOr<field>(fieldAt<Vec3Parameter>(instance_, field).value);
        }
    }

    // The value connected to a vector's or a colour's input; `preset` in place of the stored value if there is none.
    template <size_t field>
    Vec3 readOr(const double (&preset)[3]) const {
        Vec3 value = {{preset[0], preset[1], preset[2]}};
        overwrite<field>(&value);
        return value;
    }

    // The index that a popup chooses, clamped to its list of `count` entries.
    template <size_t field>
    int choice(int count) const {
        const int index = read<field>();
        return index < 0 ? 0 : index >= count ? count - 1 : index;
    }

  private:
    template <size_t field>
    static constexpr size_t kRow = rowWithField(nodeClass.parameters, field);

    // Overwrites a value of the parameter's type if its input is connected.
    template <size_t field>
    void overwrite(void *value) const {
        static_assert(nodeClass.parameters[kRow<field>].input != 0, "this parameter has no input");
        static constexpr size_t input = inputOffset(nodeClass, kRow<field>);
        evaluate(fieldAt<HostInput *>(instance_, input), value);
    }

    const void *instance_;
};

// Sets a node's result to the value of an input, or to `preset`, which has the input's type, if it is not connected.
template <class Value>
void passThrough(const NodeServices &services, HostInput *input, ShadingSample *sample, HostNodeValue *value,
                 Value preset) {
    services.nodeInputFunc->evaluate(input, sample, &preset);
    services.nodeOutputFunc->setValue(value, &preset);
}

} // namespace velm::plugin

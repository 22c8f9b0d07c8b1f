// A surface: a network whose root is a "Surface" node, and the shading values that it computes for a sample.
#pragma once

#include "host/graph/network.h"
#include "host/panel/setting.h"

#include <array>
#include <memory>
#include <string>
#include <string_view>

namespace velm::host {

// The values that the renderer shades with. Fractions are 0 to 1, but not clamped: networks may exceed the range.
struct SurfaceValues {
    double colour[3];
    double luminosity;
    double diffuse;
    double specular;
    double glossiness;
    double reflection;
    double transparency;
    double refractionIndex;
    double normal[3]; // unit length, world space: the input Normal, or else the sample's shading normal
};

// The default of one of a surface's own settings: three components for "Color"; for the others, only the first counts.
// Zeros for an unknown label. [any thread]
std::array<double, 3> newSurfaceValue(std::string_view label);

class Surface {
  public:
    explicit Surface(std::string name); // [interface thread; not while rendering]
    ~Surface();
    Surface(const Surface &) = delete;
    Surface &operator=(const Surface &) = delete;

    const std::string &name() const { return network_->name(); } // also the root node's, until a node takes it
    Network &network() { return *network_; }

    // Sets a value of the root, as an artist would on its panel: "Color" is three numbers, each of the others one
    // number (a fraction, not a percentage); all of them may be keys. InputError, with the nearest name or the expected
    // kind of value, for anything else. [interface thread; not while rendering]
    void setDefault(const SettingDescription &setting);
    void setDefault(const std::string &name, const SettingValue &value) { setDefault({name, value, {}}); }

    // The root's values, overridden by its inputs where they are connected. Allocates nothing. [render threads]
    SurfaceValues evaluate(ShadingSample *sample) const;
    // The transparency alone, for shadow rays. [render threads]
    double evaluateTransparency(ShadingSample *sample) const;
    // The colour alone, for coloured shadows. [render threads]
    void evaluateColour(ShadingSample *sample, double colour[3]) const;

    // As Network's functions; InputError with the names of surface and node. [between frames]
    void init(int mode);
    void newTime(int frame, double time); // seconds
    void cleanup();

    // The extent of the geometry that has the surface: low and high of x, y and z in metres. Nodes scale their previews
    // by it. Until it is set, a unit cube about the origin.
    void setBounds(const double bounds[3][2]);

    // Writes the network as a block NODS (text: "Nodal_Block"), or finds that block and reads it. InputError, with the
    // surface's name, when the block is missing or a node fails. [interface thread; not while rendering]
    void save(const HostSaveState &state);
    void load(const HostLoadState &state);

  private:
    struct Root;
    double bounds_[3][2] = {{-0.5, 0.5}, {-0.5, 0.5}, {-0.5, 0.5}};
    std::unique_ptr<Network> network_;
};

} // namespace velm::host

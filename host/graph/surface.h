// A surface: a network whose root is a "Surface" node, and the shading values that it yields for a sample.
#pragma once

#include "host/graph/network.h"
#include "host/panel/setting.h"

#include <memory>
#include <string>

namespace velm::host {

// What the renderer shades with. Fractions are 1.0 for full; nothing is clamped, since networks may overdrive.
struct SurfaceValues {
    double colour[3];
    double luminosity;
    double diffuse;
    double specular;
    double glossiness;
    double reflection;
    double transparency;
    double refractionIndex;
    double normal[3]; // unit length, world space: what is connected to Normal, else the sample's shading normal
};

class Surface {
  public:
    explicit Surface(std::string name); // [interface thread; not while rendering]
    ~Surface();
    Surface(const Surface &) = delete;
    Surface &operator=(const Surface &) = delete;

    // The root node goes by the surface's name.
    const std::string &name() const { return editor_->name(); }
    Network &editor() { return *editor_; }

    // Sets a value of the root as a person would on its panel: "Color" a triple, the others numbers (fractions, not
    // per cent), each also as keys. InputError with the nearest right name, or saying what the value should be.
    void setDefault(const SettingDescription &setting);
    void setDefault(const std::string &name, const SettingValue &value) { setDefault({name, value, {}}); }

    // The root's values overridden by what is connected. Allocates nothing. [render threads]
    SurfaceValues evaluate(ShadingSample *sample) const;
    // The Transparency alone, for rays that only ask whether they are stopped. [render threads]
    double evaluateTransparency(ShadingSample *sample) const;

    // InputError with the surface's and the node's name. [between frames]
    void init(int mode);
    void newTime(int frame, double time); // seconds
    void cleanup();

    // The extent of what carries the surface, low and high of x, y and z in metres; nodes size their previews by it.
    void setBounds(const double bounds[3][2]);

    // The network as a block "Nodal_Block" / NODS.
    void save(const HostSaveState &state);
    void load(const HostLoadState &state); // looks for the block; InputError when it is missing

  private:
    struct Root;
    double bounds_[3][2] = {{-0.5, 0.5}, {-0.5, 0.5}, {-0.5, 0.5}};
    std::unique_ptr<Network> editor_;
};

} // namespace velm::host

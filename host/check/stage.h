// A node on a stage: an instance in a network of its own, samples to evaluate it with, its panel's settings, and what
// it saves. What checks are made of.
#pragma once

#include "host/check/dice.h"
#include "host/check/watch.h"
#include "host/graph/network.h"
#include "host/panel/panel.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

// Moves what this process gets from now on to other addresses: another process, as far as addresses go.
void shiftAddresses(std::uint64_t seed);

// What an evaluation gave. The words are those of a value of the output's type, the rest is what was there before.
struct Result {
    int type = 0;
    int sets = 0; // how often the value was set
    std::array<double, 13> words{};

    // Bit for bit, as far as the type goes.
    bool operator==(const Result &other) const;
    std::string_view bytes() const; // of the value, as far as the type goes
    bool isFinite() const;
};

// Samples as a scene of smooth shapes gives them: positions within a few metres, unit normals, rays that hit and miss.
// The ray functions are pure: the same ray always hits the same. A sample is only read.
ShadingSample makeSample(Dice &dice, int threadIndex = 0);
void withoutRays(ShadingSample &sample); // null ray functions

// Evaluates one output. [render threads]
Result evaluateOutput(HostOutput &output, const ShadingSample &sample);

// What a host does with any one node, wherever it stands. [interface thread; not while rendering]
// What it saves. Fails the check when the node reports an error or writes what no state can hold.
std::string saveNode(HostNode &node, int mode);
// What the node says of loading and copying; null is success.
HostError loadNode(HostNode &node, std::string_view bytes, int mode);
HostError copyNode(HostNode &to, HostNode &from);
// Reads everything that a panel shows; nothing without a panel. `server` is the node's place among the module's.
void readPanel(HostNode &node, int server);
// Sets one control to something within its limits; nothing for buttons, drawings and what is fed by a connection.
void randomSetting(HostPanel &panel, const PanelItem &control, Dice &dice, bool keys);
// Sets all controls of a node's panel so. `keys` also gives animated ones keys.
void randomSettings(HostNode &node, int server, Dice &dice, bool keys);
// Sets a number, of a setting's own unit, whatever the limits; integers are cut.
void setNumber(HostPanel &panel, const PanelItem &control, double number);

// Connects some of a network's inputs to outputs of chance. [interface thread; not while rendering]
void connectAtRandom(Network &editor, Dice &dice);

class Stage {
  public:
    // InputError when the server makes no instance.
    Stage(const WatchedServers &module, const std::string &server);
    ~Stage();

    HostNode &node() { return *node_; }
    Network &editor() { return editor_; }
    int server() const { return server_; } // its place among the module's nodes
    HostPanel *panel();                    // null when there is none

    // InputError when the node reports an error. [between frames]
    void start(int mode = kInitRender);
    void frame(int number, double time);
    void end();

    // All outputs, for each sample in turn. [render threads]
    std::vector<Result> evaluate(const std::vector<ShadingSample> &samples);

    // As saveNode and so on.
    std::string save(int mode = kStateBinary) { return saveNode(*node_, mode); }
    HostError load(std::string_view bytes, int mode = kStateBinary) { return loadNode(*node_, bytes, mode); }
    HostError copyFrom(Stage &other) { return copyNode(*node_, *other.node_); }

    // As randomSettings; then what is animated is read at time 0.
    void randomSettings(Dice &dice, bool keys = true);

  private:
    Network editor_;
    HostNode *node_;
    int server_;
};

// For messages: the first place where two texts of bytes differ.
std::string difference(std::string_view one, std::string_view other);

} // namespace velm::host

// A fake host application for tests. It records each call of its services as a line of text, and a test can make it
// fail: services can be missing, and creations, saves and loads can fail. The host's opaque types are plain records
// here, which tests can read.
#pragma once

#include "module/host.h"

#include <array>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

struct HostChannelGroup {
    std::string name;
    HostChannelGroup *parent;
};

struct HostNode {
    std::string name;
    HostChannelGroup *group;
    std::array<int, 3> colour = {};
    int previewType = -1; // -1: none has been set
};

struct HostInput {
    HostNode *node;
    int type;
    std::string name;
    HostInputEvent *event;
    // Writes the value of the connected output; empty if the input is not connected.
    std::function<void(ShadingSample *, void *value)> source = {};
};

struct HostOutput {
    HostNode *node;
    int type;
    std::string name;
};

// Holds the value that was set, in the type of the evaluated output.
struct HostNodeValue {
    HostOutput *asked;
    int timesSet = 0;
    double numbers[3] = {0, 0, 0};
    int integer = 0;
};

struct HostVParm {
    int type;
    int subtype;
    std::string channel = {};
    HostChannelGroup *group = nullptr;
    double value[3] = {0, 0, 0};
    std::function<void(double time, double *value)> overTime = {}; // used instead of `value` if it is not empty
    bool destroyed = false;
};

struct HostPanel {
    int kind;
    const HostPanelValue *values = nullptr;
    HostPanelGetter *get = nullptr;
    HostPanelSetter *set = nullptr;
    const HostHint *hints = nullptr;
    void *viewed = nullptr;
    int refreshes = 0;
    std::map<unsigned int, void *> data = {};
};

namespace velm::plugin {

// Only one may exist at a time: the services are plain functions, which find it through `current`. Several threads may
// evaluate inputs and set values; everything else is for the test's thread.
class FakeHost {
  public:
    FakeHost();
    ~FakeHost();
    FakeHost(const FakeHost &) = delete;
    FakeHost &operator=(const FakeHost &) = delete;
    static FakeHost &current();
    static void *lookup(const char *service, int use);

    // The calls since the last call of this function.
    std::vector<std::string> takeLog();
    template <class... Parts>
    void note(const Parts &...parts) {
        std::ostringstream line;
        (line << ... << parts);
        log_.push_back(line.str());
    }

    std::set<std::string> missing; // the services that lookup does not find
    uintptr_t systemWord = kSystemLayout;
    bool logsEvaluation = false; // also logs evaluated inputs and set values; for one thread only
    bool panelsFail = false;
    std::set<int> failingParms; // the creations of parameters that return null, counted from 0
    int failingSave = -1;       // the save of a parameter that returns kSaveError, counted from 0
    int failingLoad = -1;
    bool copiesFail = false; // copying a parameter returns an error, though it copies
    static constexpr char kSaveError[] = "cannot save";
    static constexpr char kLoadError[] = "cannot load";
    static constexpr char kCopyError[] = "cannot copy";

    HostTimeInfo time{};
    std::function<void(double time, const double *direction, double *colour)> backdrop;

    HostNode &addNode(const std::string &name);
    int liveParms() const; // those created and not yet destroyed

    std::deque<HostNode> nodes;
    std::deque<HostChannelGroup> groups;
    std::deque<HostInput> inputs;
    std::deque<HostOutput> outputs;
    std::deque<HostVParm> parms;
    std::deque<HostPanel> panels;
    std::vector<void *> updated; // the instances of all update notifications, in order
    void *lastUpdated() const { return updated.empty() ? nullptr : updated.back(); }
    int parmsAsked = 0, parmsSaved = 0, parmsLoaded = 0;

  private:
    std::vector<std::string> log_;
};

} // namespace velm::plugin

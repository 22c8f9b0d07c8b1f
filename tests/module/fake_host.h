// A stand-in for the host application that records every call of its services as a line of text, and lets a test say
// what goes wrong: services that are missing, creations, saves and loads that fail. The host's opaque types are plain
// records here, which tests look into.
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
    int previewType = -1; // as long as none is set
};

struct HostInput {
    HostNode *node;
    int type;
    std::string name;
    HostInputEvent *event;
    std::function<void(ShadingSample *, void *value)> source = {}; // what is connected; empty: nothing
};

struct HostOutput {
    HostNode *node;
    int type;
    std::string name;
};

// Remembers what was set, as the type of the output that is asked for.
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
    std::function<void(double time, double *value)> overTime = {}; // instead of `value`
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

// One at a time: the services, which are plain functions, find it through `current`. Inputs may be evaluated and values
// set by several threads; everything else is for the test's own thread.
class FakeHost {
  public:
    FakeHost();
    ~FakeHost();
    FakeHost(const FakeHost &) = delete;
    FakeHost &operator=(const FakeHost &) = delete;
    static FakeHost &current();
    static void *lookup(const char *service, int use);

    // What has been called since the last time this was asked.
    std::vector<std::string> takeLog();
    template <class... Parts>
    void note(const Parts &...parts) {
        std::ostringstream line;
        (line << ... << parts);
        log_.push_back(line.str());
    }

    std::set<std::string> missing; // services that are not offered
    uintptr_t systemWord = kSystemLayout;
    bool logsEvaluation = false; // inputs evaluated and values set are in the log; for one thread only
    bool panelsFail = false;
    std::set<int> failingParms; // creations of parameters that give null, counted from 0
    int failingSave = -1;       // the save of a parameter that gives kSaveError, counted from 0
    int failingLoad = -1;
    bool copiesFail = false; // every copy of a parameter is made all the same
    static constexpr char kSaveError[] = "cannot save";
    static constexpr char kLoadError[] = "cannot load";
    static constexpr char kCopyError[] = "cannot copy";

    HostTimeInfo time{};
    std::function<void(double time, const double *direction, double *colour)> backdrop;

    HostNode &addNode(const std::string &name);
    int liveParms() const; // created and not destroyed

    std::deque<HostNode> nodes;
    std::deque<HostChannelGroup> groups;
    std::deque<HostInput> inputs;
    std::deque<HostOutput> outputs;
    std::deque<HostVParm> parms;
    std::deque<HostPanel> panels;
    std::vector<void *> updated; // the instances that the host has been told of, in order
    void *lastUpdated() const { return updated.empty() ? nullptr : updated.back(); }
    int parmsAsked = 0, parmsSaved = 0, parmsLoaded = 0;

  private:
    std::vector<std::string> log_;
};

} // namespace velm::plugin

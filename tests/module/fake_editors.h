// Editors of nested networks, for tests: the calls that a node makes on them, and what it hands them.
#pragma once

#include "tests/module/fake_controls.h"

struct HostNodeEditor {
    HostRootDescription description = {};
    void *userData = nullptr;
    HostNode *root = nullptr;
    HostChannelGroup *group = nullptr;
    HostEditorEvent *event = nullptr;
    HostEditorAutosize *autosize = nullptr;
    std::string network = "empty"; // what stands for the nodes in it
    bool destroyed = false;
};

namespace velm::plugin {

// Stands beside a FakeHost, and notes its calls in that host's log. One at a time.
class FakeEditors {
  public:
    FakeEditors();
    ~FakeEditors();
    FakeEditors(const FakeEditors &) = delete;
    FakeEditors &operator=(const FakeEditors &) = delete;

    // Gives the editors, the extent of nodes, and outputs that take materials; else as FakeControls.
    static void *lookup(const char *service, int use);

    FakeControls controls;
    std::deque<HostNodeEditor> editors;
    bool creationFails = false;
    HostError answer = nullptr;               // of everything that may fail: copy, save, load, init, new time
    std::vector<HostMaterial> materials = {}; // that have been set as results
    double extent[3] = {2, 3, 4};             // of every node
};

} // namespace velm::plugin

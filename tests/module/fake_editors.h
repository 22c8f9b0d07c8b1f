// Editors of nested networks for tests. They record the calls that a node makes and the arguments that it passes.
#pragma once

#include "tests/module/fake_controls.h"

struct HostNodeEditor {
    HostRootDescription description = {};
    void *userData = nullptr;
    HostNode *root = nullptr;
    HostChannelGroup *group = nullptr;
    HostEditorEvent *event = nullptr;
    HostEditorAutosize *autosize = nullptr;
    std::string network = "empty"; // represents the nodes in the editor
    bool destroyed = false;
};

namespace velm::plugin {

// Used together with a FakeHost, in whose log it records its calls. Only one may exist at a time.
class FakeEditors {
  public:
    FakeEditors();
    ~FakeEditors();
    FakeEditors(const FakeEditors &) = delete;
    FakeEditors &operator=(const FakeEditors &) = delete;

    // Returns the services of editors and of the extent of nodes, and the output service, which accepts materials here;
    // otherwise as FakeControls.
    static void *lookup(const char *service, int use);

    FakeControls controls;
    std::deque<HostNodeEditor> editors;
    bool creationFails = false;
    HostError answer = nullptr;               // the result of all that may fail: copy, save, load, init, new time
    std::vector<HostMaterial> materials = {}; // those that were set as results
    double extent[3] = {2, 3, 4};             // the extent of each node
};

} // namespace velm::plugin

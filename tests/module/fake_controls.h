// The controls of panels, for tests: values that are read from a control and set on it, and an area that is drawn on.
#pragma once

#include "tests/module/fake_host.h"

#include <array>
#include <cstddef>

// What has been drawn: each pixel as it was left, and the boxes that were filled.
struct HostDrawArea {
    struct Pixel {
        int red, green, blue, x, y;
    };
    std::vector<Pixel> pixels = {};
    std::vector<std::array<int, 7>> boxes = {}; // red, green, blue, left, top, width, height
};

namespace velm::plugin {

// Stands beside a FakeHost, and notes its calls in that host's log. One at a time.
class FakeControls {
  public:
    FakeControls();
    ~FakeControls();
    FakeControls(const FakeControls &) = delete;
    FakeControls &operator=(const FakeControls &) = delete;

    // Gives panels whose controls have values, and the services of the host.
    static void *lookup(const char *service, int use);

    std::map<unsigned int, std::string> texts; // what the text controls of every panel show
    bool setReaches = true;                    // a value that is set on a control reaches the panel's setter

    // What a hand at a panel does: the value passes through the setter, and the panel is told. Gives what the
    // notification gives; the host's log has that part only.
    static int choose(HostPanel *panel, unsigned int id, int value);
    static int notify(HostPanel *panel, unsigned int id, int event);
};

// The activation of a class, as it is when the host offers what `lookup` gives.
template <HostLookup *lookup, HostActivate *activate>
int activatedWith(int version, HostLookup *, void *local, void *serverData) {
    return activate(version, lookup, local, serverData);
}

} // namespace velm::plugin

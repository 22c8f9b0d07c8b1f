// Controls of panels for tests: their values can be read and set, and areas can be drawn on.
#pragma once

#include "tests/module/fake_host.h"

#include <array>
#include <cstddef>

// The final state of each pixel, and the boxes that were filled.
struct HostDrawArea {
    struct Pixel {
        int red, green, blue, x, y;
    };
    std::vector<Pixel> pixels = {};
    std::vector<std::array<int, 7>> boxes = {}; // red, green, blue, left, top, width, height
};

namespace velm::plugin {

// Used together with a FakeHost, in whose log it records its calls. Only one may exist at a time.
class FakeControls {
  public:
    FakeControls();
    ~FakeControls();
    FakeControls(const FakeControls &) = delete;
    FakeControls &operator=(const FakeControls &) = delete;

    // Returns the panel service, whose controls have values here, and the services of the host.
    static void *lookup(const char *service, int use);

    std::map<unsigned int, std::string> texts; // the texts that the text controls of all panels show
    bool setReaches = true;                    // setting a value on a control calls the panel's setter

    // Changes a value as a user does: calls the setter, then the change notification. Returns the result of the
    // notification. The host's log contains only the calls of the notification.
    static int choose(HostPanel *panel, unsigned int id, int value);
    static int notify(HostPanel *panel, unsigned int id, int event);
};

// The activation of a class, with the services that `lookup` returns.
template <HostLookup *lookup, HostActivate *activate>
int activatedWith(int version, HostLookup *, void *local, void *serverData) {
    return activate(version, lookup, local, serverData);
}

} // namespace velm::plugin

// The host's image list, file requester and node utilities for tests. The numbers that they return encode their
// arguments.
#pragma once

#include "tests/module/fake_controls.h"

#include <memory>
#include <optional>

struct HostImage {
    std::string name;
    int width = 10, height = 8;
    bool hasAlpha = false;
    std::function<std::array<float, 3>(int x, int y)> pixel = {}; // if empty, a pixel is its column, its row and 0.5
};

namespace velm::plugin {

// Used together with a FakeHost, in whose log it records its calls. Only one may exist at a time. The null image has 0
// by 0 pixels, and reading one ends the test.
class FakeImages {
  public:
    FakeImages();
    ~FakeImages();
    FakeImages(const FakeImages &) = delete;
    FakeImages &operator=(const FakeImages &) = delete;

    // Returns the image list, the requester and the utilities; otherwise as FakeControls. Services that the host is
    // missing are null.
    static void *lookup(const char *service, int use);

    FakeControls controls;
    std::vector<std::unique_ptr<HostImage>> list;
    HostImage &add(const std::string &name);
    void add(int count); // named "picture1", "picture2" and so on
    void remove(size_t count) { list.resize(list.size() - count); }

    bool loadAdds = true;             // loading a file appends an image
    std::optional<int> nextCallsLeft; // the list ends after this number of steps, regardless of its length

    int requestReturns = 0, requestResult = 1;
    std::string chosenFolder = "/pictures", chosenFile = "new.png";
    HostFileRequest *lastRequest = nullptr;
    std::string startedIn; // the folder in which the last request started

    // The utilities return: for a direction d, the map coordinates (d.x + 10 seam angle, d.y); for a spot of the map,
    // the colour (u, v, spot size); for blending, top + 10 bottom + 100 opacity + 1000 mode in each component.
};

} // namespace velm::plugin

// The image list of the host, its file requester, and what nodes do with colours and directions, for tests. The answers
// are numbers that tell what was asked.
#pragma once

#include "tests/module/fake_controls.h"

#include <memory>
#include <optional>

struct HostImage {
    std::string name;
    int width = 10, height = 8;
    bool hasAlpha = false;
    std::function<std::array<float, 3>(int x, int y)> pixel = {}; // empty: its column, its row and a half
};

namespace velm::plugin {

// Stands beside a FakeHost, and notes its calls in that host's log. One at a time. The null image is 0 by 0, and to
// read a pixel of it is a mistake that ends the test.
class FakeImages {
  public:
    FakeImages();
    ~FakeImages();
    FakeImages(const FakeImages &) = delete;
    FakeImages &operator=(const FakeImages &) = delete;

    // Gives the image list, the requester and the utilities; else as FakeControls. Heeds what the host is missing.
    static void *lookup(const char *service, int use);

    FakeControls controls;
    std::vector<std::unique_ptr<HostImage>> list;
    HostImage &add(const std::string &name);
    void add(int count); // "picture1" and on
    void remove(size_t count) { list.resize(list.size() - count); }

    bool loadAdds = true;             // a file that is loaded is a new image, at the end
    std::optional<int> nextCallsLeft; // the list ends after so many steps, whatever it holds

    int requestReturns = 0, requestResult = 1;
    std::string chosenFolder = "/pictures", chosenFile = "new.png";
    HostFileRequest *lastRequest = nullptr;
    std::string startedIn; // the folder that the last request found

    // What the utilities answer: a direction d is mapped to (d.x + 10 seam angle, d.y); a spot of the map there is the
    // colour (u, v, spot size); blending gives top + 10 bottom + 100 opacity + 1000 mode in each component.
};

} // namespace velm::plugin

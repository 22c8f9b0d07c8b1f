// The fixture of the tests of image popups: the facts of the classes that have one, and the popup of a node.
#pragma once

#include "module/servers.h"
#include "shading/image_popup.h"
#include "tests/module/fake_images.h"
#include "tests/module/hint_list.h"
#include "tests/module/recorded_state.h"
#include "tests/module/test_node.h"

#include <gtest/gtest.h>

namespace velm::plugin {

using Lines = std::vector<std::string>;

struct ImageNodeClass {
    const char *name;
    HostActivate *activate, *interface;
    unsigned int control;
    int otherResult; // the result of a change that loads nothing
};

inline constexpr ImageNodeClass kReflectionsPopup = {
    .name = "GaussianReflections",
    .activate = activatedWith<FakeImages::lookup, GaussianReflections_Activate>,
    .interface = activatedWith<FakeImages::lookup, GaussianReflections_Interface>,
    .control = 0x8002,
    .otherResult = 0};
inline constexpr ImageNodeClass kRefractionsPopup = {
    .name = "GaussianRefractions",
    .activate = activatedWith<FakeImages::lookup, GaussianRefractions_Activate>,
    .interface = activatedWith<FakeImages::lookup, GaussianRefractions_Interface>,
    .control = 0x8002,
    .otherResult = 0};
inline constexpr ImageNodeClass kPixelImagePopup = {.name = "PixelImage",
                                                    .activate = activatedWith<FakeImages::lookup, PixelImage_Activate>,
                                                    .interface =
                                                        activatedWith<FakeImages::lookup, PixelImage_Interface>,
                                                    .control = 0x8003,
                                                    .otherResult = 2};

// A node of one class, and its popup.
struct Popup {
    FakeHost &host;
    TestNode node;
    HostPanel *panel;
    unsigned int id;
    HostPopupCount *countOf = nullptr;
    HostPopupName *nameOf = nullptr;

    Popup(FakeHost &fakeHost, const ImageNodeClass &nodeClass)
        : host(fakeHost), node(fakeHost, nodeClass.activate, nodeClass.interface, nodeClass.name), panel(node.panel()),
          id(nodeClass.control) {
        for (const Hint &hint : hintsWith(kHintPopupFunctions, panel->hints)) {
            EXPECT_EQ(hint.arguments[0].word, id);
            countOf = hint.arguments[1].popupCount;
            nameOf = hint.arguments[2].popupName;
        }
        host.takeLog();
    }

    int count() const { return countOf(node.instance); }
    std::string name(int index) const { return nameOf(node.instance, index); }
    int index() const { return *static_cast<int *>(panel->get(node.instance, id)); }
    void set(int index) { node.set(id, index); }
    void startRender() { node.render.init(node.instance, kInitRender); }
    std::string setTo(int index) const { // the line in the log
        return std::string("setControl ") + (id == 0x8002 ? "8002 " : "8003 ") + std::to_string(index);
    }
};

// Each test runs for each of the classes.
class ImagePopups : public testing::TestWithParam<ImageNodeClass> {
  protected:
    FakeHost host;
    FakeImages images;
    Popup popup{host, GetParam()};
};

} // namespace velm::plugin

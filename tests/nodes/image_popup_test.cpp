// The popup of images, in each of the nodes that have one: its entries, what becomes of a choice when images come and
// go, and how a file is loaded through it.
#include "module/image_popup.h"
#include "module/panel.h"
#include "tests/module/fake_images.h"
#include "tests/module/hint_list.h"
#include "tests/module/recorded_state.h"
#include "tests/module/test_node.h"

#include <algorithm>
#include <gtest/gtest.h>

VELM_DECLARE_NODE(GaussianReflections);
VELM_DECLARE_PANEL(GaussianReflections);
VELM_DECLARE_NODE(GaussianRefractions);
VELM_DECLARE_PANEL(GaussianRefractions);
VELM_DECLARE_NODE(PixelImage);
VELM_DECLARE_PANEL(PixelImage);

namespace velm {
namespace {

using Lines = std::vector<std::string>;

struct ImageUnit {
    const char *name;
    HostActivate *activate, *interface;
    unsigned int control;
    int otherResult; // of a change that loads nothing
};

constexpr ImageUnit kReflections = {.name = "GaussianReflections",
                                    .activate = activatedWith<FakeImages::lookup, GaussianReflections_Activate>,
                                    .interface = activatedWith<FakeImages::lookup, GaussianReflections_Interface>,
                                    .control = 0x8002,
                                    .otherResult = 0};
constexpr ImageUnit kRefractions = {.name = "GaussianRefractions",
                                    .activate = activatedWith<FakeImages::lookup, GaussianRefractions_Activate>,
                                    .interface = activatedWith<FakeImages::lookup, GaussianRefractions_Interface>,
                                    .control = 0x8002,
                                    .otherResult = 0};
constexpr ImageUnit kPixelImage = {.name = "PixelImage",
                                   .activate = activatedWith<FakeImages::lookup, PixelImage_Activate>,
                                   .interface = activatedWith<FakeImages::lookup, PixelImage_Interface>,
                                   .control = 0x8003,
                                   .otherResult = 2};

// A node of one unit, and its popup.
struct Popup {
    FakeHost &host;
    TestNode node;
    HostPanel *panel;
    unsigned int id;
    HostPopupCount *countOf = nullptr;
    HostPopupName *nameOf = nullptr;

    Popup(FakeHost &fakeHost, const ImageUnit &unit)
        : host(fakeHost), node(fakeHost, unit.activate, unit.interface, unit.name), panel(node.panel()),
          id(unit.control) {
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
    std::string setTo(int index) const { // as it stands in the log
        return std::string("setControl ") + (id == 0x8002 ? "8002 " : "8003 ") + std::to_string(index);
    }
};

class ImagePopups : public testing::TestWithParam<ImageUnit> {
  protected:
    FakeHost host;
    FakeImages images;
    Popup popup{host, GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Units, ImagePopups, testing::Values(kReflections, kRefractions, kPixelImage),
                         [](const auto &row) { return std::string(row.param.name); });

// ---- Entries ----

TEST_P(ImagePopups, HasTwoEntriesWithoutImages) {
    EXPECT_EQ(popup.count(), 2);
    EXPECT_EQ(popup.name(0), "(none)");
    EXPECT_EQ(popup.name(1), "(load Image)");
    EXPECT_EQ(popup.name(2), "(load Image)");
}

TEST_P(ImagePopups, ListsTheImagesInOrder) {
    images.add(3);
    EXPECT_EQ(popup.count(), 5);
    EXPECT_EQ(popup.name(0), "(none)");
    EXPECT_EQ(popup.name(1), "picture1");
    EXPECT_EQ(popup.name(2), "picture2");
    EXPECT_EQ(popup.name(3), "picture3");
    EXPECT_EQ(popup.name(4), "(load Image)");
    EXPECT_EQ(popup.name(5), "(load Image)");
    EXPECT_EQ(popup.countOf(nullptr), 5) << "the panel may ask for no node in particular";
    EXPECT_STREQ(popup.nameOf(nullptr, 2), "picture2");
    EXPECT_STREQ(popup.nameOf(nullptr, 4), "(load Image)");
}

TEST_P(ImagePopups, TheFirstEntryIsNoImage) {
    images.add(1);
    const auto *list = static_cast<const HostImageList *>(FakeImages::lookup(HOST_IMAGE_LIST, kUseTransient));
    EXPECT_EQ(getImageID(*list, 0), nullptr);
    EXPECT_EQ(getImageID(*list, 1), list->first());
}

TEST_P(ImagePopups, TellsAnErrorWhereTheListEndsEarly) {
    images.add(3);
    images.nextCallsLeft = 3; // enough to count them, and none for the walk
    EXPECT_EQ(popup.name(3), "(error)");
}

// ---- Images that go while they are chosen ----

struct Removal {
    int chosen;
    size_t removed;
    bool resets;
};

TEST_P(ImagePopups, CountingResetsAChoiceBeyondTheList) {
    const Removal cases[] = {
        {.chosen = 0, .removed = 4, .resets = false}, {.chosen = 3, .removed = 0, .resets = false},
        {.chosen = 3, .removed = 1, .resets = false}, // still an image
        {.chosen = 4, .removed = 1, .resets = true},  // now the place of "(load Image)"
        {.chosen = 4, .removed = 3, .resets = true},  {.chosen = 1, .removed = 3, .resets = false},
        {.chosen = 1, .removed = 4, .resets = true},  {.chosen = 5, .removed = 0, .resets = false},
        {.chosen = 5, .removed = 1, .resets = true},
    };
    for (const Removal &one : cases) {
        SCOPED_TRACE(testing::Message() << one.chosen << " of 4, " << one.removed << " removed");
        images.list.clear();
        images.add(4);
        popup.startRender(); // the list is counted: 6 entries
        popup.set(one.chosen);
        images.remove(one.removed);
        images.controls.setReaches = false;
        for (int time = 0; time < 2; ++time) { // what is stored stays: the second time is as the first
            EXPECT_EQ(popup.count(), 6 - static_cast<int>(one.removed));
            EXPECT_EQ(host.takeLog(), one.resets ? Lines{popup.setTo(0)} : Lines{});
            EXPECT_EQ(popup.index(), one.chosen);
            host.takeLog();
        }
        images.controls.setReaches = true;
        popup.count();
        EXPECT_EQ(popup.index(), one.resets ? 0 : one.chosen);
        host.takeLog();
    }
}

TEST_P(ImagePopups, CountingLeavesAChoiceAloneWhenImagesCome) {
    images.add(2);
    popup.startRender();
    images.add(2);
    for (const int index : {3, 5}) { // "(load Image)" as it was, and as it is
        popup.set(index);
        EXPECT_EQ(popup.count(), 6);
        EXPECT_EQ(host.takeLog(), Lines{});
    }
}

TEST_P(ImagePopups, NamingResetsAChoiceThatHasBecomeTheLastEntry) {
    images.add(4);
    popup.startRender(); // 6 entries
    popup.set(4);
    EXPECT_EQ(popup.name(4), "picture4");
    images.remove(1); // 5 entries, of which 4 is "(load Image)"
    images.controls.setReaches = false;
    EXPECT_EQ(popup.name(0), "(none)");
    EXPECT_EQ(host.takeLog(), Lines{}) << "the first entry is told at once";
    EXPECT_EQ(popup.name(2), "(none)");
    EXPECT_EQ(host.takeLog(), Lines{popup.setTo(0)});
    EXPECT_EQ(popup.name(2), "picture2") << "the count is now known";
    EXPECT_EQ(popup.name(4), "(load Image)");
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_P(ImagePopups, NamingLeavesAChoiceBeyondTheLastEntryAlone) {
    images.add(4);
    popup.startRender();
    popup.set(4);
    images.remove(2); // 4 entries, the last of which is 3
    EXPECT_EQ(popup.name(1), "picture1");
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_P(ImagePopups, NamingLeavesAChoiceBeforeTheLastEntryAlone) {
    images.add(4);
    popup.startRender();
    popup.set(3);
    images.remove(2); // 4 entries: the choice is the last
    EXPECT_EQ(popup.name(1), "(none)");
    host.takeLog();
    popup.set(1);
    images.add(1);
    EXPECT_EQ(popup.name(1), "picture1") << "the count differs, but an image is chosen";
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_P(ImagePopups, ANodeWithoutAPanelHasNoPopupToSet) {
    images.add(1);
    TestNode node(host, GetParam().activate, nullptr, "bare");
    RecordedState state;
    if (popup.id == 0x8002) state.integer(0); // the mode comes first
    state.integer(1).text("image picture1");
    node.ops.load(node.instance, state.load());
    node.render.init(node.instance, kInitRender);
    images.list.clear();
    host.takeLog();
    EXPECT_EQ(popup.countOf(node.instance), 2);
    EXPECT_STREQ(popup.nameOf(node.instance, 1), "(none)");
    EXPECT_EQ(host.takeLog(), Lines{});
}

// ---- The start of a render ----

TEST_P(ImagePopups, ARenderTakesTheLastImageForWhatIsBeyond) {
    struct Case {
        int images, chosen, after;
    };
    for (const Case &one : {Case{3, 0, 0}, Case{3, 1, 1}, Case{3, 3, 3}, Case{3, 4, 3}, Case{3, 9, 3}, Case{0, 1, 0},
                            Case{0, 0, 0}, Case{3, -2, -2}}) {
        images.list.clear();
        images.add(one.images);
        popup.set(one.chosen);
        EXPECT_EQ(popup.node.render.init(popup.node.instance, kInitPreview), nullptr);
        EXPECT_EQ(popup.index(), one.after) << one.chosen << " of " << one.images;
    }
}

// ---- Loading ----

TEST_P(ImagePopups, LoadsAFileAndChoosesTheLastImage) {
    images.add(2);
    EXPECT_EQ(FakeControls::choose(popup.panel, popup.id, 3), 2);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "instanceUpdate NodeHandler", "request 3", "load /pictures/new.png",
                                     popup.setTo(3), "refresh"}));
    EXPECT_EQ(popup.index(), 3);
    EXPECT_EQ(popup.name(3), "/pictures/new.png");
    images.remove(1); // 4 entries where there were 5: they have been counted
    popup.count();
    EXPECT_EQ(host.takeLog(), Lines{popup.setTo(0)});
}

TEST_P(ImagePopups, LoadsTheFirstImage) {
    EXPECT_EQ(FakeControls::choose(popup.panel, popup.id, 1), 2);
    EXPECT_EQ(popup.index(), 1);
}

TEST_P(ImagePopups, ChoosesTheLastImageAlsoWhenTheFileWasThereAlready) {
    images.add(3);
    images.loadAdds = false;
    EXPECT_EQ(FakeControls::choose(popup.panel, popup.id, 4), 2);
    EXPECT_EQ(popup.index(), 3);
}

TEST_P(ImagePopups, ChoosesNothingWhenNoFileIsChosen) {
    struct Case {
        int returns, result;
    };
    images.add(2);
    for (const Case &one : {Case{0, 0}, Case{0, -1}, Case{1, 1}, Case{-1, 1}, Case{1, 0}}) {
        images.requestReturns = one.returns;
        images.requestResult = one.result;
        EXPECT_EQ(FakeControls::choose(popup.panel, popup.id, 3), 2);
        EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "instanceUpdate NodeHandler", "request 3", "refresh"}));
        EXPECT_EQ(popup.index(), 0);
    }
    EXPECT_EQ(images.list.size(), 2u);
}

TEST_P(ImagePopups, TakesAResultAboveOneForAChoice) {
    images.requestResult = 2;
    FakeControls::choose(popup.panel, popup.id, 1);
    EXPECT_EQ(popup.index(), 1);
}

TEST_P(ImagePopups, LoadsAfterImagesHaveGone) {
    images.add(4);
    popup.startRender(); // 6 entries
    images.remove(3);
    images.loadAdds = false; // one image: "(load Image)" is 2, and stays beyond the list
    EXPECT_EQ(FakeControls::choose(popup.panel, popup.id, 2), 2);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "instanceUpdate NodeHandler", "request 3", "load /pictures/new.png",
                                     popup.setTo(0), popup.setTo(1), "refresh"}));
    EXPECT_EQ(popup.index(), 1);

    images.add(3);
    popup.startRender();
    images.remove(2);
    images.loadAdds = true; // 2 images and one more: 3 is an image by now
    FakeControls::choose(popup.panel, popup.id, 3);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "instanceUpdate NodeHandler", "request 3", "load /pictures/new.png",
                                     popup.setTo(3), "refresh"}));
}

TEST_P(ImagePopups, AsksForNoFileOtherwise) {
    images.add(2);
    images.loadAdds = false;
    const auto asks = [&](unsigned int control, int index, int event) {
        popup.set(index);
        FakeControls::notify(popup.panel, control, event);
        for (const std::string &line : host.takeLog())
            if (line == "request 3") return true;
        return false;
    };
    EXPECT_TRUE(asks(popup.id, 3, kEventSet));
    for (const int event : {0, static_cast<int>(kEventChanging), static_cast<int>(kEventHit),
                            static_cast<int>(kEventFocus), static_cast<int>(kEventFocusLost)})
        EXPECT_FALSE(asks(popup.id, 3, event)) << event;
    for (const int index : {0, 1, 2, 4}) EXPECT_FALSE(asks(popup.id, index, kEventSet)) << index;
    EXPECT_FALSE(asks(popup.id + 1, 3, kEventSet));
    EXPECT_FALSE(asks(popup.id - 1, 3, kEventSet));
    popup.set(1);
    EXPECT_EQ(FakeControls::notify(popup.panel, popup.id, kEventSet), GetParam().otherResult);
    EXPECT_EQ(FakeControls::notify(popup.panel, popup.id, kEventChanging), 0);
}

TEST_P(ImagePopups, DescribesItsRequest) {
    FakeControls::choose(popup.panel, popup.id, 1);
    const HostFileRequest &request = *images.lastRequest;
    EXPECT_EQ(request.type, 1);
    EXPECT_STREQ(request.title, "Load Clip or Still");
    EXPECT_STREQ(request.fileType, "Images");
    EXPECT_EQ(request.bufferLength, 512);
    EXPECT_EQ(request.pick, nullptr);
    for (char *buffer : {request.path, request.baseName, request.fullName}) {
        const std::string before = buffer;
        std::fill_n(buffer, 511, 'x'); // all of it may be written
        buffer[511] = '\0';
        for (const char *other : {request.path, request.baseName, request.fullName})
            EXPECT_EQ(*other == 'x', other == buffer) << "each has its own room";
        std::fill_n(buffer, 512, '\0');
        before.copy(buffer, before.size());
    }
}

// ---- Each unit's own folder ----

TEST_P(ImagePopups, KeepsItsFolderFromOtherUnits) {
    images.chosenFolder = std::string("/folder of ") + GetParam().name;
    FakeControls::choose(popup.panel, popup.id, 1);
    const std::string folder = images.chosenFolder;
    for (const ImageUnit &unit : {kReflections, kRefractions, kPixelImage}) {
        if (unit.name == std::string(GetParam().name)) continue;
        images.list.clear();
        Popup other(host, unit);
        images.chosenFolder = "/elsewhere";
        FakeControls::choose(other.panel, other.id, 1);
        EXPECT_NE(images.startedIn, folder) << unit.name;
    }
    images.list.clear();
    Popup same(host, GetParam()); // activated anew
    FakeControls::choose(same.panel, same.id, 1);
    EXPECT_EQ(images.startedIn, folder);
}

} // namespace
} // namespace velm

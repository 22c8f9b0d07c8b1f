// The image popup while images are added and removed: the fate of a choice, and the node's count of entries.
#include "tests/nodes/image_popup_fixture.h"

namespace velm::plugin {
namespace {

// ---- Chosen images that are removed ----

struct Removal {
    int chosen;
    size_t removed;
    bool resets;
};

TEST_P(ImagePopups, CountingResetsAChoiceBeyondTheList) {
    const Removal cases[] = {
        {.chosen = 0, .removed = 4, .resets = false}, {.chosen = 3, .removed = 0, .resets = false},
        {.chosen = 3, .removed = 1, .resets = false}, // still an image
        {.chosen = 4, .removed = 1, .resets = true},  // now the index of "(load Image)"
        {.chosen = 4, .removed = 3, .resets = true},  {.chosen = 1, .removed = 3, .resets = false},
        {.chosen = 1, .removed = 4, .resets = true},  {.chosen = 5, .removed = 0, .resets = false},
        {.chosen = 5, .removed = 1, .resets = true},
    };
    for (const Removal &one : cases) {
        SCOPED_TRACE(testing::Message() << one.chosen << " of 4, " << one.removed << " removed");
        images.list.clear();
        images.add(4);
        popup.startRender(); // counts the entries: 6
        popup.set(one.chosen);
        images.remove(one.removed);
        images.controls.setReaches = false;
        for (int time = 0; time < 2; ++time) { // the stored choice is unchanged, so the second time gives the same
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
    for (const int index : {3, 5}) { // "(load Image)" before and now
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
    images.remove(1); // 5 entries; "(load Image)" is 4
    images.controls.setReaches = false;
    EXPECT_EQ(popup.name(0), "(none)");
    EXPECT_EQ(host.takeLog(), Lines{}) << "the first entry is reported at once";
    EXPECT_EQ(popup.name(2), "(none)");
    EXPECT_EQ(host.takeLog(), Lines{popup.setTo(0)});
    EXPECT_EQ(popup.name(2), "picture2") << "the count is now known";
    EXPECT_EQ(popup.name(4), "(load Image)");
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_P(ImagePopups, NamingResetsAChoiceThatIsTheLastEntryOfALongerList) {
    images.add(2);
    popup.startRender(); // 4 entries
    images.add(2);
    popup.set(5); // the last of 6, which have not been counted
    images.controls.setReaches = false;
    EXPECT_EQ(popup.name(1), "(none)");
    EXPECT_EQ(host.takeLog(), Lines{popup.setTo(0)});
    EXPECT_EQ(popup.name(1), "picture1") << "now they have";
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

// ---- The count of entries ----

// Counting resets a choice beyond the list only if the stored count was higher, so it shows the count that an instance
// has stored.
TEST_P(ImagePopups, ACopyKeepsWhatItKnowsOfTheList) {
    images.add(4);
    Popup uncounted(host, GetParam()), counted(host, GetParam());
    counted.startRender();
    popup.startRender();
    popup.set(4);
    uncounted.set(4);
    EXPECT_EQ(uncounted.node.ops.copy(uncounted.node.instance, popup.node.instance), nullptr);
    EXPECT_EQ(uncounted.index(), 4);
    images.remove(1);
    host.takeLog();
    EXPECT_EQ(uncounted.count(), 5);
    EXPECT_EQ(host.takeLog(), Lines{}) << "of an instance that has counted";

    EXPECT_EQ(counted.node.ops.copy(counted.node.instance, uncounted.node.instance), nullptr);
    host.takeLog();
    EXPECT_EQ(counted.count(), 5);
    EXPECT_EQ(host.takeLog(), Lines{popup.setTo(0)}) << "of an instance that has not";
}

TEST_P(ImagePopups, LoadingSettingsDoesNotCount) {
    images.add(4);
    popup.startRender(); // 6 entries
    images.remove(1);
    RecordedState state;
    if (popup.id == 0x8002) state.integer(0); // the mode comes first
    state.integer(1).text("image picture2");
    popup.node.ops.load(popup.node.instance, state.load());
    EXPECT_EQ(popup.index(), 2);
    popup.set(4);
    host.takeLog();
    EXPECT_EQ(popup.count(), 5);
    EXPECT_EQ(host.takeLog(), Lines{popup.setTo(0)});
}

TEST_P(ImagePopups, ARequestThatChoosesNothingDoesNotCount) {
    images.add(4);
    popup.startRender(); // 6 entries
    images.remove(3);
    images.requestResult = 0;
    EXPECT_EQ(FakeControls::choose(popup.panel, popup.id, 2), 2);
    popup.set(2);
    host.takeLog();
    EXPECT_EQ(popup.count(), 3);
    EXPECT_EQ(host.takeLog(), Lines{popup.setTo(0)});
}

} // namespace
} // namespace velm::plugin

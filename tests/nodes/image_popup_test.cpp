// The image popup, in each class that has one: its entries, and loading a file through it.
#include "tests/nodes/image_popup_fixture.h"

#include <algorithm>

namespace velm::plugin {
namespace {

INSTANTIATE_TEST_SUITE_P(NodeClasses, ImagePopups,
                         testing::Values(kReflectionsPopup, kRefractionsPopup, kPixelImagePopup),
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

TEST_P(ImagePopups, IndicesAndImagesBecomeEachOther) {
    const auto *list = static_cast<const HostImageList *>(FakeImages::lookup(HOST_IMAGE_LIST, kUseTransient));
    for (const int index : {-1, 0, 1, 2}) EXPECT_EQ(getImageID(*list, index), nullptr) << index;
    EXPECT_EQ(getImageIndex(*list, nullptr), 0);
    images.add(3);
    for (const int index : {1, 2, 3}) {
        HostImage *image = images.list[static_cast<size_t>(index) - 1].get();
        EXPECT_EQ(getImageID(*list, index), image);
        EXPECT_EQ(getImageIndex(*list, image), index);
    }
    for (const int none : {0, 4, 5}) EXPECT_EQ(getImageID(*list, none), nullptr) << none;
    EXPECT_EQ(getImageID(*list, -1), list->first()) << "there is nothing to step over";
    EXPECT_EQ(popup.name(-1), "picture1");
    EXPECT_EQ(getImageIndex(*list, nullptr), 0);
    const HostImage stranger = {.name = "of another list"};
    EXPECT_EQ(getImageIndex(*list, &stranger), 0);
}

TEST_P(ImagePopups, TellsAnErrorWhereTheListEndsEarly) {
    images.add(3);
    images.nextCallsLeft = 3; // enough to count the list, but not to walk it
    EXPECT_EQ(popup.name(3), "(error)");
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
    images.remove(1); // 4 entries; 5 have been counted
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
    images.loadAdds = false; // one image: "(load Image)" is 2, which stays beyond the list
    EXPECT_EQ(FakeControls::choose(popup.panel, popup.id, 2), 2);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "instanceUpdate NodeHandler", "request 3", "load /pictures/new.png",
                                     popup.setTo(0), popup.setTo(1), "refresh"}));
    EXPECT_EQ(popup.index(), 1);

    images.add(3);
    popup.startRender();
    images.remove(2);
    images.loadAdds = true; // a third image is loaded, so 3 is an image now
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
        std::fill_n(buffer, 511, 'x'); // the whole buffer may be written
        buffer[511] = '\0';
        for (const char *other : {request.path, request.baseName, request.fullName})
            EXPECT_EQ(*other == 'x', other == buffer) << "each has its own room";
        std::fill_n(buffer, 512, '\0');
        before.copy(buffer, before.size());
    }
}

// ---- The folder of each class ----

TEST_P(ImagePopups, KeepsItsFolderFromOtherNodeClasses) {
    images.chosenFolder = std::string("/folder of ") + GetParam().name;
    FakeControls::choose(popup.panel, popup.id, 1);
    const std::string folder = images.chosenFolder;
    for (const ImageNodeClass &nodeClass : {kReflectionsPopup, kRefractionsPopup, kPixelImagePopup}) {
        if (nodeClass.name == std::string(GetParam().name)) continue;
        images.list.clear();
        Popup other(host, nodeClass);
        images.chosenFolder = "/elsewhere";
        FakeControls::choose(other.panel, other.id, 1);
        EXPECT_NE(images.startedIn, folder) << nodeClass.name;
    }
    images.list.clear();
    Popup same(host, GetParam()); // activates the class again
    FakeControls::choose(same.panel, same.id, 1);
    EXPECT_EQ(images.startedIn, folder);
}

} // namespace
} // namespace velm::plugin

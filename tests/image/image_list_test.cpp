// The scene's image list, and the service through which nodes use it.
#include "host/base/error.h"
#include "host/image/image.h"
#include "tests/image/image_files.h"
#include "tests/temporary_directory.h"

#include <gtest/gtest.h>

#include <array>
#include <deque>

namespace velm::host::test {
namespace {

class ImageListTest : public testing::Test {
  protected:
    void SetUp() override {
        list.clear();
        ASSERT_TRUE(writeImageFile<float>(directory / "red.exr", 2, 1, 3, {1, 0, 0, 0.5f, 0, 0}));
        ASSERT_TRUE(writeImageFile<float>(directory / "green.exr", 1, 3, 3, {0, 1, 0, 0, 1, 0, 0, 1, 0}));
        std::filesystem::create_directory(directory / "other");
        ASSERT_TRUE(writeImageFile<float>(directory / "other/red.exr", 1, 1, 3, {9, 9, 9}));
    }
    void TearDown() override { list.clear(); }

    std::vector<std::string> namesInOrder() const {
        std::vector<std::string> names;
        for (HostImage *image = table->first(); image; image = table->next(image))
            names.emplace_back(table->name(image));
        return names;
    }

    const TemporaryDirectory directory;
    ImageList &list = ImageList::instance();
    const HostImageList *table = imageListFuncs();
};

using Names = std::vector<std::string>;

TEST_F(ImageListTest, KeepsItsOrder) {
    EXPECT_EQ(table->first(), nullptr);
    EXPECT_EQ(table->next(nullptr), nullptr);
    list.load(directory / "red.exr", "b");
    HostImage &second = list.load(directory / "green.exr", "a");
    list.load(directory / "other/red.exr", "c");
    EXPECT_EQ(namesInOrder(), (Names{"b", "a", "c"}));
    table->clear(&second);
    EXPECT_EQ(namesInOrder(), (Names{"b", "c"}));
    table->clear(nullptr);
    EXPECT_EQ(namesInOrder(), (Names{"b", "c"}));
}

TEST_F(ImageListTest, ReadsAFileOnce) {
    HostImage &named = list.load(directory / "red.exr", "sky");
    EXPECT_EQ(&list.load(directory / "red.exr", "sky"), &named);
    EXPECT_EQ(&list.load(directory / "red.exr"), &named);
    EXPECT_NE(&list.load(directory / "red.exr", "sea"), &named);
    EXPECT_EQ(namesInOrder(), (Names{"sky", "sea"}));
}

TEST_F(ImageListTest, SequencesShowTheFileOfTheFrame) {
    ASSERT_TRUE(writeImageFile<float>(directory / "f01.exr", 1, 1, 3, {1, 2, 3}));
    ASSERT_TRUE(writeImageFile<float>(directory / "f02.exr", 2, 1, 1, {5, 6}));
    const std::string pattern = directory / "f##.exr";
    HostImage &image = list.addSequence(pattern, {.first = 1, .last = 2, .loop = true}, "fire");
    EXPECT_EQ(namesInOrder(), (Names{"fire"}));
    EXPECT_THROW(list.addSequence(pattern, {}, "fire"), InputError);
    EXPECT_EQ(pixelAlpha(&image, 0, 0), 0) << "no frame is shown yet";
    const auto colourAt = [&](int frame) {
        EXPECT_TRUE(list.setFrame(frame).empty());
        std::array<float, 3> colour{};
        pixel(&image, 1, 0, colour.data());
        return colour;
    };
    EXPECT_EQ(colourAt(1), (std::array<float, 3>{1, 2, 3}));
    EXPECT_EQ(pixelAlpha(&image, 0, 0), 1);
    EXPECT_EQ(colourAt(2), (std::array<float, 3>{6, 6, 6}));
    EXPECT_EQ(image.width, 2);
    EXPECT_FALSE(image.isColour);
    EXPECT_EQ(colourAt(3), (std::array<float, 3>{1, 2, 3}));
    EXPECT_EQ(list.find("fire"), &image);
    EXPECT_EQ(table->fileName(&image, 2), directory / "f02.exr");
    EXPECT_EQ(table->fileName(&image, 3), directory / "f01.exr");
}

TEST_F(ImageListTest, SequencesReadAFileOnlyWhenItChanges) {
    ASSERT_TRUE(writeImageFile<float>(directory / "f1.exr", 1, 1, 3, {1, 2, 3}));
    HostImage &image = list.addSequence(directory / "f#.exr", {.first = 0, .last = 1}, "fire");
    EXPECT_TRUE(list.setFrame(1).empty());
    std::filesystem::remove(directory / "f1.exr");
    EXPECT_TRUE(list.setFrame(2).empty()) << "it is shown already";
    EXPECT_EQ(pixelAlpha(&image, 0, 0), 1);
    const auto unread = list.setFrame(0);
    ASSERT_EQ(unread.size(), 1U);
    EXPECT_EQ(unread[0].image, "fire");
    EXPECT_NE(unread[0].why.find(directory / "f0.exr"), std::string::npos) << unread[0].why;
    EXPECT_EQ(pixelAlpha(&image, 0, 0), 0);
    EXPECT_EQ(image.width, 1);
    EXPECT_EQ(list.setFrame(1).size(), 1U);
}

TEST_F(ImageListTest, NamesAreUnique) {
    list.load(directory / "red.exr", "sky");
    EXPECT_THROW(list.load(directory / "green.exr", "sky"), InputError);
    list.load(directory / "green.exr");
    list.load(directory / "other/red.exr");
    list.clear();
    list.load(directory / "red.exr");
    list.load(directory / "other/red.exr");
    EXPECT_EQ(namesInOrder(), (Names{"red.exr", "red.exr (2)"}));
}

TEST_F(ImageListTest, TableReportsFailuresAsNull) {
    EXPECT_EQ(table->load((directory / "none.png").c_str()), nullptr);
    EXPECT_NE(list.lastError().find("none.png"), std::string::npos);
    EXPECT_EQ(table->load(nullptr), nullptr);
    HostImage *image = table->load((directory / "red.exr").c_str());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(list.lastError(), "");
    EXPECT_EQ(table->fileName(image, 7), directory / "red.exr");
}

TEST_F(ImageListTest, TableGivesPixels) {
    HostImage *image = &list.load(directory / "red.exr", "red");
    int width, height;
    table->size(image, &width, &height);
    EXPECT_EQ(width, 2);
    EXPECT_EQ(height, 1);
    EXPECT_EQ(table->isColour(image), 1);
    EXPECT_EQ(table->hasAlpha(image), 0);
    float colour[3];
    table->rgb(image, 1, 0, colour);
    EXPECT_EQ(colour[0], 0.5f);
    EXPECT_NEAR(table->luma(image, 0, 0), 0.299, 1e-6);
    double spot[3];
    table->rgbSpot(image, 0.5, 0.5, 0, 1, spot);
    EXPECT_NEAR(spot[0], 0.75, 1e-6);
    table->rgbSpot(image, 0.5, 0.5, 0, 0, spot); // without blending
    EXPECT_EQ(spot[0], 0.5);
    table->rgbSpot(image, 0.5, 0.5, 1, 1, spot); // all of the image
    EXPECT_NEAR(spot[0], 0.75, 1e-6);
    EXPECT_NEAR(table->lumaSpot(image, 0.25, 0.5, 0, 1), 0.299, 1e-6);
    EXPECT_EQ(table->alpha(image, 0, 0), 1);
    EXPECT_EQ(table->alphaSpot(image, 0.5, 0.5, 0, 1), 1);
}

TEST_F(ImageListTest, TableAllowsTheNullImageEverywhere) {
    int width = 9, height = 9;
    table->size(nullptr, &width, &height);
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 0);
    EXPECT_STREQ(table->name(nullptr), "");
    EXPECT_STREQ(table->fileName(nullptr, 0), "");
    EXPECT_EQ(table->isColour(nullptr), 0);
    EXPECT_EQ(table->hasAlpha(nullptr), 0);
    table->needAntialiasing(nullptr);
    float narrow[3] = {1, 1, 1};
    table->rgb(nullptr, 0, 0, narrow);
    EXPECT_EQ(narrow[1], 0);
    EXPECT_EQ(table->luma(nullptr, 0, 0), 0);
    double colour[3] = {1, 1, 1};
    table->rgbSpot(nullptr, 0, 0, 1, 0, colour);
    EXPECT_EQ(colour[2], 0);
    EXPECT_EQ(table->lumaSpot(nullptr, 0, 0, 1, 1), 0);
    table->alpha(nullptr, 0, 0);
    table->alphaSpot(nullptr, 0, 0, 1, 0);
}

// A save state that stores strings, and a load state that returns them in the same order.
struct Strings {
    std::deque<std::string> stored;
    HostSaveState save{};
    HostLoadState load{};

    Strings() {
        save.data = load.data = this;
        save.writeString = [](void *data, const char *text) {
            static_cast<Strings *>(data)->stored.emplace_back(text);
        };
        load.readString = [](void *data, char *buffer, int size) {
            auto &strings = static_cast<Strings *>(data)->stored;
            if (strings.empty()) return 0;
            const std::string text = strings.front().substr(0, static_cast<std::size_t>(size) - 1);
            strings.pop_front();
            text.copy(buffer, text.size());
            buffer[text.size()] = '\0';
            return static_cast<int>(text.size());
        };
    }
};

TEST_F(ImageListTest, ReferencesFindTheirImage) {
    HostImage *red = &list.load(directory / "red.exr", "red");
    HostImage *alsoRed = &list.load(directory / "red.exr", "also red");
    Strings state;
    for (HostImage *image : {alsoRed, red, static_cast<HostImage *>(nullptr)}) {
        table->saveReference(&state.save, image);
        EXPECT_EQ(table->loadReference(&state.load), image);
        EXPECT_TRUE(state.stored.empty());
    }
}

TEST_F(ImageListTest, ReferenceToAnUnlistedImageReadsItsFile) {
    Strings state;
    table->saveReference(&state.save, &list.load(directory / "red.exr", "red"));
    list.clear();
    const HostImage *image = table->loadReference(&state.load);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->file, directory / "red.exr");
    EXPECT_EQ(image->name, "red");

    table->saveReference(&state.save, list.first());
    list.clear();
    std::filesystem::remove(directory / "red.exr");
    EXPECT_EQ(table->loadReference(&state.load), nullptr);
    EXPECT_NE(list.lastError(), "");
    EXPECT_EQ(table->loadReference(&state.load), nullptr) << "an empty state";
}

TEST_F(ImageListTest, PyramidKeepsTheMean) {
    std::vector<float> values;
    double sum = 0;
    for (int i = 0; i < 7 * 5; ++i) {
        values.push_back(static_cast<float>(i * i % 11));
        sum += values.back();
    }
    ASSERT_TRUE(writeImageFile(directory / "odd.exr", 7, 5, 1, values));
    const HostImage &image = list.load(directory / "odd.exr");
    ASSERT_EQ(image.levels.size(), 3u); // 7 by 5, 3 by 2, 1 by 1
    EXPECT_EQ(image.levels[1].width, 3);
    EXPECT_EQ(image.levels[1].height, 2);
    EXPECT_NEAR(image.levels[2].pixels.at(0), sum / 35, 1e-5);
}

} // namespace
} // namespace velm::host::test

// Pixel Image: the class, saving and loading, the panel and the thumbnail.
#include "tests/module/hint_list.h"
#include "tests/module/recorded_state.h"
#include "tests/nodes/pixel_image_fixture.h"

namespace velm::plugin {
namespace {

// ---- Life ----

const Lines kCreation = {
    "setColour 164 50 10",
    "channelGroup",
    "createGroup PixelImage in second",
    "createParm 81 -1",
    "setUpParm Bg Color in PixelImage",
    "setParm Bg Color 0 0 0",
    "createParm 32 -1",
    "setUpParm Opacity in PixelImage",
    "setParm Opacity 1",
    "createInput Bg Color 1",
    "createInput Image 4",
    "createInput Blending 4",
    "createInput Opacity 2",
    "createInput U Tiling 4",
    "createInput V Tiling 4",
    "createInput X 4",
    "createInput Y 4",
    "createOutput Color 1",
    "createOutput Alpha 2",
};

TEST_F(PixelImageNode, IsMadeInOrder) {
    HostNode &second = host.addNode("second");
    const char *error = nullptr;
    void *instance = node.ops.create(node.ops.priv, &second, &error);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(host.takeLog(), kCreation);
    node.ops.destroy(instance);
    EXPECT_EQ(host.takeLog(), (Lines{"destroyParm Bg Color", "destroyParm Opacity"}));
    for (const unsigned int id : kIntegers) EXPECT_EQ(node.integer(id), 0);
}

TEST_F(PixelImageNode, AFrameReadsItsParameters) {
    EXPECT_EQ(node.render.newTime(node.instance, 30, 1.25), nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"getParm Bg Color at 1.25", "getParm Opacity at 1.25"}));
    PixelImage_get_vpValues(node.instance, 3);
    EXPECT_EQ(host.takeLog(), (Lines{"getParm Bg Color at 3", "getParm Opacity at 3"}));
}

TEST_F(PixelImageNode, CopiesItsSettings) {
    TestNode other(host, activatedWith<FakeImages::lookup, PixelImage_Activate>,
                   activatedWith<FakeImages::lookup, PixelImage_Interface>, "other");
    int value = 70000;
    for (const unsigned int id : kIntegers) node.set(id, value++);
    EXPECT_EQ(node.ops.copy(other.instance, node.instance), nullptr);
    EXPECT_EQ(host.takeLog(),
              (Lines{"copyParm other/Bg Color <- node/Bg Color", "copyParm other/Opacity <- node/Opacity"}));
    for (const unsigned int id : kIntegers) EXPECT_EQ(other.integer(id), node.integer(id));
}

TEST_F(PixelImageNode, ACopyAwaitsItsFrameAndItsRender) {
    TestNode other(host, activatedWith<FakeImages::lookup, PixelImage_Activate>,
                   activatedWith<FakeImages::lookup, PixelImage_Interface>, "other");
    node.set("Opacity", 0.25);
    node.set(kImage, 3);
    node.render.init(node.instance, kInitRender); // it counts five entries
    EXPECT_EQ(node.ops.copy(other.instance, node.instance), nullptr);
    HostNodeValue seen = other.evaluate("Color", sample);
    EXPECT_EQ(seen.numbers[2], 0.5 + 10 * 0.0 + 100) << "a black background and full opacity, as it was made";
    other.render.newTime(other.instance, 0, 0);
    seen = other.evaluate("Color", sample);
    EXPECT_EQ(seen.numbers[2], 0.5 - 10 * 3.0 + 25);

    const HostHint *hints = other.panel()->hints;
    images.remove(1);
    host.takeLog();
    EXPECT_EQ(hintsWith(kHintPopupFunctions, hints).at(0).arguments[1].popupCount(other.instance), 4);
    EXPECT_EQ(host.takeLog(), Lines{}) << "it knows of no image that has gone";
}

// ---- Files ----

TEST_F(PixelImageNode, SavesInOrder) {
    const int values[] = {0, 13, 1, 2, 70000, -9};
    for (size_t i = 0; i < 6; ++i) node.set(kIntegers[i], values[i]);
    for (const int image : {0, -1, 2, 4, 9}) {
        node.set(kImage, image);
        RecordedState state;
        EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
        Lines expected = {"I2 " + std::to_string(image), "I2 13", "I2 1", "I2 2", "I2 4464", "I2 -9"};
        if (image >= 1) expected.emplace_back(image == 2 ? "text image picture2" : "text no image");
        expected.insert(expected.end(), {"parm Bg Color", "parm Opacity"});
        EXPECT_EQ(state.lines(), expected);
    }
}

TEST_F(PixelImageNode, LoadsWhatItSaved) {
    RecordedState state;
    state.integer(1).integer(-2).integer(3).integer(4).integer(-5).integer(6).text("image picture3");
    state.parm({0.25, 0.5, 0.75}).parm({0.125});
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    EXPECT_EQ(host.takeLog(),
              (Lines{"loadParm Bg Color", "loadParm Opacity", "getParm Bg Color at 0", "getParm Opacity at 0"}));
    const int values[] = {3, -2, 3, 4, -5, 6};
    for (size_t i = 0; i < 6; ++i) EXPECT_EQ(node.integer(kIntegers[i]), values[i]);
    node.set(kImage, 0);
    EXPECT_EQ(colour(), (Colour{0.25, 0.5, 0.75}));
}

TEST_F(PixelImageNode, FindsItsImageInTodaysList) {
    struct Case {
        int saved;
        const char *reference;
        int loaded;
    };
    for (const Case &one : {Case{3, "image picture1", 1}, Case{2, "image gone", 0}, Case{1, "no image", 0},
                            Case{0, nullptr, 0}, Case{-4, nullptr, -4}}) {
        RecordedState state;
        state.integer(one.saved).integer(0).integer(0).integer(0).integer(0).integer(0);
        if (one.reference) state.text(one.reference);
        state.parm({0, 0, 0}).parm({0.125});
        EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
        EXPECT_EQ(node.integer(kImage), one.loaded);
        EXPECT_EQ(node.parm("Opacity").value[0], 0.125) << "what comes after the reference";
    }
}

TEST_F(PixelImageNode, StopsSavingAndLoadingAtTheFirstError) {
    for (int failing = 0; failing < 2; ++failing) {
        RecordedState state, whole;
        node.ops.save(node.instance, whole.save());
        host.takeLog();
        host.parmsSaved = host.parmsLoaded = 0;
        host.failingSave = host.failingLoad = failing;
        EXPECT_STREQ(node.ops.save(node.instance, state.save()), FakeHost::kSaveError);
        EXPECT_EQ(host.takeLog().size(), 1u + static_cast<size_t>(failing));
        EXPECT_STREQ(node.ops.load(node.instance, whole.load()), FakeHost::kLoadError);
        EXPECT_EQ(host.takeLog().size(), 1u + static_cast<size_t>(failing)) << "and no value is read anew";
        host.failingSave = host.failingLoad = -1;
    }
}

// ---- The panel ----

TEST_F(PixelImageNode, ShowsItsControls) {
    const HostPanel *panel = node.panel();
    Lines controls, labels, values, lists;
    for (const Hint &hint : hintsWith(kHintAddControl, panel->hints)) controls.emplace_back(hint.arguments[1].text);
    for (const Hint &hint : hintsWith(kHintLabel, panel->hints)) labels.emplace_back(hint.arguments[1].text);
    EXPECT_EQ(controls, (Lines{"dThumbnail", "color-env", "iPopChoice", "iPopChoice", "percent-env", "iPopChoice",
                               "iPopChoice", "integer", "integer"}));
    EXPECT_EQ(labels, (Lines{"Bg Color", "Image", "Blending", "Opacity", "U Tiling", "V Tiling", "X", "Y"}));
    for (const HostPanelValue *row = panel->values; row->id; ++row) {
        EXPECT_EQ(row->id, 0x8002 + values.size());
        EXPECT_EQ(row->label, labels.at(values.size()));
        values.emplace_back(row->type);
    }
    EXPECT_EQ(values,
              (Lines{"color-env", "integer", "integer", "percent-env", "integer", "integer", "integer", "integer"}));
    EXPECT_EQ(limitsOf(panel->hints), Lines{});
    EXPECT_TRUE(hintsWith(kHintEnable, panel->hints).empty());

    for (const Hint &hint : hintsWith(kHintStringList, panel->hints)) {
        std::string list = std::to_string(hint.arguments[0].word - 0x8000) + ":";
        for (const char *const *text = hint.arguments[1].texts; *text; ++text) list += std::string(" ") + *text;
        lists.push_back(list);
    }
    EXPECT_EQ(lists, (Lines{"4: Normal Additive Subtractive Multiply Screen Darken Lighten Difference Negative Color "
                            "Dodge Color Burn Red Green Blue",
                            "6: Reset Repeat Mirror Edge", "7: Reset Repeat Mirror Edge"}));
    const auto drawing = hintsWith(kHintDraw, panel->hints);
    ASSERT_EQ(drawing.size(), 1u);
    EXPECT_EQ(drawing[0].arguments[0].word, 0x8001u);
}

TEST_F(PixelImageNode, HandsOutWhatIsNotConnected) {
    HostPanel *panel = node.panel();
    const auto shown = [&](unsigned int id) { return panel->get(node.instance, id); };
    EXPECT_EQ(shown(kBg), &node.parm("Bg Color"));
    EXPECT_EQ(shown(kOpacity), &node.parm("Opacity"));
    for (const unsigned int id : {0u, 0x8000u, 0x8001u, 0x800au}) EXPECT_EQ(shown(id), nullptr);
    const char *inputs[] = {"Bg Color", "Image", "Blending", "Opacity", "U Tiling", "V Tiling", "X", "Y"};
    for (unsigned int id = 0x8002; id <= 0x8009; ++id) {
        node.connect(inputs[id - 0x8002], 0);
        for (unsigned int other = 0x8002; other <= 0x8009; ++other)
            EXPECT_EQ(shown(other) == nullptr, other == id) << std::hex << id << " and " << other;
        node.disconnect(inputs[id - 0x8002]);
    }
}

TEST_F(PixelImageNode, TakesValues) {
    HostPanel *panel = node.panel();
    int value = -3;
    for (const unsigned int id : kIntegers) {
        ++value;
        EXPECT_EQ(panel->set(node.instance, id, &value), 1);
        EXPECT_EQ(node.integer(id), value);
    }
    for (const unsigned int id : {kBg, kOpacity}) EXPECT_EQ(panel->set(node.instance, id, &node.parm("Opacity")), 1);
    for (const unsigned int id : {0u, 0x8001u, 0x800au}) EXPECT_EQ(panel->set(node.instance, id, &value), 0);
}

TEST_F(PixelImageNode, TellsOfChangesAndDrawsItselfAnew) {
    HostPanel *panel = node.panel();
    for (unsigned int control = kThumbnail; control <= kY; ++control) {
        EXPECT_EQ(FakeControls::notify(panel, control, kEventChanging), 0);
        EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "updatePreview node", "refresh"}));
        EXPECT_EQ(FakeControls::notify(panel, control, kEventSet), 2);
        EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "instanceUpdate NodeHandler", "refresh"}));
        for (const int event : {0, 3, 4, 5}) {
            EXPECT_EQ(FakeControls::notify(panel, control, event), 0);
            EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "refresh"}));
        }
    }
}

TEST_F(PixelImageNode, EveryInputTellsOfItsConnection) {
    node.panel();
    host.takeLog();
    ASSERT_EQ(node.inputs().size(), 8u);
    for (HostInput &input : host.inputs)
        for (const int event : {0, 1, 2, 3}) {
            EXPECT_EQ(input.event(node.instance, &input, event, 0), 1);
            EXPECT_EQ(host.takeLog(), event == 2 ? (Lines{"refresh", "instanceUpdate NodeHandler"}) : Lines{"refresh"})
                << input.name;
        }
}

// ---- The thumbnail ----

class Thumbnail : public PixelImageNode {
  protected:
    HostDrawArea draw(int width, int height) {
        HostDrawArea area;
        HostPanel *panel = node.panel();
        hintsWith(kHintDraw, panel->hints).at(0).arguments[1].draw(panel, kThumbnail, &area, width, height);
        return area;
    }
};

TEST_F(Thumbnail, IsBlackWithoutAnImage) {
    for (const int index : {0, -1, 4, 5}) {
        node.set(kImage, index);
        const HostDrawArea area = draw(12, 7);
        EXPECT_TRUE(area.pixels.empty());
        EXPECT_EQ(area.boxes, (std::vector<std::array<int, 7>>{{0, 0, 0, 0, 0, 12, 7}})) << index;
    }
    node.set(kImage, 1);
    for (const auto &[width, height] : {std::pair{0, 8}, std::pair{10, 0}, std::pair{0, 0}}) {
        images.list[0]->width = width;
        images.list[0]->height = height;
        const HostDrawArea area = draw(12, 7);
        EXPECT_TRUE(area.pixels.empty()) << "an image without pixels: " << width << " by " << height;
        EXPECT_EQ(area.boxes, (std::vector<std::array<int, 7>>{{0, 0, 0, 0, 0, 12, 7}}));
    }
}

// Columns and rows of the image, identified by their colours.
void expectStretched(const HostDrawArea &area, int width, int height, int imageWidth, int imageHeight) {
    ASSERT_EQ(area.pixels.size(), static_cast<size_t>(width * height));
    EXPECT_TRUE(area.boxes.empty());
    size_t next = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const HostDrawArea::Pixel &pixel = area.pixels[next++];
            EXPECT_EQ(pixel.x, x);
            EXPECT_EQ(pixel.y, y);
            EXPECT_EQ(pixel.red, 255 * (x * imageWidth / width) / 32) << x << ", " << y;
            EXPECT_EQ(pixel.green, 255 * (y * imageHeight / height) / 32) << x << ", " << y;
            EXPECT_EQ(pixel.blue, 127);
        }
}

TEST_F(Thumbnail, StretchesTheImageOverItsArea) {
    node.set(kImage, 2);
    HostImage &image = *images.list[1];
    image.pixel = [](int x, int y) { return std::array{static_cast<float>(x) / 32, static_cast<float>(y) / 32, 0.5f}; };
    struct Size {
        int width, height, imageWidth, imageHeight;
    };
    for (const Size &one : {Size{8, 4, 8, 4}, Size{4, 2, 8, 4}, Size{16, 8, 8, 4}, Size{5, 8, 20, 2}, Size{1, 1, 9, 9},
                            Size{0, 5, 9, 9}}) {
        image.width = one.imageWidth;
        image.height = one.imageHeight;
        expectStretched(draw(one.width, one.height), one.width, one.height, one.imageWidth, one.imageHeight);
    }
}

// 84 pixels drawn as 20: 84/20 in single precision is slightly below 4.2, so 15 times this is below 63.
TEST_F(Thumbnail, ScalesInSinglePrecision) {
    constexpr int kTaken[20] = {0, 4, 8, 12, 16, 21, 25, 29, 33, 37, 42, 46, 50, 54, 58, 62, 67, 71, 75, 79};
    node.set(kImage, 1);
    HostImage &image = *images.list[0];
    image.width = image.height = 84;
    std::vector<std::pair<int, int>> read;
    image.pixel = [&](int x, int y) {
        read.emplace_back(x, y);
        return std::array{0.f, 0.f, 0.f};
    };
    draw(20, 20);
    ASSERT_EQ(read.size(), 400u);
    for (size_t i = 0; i < 400; ++i)
        EXPECT_EQ(read[i], (std::pair{kTaken[i % 20], kTaken[i / 20]})) << i % 20 << ", " << i / 20;
}

TEST_F(Thumbnail, CutsComponentsAboveFullAndNotBelowNone) {
    node.set(kImage, 1);
    const std::pair<float, int> components[] = {{0.f, 0},      {1.f, 255},    {1.5f, 255},  {900.f, 255},
                                                {0.999f, 254}, {-0.5f, -127}, {-2.f, -510}, {-20.f, -5100}};
    for (const auto &[component, drawn] : components) {
        images.list[0]->pixel = [value = component](int, int) { return std::array{value, 0.25f, value}; };
        const HostDrawArea area = draw(1, 1);
        ASSERT_EQ(area.pixels.size(), 1u);
        EXPECT_EQ(area.pixels[0].red, drawn) << component;
        EXPECT_EQ(area.pixels[0].green, 63);
        EXPECT_EQ(area.pixels[0].blue, drawn);
    }
}

} // namespace
} // namespace velm::plugin

// The image node, and the panels, saved forms and copies of all of the host's own nodes.
#include "tests/graph/builtin_fixture.h"

#include "host/image/image.h"
#include "host/image/picture.h"
#include "host/services/uv_provider.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

#include <unistd.h>

#include <filesystem>
#include <numbers>

namespace velm::host::test {
namespace {

// Two by two: red and green above, blue and white below.
class ImageTest : public BuiltinTest {
  protected:
    void SetUp() override {
        file = (std::filesystem::temp_directory_path() / ("velm_image_node_" + std::to_string(::getpid()) + ".exr"))
                   .string();
        constexpr float kPixels[4][4] = {{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}, {1, 1, 1, 1}};
        Picture picture(2, 2);
        for (int i = 0; i < 4; ++i) std::copy_n(kPixels[i], 4, picture.pixel(i % 2, i / 2));
        writePicture(picture, file);
        ImageList::instance().load(file, "Tiles");
        setUvProvider({[](const ShadingSample *given, const char *, double *u, double *v) {
            if (given->polygonNumber < 0) return false;
            *u = given->objectPosition[0];
            *v = given->objectPosition[1];
            return true;
        }});
    }
    void TearDown() override {
        setUvProvider({});
        ImageList::instance().clear();
        std::filesystem::remove(file);
    }
    std::string file;
};

TEST_F(ImageTest, IsMappedUprightAndRepeats) {
    HostNode &image = add("Image", {{"Image", std::string("Tiles")}, {"Background Color", Double3{0.5, 0.5, 0.5}}});
    place(0.25, 0.75, 0);
    expectTriple(triple(image, "Color"), {1, 0, 0});
    place(0.75, 0.75, 0);
    expectTriple(triple(image, "Color"), {0, 1, 0});
    place(-0.75, 3.25, 0);
    expectTriple(triple(image, "Color"), {0, 0, 1});
    EXPECT_EQ(scalar(image, "Alpha"), 1);
    EXPECT_NEAR(scalar(image, "Luminance"), 0.114, 1e-6);
    place(0.5, 0.75, 0);
    expectTriple(triple(image, "Color"), {0.5, 0.5, 0}); // bilinear
    sample.polygonNumber = -1;
    expectTriple(triple(image, "Color"), {0.5, 0.5, 0.5});
    EXPECT_EQ(scalar(image, "Alpha"), 0);
}

TEST_F(ImageTest, IsChosenByNameAndReleasedWithTheList) {
    HostNode &image = add("Image");
    HostPanel &panel = *panelOf(image);
    EXPECT_EQ(std::get<std::string>(readSetting(panel, "Image")), "(none)");
    EXPECT_THROW(applySetting(panel, {"Image", std::string("Tails"), {}}), InputError);
    applySetting(panel, {"Image", std::string("Tiles"), {}});
    EXPECT_EQ(std::get<std::string>(readSetting(panel, "Image")), "Tiles");
    place(0.25, 0.75, 0);
    ImageList::instance().clear();
    network.init(kInitRender);
    expectTriple(triple(image, "Color"), {0, 0, 0});
    EXPECT_EQ(std::get<std::string>(readSetting(panel, "Image")), "(none)");
}

class EveryNode : public ImageTest, public ::testing::WithParamInterface<const char *> {
  protected:
    static constexpr double kAngle = 3.5 * 180 / std::numbers::pi; // stored in radians

    static bool isAngle(const HostPanel &panel, const std::string &label) {
        return std::ranges::any_of(panel.controls(), [&](unsigned int id) {
            const PanelItem &control = *panel.find(id);
            return panel.uniqueLabel(control) == label && control.type->unit == Unit::degrees;
        });
    }
    // A value other than the present one, which a float in a file represents exactly.
    static SettingValue other(HostPanel &panel, const std::string &label) {
        const SettingValue now = readSetting(panel, label);
        if (const auto *number = std::get_if<double>(&now)) return isAngle(panel, label) ? kAngle : *number + 200;
        if (std::holds_alternative<Double3>(now)) return Double3{0.25, 0.5, 0.75};
        for (unsigned int id : panel.controls()) {
            const PanelItem &control = *panel.find(id);
            const std::vector<std::string> entries =
                panel.uniqueLabel(control) == label ? panel.entries(control) : std::vector<std::string>{};
            if (!entries.empty()) return entries.back();
        }
        return std::string("Atlas");
    }
    static std::vector<std::string> allValues(HostPanel &panel) {
        std::vector<std::string> values;
        for (unsigned int id : panel.controls()) values.push_back(describeValue(panel, *panel.find(id)));
        return values;
    }
};

TEST_P(EveryNode, TakesEverySettingAndSavesItInBothForms) {
    HostNode &node = add(GetParam());
    HostPanel &panel = *panelOf(node);
    panel.check();
    EXPECT_EQ(panelOf(node), &panel);
    const std::vector<std::string> labels = settingLabels(panel);
    ASSERT_FALSE(labels.empty());
    for (const std::string &label : labels) {
        const UpdateCount updates;
        applySetting(panel, {label, other(panel, label), {}});
        EXPECT_EQ(updates.count, 1) << label;
    }
    const std::vector<std::string> expected = allValues(panel);
    EXPECT_NE(expected, allValues(*panelOf(add(GetParam()))));
    for (int mode : {kStateBinary, kStateText}) {
        StateWriter writer(mode);
        ASSERT_EQ(node.handler->instance->save(node.instance, writer.state()), nullptr);
        const std::string bytes = writer.finish();
        HostNode &again = add(GetParam());
        StateReader reader(mode, bytes, "node");
        ASSERT_EQ(again.handler->instance->load(again.instance, reader.state()), nullptr) << reader.error();
        EXPECT_EQ(allValues(*panelOf(again)), expected);
    }
    HostNode &copy = add(GetParam());
    ASSERT_EQ(copy.handler->instance->copy(copy.instance, node.instance), nullptr);
    EXPECT_EQ(allValues(*panelOf(copy)), expected);
}

INSTANTIATE_TEST_SUITE_P(Panels, EveryNode,
                         ::testing::Values("Constant Color", "Constant Scalar", "Constant Vector", "Constant Integer",
                                           "Spot Info", "Add Scalar", "Multiply Scalar", "Mix Scalar", "Clamp Scalar",
                                           "Add Color", "Multiply Color", "Mix Color", "Clamp Color", "Make Vector",
                                           "Split Vector", "Make Color", "Split Color", "Checker", "Fractal Noise",
                                           "Image", "Curve", "Image Projection", "Color Ramp", "Blend Color",
                                           "Blend Scalar", "Bump", "Procedural Pattern", "Vertex Color", "Weight Map"));

} // namespace
} // namespace velm::host::test

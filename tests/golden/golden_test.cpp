// Saved nodes of years ago: what the golden files hold has to be read, and to be saved again, by every later version.
#include "tests/golden/golden_settings.h"

#include "host/graph/node_data.h"
#include "host/graph/surface.h"
#include "host/image/image.h"
#include "host/io/files.h"
#include "host/panel/settings.h"
#include "host/scene/build/scene_surfaces.h"
#include "host/scene/read_scene.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <set>

namespace velm::host::test {
namespace {

struct GoldenNode {
    const char *server;
    const char *file;
    const char *beside = nullptr; // the server of a node that stands beside it: its popup lists what that one names
};

// How the tests of a node are called in listings.
void PrintTo(const GoldenNode &node, std::ostream *out) { *out << node.server; }

constexpr GoldenNode kNodes[] = {
    {.server = "Velm Advanced RayTrace", .file = "advanced_raytrace"},
    {.server = "Velm Ambient Occlusion", .file = "ambient_occlusion"},
    {.server = "Velm Counter", .file = "counter"},
    {.server = "Velm Exponential Decay (Color)", .file = "exponential_decay_color"},
    {.server = "Velm Exponential Decay (Scalar)", .file = "exponential_decay_scalar"},
    {.server = "Velm Gaussian Reflections", .file = "gaussian_reflections"},
    {.server = "Velm Gaussian Refractions", .file = "gaussian_refractions"},
    {.server = "Velm Get Material", .file = "get_material", .beside = "Velm Store Material"},
    {.server = "Velm Group Node", .file = "group_node"},
    {.server = "Velm Hold Value", .file = "hold_value"},
    {.server = "Velm Pixel Image", .file = "pixel_image"},
    {.server = "Velm Render Info", .file = "render_info"},
    {.server = "Velm Random", .file = "random"},
    {.server = "Velm RayShade", .file = "ray_shade"},
    {.server = "Velm Sqrt", .file = "sqrt"},
    {.server = "Velm Store Material", .file = "store_material"},
    {.server = "Velm Take Samples", .file = "take_samples"},
};

struct GoldenForm {
    int mode;
    const char *name, *ending;
};
void PrintTo(const GoldenForm &form, std::ostream *out) { *out << form.name; }

constexpr GoldenForm kForms[] = {
    {.mode = kStateBinary, .name = "Binary", .ending = ".bin"},
    {.mode = kStateText, .name = "Text", .ending = ".txt"},
};

constexpr const char *kSettings = "settings.json", *kSurface = "Golden";
constexpr const char *kRenew = "VELM_RENEW_GOLDEN";

std::string fileOf(const GoldenNode &node, const GoldenForm &form) {
    return std::string(kGolden) + node.file + form.ending;
}

const NodeDescription &described(const SurfaceDescription &surface, const std::string &server) {
    const auto found = std::ranges::find(surface.network.nodes, server, &NodeDescription::server);
    if (found == surface.network.nodes.end()) throw InputError(std::string(kSettings) + ": there is no " + server);
    return *found;
}

std::string saved(const HostNode &node, int mode) {
    StateWriter writer(mode);
    saveData(node, *writer.state());
    return writer.finish();
}

class Golden : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { loadModule(); }
    void TearDown() override { ImageList::instance().clear(); }
};

class GoldenNodes : public Golden, public ::testing::WithParamInterface<std::tuple<GoldenNode, GoldenForm>> {
  protected:
    void SetUp() override {
        if (!std::filesystem::exists(file())) renew();
    }
    const GoldenNode &node() const { return std::get<0>(GetParam()); }
    const GoldenForm &form() const { return std::get<1>(GetParam()); }
    std::string file() const { return fileOf(node(), form()); }

    // A new node with what stands in its file. The surface keeps it.
    HostNode &loaded(const GoldenNode &golden, Surface &surface) const {
        HostNode &made = surface.network().addNode(serverList().get(golden.server));
        StateReader reader(form().mode, readFile(fileOf(golden, form())), fileOf(golden, form()));
        loadData(made, *reader.state());
        EXPECT_FALSE(reader.failed()) << reader.error();
        expectNothingKept(made);
        return made;
    }
    HostNode &loaded(Surface &surface) const {
        if (node().beside) {
            const auto beside = std::ranges::find(kNodes, std::string_view(node().beside), &GoldenNode::server);
            loaded(*beside, surface);
        }
        return loaded(node(), surface);
    }

  private:
    // Makes a file that is not there yet, when that is asked for. One that is there is never touched.
    void renew() const {
        ASSERT_NE(std::getenv(kRenew), nullptr) << "there is no golden file " << file();
        const SceneDescription scene = readSurfaces(kSettings, {});
        const SceneSurfaces built(scene, serverList());
        const NodeDescription &description = described(scene.surfaces.front(), node().server);
        writeFileAtomically(file(), saved(built.surface(kSurface)->network().node(description.name), form().mode));
    }
};

TEST_P(GoldenNodes, GiveTheirSettings) {
    Surface surface("Clay");
    HostNode &made = loaded(surface);
    const SurfaceDescription golden = describedIn(kSettings, kSurface);
    expectNode(made, described(golden, node().server));
}

TEST_P(GoldenNodes, AreSavedAgainToTheByte) {
    Surface surface("Clay");
    EXPECT_EQ(saved(loaded(surface), form().mode), readFile(file()));
}

INSTANTIATE_TEST_SUITE_P(All, GoldenNodes, ::testing::Combine(::testing::ValuesIn(kNodes), ::testing::ValuesIn(kForms)),
                         [](const auto &one) {
                             std::string name = std::get<0>(one.param).file;
                             std::erase(name, '_');
                             return name + std::get<1>(one.param).name;
                         });

TEST_F(Golden, EveryServerOfTheModuleIsInTheTable) {
    std::set<std::string> servers, golden;
    for (const auto &one : serverList().all())
        if (one->origin() == kOrigin) servers.insert(one->name());
    for (const GoldenNode &one : kNodes) golden.insert(one.server);
    EXPECT_EQ(golden, servers);
    EXPECT_EQ(golden.size(), std::size(kNodes));
}

TEST_F(Golden, EverySettingIsToldAndIsNotThatOfANewNode) {
    const SurfaceDescription golden = describedIn(kSettings, kSurface);
    Surface surface("Clay");
    for (const GoldenNode &one : kNodes) {
        SCOPED_TRACE(one.server);
        HostNode &fresh = surface.network().addNode(serverList().get(one.server));
        std::set<std::string> labels, told;
        HostPanel *panel = panelOf(fresh);
        if (panel)
            for (const std::string &label : settingLabels(*panel)) labels.insert(label);
        for (const SettingDescription &setting : described(golden, one.server).settings) {
            told.insert(setting.label);
            EXPECT_NE(readSetting(*panel, setting.label), setting.value) << setting.label;
        }
        EXPECT_EQ(told, labels);
    }
}

} // namespace
} // namespace velm::host::test

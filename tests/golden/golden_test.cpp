// Golden files are nodes saved by an earlier version. Every later version must read them, and save the same bytes
// again.
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
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <set>
#include <vector>

namespace velm::host::test {
namespace {

// A node of the module, and the name of its golden files without the extension.
struct GoldenNode {
    std::string server, file;
};

// Names a node in the listings of tests.
void PrintTo(const GoldenNode &node, std::ostream *out) { *out << node.server; }

// "Velm Exponential Decay (Color)" has the files "exponential_decay_color".
GoldenNode goldenNode(const std::string &server) {
    std::string file;
    for (const char c : server.substr(std::string("Velm ").size()))
        if (c == ' ')
            file += '_';
        else if (c != '(' && c != ')')
            file += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return {.server = server, .file = file};
}

// Every node of the module.
const std::vector<GoldenNode> &goldenNodes() {
    static const std::vector<GoldenNode> nodes = [] {
        loadModule();
        std::vector<GoldenNode> found;
        for (const auto &one : serverList().all())
            if (one->origin() == kOrigin) found.push_back(goldenNode(one->name()));
        return found;
    }();
    return nodes;
}

// The popup of a Get Material node lists the Store Material nodes, of which there must be one.
constexpr const char *kGetMaterial = "Velm Get Material", *kStoreMaterial = "Velm Store Material";

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

    // A new node that the surface owns, loaded from its golden file.
    HostNode &loaded(const GoldenNode &golden, Surface &surface) const {
        HostNode &made = surface.network().addNode(serverList().get(golden.server));
        StateReader reader(form().mode, readFile(fileOf(golden, form())), fileOf(golden, form()));
        loadData(made, *reader.state());
        EXPECT_FALSE(reader.failed()) << reader.error();
        expectNothingKept(made);
        return made;
    }
    HostNode &loaded(Surface &surface) const {
        if (node().server == kGetMaterial) loaded(goldenNode(kStoreMaterial), surface);
        return loaded(node(), surface);
    }

  private:
    // Creates a missing file if VELM_RENEW_GOLDEN is set. Existing files are never changed.
    void renew() const {
        ASSERT_NE(std::getenv(kRenew), nullptr) << "there is no golden file " << file();
        const SceneDescription scene = readSurfaces(kSettings, {});
        const SceneSurfaces built(scene, serverList());
        const NodeDescription &description = described(scene.surfaces.front(), node().server);
        writeFileAtomically(file(), saved(built.surface(kSurface)->network().node(description.name), form().mode));
    }
};

TEST_P(GoldenNodes, HaveTheDescribedSettings) {
    Surface surface("Clay");
    HostNode &made = loaded(surface);
    const SurfaceDescription golden = describedIn(kSettings, kSurface);
    expectNode(made, described(golden, node().server));
}

TEST_P(GoldenNodes, AreSavedAgainToTheByte) {
    Surface surface("Clay");
    EXPECT_EQ(saved(loaded(surface), form().mode), readFile(file()));
}

INSTANTIATE_TEST_SUITE_P(All, GoldenNodes,
                         ::testing::Combine(::testing::ValuesIn(goldenNodes()), ::testing::ValuesIn(kForms)),
                         [](const auto &one) {
                             std::string name = std::get<0>(one.param).file;
                             std::erase(name, '_');
                             return name + std::get<1>(one.param).name;
                         });

TEST_F(Golden, EverySettingIsDescribedAndDiffersFromItsDefault) {
    const SurfaceDescription golden = describedIn(kSettings, kSurface);
    Surface surface("Clay");
    for (const GoldenNode &one : goldenNodes()) {
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

// Networks inside nodes, and stores shared between surfaces, from scene texts to shaded values, with the module's
// nodes.
#include "host/scene/build/scene_surfaces.h"

#include "host/base/thread_role.h"
#include "host/load/module.h"
#include "host/panel/settings.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"
#include "tests/scene/scene_text.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace velm::host {
namespace {

class SharedScene : public testing::Test {
  protected:
    // Once for all tests, and never unloaded.
    static void SetUpTestSuite() {
        static Module &module = *new Module(Module::open(VELM_MODULE_FILE));
        if (!serverList().find("Velm Group Node")) serverList().add(module.servers(), "velm.p");
    }
    static std::string scene(const std::string &surfaces) {
        return "{\"cameras\": {\"Main\": {}},\n\"surfaces\": {" + surfaces + "}}";
    }
    static std::string refusal(const std::string &surfaces) {
        try {
            const SceneSurfaces built(test::read(scene(surfaces)), serverList());
        } catch (const InputError &error) {
            return error.what();
        }
        return "no error";
    }
    // The blue component of a surface's colour.
    static double blueOf(const Surface &surface) {
        const RoleScope role(ThreadRole::render);
        ShadingSample sample{};
        sample.shadingNormal[1] = 1;
        return surface.evaluate(&sample).colour[2];
    }
    // The same for a surface of a scene, at a time in seconds.
    static double blueOf(const std::string &surfaces, const char *name, double time = 0) {
        SceneSurfaces built(test::read(scene(surfaces)), serverList());
        built.init(kInitRender);
        built.newTime(1, time);
        const double blue = blueOf(*built.surface(name));
        built.cleanup();
        return blue;
    }
    static std::string saved(int mode, Surface &surface) {
        StateWriter writer(mode);
        surface.save(*writer.state());
        return writer.finish();
    }
    static void load(int mode, const std::string &bytes, Surface &surface) {
        StateReader reader(mode, bytes, "surface");
        surface.load(*reader.state());
        EXPECT_FALSE(reader.failed()) << reader.error();
    }
};

// ---- Networks inside nodes ----

TEST_F(SharedScene, ANodeHoldsANetwork) {
    EXPECT_DOUBLE_EQ(blueOf(R"("Clay": {"nodes": {"Box": {"server": "Velm Group Node", "network": {
        "nodes": {"Paint": {"server": "Constant Color", "settings": {"Color": [0.1, 0.2, 0.3]}}},
        "connections": ["Paint.Color -> Box.Color"]}}},
        "connections": ["Box.Color -> Clay.Color"]})",
                            "Clay"),
                     0.3);
}

// Networks nested to a depth; the innermost contains the node `paint`.
std::string nested(int depth, const std::string &paint) {
    std::string inside = "\"nodes\": {\"Paint\": " + paint + "}, \"connections\": [\"Paint.Color -> G1.Color\"]";
    for (int i = 2; i <= depth; ++i)
        inside = fmt::format("\"nodes\": {{\"G{0}\": {{\"server\": \"Velm Group Node\", \"network\": {{{1}}}}}}},\n"
                             "\"connections\": [\"G{0}.Color -> G{2}.Color\"]",
                             i - 1, inside, i);
    return fmt::format(
        "\"Clay\": {{\"nodes\": {{\"G{0}\": {{\"server\": \"Velm Group Node\", \"network\": {{{1}}}}}}},\n"
        "\"connections\": [\"G{0}.Color -> Clay.Color\"]}}",
        depth, inside);
}

TEST_F(SharedScene, NetworksWorkAtAnyDepthAndTime) {
    const std::string paint = R"({"server": "Constant Color", "settings": {"Color": {"keys": [
        {"time": 0, "value": [0, 0, 0]}, {"time": 1, "value": [1, 1, 1], "shape": "linear"}]}}})";
    for (const int depth : {1, 3, kDeepestNesting})
        EXPECT_NEAR(blueOf(nested(depth, paint), "Clay", 0.25), 0.25, 1e-12) << depth;
}

TEST_F(SharedScene, NetworksNestedTooDeepAreRefused) {
    const std::string message = refusal(nested(kDeepestNesting + 1, "{\"server\": \"Constant Color\"}"));
    EXPECT_EQ(message, "scene.json:2: cannot make the node \"G1\": networks cannot be nested deeper than 16");
    EXPECT_NE(refusal(nested(100, "{\"server\": \"Constant Color\"}")).find("nested deeper than"), std::string::npos);
}

TEST_F(SharedScene, EachNodeHasItsOwnNetwork) {
    const std::string box = R"({"server": "Velm Group Node", "network": {"nodes": {
        "Paint": {"server": "Constant Color", "settings": {"Color": [0, 0, %}}}, "connections": ["Paint.Color -> @.Color"]}})";
    const auto of = [&](const char *name, const char *blue) {
        std::string text = box;
        text.replace(text.find('%'), 1, std::string(blue) + "]");
        return std::string("\"") + name + "\": " + text.replace(text.find('@'), 1, name);
    };
    const std::string surfaces = "\"Clay\": {\"nodes\": {" + of("One", "0.25") + "," + of("Two", "0.5") +
                                 "}, \"connections\": [\"Two.Color -> Clay.Color\"]}";
    EXPECT_DOUBLE_EQ(blueOf(surfaces, "Clay"), 0.5);
}

TEST_F(SharedScene, WrongNetworksAreRefusedWithTheirLine) {
    const auto group = [](const std::string &inside) {
        return "\"Clay\": {\"nodes\": {\"Box\": {\"server\": \"Velm Group Node\", \"network\": {\n" + inside + "}}}}";
    };
    const std::string paint = "\"nodes\": {\"P\": {\"server\": \"Constant Color\"}}, ";
    const std::pair<std::string, std::string> kRows[] = {
        {"\"Clay\": {\"nodes\": {\"Root\": {\"server\": \"Velm Sqrt\",\n\"network\": {}}}}",
         "scene.json:3: the node \"Root\" holds no network; its kind is \"Velm Sqrt\""},
        {group("\"nodes\": {\"P\": {\"server\": \"Constant Colour\"}}"),
         "scene.json:3: no node \"Constant Colour\", did you mean \"Constant Color\"?"},
        {group("\"nodes\": {\"P\": {\"server\": \"Checker\", \"settings\": {\n\"Sise\": 1}}}"),
         "scene.json:4: there is no setting \"Sise\", did you mean \"Size\"?"},
        {group(paint + "\"connections\": [\"P.Color -> Box.Colour\"]"),
         "scene.json:3: node \"Box\" has no input \"Colour\", did you mean \"Color\"?"},
        {group(paint + "\"connections\": [\"P.Colr -> Box.Color\"]"),
         "scene.json:3: node \"P\" has no output \"Colr\", did you mean \"Color\"?"},
    };
    for (const auto &[surfaces, message] : kRows) EXPECT_EQ(refusal(surfaces), message);
}

TEST_F(SharedScene, InsideANetworkTheRootsOwnNameIsFree) {
    EXPECT_DOUBLE_EQ(blueOf(R"("Clay": {"nodes": {"Box": {"server": "Velm Group Node", "network": {
        "nodes": {"Group Node": {"server": "Constant Color", "settings": {"Color": [0.1, 0.2, 0.3]}}},
        "connections": ["Group Node.Color -> Box.Color"]}}},
        "connections": ["Box.Color -> Clay.Color"]})",
                            "Clay"),
                     0.3);
}

// ---- Stores ----

constexpr const char *kGetting = R"("Getter": {
    "nodes": {"Get": {"server": "Velm Get Material", "settings": {"Slot": "Wood"}}},
    "connections": ["Get.Color -> Getter.Color"]})";
constexpr const char *kGettingInside = R"("Getter": {
    "nodes": {"Box": {"server": "Velm Group Node", "network": {
        "nodes": {"Get": {"server": "Velm Get Material", "settings": {"Slot": "Wood"}}},
        "connections": ["Get.Color -> Box.Color"]}}},
    "connections": ["Box.Color -> Getter.Color"]})";
constexpr const char *kStoring = R"("Storer": {
    "nodes": {"Paint": {"server": "Constant Color", "settings": {"Color": [0.1, 0.2, 0.3]}},
              "Store": {"server": "Velm Store Material", "settings": {"Name": "Wood"}}},
    "connections": ["Paint.Color -> Store.Color"]})";
constexpr const char *kStoringInside = R"("Storer": {
    "nodes": {"Box": {"server": "Velm Group Node", "network": {
        "nodes": {"Paint": {"server": "Constant Color", "settings": {"Color": [0.1, 0.2, 0.3]}},
                  "Store": {"server": "Velm Store Material", "settings": {"Name": "Wood"}}},
        "connections": ["Paint.Color -> Store.Color"]}}}})";
// A store whose node is named "Wood", but whose own name is different.
constexpr const char *kMisleading = R"("Misleading": {
    "nodes": {"Paint": {"server": "Constant Color", "settings": {"Color": [0, 0, 1]}},
              "Wood": {"server": "Velm Store Material", "settings": {"Name": "Oak"}}},
    "connections": ["Paint.Color -> Wood.Color"]})";

TEST_F(SharedScene, AGetFindsItsStoreInAnyOrder) {
    for (const char *getting : {kGetting, kGettingInside})
        for (const char *storing : {kStoring, kStoringInside}) {
            std::vector<std::string> order{getting, kMisleading, storing};
            std::ranges::sort(order);
            do {
                const std::string surfaces = fmt::format("{},\n{},\n{}", order[0], order[1], order[2]);
                EXPECT_DOUBLE_EQ(blueOf(surfaces, "Getter"), 0.3) << surfaces;
            } while (std::ranges::next_permutation(order).found);
        }
}

TEST_F(SharedScene, AStoreWithoutANameHasThatOfItsNode) {
    const std::string surfaces = std::string(kGetting) + R"(, "Storer": {
        "nodes": {"Paint": {"server": "Constant Color", "settings": {"Color": [0.1, 0.2, 0.3]}},
                  "Wood": {"server": "Velm Store Material"}},
        "connections": ["Paint.Color -> Wood.Color"]})";
    EXPECT_DOUBLE_EQ(blueOf(surfaces, "Getter"), 0.3);
}

TEST_F(SharedScene, WrongStoresAreRefusedWithTheirLine) {
    std::string wrong = kGetting;
    wrong.replace(wrong.find("\"Slot\": \"Wood\""), 14, "\n\"Slot\": \"Wod\"");
    EXPECT_EQ(refusal(wrong + "," + kStoring),
              "scene.json:4: \"Slot\": there is no entry \"Wod\", did you mean \"Wood\"?");
    EXPECT_EQ(refusal(wrong), "scene.json:4: \"Slot\": there is no entry \"Wod\"; there are \"(none)\"");
    std::string second = kStoring;
    second.replace(second.find("Storer"), 6, "Second");
    EXPECT_EQ(refusal(std::string(kGetting) + "," + kStoring + "," + second),
              "scene.json:3: \"Slot\": several entries are called \"Wood\"");
}

TEST_F(SharedScene, StoresAreRemovedWithTheirScene) {
    const std::string surfaces = std::string(kStoring) + "," + kMisleading;
    for (int round = 0; round < 2; ++round) {
        const SceneSurfaces built(test::read(scene(surfaces)), serverList());
        HostNode &get = built.surface("Storer")->network().addNode(serverList().get("Velm Get Material"));
        HostPanel &panel = *panelOf(get);
        EXPECT_EQ(panel.entries(*panel.find(panel.controls().at(0))),
                  (std::vector<std::string>{"(none)", "Wood", "Oak"}));
    }
    EXPECT_EQ(refusal(kGetting), "scene.json:3: \"Slot\": there is no entry \"Wood\"; there are \"(none)\"");
}

// ---- Names ----

TEST_F(SharedScene, NamesOf255BytesGoThroughPanelsAndFiles) {
    std::string name;
    while (name.size() + 5 <= HostPanel::kLongestText) name += "\u00e4\u6f06"; // of two bytes and of three
    ASSERT_EQ(name.size(), HostPanel::kLongestText);
    const std::string storing =
        R"("Storer": {"nodes": {"Store": {"server": "Velm Store Material", "settings": {"Name": ")" + name + R"("}}}})";
    std::string getting = kGetting;
    getting.replace(getting.find("Wood"), 4, name);
    for (const int mode : {kStateBinary, kStateText}) {
        std::string bytes;
        {
            const SceneSurfaces built(test::read(scene(getting + "," + storing)), serverList());
            HostPanel &slot = *panelOf(built.surface("Getter")->network().node("Get"));
            EXPECT_EQ(std::get<std::string>(readSetting(slot, "Slot")), name);
            bytes = saved(mode, *built.surface("Storer"));
        }
        Surface again("Storer");
        load(mode, bytes, again);
        HostPanel &panel = *panelOf(again.network().node("Store"));
        EXPECT_EQ(std::get<std::string>(readSetting(panel, "Name")), name);
        EXPECT_EQ(saved(mode, again), bytes);
        EXPECT_THROW(applySetting(panel, {"Name", name + "a", {}}), InputError);
        EXPECT_EQ(std::get<std::string>(readSetting(panel, "Name")), name);
    }
}

TEST_F(SharedScene, SharedNetworksInNetworksComeBackFromFiles) {
    for (const int mode : {kStateBinary, kStateText}) {
        std::string getter, storer;
        {
            const SceneSurfaces built(test::read(scene(std::string(kGettingInside) + "," + kStoringInside)),
                                      serverList());
            getter = saved(mode, *built.surface("Getter"));
            storer = saved(mode, *built.surface("Storer"));
        }
        EXPECT_NE(storer.find(mode == kStateText ? "{ NodeEditor" : "NODE"), std::string::npos);
        Surface getting("Getter"), storing("Storer");
        load(mode, getter, getting);
        load(mode, storer, storing);
        EXPECT_EQ(saved(mode, getting), getter);
        EXPECT_EQ(saved(mode, storing), storer);
        getting.init(kInitRender);
        storing.init(kInitRender);
        EXPECT_FLOAT_EQ(static_cast<float>(blueOf(getting)), 0.3f); // files hold floats
        getting.cleanup();
        storing.cleanup();
    }
}

} // namespace
} // namespace velm::host

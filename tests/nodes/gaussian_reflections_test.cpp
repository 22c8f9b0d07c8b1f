// Gaussian Reflections: the class, saving and loading, the panel, and the mirrored view.
#include "tests/nodes/glossy_fixture.h"

#include "tests/module/hint_list.h"

#include <cmath>

namespace velm::plugin {
namespace {

class Reflections : public Glossy {
  protected:
    Reflections() : Glossy(kReflections) {}
};

// ---- Life ----

const Lines kCreation = {
    "setColour 164 50 10",
    "channelGroup",
    "createGroup Gaussian Reflections in second",
    "createParm 81 -1",
    "setUpParm Color in Gaussian Reflections",
    "setParm Color 0.78431 0.78431 0.78431",
    "createParm 64 -1",
    "setUpParm Image Seam Angle in Gaussian Reflections",
    "setParm Image Seam Angle 0",
    "createParm 32 -1",
    "setUpParm Reflection Blur in Gaussian Reflections",
    "setParm Reflection Blur 0",
    "createParm 1 -1",
    "setUpParm Normal in Gaussian Reflections",
    "setParm Normal 0 1 0",
    "createInput Color 1",
    "createInput Angle 2",
    "createInput Blur 2",
    "createInput Samples 4",
    "createInput Blur Depth 4",
    "createInput Normal 3",
    "createOutput Color 1",
};

TEST_F(Reflections, IsMadeInOrderAndLeavesItsNormalBehind) {
    HostNode &second = host.addNode("second");
    const char *error = nullptr;
    void *instance = node.ops.create(node.ops.priv, &second, &error);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(host.takeLog(), kCreation);
    node.ops.destroy(instance);
    EXPECT_EQ(host.takeLog(),
              (Lines{"destroyParm Image Seam Angle", "destroyParm Color", "destroyParm Reflection Blur"}));
}

TEST_F(Reflections, DestroysTheParametersThatThereAre) {
    host.failingParms = {host.parmsAsked + 1}; // the seam angle
    HostNode &second = host.addNode("second");
    const char *error = nullptr;
    void *instance = node.ops.create(node.ops.priv, &second, &error);
    host.takeLog();
    node.ops.destroy(instance);
    EXPECT_EQ(host.takeLog(), (Lines{"destroyParm Color", "destroyParm Reflection Blur"}));
}

TEST_F(Reflections, StartsWithItsDefaults) {
    EXPECT_EQ(node.integer(kMode), 1);
    EXPECT_EQ(node.integer(kImage), 0);
    EXPECT_EQ(node.integer(tested.tint), 0);
    EXPECT_EQ(node.integer(tested.samples), 8);
    EXPECT_EQ(node.integer(tested.blurDepth), 0);
}

TEST_F(Reflections, AFrameReadsEveryParameterButTheNormal) {
    EXPECT_EQ(node.render.newTime(node.instance, 30, 1.25), nullptr);
    EXPECT_EQ(host.takeLog(),
              (Lines{"getParm Image Seam Angle at 1.25", "getParm Color at 1.25", "getParm Reflection Blur at 1.25"}));
    GaussianReflections_get_vpValues(node.instance, 0.5);
    EXPECT_EQ(host.takeLog(),
              (Lines{"getParm Image Seam Angle at 0.5", "getParm Color at 0.5", "getParm Reflection Blur at 0.5"}));
}

TEST_F(Reflections, CopiesItsSettingsButTheNormal) {
    TestNode other(host, tested.activate, tested.interface, "other");
    for (const unsigned int id : {0x8001u, 0x8002u, 0x8004u, 0x8007u, 0x8008u}) node.set(id, static_cast<int>(id));
    EXPECT_EQ(node.ops.copy(other.instance, node.instance), nullptr);
    EXPECT_EQ(host.takeLog(),
              (Lines{"copyParm other/Image Seam Angle <- node/Image Seam Angle", "copyParm other/Color <- node/Color",
                     "copyParm other/Reflection Blur <- node/Reflection Blur"}));
    for (const unsigned int id : {0x8001u, 0x8002u, 0x8004u, 0x8007u, 0x8008u})
        EXPECT_EQ(other.integer(id), static_cast<int>(id));
}

// ---- Files ----

TEST_F(Reflections, SavesInOrder) {
    images.add(2);
    node.set(kMode, 3);
    node.set(tested.tint, 1);
    node.set(tested.samples, 70000);
    node.set(tested.blurDepth, -2);
    const auto saved = [&](int image) {
        node.set(kImage, image);
        RecordedState state;
        EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
        return state.lines();
    };
    const auto expected = [](const std::string &image, const Lines &reference) {
        Lines lines = {"I2 3", "I2 " + image, "I2 1", "I2 4464", "I2 -2"};
        lines.insert(lines.end(), reference.begin(), reference.end());
        lines.insert(lines.end(), {"parm Image Seam Angle", "parm Color", "parm Reflection Blur"});
        return lines;
    };
    EXPECT_EQ(saved(0), expected("0", {}));
    EXPECT_EQ(saved(-1), expected("-1", {}));
    EXPECT_EQ(saved(2), expected("2", {"text image picture2"}));
    EXPECT_EQ(saved(3), expected("3", {"text no image"})) << "\"(load Image)\" names none";
    EXPECT_EQ(saved(9), expected("9", {"text no image"}));
}

TEST_F(Reflections, StopsSavingAndLoadingAtTheFirstError) {
    for (int failing = 0; failing < 3; ++failing) {
        RecordedState state;
        host.parmsSaved = 0;
        host.failingSave = failing;
        EXPECT_STREQ(node.ops.save(node.instance, state.save()), FakeHost::kSaveError);
        EXPECT_EQ(state.lines().size(), 5u + static_cast<size_t>(failing));
        EXPECT_EQ(host.takeLog().size(), 1u + static_cast<size_t>(failing));

        host.failingSave = -1;
        RecordedState whole;
        node.ops.save(node.instance, whole.save());
        host.takeLog();
        host.parmsLoaded = 0;
        host.failingLoad = failing;
        EXPECT_STREQ(node.ops.load(node.instance, whole.load()), FakeHost::kLoadError);
        EXPECT_EQ(host.takeLog().size(), 1u + static_cast<size_t>(failing)) << "and no value is read anew";
        host.failingLoad = -1;
    }
}

TEST_F(Reflections, LoadsWhatItSaved) {
    RecordedState state;
    state.integer(-3).integer(0).integer(1).integer(4464).integer(-2);
    state.parm({0.5}).parm({0.25, 0.5, 0.75}).parm({0.125});
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    EXPECT_EQ(host.takeLog(),
              (Lines{"loadParm Image Seam Angle", "loadParm Color", "loadParm Reflection Blur",
                     "getParm Image Seam Angle at 0", "getParm Color at 0", "getParm Reflection Blur at 0"}));
    EXPECT_EQ(node.integer(kMode), -3);
    EXPECT_EQ(node.integer(kImage), 0);
    EXPECT_EQ(node.integer(tested.tint), 1);
    EXPECT_EQ(node.integer(tested.samples), 4464);
    EXPECT_EQ(node.integer(tested.blurDepth), -2);
    node.set(kMode, kRays);
    node.set(tested.samples, 1);
    rays.colour = {1, 1, 1};
    EXPECT_EQ(evaluate(), (Vector{0.25, 0.5, 0.75})) << "the stored values are those of the file";
}

struct Remapped {
    int saved;
    const char *reference; // null if the file has none
    int loaded;
};

TEST_F(Reflections, FindsItsImageInTodaysList) {
    images.add(3);
    for (const Remapped &one : {Remapped{1, "image picture3", 3}, Remapped{3, "image picture1", 1},
                                Remapped{2, "image picture2", 2}, Remapped{2, "image gone", 0},
                                Remapped{4, "no image", 0}, Remapped{0, nullptr, 0}, Remapped{-5, nullptr, -5}}) {
        RecordedState state;
        state.integer(2).integer(one.saved).integer(1).integer(8).integer(0);
        if (one.reference) state.text(one.reference);
        state.parm({0.5}).parm({1, 1, 1}).parm({0.25});
        EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
        EXPECT_EQ(node.integer(kImage), one.loaded) << one.saved;
        EXPECT_EQ(node.parm("Reflection Blur").value[0], 0.25) << "what comes after the reference";
    }
    images.list.clear();
    RecordedState state;
    state.integer(2).integer(1).integer(1).integer(8).integer(0).text("image picture1");
    node.ops.load(node.instance, state.load());
    EXPECT_EQ(node.integer(kImage), 0);
}

// ---- The panel ----

TEST_F(Reflections, ShowsItsControls) {
    const HostPanel *panel = node.panel();
    Lines controls, labels;
    for (const Hint &hint : hintsWith(kHintAddControl, panel->hints)) controls.emplace_back(hint.arguments[1].text);
    for (const Hint &hint : hintsWith(kHintLabel, panel->hints)) labels.emplace_back(hint.arguments[1].text);
    EXPECT_EQ(controls, (Lines{"iPopChoice", "iPopChoice", "angle-env", "iBoolean", "color-env", "percent-env",
                               "integer", "integer"}));
    EXPECT_EQ(labels, (Lines{"Mode", "Image", "Image Seam Angle", "Tint Reflections", "Color", "Reflection Blur",
                             "Samples", "Blur Depth"}));
    Lines values;
    for (const HostPanelValue *row = panel->values; row->id; ++row) {
        EXPECT_EQ(row->id, 0x8001 + values.size());
        EXPECT_EQ(row->label, labels.at(values.size()));
        values.emplace_back(row->type);
    }
    EXPECT_EQ(values,
              (Lines{"integer", "integer", "angle-env", "integer", "color-env", "percent-env", "integer", "integer"}));
    EXPECT_EQ(limitsOf(panel->hints), (Lines{"8007 minimum 1", "8008 minimum 0"}));

    const auto lists = hintsWith(kHintStringList, panel->hints);
    ASSERT_EQ(lists.size(), 1u);
    EXPECT_EQ(lists[0].arguments[0].word, 0x8001u);
    Lines modes;
    for (const char *const *text = lists[0].arguments[1].texts; *text; ++text) modes.emplace_back(*text);
    EXPECT_EQ(modes,
              (Lines{"Backdrop Only", "Ray Tracing + Backdrop", "Spherical Map", " Ray Tracing + Spherical Map"}))
        << "with the blank";

    const auto enabling = hintsWith(kHintEnable, panel->hints);
    ASSERT_EQ(enabling.size(), 1u);
    EXPECT_EQ(enabling[0].arguments[0].word, 0x8004u);
    EXPECT_EQ(enabling[0].arguments[3].numbers, nullptr) << "while it is on";
    EXPECT_EQ(enabling[0].ids, std::vector<unsigned int>{0x8005});
}

TEST_F(Reflections, HandsOutWhatIsNotConnected) {
    HostPanel *panel = node.panel();
    const auto shown = [&](unsigned int id) { return panel->get(node.instance, id); };
    EXPECT_EQ(shown(0x8003), &node.parm("Image Seam Angle"));
    EXPECT_EQ(shown(0x8005), &node.parm("Color"));
    EXPECT_EQ(shown(0x8006), &node.parm("Reflection Blur"));
    for (const unsigned int id : {0u, 0x8000u, 0x8009u}) EXPECT_EQ(shown(id), nullptr);

    const std::map<unsigned int, const char *> inputs = {
        {0x8003, "Angle"}, {0x8005, "Color"}, {0x8006, "Blur"}, {0x8007, "Samples"}, {0x8008, "Blur Depth"}};
    for (const auto &[id, input] : inputs) {
        EXPECT_NE(shown(id), nullptr);
        node.connect(input, 0.0);
        for (unsigned int other = 0x8001; other <= 0x8008; ++other)
            EXPECT_EQ(shown(other) == nullptr, other == id) << input << " and " << std::hex << other;
        node.disconnect(input);
    }
    node.connect("Normal", 0.0, 1.0, 0.0);
    for (unsigned int id = 0x8001; id <= 0x8008; ++id) EXPECT_NE(shown(id), nullptr);
}

TEST_F(Reflections, TakesValues) {
    HostPanel *panel = node.panel();
    int value = 40;
    for (const unsigned int id : {0x8001u, 0x8002u, 0x8004u, 0x8007u, 0x8008u}) {
        ++value;
        EXPECT_EQ(panel->set(node.instance, id, &value), 1);
        EXPECT_EQ(node.integer(id), value);
    }
    for (const unsigned int id : {0x8003u, 0x8005u, 0x8006u})
        EXPECT_EQ(panel->set(node.instance, id, &node.parm("Color")), 1) << "the host has changed it already";
    for (const unsigned int id : {0u, 0x8000u, 0x8009u}) EXPECT_EQ(panel->set(node.instance, id, &value), 0);
}

TEST_F(Reflections, TellsOfChanges) {
    HostPanel *panel = node.panel();
    EXPECT_EQ(FakeControls::notify(panel, 0x8006, kEventChanging), 0);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "updatePreview node"}));
    EXPECT_EQ(FakeControls::notify(panel, 0x8006, kEventSet), 0);
    EXPECT_EQ(host.takeLog(), (Lines{"getData 0", "instanceUpdate NodeHandler"}));
    EXPECT_EQ(FakeControls::notify(panel, 0x8006, kEventFocus), 0);
    EXPECT_EQ(host.takeLog(), Lines{"getData 0"});
}

// ---- Reflection ----

TEST_F(Reflections, MirrorsTheView) {
    struct Case {
        Vector from, normal, direction; // the sample is at (1, 2, 3)
    };
    const double half = std::sqrt(0.5);
    const Case cases[] = {
        {{1, 7, 3}, {0, 1, 0}, {0, 1, 0}}, // along the normal: straight back
        {{-2, 6, 3}, {0, 1, 0}, {0.6, 0.8, 0}},
        {{-2, 6, 3}, {0, -1, 0}, {0.6, 0.8, 0}}, // the side of the normal does not matter
        {{1, 6, 3}, {half, half, 0}, {1, 0, 0}},
        {{1, 2, 0}, {0, 1, 0}, {0, 0, 1}}, // along the surface: straight on
    };
    for (const Case &one : cases) {
        ShadingSample shaded = sample();
        for (size_t i = 0; i < 3; ++i) {
            shaded.raySource[i] = one.from[i];
            shaded.shadingNormal[i] = one.normal[i];
        }
        rays.traces.clear();
        evaluate(shaded);
        expectNear(rays.traces.at(0).direction, one.direction);
    }
}

TEST_F(Reflections, HandsTheIndexOfTheSampleOn) {
    evaluate();
    EXPECT_EQ(rays.traces.at(0).eta, kIndex);
    EXPECT_EQ(rays.traces[0].mode, 1u);
    node.set("Reflection Blur", 0.5);
    evaluate();
    EXPECT_EQ(rays.traces.at(1).eta, kIndex);
    EXPECT_EQ(rays.traces[1].mode, 0x40000001u);
}

TEST_F(Reflections, IsBlackForShadowRaysAndAsksForNothing) {
    node.set(tested.tint, 1);
    host.logsEvaluation = true;
    for (const int flags : {1, 1 | 8 | 16, 127}) {
        ShadingSample shaded = sample();
        shaded.rayFlags = flags;
        EXPECT_EQ(evaluate(shaded), (Vector{0, 0, 0}));
        EXPECT_EQ(host.takeLog(), Lines{"setValue"});
    }
    EXPECT_TRUE(rays.traces.empty());
}

TEST_F(Reflections, ReadsItsInputsInOrder) {
    host.logsEvaluation = true;
    evaluate();
    EXPECT_EQ(host.takeLog(), (Lines{"evaluate Color", "evaluate Angle", "evaluate Blur", "evaluate Samples",
                                     "evaluate Blur Depth", "evaluate Normal", "setValue"}));
}

} // namespace
} // namespace velm::plugin

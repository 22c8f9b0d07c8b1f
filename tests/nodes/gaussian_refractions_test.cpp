// Gaussian Refractions: the class, saving and loading, the panel, and the bent view.
#include "tests/nodes/glossy_fixture.h"

#include "tests/module/hint_list.h"

#include <cmath>
#include <optional>

namespace velm::plugin {
namespace {

class Refractions : public Glossy {
  protected:
    Refractions() : Glossy(kRefractions) {}

    // The traced ray of a view from a medium of one index into one of another.
    FakeRays::Call traced(const Vector &view, const Vector &normal, double from, double into) {
        ShadingSample shaded = sample();
        for (size_t i = 0; i < 3; ++i) {
            shaded.position[i] = 0;
            shaded.raySource[i] = -view[i];
            shaded.shadingNormal[i] = normal[i];
        }
        shaded.refractionIndex = from;
        node.set("Refraction Index", into);
        rays.traces.clear();
        evaluate(shaded);
        return rays.traces.at(0);
    }
};

constexpr double kPi = 3.14159265358979323846;

// A view from above, at an angle to the vertical.
Vector comingDown(double degrees) { return {std::sin(degrees * kPi / 180), -std::cos(degrees * kPi / 180), 0}; }

// ---- Life ----

const Lines kCreation = {
    "setColour 164 50 10",
    "channelGroup",
    "createGroup Gaussian Refractions in second",
    "createParm 81 -1",
    "setUpParm Color in Gaussian Refractions",
    "setParm Color 0.78431 0.78431 0.78431",
    "createParm 64 -1",
    "setUpParm Image Seam Angle in Gaussian Refractions",
    "setParm Image Seam Angle 0",
    "createParm 16 -1",
    "setUpParm Refraction Index in Gaussian Refractions",
    "setParm Refraction Index 1",
    "createParm 32 -1",
    "setUpParm Refraction Blur in Gaussian Refractions",
    "setParm Refraction Blur 0",
    "createParm 1 -1",
    "setUpParm Normal in Gaussian Refractions",
    "setParm Normal 0 1 0",
    "createInput Color 1",
    "createInput Angle 2",
    "createInput IOR 2",
    "createInput Blur 2",
    "createInput Samples 4",
    "createInput Blur Depth 4",
    "createInput Normal 3",
    "createOutput Color 1",
};

Lines forEachParm(const std::string &start, const std::string &end = "") {
    Lines lines;
    for (const char *parm : {"Image Seam Angle", "Refraction Index", "Color", "Refraction Blur"})
        lines.push_back(start + parm + end);
    return lines;
}

TEST_F(Refractions, IsMadeInOrderAndLeavesItsNormalBehind) {
    HostNode &second = host.addNode("second");
    const char *error = nullptr;
    void *instance = node.ops.create(node.ops.priv, &second, &error);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(host.takeLog(), kCreation);
    node.ops.destroy(instance);
    EXPECT_EQ(host.takeLog(), forEachParm("destroyParm "));
}

TEST_F(Refractions, StartsWithItsDefaults) {
    EXPECT_EQ(node.integer(kMode), 1);
    EXPECT_EQ(node.integer(kImage), 0);
    EXPECT_EQ(node.integer(tested.tint), 0);
    EXPECT_EQ(node.integer(tested.samples), 8);
    EXPECT_EQ(node.integer(tested.blurDepth), 0);
}

TEST_F(Refractions, AFrameReadsEveryParameterButTheNormal) {
    EXPECT_EQ(node.render.newTime(node.instance, 30, 1.25), nullptr);
    EXPECT_EQ(host.takeLog(), forEachParm("getParm ", " at 1.25"));
    GaussianRefractions_get_vpValues(node.instance, 0.5);
    EXPECT_EQ(host.takeLog(), forEachParm("getParm ", " at 0.5"));
}

TEST_F(Refractions, CopiesItsSettingsButTheNormal) {
    TestNode other(host, tested.activate, tested.interface, "other");
    for (const unsigned int id : {0x8001u, 0x8002u, 0x8005u, 0x8008u, 0x8009u}) node.set(id, static_cast<int>(id));
    EXPECT_EQ(node.ops.copy(other.instance, node.instance), nullptr);
    EXPECT_EQ(host.takeLog(),
              (Lines{"copyParm other/Image Seam Angle <- node/Image Seam Angle",
                     "copyParm other/Refraction Index <- node/Refraction Index", "copyParm other/Color <- node/Color",
                     "copyParm other/Refraction Blur <- node/Refraction Blur"}));
    for (const unsigned int id : {0x8001u, 0x8002u, 0x8005u, 0x8008u, 0x8009u})
        EXPECT_EQ(other.integer(id), static_cast<int>(id));
}

// ---- Files ----

TEST_F(Refractions, SavesInOrder) {
    images.add(2);
    node.set(kMode, 3);
    node.set(tested.tint, 1);
    node.set(tested.samples, 70000);
    node.set(tested.blurDepth, -2);
    const Lines parms = forEachParm("parm ");
    for (const int image : {0, 1, 3}) {
        node.set(kImage, image);
        RecordedState state;
        EXPECT_EQ(node.ops.save(node.instance, state.save()), nullptr);
        Lines expected = {"I2 3", "I2 " + std::to_string(image), "I2 1", "I2 4464", "I2 -2"};
        if (image) expected.emplace_back(image == 1 ? "text image picture1" : "text no image");
        expected.insert(expected.end(), parms.begin(), parms.end());
        EXPECT_EQ(state.lines(), expected);
    }
}

TEST_F(Refractions, LoadsWhatItSaved) {
    images.add(3);
    RecordedState state;
    state.integer(-3).integer(1).integer(0).integer(-1).integer(7).text("image picture3");
    state.parm({0.5}).parm({1.5}).parm({0.25, 0.5, 0.75}).parm({0});
    EXPECT_EQ(node.ops.load(node.instance, state.load()), nullptr);
    Lines expected = forEachParm("loadParm ");
    for (const std::string &line : forEachParm("getParm ", " at 0")) expected.push_back(line);
    EXPECT_EQ(host.takeLog(), expected);
    EXPECT_EQ(node.integer(kMode), -3);
    EXPECT_EQ(node.integer(kImage), 3) << "its place in today's list";
    EXPECT_EQ(node.integer(tested.tint), 0);
    EXPECT_EQ(node.integer(tested.samples), -1);
    EXPECT_EQ(node.integer(tested.blurDepth), 7);
    node.set(kMode, kRays);
    evaluate();
    EXPECT_EQ(rays.traces.at(0).eta, 1.5) << "the stored values are those of the file";
}

TEST_F(Refractions, StopsSavingAndLoadingAtTheFirstError) {
    for (int failing = 0; failing < 4; ++failing) {
        RecordedState state;
        host.parmsSaved = 0;
        host.failingSave = failing;
        EXPECT_STREQ(node.ops.save(node.instance, state.save()), FakeHost::kSaveError);
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

TEST_F(Refractions, ForgetsAnImageThatIsGone) {
    images.add(3);
    for (const char *reference : {"image gone", "no image"}) {
        RecordedState state;
        state.integer(2).integer(2).integer(0).integer(8).integer(0).text(reference);
        node.ops.load(node.instance, state.load());
        EXPECT_EQ(node.integer(kImage), 0) << reference;
    }
}

// ---- The panel ----

TEST_F(Refractions, ShowsItsControls) {
    const HostPanel *panel = node.panel();
    Lines controls, labels, values, modes;
    for (const Hint &hint : hintsWith(kHintAddControl, panel->hints)) controls.emplace_back(hint.arguments[1].text);
    for (const Hint &hint : hintsWith(kHintLabel, panel->hints)) labels.emplace_back(hint.arguments[1].text);
    EXPECT_EQ(controls, (Lines{"iPopChoice", "iPopChoice", "angle-env", "float-env", "iBoolean", "color-env",
                               "percent-env", "integer", "integer"}));
    EXPECT_EQ(labels, (Lines{"Mode", "Image", "Image Seam Angle", "Refraction Index", "Tint Refractions", "Color",
                             "Refraction Blur", "Samples", "Blur Depth"}));
    for (const HostPanelValue *row = panel->values; row->id; ++row) {
        EXPECT_EQ(row->id, 0x8001 + values.size());
        EXPECT_EQ(row->label, labels.at(values.size()));
        values.emplace_back(row->type);
    }
    EXPECT_EQ(values, (Lines{"integer", "integer", "angle-env", "float-env", "integer", "color-env", "percent-env",
                             "integer", "integer"}));
    EXPECT_EQ(limitsOf(panel->hints), (Lines{"8008 minimum 1", "8009 minimum 0"}));
    const auto lists = hintsWith(kHintStringList, panel->hints);
    ASSERT_EQ(lists.size(), 1u);
    for (const char *const *text = lists[0].arguments[1].texts; *text; ++text) modes.emplace_back(*text);
    EXPECT_EQ(modes,
              (Lines{"Backdrop Only", "Ray Tracing + Backdrop", "Spherical Map", " Ray Tracing + Spherical Map"}));
    const auto enabling = hintsWith(kHintEnable, panel->hints);
    ASSERT_EQ(enabling.size(), 1u);
    EXPECT_EQ(enabling[0].arguments[0].word, 0x8005u);
    EXPECT_EQ(enabling[0].ids, std::vector<unsigned int>{0x8006});
}

TEST_F(Refractions, HandsOutWhatIsNotConnected) {
    HostPanel *panel = node.panel();
    const auto shown = [&](unsigned int id) { return panel->get(node.instance, id); };
    EXPECT_EQ(shown(0x8003), &node.parm("Image Seam Angle"));
    EXPECT_EQ(shown(0x8004), &node.parm("Refraction Index"));
    EXPECT_EQ(shown(0x8006), &node.parm("Color"));
    EXPECT_EQ(shown(0x8007), &node.parm("Refraction Blur"));
    for (const unsigned int id : {0u, 0x8000u, 0x800au}) EXPECT_EQ(shown(id), nullptr);
    const std::map<unsigned int, const char *> inputs = {{0x8003, "Angle"},   {0x8004, "IOR"},
                                                         {0x8006, "Color"},   {0x8007, "Blur"},
                                                         {0x8008, "Samples"}, {0x8009, "Blur Depth"}};
    for (const auto &[id, input] : inputs) {
        node.connect(input, 0.0);
        for (unsigned int other = 0x8001; other <= 0x8009; ++other)
            EXPECT_EQ(shown(other) == nullptr, other == id) << input << " and " << std::hex << other;
        node.disconnect(input);
    }
}

TEST_F(Refractions, TakesValues) {
    HostPanel *panel = node.panel();
    int value = 40;
    for (const unsigned int id : {0x8001u, 0x8002u, 0x8005u, 0x8008u, 0x8009u}) {
        ++value;
        EXPECT_EQ(panel->set(node.instance, id, &value), 1);
        EXPECT_EQ(node.integer(id), value);
    }
    for (const unsigned int id : {0x8003u, 0x8004u, 0x8006u, 0x8007u})
        EXPECT_EQ(panel->set(node.instance, id, &node.parm("Color")), 1);
    for (const unsigned int id : {0u, 0x8000u, 0x800au}) EXPECT_EQ(panel->set(node.instance, id, &value), 0);
}

// ---- Refraction ----

struct Bend {
    double degrees, from, into;
    double bentSine; // sine of the angle of the bent ray to the normal
};

TEST_F(Refractions, BendsTheViewBySnellsLaw) {
    for (const Bend &one :
         {Bend{0, 1, 1.5, 0}, Bend{30, 1, 1.5, 1.0 / 3}, Bend{30, 1.5, 1, 0.75}, Bend{45, 1, 1.5, std::sqrt(0.5) / 1.5},
          Bend{30, 1, 2, 0.25}, Bend{89, 1, 1.3, 0}, Bend{40, 1.3, 1.25, 0}}) {
        SCOPED_TRACE(testing::Message() << one.degrees << " degrees, " << one.from << " to " << one.into);
        const double sine = one.bentSine != 0 ? one.bentSine : std::sin(one.degrees * kPi / 180) * one.from / one.into;
        const FakeRays::Call ray = traced(comingDown(one.degrees), {0, 1, 0}, one.from, one.into);
        expectNear(ray.direction, {sine, -std::sqrt(1 - sine * sine), 0});
        EXPECT_EQ(ray.eta, one.into);
        EXPECT_EQ(ray.mode, 2u);
    }
}

TEST_F(Refractions, BendsAboutTheNormalAlsoWhenItPointsWithTheView) {
    const FakeRays::Call ray = traced(comingDown(30), {0, -1, 0}, 1, 1.5);
    expectNear(ray.direction, {1.0 / 3, -std::sqrt(8.0) / 3, 0});
    EXPECT_EQ(ray.eta, 1.5);
    expectNear(traced({1, 0, 0}, {0, 1, 0}, 1, 2).direction, {0.5, std::sqrt(0.75), 0}); // perpendicular to the normal
    const Vector leaning = unit({0.3, -1, 0.2});
    expectNear(traced(comingDown(20), leaning, 1, 1.4).direction, snellOf(comingDown(20), leaning, 1, 1.4));
}

TEST_F(Refractions, MirrorsFromADenserMediumWhenTheNormalPointsWithTheView) {
    const FakeRays::Call ray = traced(comingDown(10), {0, -1, 0}, 1.5, 1); // at more than a right angle to the normal
    expectNear(ray.direction, mirrorOf(comingDown(10), {0, -1, 0}));
    EXPECT_EQ(ray.eta, 1.5);
}

TEST_F(Refractions, GoesStraightOnBetweenEqualIndices) {
    for (const double degrees : {0.0, 20.0, 60.0, 85.0})
        for (const double side : {1.0, -1.0}) {
            const FakeRays::Call ray = traced(comingDown(degrees), {0, side, 0}, 1.5, 1.5);
            expectNear(ray.direction, comingDown(degrees), 1e-11);
            EXPECT_EQ(ray.eta, 1.5);
        }
}

TEST_F(Refractions, MirrorsBeyondTheCriticalAngle) {
    const double critical = std::asin(1 / 1.5) * 180 / kPi;
    for (const double degrees : {critical + 0.01, 45.0, 60.0, 89.9}) {
        const FakeRays::Call ray = traced(comingDown(degrees), {0, 1, 0}, 1.5, 1);
        const Vector view = comingDown(degrees);
        expectNear(ray.direction, {view[0], -view[1], 0});
        EXPECT_EQ(ray.eta, 1.5) << "the ray stays where it is";
        EXPECT_EQ(ray.mode, 2u);
    }
    const FakeRays::Call ray = traced(comingDown(critical - 0.01), {0, 1, 0}, 1.5, 1);
    EXPECT_EQ(ray.eta, 1.0);
    EXPECT_LT(ray.direction[1], 0);
}

// An index of refraction whose critical angle is exactly the angle of a view with a cosine of 0.8: searched for among
// the numbers next to the theoretical value.
std::optional<double> criticalIndex(double from) {
    double index = std::nextafter(from * 0.6, 0);
    for (int i = 0; i < 8; ++i) index = std::nextafter(index, 0);
    for (int i = 0; i < 20; ++i, index = std::nextafter(index, 10))
        if (std::asin(index / from) == std::acos(0.8)) return index;
    return std::nullopt;
}

TEST_F(Refractions, RefractsAtExactlyTheCriticalAngle) {
    int found = 0;
    for (double from = 1.25; from < 2; from += 0.0625) {
        const std::optional<double> into = criticalIndex(from);
        if (!into) continue;
        ++found;
        const FakeRays::Call ray = traced({0.6, -0.8, 0}, {0, 1, 0}, from, *into);
        EXPECT_EQ(ray.eta, *into) << "it is not mirrored";
        expectNear(ray.direction, {1, 0, 0}, 1e-6); // along the surface
        EXPECT_EQ(traced({0.6, -0.8, 0}, {0, 1, 0}, from, *into - 1e-9).eta, from) << "a little beyond";
    }
    EXPECT_GT(found, 0);
}

TEST_F(Refractions, TakesTheIndexFromItsInput) {
    node.connect("IOR", 1.75);
    evaluate();
    EXPECT_EQ(rays.traces.at(0).eta, 1.75);
    node.disconnect("IOR");
    evaluate();
    EXPECT_EQ(rays.traces.at(1).eta, 1.0);
}

TEST_F(Refractions, MarksTheRaysOfABlur) {
    node.set("Refraction Blur", 0.5);
    node.set(tested.samples, 2);
    evaluate();
    for (const FakeRays::Call &ray : rays.traces) EXPECT_EQ(ray.mode, 0x40000002u);
    EXPECT_EQ(rays.traces.size(), 2u);
}

// ---- Shadow rays ----

TEST_F(Refractions, NeverBlocksAShadowRay) {
    ShadingSample shaded = sample();
    shaded.rayFlags = 1 | 8;
    host.logsEvaluation = true;
    EXPECT_EQ(evaluate(shaded), (Vector{1, 1, 1}));
    EXPECT_EQ(host.takeLog(), (Lines{"evaluate Color", "setValue"}));
    node.set("Color", 0.25, 0.5, 0.75);
    EXPECT_EQ(evaluate(shaded), (Vector{1, 1, 1})) << "no tint";
    node.set(tested.tint, 1);
    EXPECT_EQ(evaluate(shaded), (Vector{0.25, 0.5, 0.75}));
    node.connect("Color", 0.1, 0.2, 0.3);
    EXPECT_EQ(evaluate(shaded), (Vector{0.1, 0.2, 0.3}));
    EXPECT_TRUE(rays.traces.empty());
}

TEST_F(Refractions, ReadsItsInputsInOrder) {
    host.logsEvaluation = true;
    evaluate();
    EXPECT_EQ(host.takeLog(), (Lines{"evaluate Color", "evaluate Angle", "evaluate IOR", "evaluate Blur",
                                     "evaluate Samples", "evaluate Blur Depth", "evaluate Normal", "setValue"}));
}

} // namespace
} // namespace velm::plugin

// The host's own nodes: results that are known.
#include "tests/graph/builtin_fixture.h"

#include "host/graph/builtin/noise.h"
#include "host/services/uv_provider.h"
#include "host/services/vertex_map_provider.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace velm::host::test {
namespace {

struct TripleAnswer {
    const char *server;
    Settings settings;
    const char *output;
    Double3 expected;
};

struct ScalarAnswer {
    const char *server;
    Settings settings;
    const char *output;
    double found; // the value of the asking input before
    double expected;
};

TEST_F(BuiltinTest, VectorsAndColoursAreAsComputedByHand) {
    const TripleAnswer kRows[] = {
        {"Constant Color", {{"Color", Double3{0.1, 0.2, 0.3}}}, "Color", {0.1, 0.2, 0.3}},
        {"Constant Vector", {{"Vector", Double3{-1, 2, 3}}}, "Vector", {-1, 2, 3}},
        {"Add Color", {{"A", Double3{0.1, 0.2, 0.3}}, {"B", Double3{1, 2, 3}}}, "Color", {1.1, 2.2, 3.3}},
        {"Multiply Color", {{"A", Double3{2, 3, 4}}, {"B", Double3{0.5, 0, -1}}}, "Color", {1, 0, -4}},
        {"Mix Color", {{"A", Double3{0, 1, 2}}, {"B", Double3{1, 1, 0}}, {"Mix", 25.0}}, "Color", {0.25, 1, 1.5}},
        {"Clamp Color", {{"In", Double3{-1, 0.5, 2}}}, "Color", {0, 0.5, 1}},
        {"Clamp Color", {{"In", Double3{-1, 0.5, 2}}, {"Low", 0.6}, {"High", 3.0}}, "Color", {0.6, 0.6, 2}},
        {"Make Vector", {{"X", 1.0}, {"Y", 2.0}, {"Z", 3.0}}, "Vector", {1, 2, 3}},
        {"Make Color", {{"Red", 0.1}, {"Green", 0.2}, {"Blue", 0.3}}, "Color", {0.1, 0.2, 0.3}},
    };
    for (const TripleAnswer &row : kRows) {
        SCOPED_TRACE(row.server);
        expectTriple(triple(add(row.server, row.settings), row.output), row.expected);
    }
}

TEST_F(BuiltinTest, ScalarsAreAsComputedByHand) {
    const Settings kRange = {
        {"Shape", std::string("Linear")}, {"In Low", 2.0}, {"In High", 4.0}, {"Out Low", 10.0}, {"Out High", 20.0}};
    const auto shaped = [](const char *shape, const char *label, double value) {
        return Settings{{"Shape", std::string(shape)}, {label, value}};
    };
    const ScalarAnswer kRows[] = {
        {"Constant Scalar", {{"Scalar", 2.5}}, "Scalar", 0, 2.5},
        {"Constant Integer", {{"Integer", -3.0}}, "Integer", 0, -3},
        {"Add Scalar", {{"A", 2.0}, {"B", 3.0}}, "Out", 0, 5},
        {"Multiply Scalar", {{"A", 2.0}, {"B", -3.0}}, "Out", 0, -6},
        {"Mix Scalar", {{"A", 2.0}, {"B", 4.0}}, "Out", 0, 3},
        {"Mix Scalar", {{"A", 2.0}, {"B", 4.0}, {"Mix", 150.0}}, "Out", 0, 5},
        {"Clamp Scalar", {{"In", 7.0}}, "Out", 0, 1},
        {"Clamp Scalar", {{"In", 7.0}, {"Low", 5.0}, {"High", 3.0}}, "Out", 0, 3},
        {"Split Vector", {{"Vector", Double3{4, 5, 6}}}, "Z", 0, 6},
        {"Split Color", {{"Color", Double3{4, 5, 6}}}, "Green", 0, 5},
        {"Curve", {}, "Function", 0.25, 0.15625},
        {"Curve", kRange, "Function", 2.5, 12.5},
        {"Curve", kRange, "Function", 9, 20},
        {"Curve", kRange, "Function", -9, 10},
        {"Curve", shaped("Power", "Exponent", 3), "Function", 0.5, 0.125},
        {"Curve", shaped("Power", "Exponent", -3), "Function", 0.5, 1},
        {"Curve", shaped("Bias", "Amount", 50), "Function", 0.3, 0.3},
        {"Curve", shaped("Bias", "Amount", 80), "Function", 0.5, 0.8},
        {"Curve", shaped("Bias", "Amount", 0), "Function", 1, 1},
        {"Curve", shaped("Gain", "Amount", 50), "Function", 0.3, 0.3},
        {"Curve", shaped("Gain", "Amount", 75), "Function", 0.25, 0.125},
        {"Curve", shaped("Gain", "Amount", 75), "Function", 0.75, 0.875},
        {"Curve", {{"In Low", 0.5}, {"In High", 0.5}}, "Function", 0.4, 0},
        {"Curve", {{"In Low", 0.5}, {"In High", 0.5}}, "Function", 0.5, 1},
    };
    for (const ScalarAnswer &row : kRows) {
        SCOPED_TRACE(row.server);
        EXPECT_NEAR(scalar(add(row.server, row.settings), row.output, row.found), row.expected, 1e-12);
    }
}

TEST_F(BuiltinTest, ConnectedInputsOverrideParametersAndMakeThemUnavailable) {
    HostNode &sum = add("Add Scalar", {{"A", 1.0}, {"B", 2.0}});
    HostNode &ten = add("Constant Scalar", {{"Scalar", 10.0}});
    const RedrawCount redraws(*panelOf(sum));
    network.connect(ten.name, "Scalar", sum.name, "A");
    EXPECT_GT(redraws.count, 0);
    EXPECT_EQ(scalar(sum, "Out"), 12);
    EXPECT_THROW(applySetting(*panelOf(sum), {"A", 5.0, {}}), InputError);
    const UpdateCount updates;
    network.destroyNode(ten);
    EXPECT_GT(updates.count, 0);
    EXPECT_EQ(scalar(sum, "Out"), 3);
}

int gonePanels = 0;

TEST_F(BuiltinTest, APanelIsDestroyedWithItsNode) {
    HostNode &node = add("Add Scalar");
    HostHint hints[4] = {{.word = kHintDestroyNotify}, {}, {.word = 0}, {.word = kHintEnd}};
    hints[1].destroyed = [](void *) { ++gonePanels; };
    panelFuncs()->hint(panelOf(node), 0, hints);
    gonePanels = 0;
    network.destroyNode(node);
    EXPECT_EQ(gonePanels, 1);
}

TEST_F(BuiltinTest, SpotInfoDescribesTheSample) {
    HostNode &info = add("Spot Info");
    place(1, 2, 3);
    sample.objectPosition[0] = 7;
    sample.raySource[0] = 1;
    sample.raySource[1] = 2;
    sample.shadingNormal[1] = 1;
    sample.geometricNormal[2] = -1;
    sample.rayLength = 3;
    sample.spotSize = 0.01;
    sample.cosine = 0.5;
    sample.refractionIndex = 1.5;
    sample.polygonNumber = 12;
    sample.rayDepth = 2;
    sample.rayFlags = kRayBackSide | kRayShadow;
    expectTriple(triple(info, "Position"), {1, 2, 3});
    expectTriple(triple(info, "Object Position"), {7, 2, 3});
    expectTriple(triple(info, "Normal"), {0, 1, 0});
    expectTriple(triple(info, "Geometric Normal"), {0, 0, -1});
    expectTriple(triple(info, "Ray Direction"), {0, 0, 1});
    expectTriple(triple(info, "Ray Source"), {1, 2, 0});
    const std::pair<const char *, double> kScalars[] = {
        {"Distance", 3}, {"Spot Size", 0.01}, {"Incidence", 0.5}, {"Refraction Index", 1.5}, {"U", 0},
        {"V", 0},        {"Polygon", 12},     {"Depth", 2},       {"Back Side", 1}};
    for (const auto &[output, expected] : kScalars) EXPECT_EQ(scalar(info, output), expected) << output;
    setUvProvider({[](const ShadingSample *, const char *map, double *u, double *v) {
        *u = map ? 0.5 : 0.25;
        *v = 0.75;
        return true;
    }});
    EXPECT_EQ(scalar(info, "U"), 0.25);
    EXPECT_EQ(scalar(info, "V"), 0.75);
    applySetting(*panelOf(info), {"UV Map", std::string("Second"), {}});
    EXPECT_EQ(scalar(info, "U"), 0.5);
    setUvProvider({});
}

TEST_F(BuiltinTest, VertexMapsComeFromTheProvider) {
    HostNode &colour = add("Vertex Color", {{"Color Map", std::string("Paint")}});
    HostNode &weight = add("Weight Map", {{"Weight Map", std::string("Bend")}});
    expectTriple(triple(colour, "Color"), {1, 1, 1});
    EXPECT_EQ(scalar(colour, "Alpha"), 1);
    EXPECT_EQ(scalar(weight, "Scalar"), 0);
    setVertexMapProvider({.colour =
                              [](const char *map, const ShadingSample *at, double result[4]) {
                                  const double found[4] = {0.25, 2, -1, 0.5};
                                  if (std::string_view(map) != "Paint" || at->rayDepth != 3) return false;
                                  std::copy_n(found, 4, result);
                                  return true;
                              },
                          .weight =
                              [](const char *map, const ShadingSample *, double *result) {
                                  if (std::string_view(map) == "Bend") *result = -0.5;
                                  return std::string_view(map) == "Bend";
                              }});
    expectTriple(triple(colour, "Color"), {1, 1, 1});
    sample.rayDepth = 3;
    expectTriple(triple(colour, "Color"), {0.25, 2, -1});
    EXPECT_EQ(scalar(colour, "Alpha"), 0.5);
    EXPECT_EQ(scalar(weight, "Scalar"), -0.5);
    applySetting(*panelOf(weight), {"Weight Map", std::string("Other"), {}});
    EXPECT_EQ(scalar(weight, "Scalar"), 0);
    setVertexMapProvider({});
}

TEST_F(BuiltinTest, CheckerAlternatesFromCellToCell) {
    HostNode &checker = add("Checker", {{"Size", 2.0}, {"Color 1", Double3{1, 0, 0}}, {"Color 2", Double3{0, 1, 0}}});
    const struct {
        double x, y, z, mask;
    } kRows[] = {{1, 1, 1, 0},  {3, 1, 1, 1}, {3, 3, 1, 0},     {-1, 1, 1, 1}, {-1, -1, -1, 1},
                 {-3, 1, 1, 0}, {1, 0, 1, 0}, {1, -1e-9, 1, 0}, {NAN, 1, 1, 0}};
    for (const auto &row : kRows) {
        place(row.x, row.y, row.z);
        EXPECT_EQ(scalar(checker, "Mask"), row.mask) << row.x << ' ' << row.y << ' ' << row.z;
        expectTriple(triple(checker, "Color"), row.mask > 0 ? Double3{0, 1, 0} : Double3{1, 0, 0});
    }
    place(1, 1, 1);
    sample.position[0] = 3;
    applySetting(*panelOf(checker), {"Coordinates", std::string("World"), {}});
    EXPECT_EQ(scalar(checker, "Mask"), 1);
    applySetting(*panelOf(checker), {"Coordinates", std::string("UV"), {}});
    applySetting(*panelOf(checker), {"Size", 0.5, {}});
    setUvProvider({[](const ShadingSample *, const char *, double *u, double *v) {
        *u = 0.75;
        *v = 0.25;
        return true;
    }});
    EXPECT_EQ(scalar(checker, "Mask"), 1);
    setUvProvider({});
    applySetting(*panelOf(checker), {"Size", 0.0, {}});
    EXPECT_EQ(scalar(checker, "Mask"), 0);
}

TEST_F(BuiltinTest, FractalNoiseSumsOctavesAndMixes) {
    HostNode &noise = add("Fractal Noise", {{"Octaves", 1.0}, {"Scale", 2.0}});
    place(0.6, 0.8, 1);
    EXPECT_DOUBLE_EQ(scalar(noise, "Scalar"), 0.5 + 0.5 * gradientNoise(0.3, 0.4, 0.5));
    applySetting(*panelOf(noise), {"Octaves", 2.0, {}});
    applySetting(*panelOf(noise), {"Lacunarity", 3.0, {}});
    applySetting(*panelOf(noise), {"Gain", 25.0, {}});
    const double expected = 0.5 + 0.5 * (gradientNoise(0.3, 0.4, 0.5) + 0.25 * gradientNoise(0.9, 1.2, 1.5)) / 1.25;
    EXPECT_NEAR(scalar(noise, "Scalar"), expected, 1e-12);
    applySetting(*panelOf(noise), {"Color 1", Double3{1, 0, 0}, {}});
    applySetting(*panelOf(noise), {"Color 2", Double3{0, 1, 0}, {}});
    expectTriple(triple(noise, "Color"), {1 - expected, expected, 0});
    applySetting(*panelOf(noise), {"Scale", 0.0, {}});
    EXPECT_EQ(scalar(noise, "Scalar"), 0.5);
    applySetting(*panelOf(noise), {"Scale", 1.0, {}});
    applySetting(*panelOf(noise), {"Gain", -100.0, {}});
    applySetting(*panelOf(noise), {"Octaves", 2.0, {}});
    EXPECT_EQ(scalar(noise, "Scalar"), 0.5);
}

} // namespace
} // namespace velm::host::test

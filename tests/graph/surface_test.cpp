// Surfaces: the root's values, and the inputs that override them.
#include "host/graph/surface.h"

#include "host/services/services.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velm::host::test {
namespace {

class SurfaceTest : public ::testing::Test {
  protected:
    SurfaceTest() : surface("Clay") {
        sample.shadingNormal[1] = 1;
        surface.newTime(0, 0);
    }
    HostNode &add(const char *server, const char *name) {
        return surface.network().addNode(serverList().get(server), name);
    }
    std::string errorOf(const std::string &name, const SettingValue &value) {
        try {
            surface.setDefault(name, value);
        } catch (const InputError &error) {
            return error.what();
        }
        return "no error";
    }

    Surface surface;
    ShadingSample sample{};
};

TEST_F(SurfaceTest, StartsWithSensibleValues) {
    const SurfaceValues values = surface.evaluate(&sample);
    for (double component : values.colour) EXPECT_EQ(component, 0.78431);
    EXPECT_EQ(values.luminosity, 0);
    EXPECT_EQ(values.diffuse, 1);
    EXPECT_EQ(values.specular, 0);
    EXPECT_EQ(values.glossiness, 0.4);
    EXPECT_EQ(values.reflection, 0);
    EXPECT_EQ(values.transparency, 0);
    EXPECT_EQ(values.refractionIndex, 1);
    EXPECT_EQ(values.normal[1], 1);
}

TEST_F(SurfaceTest, DefaultsAreSetByName) {
    surface.setDefault("Color", Double3{0.1, 0.2, 0.3});
    const char *names[] = {"Luminosity", "Diffuse",      "Specular",        "Glossiness",
                           "Reflection", "Transparency", "Refraction Index"};
    for (int i = 0; i < 7; ++i) surface.setDefault(names[i], 2.0 + i);
    const SurfaceValues values = surface.evaluate(&sample);
    EXPECT_EQ(values.colour[2], 0.3);
    EXPECT_EQ(values.luminosity, 2);
    EXPECT_EQ(values.diffuse, 3);
    EXPECT_EQ(values.specular, 4);
    EXPECT_EQ(values.glossiness, 5);
    EXPECT_EQ(values.reflection, 6);
    EXPECT_EQ(values.transparency, 7);
    EXPECT_EQ(values.refractionIndex, 8);
    EXPECT_EQ(surface.evaluateTransparency(&sample), 7);
}

TEST_F(SurfaceTest, KeysAnimateADefault) {
    KeysDescription keys;
    keys.keys = {{.time = 0, .value = {0}, .shape = kShapeLinear}, {.time = 2, .value = {1}, .shape = kShapeLinear}};
    surface.setDefault("Luminosity", keys);
    surface.newTime(1, 0.5);
    EXPECT_DOUBLE_EQ(surface.evaluate(&sample).luminosity, 0.25);
    surface.newTime(2, 1.5);
    EXPECT_DOUBLE_EQ(surface.evaluate(&sample).luminosity, 0.75);
}

TEST_F(SurfaceTest, InvalidSettingsAreExplained) {
    EXPECT_NE(errorOf("Difuse", 1.0).find("did you mean \"Diffuse\"?"), std::string::npos);
    EXPECT_NE(errorOf("Diffuse", std::string("much")), "no error");
    EXPECT_NE(errorOf("Color", 1.0), "no error");
    EXPECT_EQ(errorOf("Diffuse", 0.5), "no error");
}

TEST_F(SurfaceTest, ConnectionsOverrideDefaults) {
    add("Constant Color", "Red");
    add("Constant Scalar", "Half");
    surface.network().connect("Red", "Color", "Clay", "Color");
    surface.network().connect("Half", "Scalar", "Clay", "Transparency");
    surface.network().connect("Red", "Color", "Clay", "Diffuse"); // as its luminance
    SurfaceValues values = surface.evaluate(&sample);
    EXPECT_EQ(values.colour[0], 1);
    EXPECT_EQ(values.transparency, 1);
    EXPECT_DOUBLE_EQ(values.diffuse, 1);
    EXPECT_EQ(surface.evaluateTransparency(&sample), 1);
    surface.network().setState(1); // switched off
    values = surface.evaluate(&sample);
    EXPECT_EQ(values.colour[0], 0.78431);
    EXPECT_EQ(surface.evaluateTransparency(&sample), 0);
}

TEST_F(SurfaceTest, ANormalIsNormalised) {
    HostNode &vector = add("Constant Vector", "Tilt");
    surface.network().connect("Tilt", "Vector", "Clay", "Normal");
    EXPECT_EQ(surface.evaluate(&sample).normal[1], 1); // a zero vector leaves the sample's
    HostNode &make = add("Make Vector", "Make");
    add("Constant Scalar", "One");
    surface.network().connect("One", "Scalar", "Make", "X");
    surface.network().connect("One", "Scalar", "Make", "Z");
    surface.network().connect("Make", "Vector", "Tilt", "Vector");
    const SurfaceValues values = surface.evaluate(&sample);
    EXPECT_DOUBLE_EQ(values.normal[0], std::sqrt(0.5));
    EXPECT_DOUBLE_EQ(values.normal[1], 0);
    surface.network().destroyNode(make);
    surface.network().destroyNode(vector);
    EXPECT_EQ(surface.evaluate(&sample).normal[1], 1);
}

TEST_F(SurfaceTest, PreviewsShowTheExtentOfTheGeometry) {
    const double bounds[3][2] = {{0, 2}, {1, 5}, {-1, 1}};
    surface.setBounds(bounds);
    double scale[3], position[3];
    nodeUtilityFuncs()->autosize(&add("Checker", "Tiles"), scale, position);
    EXPECT_EQ(scale[1], 4);
    EXPECT_EQ(position[1], 3);
}

TEST_F(SurfaceTest, TheRootCannotBeAddedAsANode) { EXPECT_EQ(serverList().find("Surface"), nullptr); }

} // namespace
} // namespace velm::host::test

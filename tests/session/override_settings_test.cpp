#include "host/session/override_settings.h"

#include "tests/session/open_scene.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

class OverriddenSettings : public testing::Test {
  protected:
    Warnings warnings_{Warnings::Policy::strict};
    Session session_{test::read(test::kOpenScene), warnings_};

    void apply(const std::string &text) { applySettingOverride(session_, parseOverride(text)); }
    std::string refusal(const std::string &text) {
        try {
            apply(text);
        } catch (const InputError &error) {
            return error.what();
        }
        return {};
    }
};

TEST_F(OverriddenSettings, OfNodesAndSurfacesAreSet) {
    apply("surfaces.Clay.nodes.Level.settings.Scalar=0.25");
    const NodePath level{.network = {.surface = "Clay", .nodes = {}}, .node = "Level"};
    EXPECT_EQ(std::get<double>(session_.setting(level, "Scalar")), 0.25);
    apply("surfaces.Ground.settings.Color=[0,0,1]");
    for (const SurfaceDescription &surface : session_.describe().surfaces) {
        if (surface.name != "Ground") continue;
        ASSERT_EQ(surface.settings.size(), 1U);
        EXPECT_EQ(std::get<Double3>(surface.settings[0].value), (Double3{0, 0, 1}));
    }
}

TEST_F(OverriddenSettings, OtherOverridesChangeNothing) {
    apply("render.samples=7");
    EXPECT_EQ(session_.scene().render.samples, 2);
}

TEST_F(OverriddenSettings, ErrorsNameTheNearest) {
    EXPECT_EQ(refusal("surfaces.Caly.settings.Diffuse=1"), "there is no surface \"Caly\", did you mean \"Clay\"?");
    EXPECT_NE(refusal("surfaces.Clay.nodes.Levle.settings.Scalar=1").find("did you mean \"Level\"?"),
              std::string::npos);
    EXPECT_EQ(refusal("surfaces.Clay.nodes.Level.settings.Scalra=1"),
              "there is no setting \"Scalra\", did you mean \"Scalar\"?");
    EXPECT_EQ(refusal("surfaces.Clay.nodes.Level.settings.Scalar=much"), "\"Scalar\": expected a number or keys");
    EXPECT_EQ(refusal("surfaces.Clay.nodes.Product.settings.B=1"), "\"B\": this setting is fed by a connection");
    EXPECT_NE(refusal("surfaces.Clay.nodes.Level.settings.Scalar=null"), "");
}

} // namespace
} // namespace velm::host

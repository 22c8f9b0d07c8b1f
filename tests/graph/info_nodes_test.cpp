// The nodes that describe how a surface is seen, the time, and items: Incidence, Fresnel, Time, Item Info, Camera
// Distance.
#include "tests/graph/builtin_fixture.h"

#include "host/services/camera_view.h"
#include "host/services/item_place_provider.h"

#include <cmath>
#include <numbers>
#include <string_view>

namespace velm::host::test {
namespace {

constexpr double kInfoTolerance = 1e-12;

// A floor that faces up, with the shading normal (0, 1, 0), at the origin.
class SeenFloor : public BuiltinTest {
  protected:
    SeenFloor() { sample.shadingNormal[1] = 1; }
    // Sees the floor from two metres away, at an angle from its normal.
    void seeFrom(double angle) {
        sample.raySource[0] = 2 * std::sin(angle);
        sample.raySource[1] = 2 * std::cos(angle);
    }
};

TEST_F(SeenFloor, IncidenceIsMeasuredFromTheNormal) {
    HostNode &node = add("Incidence");
    seeFrom(std::numbers::pi / 3);
    EXPECT_NEAR(scalar(node, "Cosine"), 0.5, kInfoTolerance);
    EXPECT_NEAR(scalar(node, "Angle"), 30, kInfoTolerance * 100);
    EXPECT_NEAR(scalar(node, "Edge"), 0.5, kInfoTolerance);
    applySetting(*panelOf(node), {"Exponent", 3.0, {}});
    EXPECT_NEAR(scalar(node, "Edge"), 0.125, kInfoTolerance);
    // The normal that is set counts instead, whatever its length.
    applySetting(*panelOf(node), {"Normal", Double3{3, 0, 0}, {}});
    EXPECT_NEAR(scalar(node, "Cosine"), std::sqrt(0.75), kInfoTolerance);
}

TEST_F(SeenFloor, IncidenceIsTheSameFromBehind) {
    HostNode &node = add("Incidence", {{"Normal", Double3{0, -1, 0}}});
    seeFrom(std::numbers::pi / 3);
    EXPECT_NEAR(scalar(node, "Cosine"), 0.5, kInfoTolerance);
}

class FresnelTest : public SeenFloor {
  protected:
    double reflection(const char *method, double index, double angle) {
        seeFrom(angle);
        HostNode &node = add("Fresnel", {{"Method", std::string(method)}, {"Refraction Index", index}});
        const double reflected = scalar(node, "Reflection");
        EXPECT_NEAR(scalar(node, "Transmission"), 1 - reflected, kInfoTolerance);
        return reflected;
    }
};

TEST_F(FresnelTest, HeadOnBothMethodsAreTheClosedForm) {
    for (const char *method : {"Dielectric", "Schlick"}) {
        for (const double index : {1.33, 1.5, 2.4, 0.5})
            EXPECT_NEAR(reflection(method, index, 0), std::pow((index - 1) / (index + 1), 2), kInfoTolerance) << index;
        EXPECT_EQ(reflection(method, 1, 0.7), 0) << "no boundary";
        EXPECT_EQ(reflection(method, -3, 0.7), 0) << "no medium";
        EXPECT_NEAR(reflection(method, 1.5, std::numbers::pi / 2), 1, 1e-9) << "a grazing ray";
    }
}

// At Brewster's angle no light of the parallel polarisation is reflected.
TEST_F(FresnelTest, AtBrewstersAngleHalfOfThePerpendicularIsReflected) {
    const double index = 1.5, squared = index * index;
    EXPECT_NEAR(reflection("Dielectric", index, std::atan(index)), std::pow((squared - 1) / (squared + 1), 2) / 2,
                kInfoTolerance);
}

TEST_F(FresnelTest, SchlicksApproximationIsItsFormula) {
    EXPECT_NEAR(reflection("Schlick", 1.5, std::numbers::pi / 3), 0.04 + 0.96 / 32, kInfoTolerance);
}

// A ray and the ray that it becomes on the other side are reflected alike.
TEST_F(FresnelTest, BothSidesOfASurfaceReflectAlike) {
    const double index = 1.5, outside = 1.1, inside = std::asin(std::sin(outside) / index);
    for (const char *method : {"Dielectric", "Schlick"}) {
        sample.rayFlags = 0;
        const double front = reflection(method, index, outside);
        sample.rayFlags = kRayBackSide;
        EXPECT_NEAR(reflection(method, index, inside), front, kInfoTolerance) << method;
        EXPECT_EQ(reflection(method, index, std::asin(1 / index) + 1e-6), 1) << "total internal reflection";
    }
}

TEST_F(BuiltinTest, TimeIsThatOfTheFrame) {
    HostNode &plain = add("Time"), &changed = add("Time", {{"Start", 0.5}, {"Speed", -200.0}});
    network.newTime(30, 1.25);
    EXPECT_EQ(scalar(plain, "Seconds"), 1.25);
    EXPECT_EQ(scalar(plain, "Frame"), 30);
    EXPECT_EQ(scalar(changed, "Seconds"), -1.5);
    network.newTime(31, 1.5);
    EXPECT_EQ(scalar(plain, "Seconds"), 1.5);
    EXPECT_EQ(scalar(plain, "Frame"), 31);
}

class ItemInfoTest : public BuiltinTest {
  protected:
    ItemInfoTest() {
        setItemPlaceProvider([](const char *name, ItemPlace &place) {
            if (std::string_view(name) != "Lamp") return false;
            place = {.position = {1, 2, 3}, .rotation = {0.1, 0.2, 0.3}, .scale = {4, 5, 6}};
            return true;
        });
    }
    ~ItemInfoTest() override { setItemPlaceProvider(nullptr); }
};

TEST_F(ItemInfoTest, GivesThePlaceOfTheItem) {
    HostNode &node = add("Item Info", {{"Item", std::string("Lamp")}});
    network.newTime(0, 0);
    expectTriple(triple(node, "Position"), {1, 2, 3});
    expectTriple(triple(node, "Rotation"), {0.1, 0.2, 0.3});
    expectTriple(triple(node, "Scale"), {4, 5, 6});
    place(1, 5, 7);
    EXPECT_EQ(scalar(node, "Distance"), 5);
}

TEST_F(ItemInfoTest, WithoutANameIsAtTheOrigin) {
    HostNode &node = add("Item Info");
    network.newTime(0, 0);
    expectTriple(triple(node, "Position"), {0, 0, 0});
    expectTriple(triple(node, "Scale"), {1, 1, 1});
}

TEST_F(ItemInfoTest, RefusesANameThatNoItemHas) {
    add("Item Info", {{"Item", std::string("Lam")}});
    try {
        network.newTime(0, 0);
        ADD_FAILURE() << "no error";
    } catch (const InputError &error) {
        EXPECT_STREQ(error.what(), "node \"Item Info\": the scene has no item with the name in its setting \"Item\"");
    }
}

TEST_F(BuiltinTest, TheCameraDistanceDoesNotDependOnTheRay) {
    const CameraView before = cameraView();
    setCameraView({.position = {0, 3, 0}, .matrix = {1, 0, 0, 0, 0, 1, 0, -1, 0}}); // looks down
    place(4, 0, 0);
    sample.rayLength = 100;
    HostNode &node = add("Camera Distance", {{"Near", 1.0}, {"Far", 9.0}});
    EXPECT_EQ(scalar(node, "Distance"), 5);
    EXPECT_EQ(scalar(node, "Depth"), 3);
    EXPECT_EQ(scalar(node, "Fraction"), 0.5);
    place(0, 2.5, 0);
    EXPECT_EQ(scalar(node, "Fraction"), 0);
    place(0, 7, 0);
    EXPECT_EQ(scalar(node, "Depth"), -4) << "behind the camera";
    place(0, -40, 0);
    EXPECT_EQ(scalar(node, "Fraction"), 1);
    HostNode &step = add("Camera Distance", {{"Near", 5.0}, {"Far", 5.0}});
    EXPECT_EQ(scalar(step, "Fraction"), 1);
    place(0, 0, 0);
    EXPECT_EQ(scalar(step, "Fraction"), 0);
    setCameraView(before);
}

} // namespace
} // namespace velm::host::test

// The places of items that nodes can ask for.
#include "host/base/angles.h"
#include "host/services/item_place_provider.h"
#include "tests/render/test_scene.h"

namespace velm::host::test {
namespace {

constexpr double kPlaceTolerance = 1e-9;

ItemPlace placeOf(const char *name) {
    ItemPlace place;
    EXPECT_TRUE(itemPlaceFuncs()->find(name, place)) << name;
    return place;
}

class ItemPlaces : public testing::Test {
  protected:
    ItemPlaces() { scene_.surface("Grey"); }
    NullDescription &null(const char *name, const Double3 &position) {
        NullDescription &item = scene_.description.nulls.emplace_back();
        item.name = name;
        item.position = position;
        return item;
    }
    TestScene scene_;
};

TEST_F(ItemPlaces, AreThoseOfObjectsNullsLightsAndCameras) {
    scene_.object("Box", BoxShape{}, "Grey", {1, 2, 3}).scale = {2, 3, 4};
    null("Target", {4, 5, 6}).rotation = {30, 20, 10};
    LightDescription &lamp = scene_.description.lights.emplace_back();
    lamp.name = "Lamp";
    lamp.position = {7, 8, 9};
    scene_.renderScene();
    EXPECT_EQ(placeOf("Box").position, (Double3{1, 2, 3}));
    EXPECT_EQ(placeOf("Lamp").position, (Double3{7, 8, 9}));
    EXPECT_EQ(placeOf("Camera").position, (Double3{0, 0, -5}));
    EXPECT_EQ(placeOf("Target").position, (Double3{4, 5, 6}));
    const double angles[3] = {30, 20, 10}, scales[3] = {2, 3, 4};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(placeOf("Target").rotation[i], angles[i] * kRadiansPerDegree, kPlaceTolerance);
        EXPECT_NEAR(placeOf("Box").scale[i], scales[i], kPlaceTolerance);
    }
}

TEST_F(ItemPlaces, AreInWorldSpaceAndThoseOfThePivot) {
    null("Arm", {10, 0, 0}).rotation = {90, 0, 0}; // +Z of the arm is +X of the world
    ObjectDescription &box = scene_.object("Box", BoxShape{}, "Grey", {0, 0, 2});
    box.parent = "Arm";
    box.pivot = {5, 5, 5};
    scene_.renderScene();
    const ItemPlace place = placeOf("Box");
    const double expected[3] = {12, 0, 0};
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(place.position[i], expected[i], kPlaceTolerance);
    EXPECT_NEAR(place.rotation[0], 90 * kRadiansPerDegree, kPlaceTolerance);
}

TEST_F(ItemPlaces, AreThoseOfTheTime) {
    null("Runner", {})
        .channels.push_back({.channel = Channel::position,
                             .component = 0,
                             .keys = {.keys = {{.time = 0, .value = {0, 0, 0}},
                                               {.time = 2, .value = {4, 0, 0}, .shape = kShapeLinear}}}});
    scene_.object("Box", BoxShape{}, "Grey");
    scene_.renderScene().setTime(scene_.description, 0.5, scene_.lookup());
    EXPECT_NEAR(placeOf("Runner").position[0], 1, kPlaceTolerance);
}

TEST_F(ItemPlaces, OfOtherNamesAreNotFound) {
    scene_.renderScene();
    ItemPlace place{.position = {1, 2, 3}};
    EXPECT_FALSE(itemPlaceFuncs()->find("Nobody", place));
    EXPECT_EQ(place.position, (Double3{1, 2, 3}));
}

} // namespace
} // namespace velm::host::test

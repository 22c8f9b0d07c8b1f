// Render Cam: a render, and the picture that it shows on a surface.
#include "tests/nodes/render_cam_scene.h"

#include <limits>

namespace velm::plugin {
namespace {

// ---- A render ----

TEST_F(RenderCam, MakesAnEvaluatorForTheTimeOfARender) {
    node().set(kCamera, 3);
    host.takeLog();
    for (const int mode : {kInitPreview, kInitRender}) {
        EXPECT_EQ(node().render.init(node().instance, mode), nullptr);
        EXPECT_EQ(host.takeLog(), (Lines{"createEvaluator Top", "initEvaluator Top 1"})) << "in either mode";
        EXPECT_EQ(node().render.newTime(node().instance, 7, 0.28), nullptr);
        EXPECT_EQ(host.takeLog(), (Lines{"resetEvaluator Top", "newTimeEvaluator Top 7 0.28", "frameTiming Top 7"}));
        node().render.cleanup(node().instance);
        EXPECT_EQ(host.takeLog(), (Lines{"destroyEvaluator Top"}));
    }
}

TEST_F(RenderCam, MakesNoneWithoutACamera) {
    for (const int index : {0, 4, 100}) {
        node().set(kCamera, index);
        host.takeLog();
        EXPECT_EQ(node().render.init(node().instance, kInitRender), nullptr);
        EXPECT_EQ(node().render.newTime(node().instance, 7, 0.28), nullptr);
        node().render.cleanup(node().instance);
        EXPECT_EQ(host.takeLog(), Lines{}) << index;
    }
}

TEST_F(RenderCam, DoesWithoutAnEvaluatorThatCannotBeMade) {
    scene.evaluatorsFail = true;
    node().set(kUvMap, 1);
    node().set(kCamera, 1);
    host.takeLog();
    EXPECT_EQ(node().render.init(node().instance, kInitRender), nullptr);
    EXPECT_EQ(host.takeLog(), (Lines{"createEvaluator Front"}));
    node().render.newTime(node().instance, 7, 0.28);
    EXPECT_EQ(host.takeLog(), (Lines{"frameTiming Front 7"}));
    EXPECT_EQ(seen(), kGreen);
    node().render.cleanup(node().instance);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_F(RenderCam, WalksTheListToTheCameraChosen) {
    const char *const names[] = {"Front", "Side", "Top"};
    for (int index = 1; index <= 3; ++index) {
        node().set(kCamera, index);
        host.takeLog();
        node().render.init(node().instance, kInitRender);
        EXPECT_EQ(host.takeLog().at(0), std::string("createEvaluator ") + names[index - 1]);
        node().render.cleanup(node().instance);
    }
    for (const int index : {-1, -25536}) { // as in a damaged file: the list is not walked
        node().set(kCamera, index);
        host.takeLog();
        node().render.init(node().instance, kInitRender);
        EXPECT_EQ(host.takeLog().at(0), "createEvaluator Front") << index;
        node().render.cleanup(node().instance);
    }
}

// ---- The picture ----

TEST_F(RenderCam, ShowsWhatTheCameraSees) {
    rays.colour = {{0.25, 0.5, 0.75}};
    scene.cameraRay.origin[0] = 1, scene.cameraRay.origin[1] = 2, scene.cameraRay.origin[2] = 3;
    scene.cameraRay.direction[0] = 4, scene.cameraRay.direction[1] = 5, scene.cameraRay.direction[2] = 6;
    sample.refractionIndex = 1.5;
    ready();
    EXPECT_EQ(seen(), (Colour{0.25, 0.5, 0.75}));
    ASSERT_EQ(rays.traces.size(), 1u);
    EXPECT_EQ(rays.traces[0].position, (Colour{1, 2, 3}));
    EXPECT_EQ(rays.traces[0].direction, (Colour{4, 5, 6}));
    EXPECT_EQ(rays.traces[0].eta, 1.5) << "the sample's";
    EXPECT_EQ(rays.traces[0].mode, 0x80000001u);
    EXPECT_EQ(rays.traces[0].colour, kYellow);
}

TEST_F(RenderCam, PlacesTheSampleOnTheFilm) {
    scene.cameras[1].filmWidth = 4;
    scene.cameras[1].filmHeight = 8;
    ready(2, 0.625);
    seen();
    ASSERT_EQ(scene.cameraQuestions.size(), 1u);
    const FakeScene::CameraQuestion &asked = scene.cameraQuestions[0];
    EXPECT_EQ(asked.filmX, 1) << "(0.75 - 0.5) 4";
    EXPECT_EQ(asked.filmY, -3) << "(0.125 - 0.5) 8";
    EXPECT_EQ(asked.lensX, 0.5);
    EXPECT_EQ(asked.lensY, -0.75);
    EXPECT_EQ(asked.timeFraction, 0.5) << "(0.625 - 0.5) / 0.25";
}

TEST_F(RenderCam, TakesTheShutterOfTheFrame) {
    ready(1, 2);
    for (const auto &[time, offset, length, fraction] : {std::array{1.0, 0.5, 2.0, 0.25},
                                                         {4.0, 4.0, 1.0, 0.0},
                                                         {0.0, 1.0, 0.5, -2.0},
                                                         {1.0, 0.0, 0.0, std::numeric_limits<double>::infinity()}}) {
        scene.cameras[0].timing.intervals[0].offset = offset;
        scene.cameras[0].timing.intervals[0].duration = length;
        node().render.newTime(node().instance, 1, time);
        seen();
        EXPECT_EQ(scene.cameraQuestions.back().timeFraction, fraction);
    }
}

TEST_F(RenderCam, FiltersInPlace) {
    const double filter[3][3] = {{2, 3, 4}, {5, 6, 7}, {8, 9, 10}};
    for (size_t row = 0; row < 3; ++row)
        for (size_t column = 0; column < 3; ++column) scene.cameraRay.filter[row][column] = filter[row][column];
    rays.colour = {{1, 2, 3}};
    ready();
    // 20 = 2 + 6 + 12; 133 = 100 + 12 + 21 of the new red; 1387 = 160 + 1197 + 30 of the new red and green.
    EXPECT_EQ(seen(), (Colour{20, 133, 1387}));
}

TEST_F(RenderCam, IsGreenWhereItCannotWork) {
    node().set(kUvMap, 1);
    EXPECT_EQ(seen(), kGreen) << "no camera";
    node().set(kCamera, 9);
    node().render.init(node().instance, kInitRender);
    EXPECT_EQ(seen(), kGreen) << "a list that ends before the camera";
    node().set(kCamera, 1);
    EXPECT_EQ(seen(), kGreen) << "a preview: no render has been started";
    ready();
    node().set(kUvMap, 2);
    EXPECT_EQ(seen(), kGreen) << "off the map";
    EXPECT_TRUE(rays.traces.empty());
    EXPECT_TRUE(scene.cameraQuestions.empty());
}

TEST_F(RenderCam, ForgetsTheCameraWithTheChoice) {
    for (const int index : {0, 4}) {
        ready(1);
        node().set(kCamera, index);
        EXPECT_EQ(seen(), kGreen) << index;
        node().render.cleanup(node().instance);
    }
}

TEST_F(RenderCam, IsGreenInAnApplicationWithoutCameras) {
    host.systemWord = kModellingWord;
    ready();
    EXPECT_EQ(seen(), kGreen);
    EXPECT_EQ(node().integer(kCamera), 2) << "the choice is kept";
    host.takeLog();
    node().render.cleanup(node().instance);
    EXPECT_EQ(host.takeLog(), Lines{});
}

TEST_F(RenderCam, IsYellowWhereTheTraceLeavesNoColour) {
    ready();
    rays.distance = HOST_RAY_MISS;
    EXPECT_EQ(seen(), kYellow);
    sample.rayTraceMode = nullptr;
    EXPECT_EQ(seen(), kYellow) << "a sample without ray functions";
    scene.cameraRay.filter[2][0] = 0.5;
    EXPECT_EQ(seen(), (Colour{1, 1, 0.5})) << "filtered like any colour";
}

TEST_F(RenderCam, IsYellowWhereTheCameraHasNoRay) {
    scene.cameraHasRay = false;
    rays.colour = {{1, 1, 1}};
    ready();
    EXPECT_EQ(seen(), kYellow);
    EXPECT_TRUE(rays.traces.empty());
}

TEST_F(RenderCam, IsGreenAgainAfterTheRender) {
    ready();
    node().render.cleanup(node().instance);
    EXPECT_EQ(seen(), kGreen);
    node().render.cleanup(node().instance);
    EXPECT_EQ(host.takeLog(), Lines{"destroyEvaluator Side"}) << "once";
}

} // namespace
} // namespace velm::plugin

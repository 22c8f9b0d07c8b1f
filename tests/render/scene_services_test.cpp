// The services that describe the scene to nodes: objects, vertex maps and items.
#include "host/base/error.h"
#include "host/render/geometry/item.h"
#include "host/render/geometry/mesh.h"
#include "tests/render/service_table.h"
#include "tests/render/test_scene.h"
#include "tests/temporary_directory.h"

#include <algorithm>

namespace velm::host::test {
namespace {

using Names = std::vector<std::string>;

// The items of a type, by first and next.
std::vector<HostItem *> walk(int type) {
    std::vector<HostItem *> items;
    for (HostItem *item = itemService().first(type, nullptr); item; item = itemService().next(item))
        items.push_back(item);
    return items;
}

Names namesOf(int type) {
    Names names;
    for (HostItem *item : walk(type)) names.emplace_back(itemService().name(item));
    return names;
}

Names maps() {
    Names names;
    for (int i = 0; i < sceneObjectService().vertexMapCount(kVertexMapTxuv); ++i)
        names.emplace_back(sceneObjectService().vertexMapName(kVertexMapTxuv, i));
    return names;
}

void expectNothing() {
    const HostSceneObjects &objects = sceneObjectService();
    EXPECT_EQ(objects.objectCount(), 0);
    EXPECT_EQ(objects.fileName(0), nullptr);
    EXPECT_EQ(objects.layerCount(0), 0);
    EXPECT_EQ(objects.layerExists(0, 0), 0);
    EXPECT_EQ(objects.layerMesh(0, 0), nullptr);
    EXPECT_EQ(objects.vertexMapCount(kVertexMapTxuv), 0);
    EXPECT_EQ(objects.vertexMapName(kVertexMapTxuv, 0), nullptr);
    EXPECT_EQ(objects.vertexMapDimension(kVertexMapTxuv, 0), 0);
    EXPECT_EQ(objects.vertexMapType(0), 0);
    for (const int type : {kItemObject, kItemLight, kItemCamera, kItemBone}) EXPECT_TRUE(walk(type).empty()) << type;
}

// A box from a file, two shapes, two lights and two cameras.
class SceneServicesTest : public testing::Test {
  protected:
    SceneServicesTest() {
        writeText(directory_ / "lid.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nf 1/1 2/2 3/3\n");
        scene_.surface("Grey");
        scene_.object("Box", BoxShape{}, "Grey");
        scene_.object("Lid", MeshFile{directory_ / "lid.obj"}, "Grey");
        scene_.object("Floor", PlaneShape{}, "Grey", {1, 2, 3});
        for (const char *name : {"Sun", "Lamp"}) {
            scene_.description.lights.emplace_back().name = name;
            scene_.description.lights.back().position = {0, 1, 0};
        }
        scene_.description.cameras.emplace_back().name = "Second";
    }
    const TemporaryDirectory directory_;
    TestScene scene_;
};

TEST(SceneServices, AreGivenByTheLookup) {
    offerSceneServices();
    offerSceneServices();
    for (const char *name : {HOST_SCENE_OBJECTS, HOST_ITEM_INFO, HOST_CAMERA_EVALUATION, HOST_CAMERA_INFO})
        EXPECT_NE(lookup(name, kUseTransient), nullptr) << name;
}

TEST(SceneServices, LeaveNoSlotEmptyThatNodesMayCall) {
    const auto full = [](const auto &table, std::size_t from = 0) {
        const auto *slots = reinterpret_cast<void *const *>(&table);
        return std::find(slots + from, slots + sizeof table / sizeof(void *), nullptr) ==
               slots + sizeof table / sizeof(void *);
    };
    EXPECT_TRUE(full(sceneObjectService()));
    EXPECT_TRUE(full(itemService()));
    EXPECT_TRUE(full(evaluationService()));
    EXPECT_TRUE(full(cameraService(), kCameraInfoReserved));
}

TEST(SceneServices, TellOfNothingWithoutAScene) { expectNothing(); }

TEST_F(SceneServicesTest, ListTheItemsInTheScenesOrder) {
    scene_.renderScene();
    EXPECT_EQ(namesOf(kItemObject), (Names{"Box", "Lid", "Floor"}));
    EXPECT_EQ(namesOf(kItemLight), (Names{"Sun", "Lamp"}));
    EXPECT_EQ(namesOf(kItemCamera), (Names{"Camera", "Second"}));
    EXPECT_EQ(namesOf(kItemBone), Names{});
    EXPECT_EQ(namesOf(17), Names{});
    for (const int type : {kItemObject, kItemLight, kItemCamera})
        for (HostItem *item : walk(type)) EXPECT_EQ(itemService().type(item), type);
    EXPECT_EQ(walk(kItemCamera)[1], scene_.item(kItemCamera, "Second")) << "the handles in samples";
}

TEST_F(SceneServicesTest, LinkNoItems) {
    scene_.renderScene();
    const HostItemInfo &items = itemService();
    for (const int type : {kItemObject, kItemLight, kItemCamera}) {
        for (HostItem *item : walk(type)) {
            for (const auto link : {items.firstChild, items.parent, items.target, items.goal})
                EXPECT_EQ(link(item), nullptr);
            EXPECT_EQ(items.nextChild(item, nullptr), nullptr);
            EXPECT_EQ(items.first(type, item), nullptr) << "it has no children";
        }
    }
}

TEST_F(SceneServicesTest, KnowNoStrangers) {
    const HostItemInfo &items = itemService();
    HostItem *gone = nullptr;
    {
        TestScene other;
        other.renderScene();
        gone = items.first(kItemCamera, nullptr);
        EXPECT_STREQ(items.name(gone), "Camera");
        scene_.renderScene(); // before `gone` is freed, so that no item gets its address
    }
    HostItem stranger{.type = kItemCamera, .index = 0, .name = "Stranger"};
    for (HostItem *item : {static_cast<HostItem *>(nullptr), &stranger, gone}) {
        EXPECT_EQ(items.next(item), nullptr);
        EXPECT_EQ(items.type(item), -1);
        EXPECT_EQ(items.name(item), nullptr);
    }
}

TEST_F(SceneServicesTest, DescribeTheObjects) {
    scene_.renderScene();
    const HostSceneObjects &objects = sceneObjectService();
    EXPECT_EQ(objects.objectCount(), 3);
    EXPECT_STREQ(objects.fileName(0), "") << "a shape comes from no file";
    EXPECT_EQ(objects.fileName(1), directory_ / "lid.obj");
    for (int object = 0; object < 3; ++object) {
        EXPECT_EQ(objects.layerCount(object), 1);
        EXPECT_EQ(objects.layerExists(object, 0), 1);
        EXPECT_NE(objects.layerMesh(object, 0), nullptr);
        double pivot[3] = {7, 8, 9};
        objects.pivot(object, 0, pivot);
        expectNear(Vec3(pivot), {0, 0, 0}, 0, "an object turns about its own origin");
        for (const int layer : {-1, 1, 1000}) {
            EXPECT_EQ(objects.layerExists(object, layer), 0);
            EXPECT_EQ(objects.layerMesh(object, layer), nullptr);
        }
    }
    EXPECT_NE(objects.layerMesh(0, 0), objects.layerMesh(1, 0));
    for (const int object : {-1, 3, 1 << 30}) {
        EXPECT_EQ(objects.fileName(object), nullptr);
        EXPECT_EQ(objects.layerCount(object), 0);
        EXPECT_EQ(objects.layerExists(object, 0), 0);
        EXPECT_EQ(objects.layerMesh(object, 0), nullptr);
        double pivot[3] = {7, 8, 9};
        objects.pivot(object, 0, pivot);
        expectNear(Vec3(pivot), {0, 0, 0}, 0);
    }
}

TEST_F(SceneServicesTest, ListEveryMapOnce) {
    const std::string fromFile = [this] {
        const RenderScene &renderScene = scene_.renderScene();
        const HostItem *lid = renderScene.item(kItemObject, "Lid");
        return lid->mesh->uvMaps.at(0).name;
    }();
    const Names all = maps();
    EXPECT_EQ(std::count(all.begin(), all.end(), "UV"), 1) << "that of the box and the plane";
    EXPECT_EQ(std::count(all.begin(), all.end(), fromFile), 1);
    EXPECT_EQ(all.front(), "UV");
    EXPECT_EQ(all.size(), fromFile == "UV" ? 1u : 2u);
    const HostSceneObjects &objects = sceneObjectService();
    const int count = objects.vertexMapCount(kVertexMapTxuv);
    for (int index = 0; index < count; ++index) {
        EXPECT_EQ(objects.vertexMapDimension(kVertexMapTxuv, index), 2);
        EXPECT_EQ(objects.vertexMapType(index), kVertexMapTxuv);
    }
    for (const int index : {-1, count, count + 100}) {
        EXPECT_EQ(objects.vertexMapName(kVertexMapTxuv, index), nullptr);
        EXPECT_EQ(objects.vertexMapDimension(kVertexMapTxuv, index), 0);
        EXPECT_EQ(objects.vertexMapType(index), 0);
    }
    constexpr int kWeightMap = 0x57474854; // "WGHT"
    EXPECT_EQ(objects.vertexMapCount(kWeightMap), 0);
    EXPECT_EQ(objects.vertexMapName(kWeightMap, 0), nullptr);
    EXPECT_EQ(objects.vertexMapDimension(kWeightMap, 0), 0);
}

TEST_F(SceneServicesTest, TellOfTheSceneThatIsRendered) {
    scene_.renderScene();
    TestScene other;
    other.description.cameras[0].name = "Other";
    other.surface("Wall", {{"Luminosity", 1}});
    other.object("Wall", BoxShape{}, "Wall");
    Names during;
    other.probe("Wall", "Color", [&during](ShadingSample &sample, double *) {
        during.push_back(currentItem(sample.sourceItem) ? "known" : "a stranger");
    });
    other.renderScene();
    EXPECT_EQ(namesOf(kItemCamera), Names{"Other"}) << "the one that was built last";
    TestScene last;
    last.description.cameras[0].name = "Last";
    last.renderScene();
    other.render();
    EXPECT_EQ(during, Names{"known"});
    EXPECT_EQ(namesOf(kItemCamera), Names{"Last"}) << "as before";
}

TEST_F(SceneServicesTest, ForgetTheSceneWithItsEnd) {
    {
        TestScene other;
        other.renderScene();
        EXPECT_EQ(namesOf(kItemCamera), Names{"Camera"});
    }
    expectNothing();
    EXPECT_THROW(
        {
            TestScene broken;
            broken.object("Nothing", MeshFile{directory_ / "absent.obj"}, "Grey");
            broken.renderScene();
        },
        InputError);
    expectNothing();
}

TEST_F(SceneServicesTest, TellOfTheSceneBeforeItHasSurfaces) {
    RenderScene renderScene(scene_.description);
    EXPECT_EQ(namesOf(kItemObject), (Names{"Box", "Lid", "Floor"}));
    EXPECT_EQ(maps().front(), "UV");
    renderScene.prepare(scene_.description, [this](const std::string &name) { return scene_.surfaceOf(name); });
    EXPECT_EQ(renderFrame(renderScene, scene_.job).complete, true);
}

} // namespace
} // namespace velm::host::test

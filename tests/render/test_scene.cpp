#include "tests/render/test_scene.h"

#include "host/services/services.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace velm::host::test {
namespace {

// The instance of the node that runs probes.
struct ProbeNode {
    Probe probe;
};

void *create(void *, void *node, const char **) {
    nodeOutputFuncs()->create(static_cast<HostNode *>(node), kConnectColour, "Color");
    nodeOutputFuncs()->create(static_cast<HostNode *>(node), kConnectScalar, "Scalar");
    return new ProbeNode;
}

void destroy(void *instance) { delete static_cast<ProbeNode *>(instance); }

void evaluate(void *instance, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    double result[3] = {0, 0, 0};
    static_cast<ProbeNode *>(instance)->probe(*sample, result);
    nodeOutputFuncs()->setValue(value, result);
}

int activate(int, HostLookup *, void *local, void *) {
    auto *handler = static_cast<HostNodeHandler *>(local);
    handler->instance->create = create;
    handler->instance->destroy = destroy;
    handler->evaluate = evaluate;
    return kActivateOk;
}

constexpr HostServer kServer = {
    .className = HOST_CLASS_NODE_HANDLER, .name = "Probe", .activate = activate, .tags = nullptr};

ServerClass &probeClass() {
    static ServerClass server(kServer, nullptr, "test");
    return server;
}

} // namespace

TestScene::TestScene() {
    CameraDescription camera;
    camera.name = "Camera";
    description.cameras.push_back(camera);
    description.backdrop.colour = {0.25, 0.5, 0.75};
    job.width = job.height = 1;
    job.threads = 1;
}

SurfaceDescription &TestScene::surface(const std::string &name, Values values, const Double3 &colour) {
    auto surface = std::make_unique<Surface>(name);
    surface->setDefault("Color", colour);
    surface->setDefault("Diffuse", 0.0);
    for (const auto &[input, value] : values) surface->setDefault(input, value);
    surface->init(kInitRender);
    surface->newTime(1, 0);
    surfaces_[name] = std::move(surface);
    SurfaceDescription &described = description.surfaces.emplace_back();
    described.name = name;
    return described;
}

void TestScene::probe(const std::string &surface, const std::string &input, Probe probe) {
    Network &editor = surfaces_.at(surface)->network();
    HostNode &node = editor.addNode(probeClass());
    static_cast<ProbeNode *>(node.instance)->probe = std::move(probe);
    editor.connect(node.name, input == "Color" || input == "Normal" ? "Color" : "Scalar", surface, input);
}

ObjectDescription &TestScene::object(const std::string &name, const ShapeDescription &shape, const std::string &surface,
                                     const Double3 &position) {
    ObjectDescription &object = description.objects.emplace_back();
    object.name = name;
    object.shape = shape;
    object.position = position;
    object.surfaces.push_back({.material = "", .surface = surface, .location = {}});
    return object;
}

Surface *TestScene::surfaceOf(const std::string &name) {
    const auto found = surfaces_.find(name);
    return found == surfaces_.end() ? nullptr : found->second.get();
}

RenderScene &TestScene::renderScene() {
    if (!renderScene_) renderScene_ = std::make_unique<RenderScene>(description, lookup());
    return *renderScene_;
}

Frame TestScene::render() { return renderFrame(renderScene(), job); }

Vec3 TestScene::pixel() {
    const Frame frame = render();
    const float *found = frame.picture.pixel(0, 0);
    return {found[0], found[1], found[2]};
}

TestScene facingPlane(const TestScene::Values &values, const Double3 &colour) {
    TestScene scene;
    scene.surface("Plane", values, colour);
    scene.object("Plane", PlaneShape{.width = 20, .depth = 20}, "Plane").rotation = {0, -90, 0};
    return scene;
}

TestScene litPlane(const LightDescription &light) {
    TestScene scene = facingPlane({{"Diffuse", 1}});
    scene.description.lights.push_back(light);
    return scene;
}

TestScene litBall() {
    TestScene scene;
    scene.job.width = 50;
    scene.job.height = 40;
    scene.job.samples = 3;
    scene.surface("Ball", {{"Diffuse", 0.8}, {"Reflection", 0.3}});
    scene.object("Ball", SphereShape{}, "Ball");
    scene.object("Floor", PlaneShape{.width = 10, .depth = 10}, "Ball", {0, -1, 0});
    LightDescription area;
    area.kind = LightDescription::Kind::area;
    area.position = {2, 3, -2};
    area.intensity = 10;
    area.samples = 4;
    scene.description.lights.push_back(area);
    LightDescription dome;
    dome.kind = LightDescription::Kind::dome;
    dome.intensity = 0.2;
    dome.samples = 2;
    scene.description.lights.push_back(dome);
    return scene;
}

bool samePixels(const Picture &a, const Picture &b, const Region &region) {
    const auto bytes = [](const Picture &picture, int x, int y) {
        return std::as_bytes(std::span(picture.pixel(x, y), Picture::kChannels));
    };
    for (int y = region.top; y < region.bottom; ++y)
        for (int x = region.left; x < region.right; ++x)
            if (!std::ranges::equal(bytes(a, x, y), bytes(b, x, y))) return false;
    return true;
}

Vec3 probeAtOrigin(TestScene &scene, const Probe &probe) {
    scene.surface("Probe", {{"Luminosity", 1}});
    scene.probe("Probe", "Color", [&probe](ShadingSample &sample, double value[3]) {
        if (sample.rayDepth == 0) probe(sample, value);
    });
    SphereShape shape;
    shape.radius = 0.001;
    shape.segments = 8;
    for (ObjectDescription &object : scene.description.objects) object.seenByCamera = false;
    ObjectDescription &sphere = scene.object("Probe", shape, "Probe");
    sphere.seenByRays = sphere.castsShadows = false;
    return scene.pixel();
}

} // namespace velm::host::test

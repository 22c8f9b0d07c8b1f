// A scene of one object whose surface is baked.
#pragma once

#include "host/bake/bake_texture.h"
#include "tests/render/test_scene.h"

#include <string>
#include <utility>

namespace velm::host::test {

// A texel of a picture as a vector.
inline Vec3 texelOf(const Picture &picture, int x, int y) {
    const float *const texel = picture.pixel(x, y);
    return {texel[0], texel[1], texel[2]};
}

class BakeScene : public TestScene {
  public:
    // The object "Thing" of this shape, with the surface "Skin".
    explicit BakeScene(const ShapeDescription &shape, Values values = {}, int side = 32) {
        surface("Skin", values);
        object("Thing", shape, "Skin");
        job.width = job.height = side;
    }

    TextureBake bake{.target = {}, .output = "Color", .margin = 0};
    Warnings warnings{Warnings::Policy::goOn};

    BakedTexture bakeIt() {
        const RenderSceneData &data = renderScene().data();
        bake.target = {.object = findObject(data, "Thing"), .surfaces = {}};
        bake.target.surfaces = findSurfaces(data, bake.target.object, {});
        return bakeTexture(renderScene(), job, bake, warnings, nullptr);
    }
    // What a function of the sample gives at each texel.
    Picture bakeProbe(Probe function) {
        probe("Skin", "Color", std::move(function));
        return bakeIt().picture;
    }
};

inline const Probe kPositionProbe = [](const ShadingSample &sample, double value[3]) {
    Vec3(sample.position).store(value);
};

} // namespace velm::host::test

// Fuzzes the reader of LightWave scene files.
#include "fuzz/require.h"

#include "host/lws/scene_record.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <set>

using namespace velm::host;
using namespace velm::host::fuzz;

namespace {

const std::string kName = "fuzzed.lws";

void requireWhole(const lws::Value &value) {
    require(std::isfinite(value.first()), "values are finite");
    const auto &keys = value.keys.keys;
    require(std::ranges::adjacent_find(keys, std::greater_equal<>(), &KeyDescription::time) == keys.end(),
            "the times of keys ascend");
    for (const KeyDescription &key : keys)
        require(key.shape >= 0 && key.shape <= 5 && std::isfinite(key.time), "keys have a known shape and a time");
}

void requireWhole(const lws::Item &item, const std::set<std::uint32_t> &ids) {
    for (const auto &link : {item.parent, item.target})
        require(!link || ids.contains(*link), "links lead to items of the scene");
    for (const lws::Value &value : item.motion) requireWhole(value);
    require(item.line > 2, "items have a line");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    acceptsInput(kName, [&] {
        const lws::Scene scene = lws::readScene(asText(data, size), kName);
        std::set<std::uint32_t> ids;
        const auto addAll = [&ids](const auto &items) {
            for (const lws::Item &item : items) require(ids.insert(item.id).second, "ids are unique");
        };
        const auto checkAll = [&ids](const auto &items) {
            for (const lws::Item &item : items) requireWhole(item, ids);
        };
        for (const auto check : {true, false}) {
            const auto each = [&](const auto &items) { check ? addAll(items) : checkAll(items); };
            each(scene.objects);
            each(scene.bones);
            each(scene.lights);
            each(scene.cameras);
        }
        for (const lws::Light &light : scene.lights) requireWhole(light.intensity);
        for (const lws::Camera &camera : scene.cameras) {
            requireWhole(camera.zoom);
            require(camera.width >= 1 && camera.height >= 1 && camera.multiplier > 0, "cameras have a frame size");
        }
        scene.losses.texts();
    });
    return 0;
}

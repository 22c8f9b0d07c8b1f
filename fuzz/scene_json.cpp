// Fuzzes the scenes of the stand-alone host: reading, and writing what was read.
#include "fuzz/require.h"

#include "host/scene/convert/write_surfaces.h"
#include "host/scene/format/write_scene.h"
#include "host/scene/read_scene.h"

using namespace velm::host;
using namespace velm::host::fuzz;

namespace {

const std::string kName = "fuzzed.json";

std::string surfacesOf(const std::string &text) {
    constexpr const char *kCamera = "{\"cameras\": {\"Camera\": {}},";
    const SceneDescription scene = readSceneText(kCamera + text.substr(1), kName, {});
    return writeSurfaces(scene.images, scene.surfaces);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    acceptsInput(kName, [&] {
        const SceneDescription scene = readSceneText(asText(data, size), kName, {});
        const std::string written = writeSurfaces(scene.images, scene.surfaces);
        try {
            require(surfacesOf(written) == written, "written surfaces are written again without a change", written);
        } catch (const InputError &error) {
            require(false, "written surfaces can be read", error.what() + ('\n' + written));
        }
        const std::string whole = writeScene(scene, "");
        try {
            const SceneDescription again = readSceneText(whole, kName, {});
            require(writeScene(again, "") == whole, "a written scene is written again without a change", whole);
        } catch (const InputError &error) {
            require(false, "a written scene can be read", error.what() + ('\n' + whole));
        }
    });
    return 0;
}

#include "host/scene/convert/write_surfaces.h"

#include "host/scene/format/json_layout.h"
#include "host/scene/format/tables.h"
#include "host/scene/format/write_fields.h"

namespace velm::host {

std::string writeSurfaces(std::span<const ImageDescription> images, std::span<const SurfaceDescription> surfaces) {
    SceneDescription scene;
    for (const ImageDescription &image : images)
        scene.images.push_back(
            {.name = image.name, .file = image.file, .sequence = image.sequence, .filters = image.filters});
    for (const SurfaceDescription &surface : surfaces) {
        SurfaceDescription &described = scene.surfaces.emplace_back();
        described.name = surface.name;
        described.settings = surface.settings;
        described.network = surface.network;
    }
    return layOut(writeObject(WriteContext{}, sceneTable(), scene)) + '\n';
}

} // namespace velm::host

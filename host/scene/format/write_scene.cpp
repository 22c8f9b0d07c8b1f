#include "host/scene/format/write_scene.h"

#include "host/scene/format/json_layout.h"
#include "host/scene/format/own_parts.h"
#include "host/scene/format/tables.h"
#include "host/scene/format/write_fields.h"

namespace velm::host {

std::string writeScene(const SceneDescription &scene, const std::string &directory) {
    const WriteContext context{.directory = directory};
    return layOut(writeObject(context, sceneTable(), withoutOwnParts(scene))) + '\n';
}

} // namespace velm::host

// Services as nodes get them: by the lookup.
#pragma once

#include "host/load/lookup.h"
#include "host/render/services/scene_services.h"

namespace velm::host::test {

template <typename Table>
const Table &service(const char *name) {
    offerSceneServices();
    return *static_cast<const Table *>(lookup(name, kUseTransient));
}

inline const HostSceneObjects &sceneObjectService() { return service<HostSceneObjects>(HOST_SCENE_OBJECTS); }
inline const HostItemInfo &itemService() { return service<HostItemInfo>(HOST_ITEM_INFO); }
inline const HostCameraEvaluation &evaluationService() { return service<HostCameraEvaluation>(HOST_CAMERA_EVALUATION); }
inline const HostCameraInfo &cameraService() { return service<HostCameraInfo>(HOST_CAMERA_INFO); }

} // namespace velm::host::test

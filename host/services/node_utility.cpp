// "NodeUtilityFuncs": blending, the size of previews, and mappings.
#include "host/base/thread_role.h"
#include "host/graph/network.h"
#include "host/image/image.h"
#include "host/services/blend.h"
#include "host/services/camera_view.h"
#include "host/services/mapping.h"
#include "host/services/services.h"
#include "host/services/uv_provider.h"

#include <algorithm>

namespace velm::host {

namespace {

// Size and centre of the extent that the network's previews show; `position` may be null.
void autosize(HostNode *node, double scale[3], double position[3]) {
    assertInterface();
    double bounds[3][2];
    node->network->bounds(bounds);
    for (int axis = 0; axis < 3; ++axis) {
        scale[axis] = bounds[axis][1] - bounds[axis][0];
        if (position) position[axis] = 0.5 * (bounds[axis][0] + bounds[axis][1]);
    }
}

// An empty name selects the mesh's first map, as null does.
int uvMapping(const char *mapName, ShadingSample *sample, double *u, double *v) {
    return lookUpUv(sample, mapName && *mapName ? mapName : nullptr, u, v) ? 1 : 0;
}

void cameraMatrix(double matrix[9]) { std::copy_n(cameraView().matrix, 9, matrix); }

} // namespace

const HostNodeUtilityFuncs *nodeUtilityFuncs() {
    static constexpr HostNodeUtilityFuncs kTable = {
        .blend = blend,
        .autosize = autosize,
        .planarMapping = planarMapping,
        .sphericalMapping = sphericalMapping,
        .cylindricalMapping = cylindricalMapping,
        .cubicMapping = cubicMapping,
        .frontMapping = frontMapping,
        .directionMapping = directionToImage,
        .uvMapping = uvMapping,
        .cameraMatrix = cameraMatrix,
    };
    return &kTable;
}

} // namespace velm::host

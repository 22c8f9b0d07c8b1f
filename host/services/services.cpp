#include "host/services/services.h"

#include "host/animation/channel.h"
#include "host/animation/vparm.h"
#include "host/image/image.h"
#include "host/load/lookup.h"
#include "host/panel/panel.h"
#include "host/services/backdrop.h"
#include "host/services/file_request.h"
#include "host/services/instance_update.h"
#include "host/services/item_place_provider.h"
#include "host/services/scene_info.h"
#include "host/services/system.h"
#include "host/services/time.h"
#include "host/services/vertex_map_provider.h"

namespace velm::host {

void offerNodeServices() {
    static constexpr Service kServices[] = {
        {.name = HOST_NODE_FUNCS, .give = tableService<nodeFuncs>},
        {.name = HOST_NODE_INPUT_FUNCS, .give = tableService<nodeInputFuncs>},
        {.name = HOST_NODE_OUTPUT_FUNCS, .give = tableService<nodeOutputFuncs>},
        {.name = HOST_NODE_EDITOR_FUNCS, .give = tableService<nodeEditorFuncs>},
        {.name = HOST_NODE_UTILITY_FUNCS, .give = tableService<nodeUtilityFuncs>},
        {.name = HOST_VPARM_FUNCS, .give = tableService<vparmFuncs>},
        {.name = HOST_ENVELOPE_FUNCS, .give = tableService<envelopeFuncs>},
        {.name = HOST_PANEL_FUNCS, .give = tableService<panelFuncs>},
        {.name = HOST_INSTANCE_UPDATE, .give = functionService<instanceUpdate>},
        {.name = HOST_SYSTEM_ID, .give = systemId},
        {.name = HOST_IMAGE_LIST, .give = tableService<imageListFuncs>},
        {.name = HOST_FILE_REQUEST, .give = functionService<fileRequest>},
        {.name = HOST_BACKDROP_INFO, .give = tableService<backdropInfo>},
        {.name = HOST_TIME_INFO, .give = tableService<timeInfo>},
        {.name = HOST_SCENE_INFO, .give = tableService<sceneInfo>},
        {.name = kVertexMapFuncs, .give = tableService<vertexMapFuncs>},
        {.name = kItemPlaceFuncs, .give = tableService<itemPlaceFuncs>},
    };
    offerServices(kServices);
}

} // namespace velm::host

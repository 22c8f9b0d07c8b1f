// A module with one server: Render Cam, which is not in the server table of the module itself.
#include "module/node.h"
#include "module/panel.h"
#include "tests/module/small_module.h"

namespace velm::plugin {

VELM_DECLARE_NODE(RenderCam);
VELM_DECLARE_PANEL(RenderCam);

} // namespace velm::plugin

namespace {

const HostServer servers[] = {{.className = HOST_CLASS_NODE_HANDLER,
                               .name = "Render Cam",
                               .activate = velm::plugin::RenderCam_Activate,
                               .tags = nullptr},
                              {.className = HOST_CLASS_NODE_INTERFACE,
                               .name = "Render Cam",
                               .activate = velm::plugin::RenderCam_Interface,
                               .tags = nullptr},
                              {.className = nullptr, .name = nullptr, .activate = nullptr, .tags = nullptr}};

int word;

} // namespace

extern "C" {
__attribute__((visibility("default"))) extern const HostModuleDescriptor _mod_descrip;
const HostModuleDescriptor _mod_descrip = small_module::descriptor(
    servers, []() -> void * { return &word; }, [](void *) {});
}

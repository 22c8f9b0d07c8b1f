// The places of items, for the host's own nodes. The renderer, which knows the scene, registers its function here, and
// the service of that name calls it.
#pragma once

#include "host/graph/builtin/item_places.h"

namespace velm::host {

// As ItemPlaceFuncs::find.
using FindItemPlace = bool (*)(const char *name, ItemPlace &place);

// Sets the function; null for none. [between frames]
void setItemPlaceProvider(FindItemPlace provider);

// The service's table. Without a provider, there are no items. The camera is that of cameraView().
const ItemPlaceFuncs *itemPlaceFuncs();

} // namespace velm::host

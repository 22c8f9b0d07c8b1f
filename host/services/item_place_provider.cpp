#include "host/services/item_place_provider.h"

#include "host/services/camera_view.h"

#include <algorithm>

namespace velm::host {

namespace {

FindItemPlace placeProvider = nullptr;

bool findPlace(const char *name, ItemPlace &place) { return placeProvider && placeProvider(name, place); }

void cameraPlace(double position[3], double forward[3]) {
    const CameraView &view = cameraView();
    std::copy_n(view.position, 3, position);
    std::copy_n(view.matrix + 6, 3, forward);
}

} // namespace

void setItemPlaceProvider(FindItemPlace provider) { placeProvider = provider; }

const ItemPlaceFuncs *itemPlaceFuncs() {
    static constexpr ItemPlaceFuncs kTable = {.find = findPlace, .camera = cameraPlace};
    return &kTable;
}

} // namespace velm::host

// The popup with which a node chooses one of the host's images: "(none)", the images in list order, "(load Image)".
//
// The choice is kept as a popup index and turned into an image by walking the host's list, on every evaluation: images
// come and go, and an index can be checked where a handle could not. Each unit has a popup of its own, with its own
// file request, so that a directory chosen in one node's panel is not another's starting point.
#pragma once

#include "module/node.h"

namespace velm::plugin {

inline constexpr int kFileNameSize = 512;

// What an instance keeps of its choice.
struct ImageChoice {
    int itemCount; // entries of the popup when they were last counted
    int index;     // 0 none, then the images from 1, then "(load Image)"
};

// The file request of a unit, and the buffers behind it, which keep the last path.
struct ImageRequest {
    HostFileRequest frloc;
    char path[kFileNameSize];
    char baseName[kFileNameSize];
    char fullName[kFileNameSize];
};

// Where a unit keeps what its popup works with.
struct ImagePopup {
    const NodeServices &services;
    const HostImageList *const &imglist;
    HostFileRequestFunc *const &filereq;
    ImageRequest &request;
    unsigned int control; // the popup's
    size_t choice;        // offset of the ImageChoice
    size_t panel;         // of the HostPanel *
};

// Fills the unit's file request; for the unit's activation.
void prepareImageRequest(ImageRequest &request);

// The popup's entries. `instance` may be null.
int getImageCount(const ImagePopup &popup, void *instance);
const char *getImageName(const ImagePopup &popup, void *instance, int index);

// The image of a popup index; null for "(none)", "(load Image)" and beyond. Below 0 it is the first image, as the names
// have it; no node asks for that. [render threads]
HostImage *getImageID(const HostImageList &imglist, int index);
// The popup index of an image; 0 when it is null or not in the list.
int getImageIndex(const HostImageList &imglist, const HostImage *image);

// When rendering starts: counts the entries anew; a choice of "(load Image)" or beyond becomes the last image.
void recountImages(const ImagePopup &popup, void *instance);

// After a change of the popup: when "(load Image)" was chosen, asks for a file, loads it and chooses the last image of
// the list, or none when nothing was loaded. True when that was the case, and the panel has been refreshed.
bool loadChosenImage(const ImagePopup &popup, void *instance, HostPanel *panel, unsigned int control, int event);

// The saved reference of the chosen image, where the index names one; loading turns it into today's index.
HostError saveImageReference(const ImagePopup &popup, void *instance, const HostSaveState *state);
HostError loadImageReference(const ImagePopup &popup, void *instance, const HostLoadState *state);

// A unit with an image popup: the frame's hooks, filled with the above.
template <const ImagePopup &popup>
constexpr NodeClass withImages(NodeClass nodeClass) {
    nodeClass.activated = [] { prepareImageRequest(popup.request); };
    nodeClass.saveMore = [](void *instance, const HostSaveState *state) {
        return saveImageReference(popup, instance, state);
    };
    nodeClass.loadMore = [](void *instance, const HostLoadState *state) {
        return loadImageReference(popup, instance, state);
    };
    nodeClass.init = [](void *instance, int) -> HostError {
        recountImages(popup, instance);
        return nullptr;
    };
    return nodeClass;
}

} // namespace velm::plugin

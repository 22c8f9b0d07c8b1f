// The popup with which a node chooses one of the host's images: "(none)", the images in list order, "(load Image)".
//
// The choice is stored as a popup index, and each evaluation walks the host's list to find the image: images are added
// and removed, and an index can be checked while a handle cannot. Each node class has a file request of its own, so
// that each starts in the directory where its last one ended.
#pragma once

#include "module/node.h"

namespace velm::plugin {

inline constexpr int kFileNameSize = 512;

// The choice of an instance.
struct ImageChoice {
    int itemCount; // entries of the popup when they were last counted
    int index;     // 0 none, then the images from 1, then "(load Image)"
};

// The file request of a node class, and its buffers, which keep the last path.
struct ImageRequest {
    HostFileRequest frloc;
    char path[kFileNameSize];
    char baseName[kFileNameSize];
    char fullName[kFileNameSize];
};

// Where a node class has the services and the state of its popup.
struct ImagePopup {
    const NodeServices &services;
    const HostImageList *const &imglist;
    HostFileRequestFunc *const &filereq;
    ImageRequest &request;
    unsigned int control; // of the popup
    size_t choice;        // offset of the ImageChoice
    size_t panel;         // of the HostPanel *
};

// Fills the file request, at activation.
void prepareImageRequest(ImageRequest &request);

// The number of the popup's entries and their texts. `instance` may be null. [interface thread; not while rendering]
int getImageCount(const ImagePopup &popup, void *instance);
const char *getImageName(const ImagePopup &popup, void *instance, int index);

// The image of a popup index. Null for "(none)", "(load Image)" and beyond. An index below 0 gives the first image, as
// for names; nodes do not use it. [render threads]
HostImage *getImageID(const HostImageList &imglist, int index);
// The popup index of an image. 0 if it is null or not in the list.
int getImageIndex(const HostImageList &imglist, const HostImage *image);

// Called when rendering starts: counts the entries again. A choice of "(load Image)" or beyond becomes the last image.
// [between frames]
void recountImages(const ImagePopup &popup, void *instance);

// Called after a change on the panel. If "(load Image)" has been chosen, asks for a file, loads it and chooses the last
// image of the list, or none if no file was chosen; then refreshes the panel and returns true. [interface thread; not
// while rendering]
bool loadChosenImage(const ImagePopup &popup, void *instance, HostPanel *panel, unsigned int control, int event);

// Saves a reference to the chosen image, if the index is 1 or more; loading sets the index to that of the referenced
// image. [interface thread; not while rendering]
HostError saveImageReference(const ImagePopup &popup, void *instance, const HostSaveState *state);
HostError loadImageReference(const ImagePopup &popup, void *instance, const HostLoadState *state);

// A node class with an image popup: sets the hooks of the frame to the functions above.
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

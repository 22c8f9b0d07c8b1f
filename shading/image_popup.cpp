#include "shading/image_popup.h"

namespace velm::plugin {
namespace {

int countImages(const HostImageList &imglist) {
    int count = 0;
    for (HostImage *image = imglist.first(); image; image = imglist.next(image)) ++count;
    return count;
}

ImageChoice &choiceOf(const ImagePopup &popup, void *instance) { return fieldAt<ImageChoice>(instance, popup.choice); }

// Sets the popup as a user does.
void choose(const ImagePopup &popup, void *instance, int index) {
    if (HostPanel *panel = fieldAt<HostPanel *>(instance, popup.panel))
        popup.services.xpanf->setValue(panel, popup.control, &index);
}

// Whether images have been removed and the choice is beyond the last one.
bool isBeyond(const ImageChoice &choice, int items) { return choice.itemCount > items && choice.index >= items - 1; }

} // namespace

void prepareImageRequest(ImageRequest &request) {
    request.frloc = {.type = kFileRequestLoad,
                     .result = 0,
                     .title = "Load Clip or Still",
                     .fileType = "Images",
                     .path = request.path,
                     .baseName = request.baseName,
                     .fullName = request.fullName,
                     .bufferLength = kFileNameSize,
                     .pick = nullptr};
}

int getImageCount(const ImagePopup &popup, void *instance) {
    const int items = countImages(*popup.imglist) + 2;
    if (instance && isBeyond(choiceOf(popup, instance), items)) choose(popup, instance, 0);
    return items;
}

const char *getImageName(const ImagePopup &popup, void *instance, int index) {
    static constexpr char kNone[] = "(none)";
    const int items = countImages(*popup.imglist) + 2;
    if (index == 0) return kNone;
    if (instance) {
        ImageChoice &choice = choiceOf(popup, instance);
        if (choice.itemCount != items && choice.index == items - 1) {
            choose(popup, instance, 0);
            choice.itemCount = items;
            return kNone;
        }
    }
    if (index >= items - 1) return "(load Image)";
    HostImage *image = getImageID(*popup.imglist, index);
    return image ? popup.imglist->name(image) : "(error)";
}

HostImage *getImageID(const HostImageList &imglist, int index) {
    if (index == 0) return nullptr;
    HostImage *image = imglist.first();
    for (; image && index > 1; --index) image = imglist.next(image);
    return image;
}

int getImageIndex(const HostImageList &imglist, const HostImage *image) {
    int index = 1;
    for (HostImage *listed = imglist.first(); listed; listed = imglist.next(listed), ++index)
        if (listed == image) return index;
    return 0;
}

void recountImages(const ImagePopup &popup, void *instance) {
    const int images = countImages(*popup.imglist);
    ImageChoice &choice = choiceOf(popup, instance);
    choice.itemCount = images + 2;
    if (choice.index >= images + 1) choice.index = images;
}

bool loadChosenImage(const ImagePopup &popup, void *instance, HostPanel *panel, unsigned int control, int event) {
    ImageChoice &choice = choiceOf(popup, instance);
    if (control != popup.control || event != kEventSet || choice.index != countImages(*popup.imglist) + 1) return false;
    HostFileRequest &frloc = popup.request.frloc;
    if (popup.filereq(kFileRequestVersion, &frloc) != 0 || frloc.result < 1) {
        choice.index = 0;
    } else {
        popup.imglist->load(popup.request.fullName); // the last image of the list is taken as the loaded one
        const int items = countImages(*popup.imglist) + 2;
        if (isBeyond(choice, items)) choose(popup, instance, 0);
        choice.itemCount = items;
        choose(popup, instance, items - 2);
    }
    popup.services.xpanf->refresh(panel);
    return true;
}

HostError saveImageReference(const ImagePopup &popup, void *instance, const HostSaveState *state) {
    const int index = choiceOf(popup, instance).index;
    if (index >= 1) popup.imglist->saveReference(state, getImageID(*popup.imglist, index));
    return nullptr;
}

HostError loadImageReference(const ImagePopup &popup, void *instance, const HostLoadState *state) {
    int &index = choiceOf(popup, instance).index;
    if (index >= 1) index = getImageIndex(*popup.imglist, popup.imglist->loadReference(state));
    return nullptr;
}

} // namespace velm::plugin

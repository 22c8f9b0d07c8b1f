#include "tests/module/fake_images.h"

#include "tests/module/recorded_state.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace velm::plugin {
namespace {

FakeImages *currentImages = nullptr;

FakeImages &images() { return *currentImages; }
FakeHost &host() { return FakeHost::current(); }

HostImage *nextImage(HostImage *image) {
    auto &list = images().list;
    if (images().nextCallsLeft && (*images().nextCallsLeft)-- <= 0) return nullptr;
    auto found = std::find_if(list.begin(), list.end(), [&](const auto &listed) { return listed.get() == image; });
    return found == list.end() || ++found == list.end() ? nullptr : found->get();
}

// Does not return the loaded image: nodes must look at the list.
HostImage *loadImage(const char *fileName) {
    host().note("load ", fileName);
    if (images().loadAdds) images().add(fileName);
    return images().list.empty() ? nullptr : images().list.front().get();
}

// References are saved as texts.
HostImage *loadReference(const HostLoadState *state) {
    const RecordedState::Entry *entry = RecordedState::of(state).take(RecordedState::Entry::Kind::text);
    for (const auto &image : images().list)
        if (entry && entry->text == "image " + image->name) return image.get();
    return nullptr;
}

void saveReference(const HostSaveState *state, HostImage *image) {
    RecordedState::of(state).text(image ? "image " + image->name : "no image");
}

void readPixel(HostImage *image, int x, int y, float colour[3]) {
    if (!image) throw std::logic_error("a pixel of the null image");
    const std::array<float, 3> pixel =
        image->pixel ? image->pixel(x, y) : std::array{static_cast<float>(x), static_cast<float>(y), 0.5f};
    std::copy(pixel.begin(), pixel.end(), colour);
}

const HostImageList kImageList = [] {
    HostImageList funcs{};
    funcs.first = [] { return images().list.empty() ? nullptr : images().list.front().get(); };
    funcs.next = nextImage;
    funcs.load = loadImage;
    funcs.name = [](HostImage *image) { return image->name.c_str(); };
    funcs.size = [](HostImage *image, int *width, int *height) {
        *width = image ? image->width : 0;
        *height = image ? image->height : 0;
    };
    funcs.rgb = readPixel;
    funcs.rgbSpot = [](HostImage *image, double u, double v, double spotSize, int blend, double colour[3]) {
        host().note("spot of ", image->name, " ", blend);
        colour[0] = u;
        colour[1] = v;
        colour[2] = spotSize;
    };
    funcs.loadReference = loadReference;
    funcs.saveReference = saveReference;
    funcs.hasAlpha = [](HostImage *image) { return image->hasAlpha ? 1 : 0; };
    funcs.alpha = [](HostImage *image, int x, int y) {
        return image->hasAlpha ? static_cast<float>(x + 100 * y) : -1.0f;
    };
    return funcs;
}();

const HostNodeUtilityFuncs kUtilities = [] {
    HostNodeUtilityFuncs funcs{};
    funcs.blend = [](double result[3], const double top[3], const double bottom[3], double opacity, int mode) {
        for (int i = 0; i < 3; ++i) result[i] = top[i] + 10 * bottom[i] + 100 * opacity + 1000 * mode;
    };
    funcs.directionMapping = [](double seamAngle, const double direction[3], double *u, double *v) {
        *u = direction[0] + 10 * seamAngle;
        *v = direction[1];
    };
    return funcs;
}();

int requestFile(int version, HostFileRequest *request) {
    host().note("request ", version);
    images().lastRequest = request;
    images().startedIn = request->path;
    request->result = images().requestResult;
    if (request->result > 0) {
        std::strcpy(request->path, images().chosenFolder.c_str());
        std::strcpy(request->baseName, images().chosenFile.c_str());
        std::strcpy(request->fullName, (images().chosenFolder + "/" + images().chosenFile).c_str());
    }
    return images().requestReturns;
}

} // namespace

FakeImages::FakeImages() { currentImages = this; }
FakeImages::~FakeImages() { currentImages = nullptr; }

void *FakeImages::lookup(const char *service, int use) {
    void *found = FakeControls::lookup(service, use);
    if (!found) return nullptr;
    const std::string name = service;
    if (name == HOST_IMAGE_LIST) return const_cast<HostImageList *>(&kImageList);
    if (name == HOST_NODE_UTILITY_FUNCS) return const_cast<HostNodeUtilityFuncs *>(&kUtilities);
    if (name == HOST_FILE_REQUEST) return reinterpret_cast<void *>(requestFile);
    return found;
}

HostImage &FakeImages::add(const std::string &name) {
    list.push_back(std::make_unique<HostImage>(HostImage{.name = name}));
    return *list.back();
}

void FakeImages::add(int count) {
    for (int i = 0; i < count; ++i) add("picture" + std::to_string(list.size() + 1));
}

} // namespace velm::plugin

// The images of the scene, and the function table that nodes use.
#include "host/image/image.h"

#include "host/base/colour.h"
#include "host/base/error.h"
#include "host/base/names.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <filesystem>
#include <fmt/format.h>
#include <utility>

void HostImage::swapPixels(HostImage &other) {
    std::swap(memory, other.memory);
    std::swap(width, other.width);
    std::swap(height, other.height);
    std::swap(channels, other.channels);
    std::swap(isColour, other.isColour);
    std::swap(hasAlpha, other.hasAlpha);
    std::swap(levels, other.levels);
    ++pixelChanges;
    ++other.pixelChanges;
}

namespace velm::host {

namespace {

// The image that a sequence shows if it has no file to show: one pixel of luminance and alpha.
std::unique_ptr<HostImage> transparentImage() {
    auto image = std::make_unique<HostImage>();
    image->width = image->height = 1;
    image->channels = 2;
    image->hasAlpha = true;
    image->levels.push_back({.width = 1, .height = 1, .pixels = {0, 0}});
    return image;
}

} // namespace

ImageList &ImageList::instance() {
    static ImageList list;
    return list;
}

HostImage &ImageList::load(const std::string &file, const std::string &name, const std::vector<ImageFilter> &filters) {
    for (const auto &image : images_)
        if (image->file == file && (name.empty() || image->name == name)) return *image;
    std::string newName = name;
    if (name.empty()) {
        const std::string stem = std::filesystem::path(file).filename().string();
        newName = stem;
        for (int number = 2; find(newName); ++number) newName = stem + " (" + std::to_string(number) + ")";
    } else {
        requireUnused(name, file);
    }
    return add(readImage(file, newName, workflow_, filters));
}

HostImage &ImageList::addSequence(const std::string &pattern, const ImageSequence &sequence, const std::string &name,
                                  const std::vector<ImageFilter> &filters) {
    requireUnused(name, pattern);
    auto image = transparentImage();
    image->name = name;
    image->file = pattern;
    image->sequence = sequence;
    image->filters = filters;
    return add(std::move(image));
}

std::vector<ImageList::UnreadFile> ImageList::setFrame(int frame) {
    std::vector<UnreadFile> unread;
    for (const auto &image : images_) {
        if (!image->sequence) continue;
        const int number = image->sequence->numberAt(frame);
        if (image->shownNumber == number) continue;
        image->shownNumber = number;
        std::unique_ptr<HostImage> shown = transparentImage();
        try {
            shown = readImage(numberedFile(image->file, number), image->name, workflow_, image->filters);
        } catch (const InputError &error) {
            unread.push_back({.image = image->name, .why = error.what()});
        }
        image->swapPixels(*shown);
    }
    return unread;
}

void ImageList::requireUnused(const std::string &name, const std::string &file) const {
    if (const HostImage *other = find(name))
        throw InputError({.file = file},
                         fmt::format("the name {} is already that of the image {}", inQuotes(name), other->file));
}

HostImage &ImageList::add(std::unique_ptr<HostImage> image) {
    images_.push_back(std::move(image));
    relink();
    return *images_.back();
}

HostImage *ImageList::find(const std::string &name) const {
    const auto found =
        std::find_if(images_.begin(), images_.end(), [&](const auto &image) { return image->name == name; });
    return found == images_.end() ? nullptr : found->get();
}

std::vector<std::string> ImageList::names() const {
    std::vector<std::string> result;
    for (const auto &image : images_) result.push_back(image->name);
    return result;
}

void ImageList::remove(const HostImage *image) {
    std::erase_if(images_, [&](const auto &each) { return each.get() == image; });
    relink();
}

void ImageList::clear() {
    images_.clear();
    absent_.clear();
    workflow_ = Workflow::linear;
    relink();
}

void ImageList::relink() {
    HostImage *following = nullptr;
    for (auto image = images_.rbegin(); image != images_.rend(); ++image) {
        (*image)->next = following;
        following = image->get();
    }
    first_ = following;
}

const HostImage *imageNamed(const std::string &name, std::string_view what, const SourceLocation &location) {
    const ImageList &list = ImageList::instance();
    const HostImage *image = list.find(name);
    if (image || list.isAbsent(name)) return image;
    const std::string near = nearest(name, list.names());
    throw InputError(location, fmt::format("{} {} is not in the scene{}", what, inQuotes(name),
                                           near.empty() ? "" : fmt::format("; did you mean {}?", inQuotes(near))));
}

namespace {

HostImage *firstImage() { return ImageList::instance().first(); }
HostImage *nextImage(HostImage *image) { return ImageList::next(image); }

HostImage *loadNamed(const char *fileName, const std::string &name) {
    ImageList &list = ImageList::instance();
    try {
        list.setLastError({});
        return !fileName ? nullptr : &list.load(fileName, name);
    } catch (const std::exception &error) {
        list.setLastError(error.what());
        return nullptr;
    }
}

HostImage *loadImage(const char *fileName) { return loadNamed(fileName, {}); }

const char *imageName(HostImage *image) { return !image ? "" : image->name.c_str(); }

const char *imageFileName(HostImage *image, int frame) {
    if (!image) return "";
    if (!image->sequence) return image->file.c_str();
    image->namedFile = numberedFile(image->file, image->sequence->numberAt(frame));
    return image->namedFile.c_str();
}

int imageIsColour(HostImage *image) { return image && image->isColour; }
// Every image has a pyramid from the start, so that nothing has to be prepared.
void imageNeedsAntialiasing(HostImage *) {}

void imageSize(HostImage *image, int *width, int *height) {
    *width = !image ? 0 : image->width;
    *height = !image ? 0 : image->height;
}

float luma(HostImage *image, int x, int y) {
    float colour[3];
    pixel(image, x, y, colour);
    return static_cast<float>(luminance(colour[0], colour[1], colour[2]));
}

void rgb(HostImage *image, int x, int y, float colour[3]) { pixel(image, x, y, colour); }

// Without blending: the pixel under the centre of the spot.
int nearestColumn(const HostImage *image, double u) {
    return std::isfinite(u) ? static_cast<int>((u - std::floor(u)) * image->width) : 0;
}
int nearestRow(const HostImage *image, double v) {
    return std::isfinite(v) ? static_cast<int>(std::clamp(v, 0.0, 1.0) * image->height) : 0;
}

void rgbSpot(HostImage *image, double u, double v, double spotSize, int blend, double colour[3]) {
    if (!image || blend != 0) {
        sampleSpot(image, u, v, spotSize, colour);
        return;
    }
    float found[3];
    pixel(image, nearestColumn(image, u), nearestRow(image, v), found);
    std::copy_n(found, 3, colour);
}

double lumaSpot(HostImage *image, double u, double v, double spotSize, int blend) {
    double colour[3];
    rgbSpot(image, u, v, spotSize, blend, colour);
    return luminance(colour[0], colour[1], colour[2]);
}

void clearImage(HostImage *image) { ImageList::instance().remove(image); }

std::string readText(const HostLoadState *state) {
    char text[4096] = "";
    state->readString(state->data, text, sizeof text);
    return text;
}

HostImage *loadReference(const HostLoadState *state) {
    const std::string name = readText(state), file = readText(state);
    if (name.empty() && file.empty()) return nullptr;
    ImageList &list = ImageList::instance();
    HostImage *named = list.find(name), *sameFile = list.first();
    if (named && named->file == file) return named;
    while (sameFile && sameFile->file != file) sameFile = ImageList::next(sameFile);
    if (sameFile) return sameFile;
    // The image gets its saved name if no other image has it. A failure is remembered as the last error.
    const std::string failed = list.lastError();
    HostImage *read = loadNamed(file.c_str(), !named ? name : std::string());
    if (read) list.setLastError(failed);
    return read;
}

void saveReference(const HostSaveState *state, HostImage *image) {
    state->writeString(state->data, imageName(image));
    state->writeString(state->data, image ? image->file.c_str() : "");
}

int imageHasAlpha(HostImage *image) { return image && image->hasAlpha; }

float alpha(HostImage *image, int x, int y) { return pixelAlpha(image, x, y); }

double alphaSpot(HostImage *image, double u, double v, double spotSize, int blend) {
    if (!image || blend != 0) return sampleSpotAlpha(image, u, v, spotSize);
    return pixelAlpha(image, nearestColumn(image, u), nearestRow(image, v));
}

constexpr HostImageList kImageListFuncs = {
    .first = firstImage,
    .next = nextImage,
    .load = loadImage,
    .name = imageName,
    .fileName = imageFileName,
    .isColour = imageIsColour,
    .needAntialiasing = imageNeedsAntialiasing,
    .size = imageSize,
    .luma = luma,
    .rgb = rgb,
    .lumaSpot = lumaSpot,
    .rgbSpot = rgbSpot,
    .clear = clearImage,
    .loadReference = loadReference,
    .saveReference = saveReference,
    .hasAlpha = imageHasAlpha,
    .alpha = alpha,
    .alphaSpot = alphaSpot,
};

} // namespace

const HostImageList *imageListFuncs() { return &kImageListFuncs; }

} // namespace velm::host

// Images that scenes and nodes read: stored as floats, and looked up from render threads.
#pragma once

#include "host/base/error.h"
#include "host/base/image_filter.h"
#include "host/base/image_sequence.h"
#include "host/base/workflow.h"
#include "module/host.h"

#include <cstdint>
#include <memory>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace velm::host {

// One level of an image's pyramid: rows from the top, pixels from the left, `channels` floats each.
struct ImageLevel {
    int width = 0, height = 0;
    std::pmr::vector<float> pixels;
};

} // namespace velm::host

// An image of the list: what the opaque handle of the plug-in interface refers to.
struct HostImage {
    std::shared_ptr<void> memory; // where the pixels of an image from a file are; see readApart
    std::string name, file;       // of a sequence, the pattern of the files' names
    int width = 0, height = 0;
    int channels = 0; // 1 luminance, 2 luminance and alpha, 3 colour, 4 colour and alpha
    bool isColour = false, hasAlpha = false;
    std::vector<velm::host::ImageLevel>
        levels;                // the image, then each level half the size of the one before, down to 1 by 1
    HostImage *next = nullptr; // in the list's order

    std::vector<velm::host::ImageFilter> filters{}; // applied when the files are read

    // Only of a sequence: the number of the file that is shown, and the file name that the plug-in interface returned
    // last, which it keeps valid.
    std::optional<velm::host::ImageSequence> sequence{};
    std::optional<int> shownNumber{};
    std::string namedFile{};
    unsigned pixelChanges = 0; // how often its pixels have been replaced

    // Exchanges the pixels and everything that describes them, but not the name, the file and the position in the list.
    // [between frames]
    void swapPixels(HostImage &other);
};

namespace velm::host {

// Reads an image in a process of its own (see host/io/reader_process.h), by the format that its contents have; the
// formats are in image_formats.cpp. In the linear workflow, colour channels of 8-bit and 16-bit integer files are
// converted from sRGB to linear light; in the classic one they are used as they are, as float files and alpha always
// are. The filters are applied before that conversion. Colours that the file does not multiply by alpha stay so. Of
// animated and multi-part files, the first picture is read.
// Throws InputError with the name of the file if it is missing, damaged, empty or of another format, and if reading it
// exceeds a limit. An image whose header claims a size that would need more memory is refused before any is allocated.
// [interface thread]
std::unique_ptr<HostImage> readImage(const std::string &file, const std::string &name,
                                     Workflow workflow = Workflow::linear,
                                     const std::vector<ImageFilter> &filters = {});

// Pixel lookups. The null image is black and has no alpha; outside the image, the nearest pixel is returned. `colour`
// receives three components, which are equal for an image without colour. [render threads]
void pixel(const HostImage *image, int x, int y, float colour[3]);
float pixelAlpha(const HostImage *image, int x, int y); // 1 without an alpha channel

// Map lookups: u runs from the left edge (0) to the right edge (1) and wraps around, v from the top edge (0) to the
// bottom edge (1) and is clamped; pixel centres are half a pixel from the edges. Bilinear. [render threads]
void sampleBilinear(const HostImage *image, double u, double v, double colour[3]);
double sampleBilinearAlpha(const HostImage *image, double u, double v);

// The mean over a square spot about (u, v), whose width is `spotSize` in units of the image's width: bilinear in the
// two pyramid levels whose pixels enclose the spot's width, blended. A spot smaller than a pixel, or one that is not a
// number, is the bilinear lookup. [render threads]
void sampleSpot(const HostImage *image, double u, double v, double spotSize, double colour[3]);
double sampleSpotAlpha(const HostImage *image, double u, double v, double spotSize);

// Where a direction (any length but 0) meets an image spread over the sphere, in radians of seam angle:
// u = 0.5 + (heading - seamAngle) / 2 pi, brought to 0 <= u < 1, with the heading measured about +Y from +Z towards +X;
// v = 0 straight up, 0.5 at the horizon, 1 straight down. So without a seam angle +Z is in the middle of the image.
// A zero or non-finite direction gives (0.5, 0.5). [any thread]
void directionToImage(double seamAngle, const double direction[3], double *u, double *v);

// The images of the scene, in the order in which they were added: one list for the whole program, as nodes expect.
// Adding and removing: [interface thread; not while rendering]. Reading: [render threads]
class ImageList {
  public:
    static ImageList &instance();

    // How the images that are loaded from now on are read; `clear` sets it back to linear.
    void setWorkflow(Workflow workflow) { workflow_ = workflow; }

    // Returns the image of that file and name, and reads it if it is not in the list. An empty name matches any image
    // of that file; a new image then gets the file name without directories, numbered if it is taken: "wood.png (2)".
    // The filters are applied to a new image only. The list owns the image. Throws InputError as readImage does, and if
    // an image of another file has the name.
    HostImage &load(const std::string &file, const std::string &name = {},
                    const std::vector<ImageFilter> &filters = {});

    // Adds an image that shows another file at each frame; for `pattern`, see isSequencePattern. No file is
    // read before setFrame. Until then, and if a file cannot be read, the image is one pixel, black and transparent.
    // Throws InputError if an image has the name.
    HostImage &addSequence(const std::string &pattern, const ImageSequence &sequence, const std::string &name,
                           const std::vector<ImageFilter> &filters = {});

    // Makes all sequences show the files of a frame, and reads those that are not shown already. Returns those that
    // could not be read. [between frames]
    struct UnreadFile {
        std::string image, why; // the image's name
    };
    std::vector<UnreadFile> setFrame(int frame);

    HostImage *first() const { return first_; }
    static HostImage *next(const HostImage *image) { return image ? image->next : nullptr; }

    // Notes that the image of this name could not be read: it is not in the list, and those who ask for it do without.
    void noteAbsent(const std::string &name) { absent_.insert(name); }
    bool isAbsent(const std::string &name) const { return absent_.contains(name); }

    // By name, or null.
    HostImage *find(const std::string &name) const;
    std::vector<std::string> names() const;

    // Removes an image from the list and frees it; null and images of no list are ignored.
    void remove(const HostImage *image);
    void clear(); // also the absent ones

    // Why the last load through the plug-in interface returned null; empty after a successful one.
    const std::string &lastError() const { return lastError_; }
    void setLastError(std::string message) { lastError_ = std::move(message); }

  private:
    HostImage &add(std::unique_ptr<HostImage> image);
    void relink();
    void requireUnused(const std::string &name, const std::string &file) const;

    std::vector<std::unique_ptr<HostImage>> images_;
    HostImage *first_ = nullptr;
    std::unordered_set<std::string> absent_;
    std::string lastError_;
    Workflow workflow_ = Workflow::linear;
};

// The image of this name in ImageList::instance(); null if the list has the name as that of an absent image. Throws
// InputError at `location`, with the most similar name, for any other name. `what` begins the message: "the backdrop's
// image". [interface thread]
const HostImage *imageNamed(const std::string &name, std::string_view what, const SourceLocation &location);

// The table of "LW Image List 5" for ImageList::instance(). A saved reference is two strings, the name of the image and
// its file, both empty for the null image. Loading a reference finds the image by name and file, else by file, else
// reads the file.
const HostImageList *imageListFuncs();

} // namespace velm::host

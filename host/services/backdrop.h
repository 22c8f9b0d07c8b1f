// The backdrop: the colour that rays see which hit nothing.
#pragma once

#include "host/services/backdrop_description.h"
#include "module/host.h"

namespace velm::host {

class Backdrop {
  public:
    // The codes that the service returns.
    enum Type { kPlain = 0, kGradient = 1, kImage = 2 };

    Backdrop() = default; // plain black

    // Takes the image by its name from ImageList::instance(), which must keep it for as long as the backdrop is used;
    // an image that the list knows to be absent is black. InputError, with the description's location, for a name that
    // the list does not know and for a squeeze that is not above 0.
    explicit Backdrop(const BackdropDescription &description);

    // The colour in a direction, which may have any length. A gradient depends on the elevation e. Above the horizon it
    // is zenith + (sky - zenith) (1 - e / 90 degrees) ^ sky squeeze; below, the same with nadir, ground and ground
    // squeeze; the horizon itself is sky. An image is mapped by directionToImage (host/image/image.h) and interpolated
    // bilinearly. A zero or non-finite direction counts as +Z. [render threads]
    void evaluate(const double direction[3], double colour[3]) const;

    Type type() const;
    const BackdropDescription &description() const { return description_; }

  private:
    void gradient(const double direction[3], double colour[3]) const;

    BackdropDescription description_;
    const HostImage *image_ = nullptr;
};

// The table of "LW Backdrop Info 2", which describes the backdrop that was set last; plain black while there is none.
const HostBackdropInfo *backdropInfo();

// Sets the backdrop that the service describes. It must live until another one, or null for none, is set.
// [between frames]
void setBackdrop(const Backdrop *backdrop);

} // namespace velm::host

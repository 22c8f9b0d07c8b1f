// What rays that hit nothing see.
#pragma once

#include "host/services/backdrop_description.h"
#include "module/host.h"

namespace velm::host {

class Backdrop {
  public:
    // Types as the service gives them.
    enum Type { kPlain = 0, kGradient = 1, kImage = 2 };

    Backdrop() = default; // plain black

    // Takes the image by its name from ImageList::instance(), which has to keep it as long as the backdrop is asked;
    // one that the list knows to be absent is black. Throws InputError at the description's place for a name that the
    // list does not know or a squeeze that is not positive.
    explicit Backdrop(const BackdropDescription &description);

    // The colour seen in a direction of any length. A gradient runs over the elevation angle e: above the horizon
    // zenith + (sky - zenith) (1 - e / 90 degrees) ^ sky squeeze, below it the same with nadir, ground and the ground
    // squeeze; the horizon itself is sky. An image is placed by directionToImage (host/image/image.h) and looked up
    // bilinearly. A zero or non-finite direction counts as +Z. [render threads]
    void evaluate(const double direction[3], double colour[3]) const;

    Type type() const;
    const BackdropDescription &description() const { return description_; }

  private:
    void gradient(const double direction[3], double colour[3]) const;

    BackdropDescription description_;
    const HostImage *image_ = nullptr;
};

// The table of "LW Backdrop Info 2", about the backdrop last set; plain black while none is.
const HostBackdropInfo *backdropInfo();

// Makes `backdrop` the one that the service tells about; the caller keeps it alive until it sets another or null.
// [between frames]
void setBackdrop(const Backdrop *backdrop);

} // namespace velm::host

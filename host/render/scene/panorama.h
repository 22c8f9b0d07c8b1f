// An image that surrounds the scene, as a light.
#pragma once

#include "host/image/image.h"
#include "host/render/geometry/sampling.h"
#include "host/render/geometry/vector.h"

#include <memory>
#include <vector>

namespace velm::host {

// Importance-samples the directions of a latitude-longitude image: their density is proportional to the radiance, so
// that most samples are in a small bright sun. A row is drawn first, then a pixel of the row, then a point of the pixel
// (Pharr, Jakob and Humphreys, "Physically Based Rendering", 3rd edition, 14.2.4). The radiance is constant within a
// pixel. Images wider than 2048 pixels are used at a lower resolution.
class Panorama {
  public:
    // Directions are in the coordinates of the light, and are mapped to the image by directionToImage with a seam angle
    // of 0. The image has to live as long as the panorama. With `upperHalf`, there is light only from above the
    // horizon. Components that are negative or not finite count as 0. [interface thread]
    Panorama(const HostImage &image, bool upperHalf);

    struct Sample {
        Vec3 direction; // to the light, in its coordinates; unit length
        Vec3 colour;    // the radiance, divided by pi and by the density of the direction
    };
    // Maps a uniformly distributed point to a direction. The mean of the samples' colours, each multiplied by the
    // cosine of its angle of incidence, converges to the radiance of a white diffuse surface. False for a black image.
    // [render threads]
    bool sample(const UnitSquare &point, Sample &result) const;

    // Whether a panorama of this image would be equal to this one. [any thread]
    bool isOf(const HostImage &image, bool upperHalf) const {
        return &image == &image_ && upperHalf == upperHalf_ && isCurrent();
    }

    // Whether the image still has the pixels from which this was made. If not, only isOf and the functions below may be
    // called. [any thread]
    bool isCurrent() const { return image_.pixelChanges == pixelChanges_; }
    // A panorama made from the current pixels of the image. [between frames]
    std::shared_ptr<const Panorama> renewed() const { return std::make_shared<const Panorama>(image_, upperHalf_); }

  private:
    Vec3 colourAt(int x, int y) const;
    double upperEdge(int row) const; // the cosine of the zenith angle

    const HostImage &image_;
    const ImageLevel &level_;
    const bool upperHalf_;
    const unsigned pixelChanges_;
    // Cumulative sums of the mean of red, green and blue: over the rows from the top, weighted by solid angle, and over
    // the pixels of each row from the left.
    std::vector<double> rows_, pixels_;
};

} // namespace velm::host

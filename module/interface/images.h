/*
 * "LW Image List 5": the images of the scene, in the order in which they were loaded. The lookup gives a HostImageList.
 *
 * The host owns the images. Every operation takes the null image, which is 0 by 0 pixels, black and without alpha.
 * Components are 1.0 for full. Pixels count from 0 at the upper left; beyond the edges, the nearest pixel counts. Map
 * coordinates are u from the left edge (0) to the right edge (1), which wraps around, and v from the top edge (0) to
 * the bottom edge (1), which is clamped.
 */
#ifndef VELM_MODULE_INTERFACE_IMAGES_H
#define VELM_MODULE_INTERFACE_IMAGES_H

#include "module/interface/states.h"
#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_IMAGE_LIST "LW Image List 5"

typedef struct HostImageList {
    /* Gives the first image, or null when there is none. [any thread] */
    HostImage *(*first)(void);
    /* Gives the image after this one, or null after the last and for null. [any thread] */
    HostImage *(*next)(HostImage *image);
    /* Loads a file and adds it to the end of the list, or finds the image that has the file already. Gives the image,
     * or null when the file cannot be read. [interface thread; not while rendering] */
    HostImage *(*load)(const char *fileName);
    /* Gives the image's name, unique in the list; empty for null. The text is the host's and stays valid as long as the
     * image. [interface thread; not while rendering] */
    const char *(*name)(HostImage *image);
    /* Gives the file that the image shows at a frame, for a sequence of files; empty for null. The text is the host's.
     * [interface thread; not while rendering] */
    const char *(*fileName)(HostImage *image, int frame);
    /* Gives non-zero for an image with colour, 0 for one with only luminance and for null. [any thread] */
    int (*isColour)(HostImage *image);
    /* Asks for the image to be prepared for lookups of spots. The stand-alone host prepares every image and does
     * nothing here. [interface thread; not while rendering] */
    void (*needAntialiasing)(HostImage *image);
    /* Stores the image's size in pixels, 0 and 0 for null. Neither pointer may be null. [any thread] */
    void (*size)(HostImage *image, int *width, int *height);
    /* Gives the luminance of a pixel. [any thread] */
    float (*luma)(HostImage *image, int x, int y);
    /* Stores the colour of a pixel; of an image without colour, the luminance in each component. [any thread] */
    void (*rgb)(HostImage *image, int x, int y, float colour[3]);
    /* Gives the mean luminance of a spot around (u, v), `spotSize` times as wide as the image; with `blend` 0, the
     * luminance of the pixel at its centre. [any thread] */
    double (*lumaSpot)(HostImage *image, double u, double v, double spotSize, int blend);
    /* Stores the mean colour of a spot around (u, v), `spotSize` times as wide as the image; with `blend` 0, the colour
     * of the pixel at its centre. [any thread] */
    void (*rgbSpot)(HostImage *image, double u, double v, double spotSize, int blend, double colour[3]);
    /* Removes the image from the list and frees it. Null and images that are not in the list are ignored.
     * [interface thread; not while rendering] */
    void (*clear)(HostImage *image);
    /* Reads a reference to an image that saveReference wrote. Gives the image, which is loaded when the list does not
     * have it; null for the null image and when it cannot be loaded. [interface thread; not while rendering] */
    HostImage *(*loadReference)(const HostLoadState *state);
    /* Writes a reference to an image, its name and its file; also to the null image.
     * [interface thread; not while rendering] */
    void (*saveReference)(const HostSaveState *state, HostImage *image);
    /* Gives non-zero for an image with an alpha channel. [any thread] */
    int (*hasAlpha)(HostImage *image);
    /* Gives the alpha of a pixel, 0 to 1; 1 without an alpha channel. [any thread] */
    float (*alpha)(HostImage *image, int x, int y);
    /* Gives the mean alpha of a spot around (u, v), `spotSize` times as wide as the image; with `blend` 0, the alpha of
     * the pixel at its centre; 1 without an alpha channel. [any thread] */
    double (*alphaSpot)(HostImage *image, double u, double v, double spotSize, int blend);
} HostImageList;

#ifdef __cplusplus
}
#endif

#endif

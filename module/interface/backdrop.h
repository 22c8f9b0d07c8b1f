/*
 * "LW Backdrop Info 2": what rays that hit nothing see. The lookup gives a HostBackdropInfo.
 *
 * Times are seconds; the stand-alone host's backdrop does not change over time. No pointer may be null.
 */
#ifndef VELM_MODULE_INTERFACE_BACKDROP_H
#define VELM_MODULE_INTERFACE_BACKDROP_H

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_BACKDROP_INFO "LW Backdrop Info 2"

typedef struct HostBackdropInfo {
    /* Stores the colour seen in a direction, which has unit length, in world space. [render threads] */
    void (*backdrop)(double time, const double direction[3], double colour[3]);
    /* Gives the type of the backdrop. In the stand-alone host: 0 one colour, 1 a gradient, 2 an image.
     * [render threads] */
    int (*type)(double time);
    /* Stores the four colours of a gradient, from straight up (zenith) over the two sides of the horizon (sky, ground)
     * to straight down (nadir). Of another type, all four are the backdrop's own colour. [render threads] */
    void (*colours)(double time, double zenith[3], double sky[3], double ground[3], double nadir[3]);
    /* Stores how far the colours of a gradient's horizon reach, above it and below it: the exponents by which they fade
     * towards the zenith and the nadir, above 0. [render threads] */
    void (*squeeze)(double time, double *sky, double *ground);
} HostBackdropInfo;

#ifdef __cplusplus
}
#endif

#endif

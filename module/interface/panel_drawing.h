/*
 * Drawing in a panel: the functions by which a draw callback (panel_hints.h) fills its area. They are the member `draw`
 * of the table of "LWXPanel" (panels.h); there is no service of their own.
 *
 * Pixels count from the area's upper left corner, x to the right and y downwards. What lies outside the area is cut
 * off. Components are from 0 to 255. A colour number means in the stand-alone host: 0 black, 1 grey, 2 light grey, 3
 * white, 4 red, 5 green, 6 blue, 7 yellow; any other number is black.
 */
#ifndef VELM_MODULE_INTERFACE_PANEL_DRAWING_H
#define VELM_MODULE_INTERFACE_PANEL_DRAWING_H

#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostDrawFuncs {
    /* Sets a pixel to a numbered colour. [interface thread; while drawing] */
    void (*pixel)(HostDrawArea *area, int colour, int x, int y);
    /* Sets a pixel; components out of range are clamped. [interface thread; while drawing] */
    void (*rgbPixel)(HostDrawArea *area, int red, int green, int blue, int x, int y);
    /* Draws a line of one pixel's width in a numbered colour, with both of its ends.
     * [interface thread; while drawing] */
    void (*line)(HostDrawArea *area, int colour, int x0, int y0, int x1, int y1);
    /* Fills a rectangle, given by its upper left pixel and its size, with a numbered colour.
     * [interface thread; while drawing] */
    void (*box)(HostDrawArea *area, int colour, int x, int y, int width, int height);
    /* Fills a rectangle, given likewise; components out of range are clamped. [interface thread; while drawing] */
    void (*rgbBox)(HostDrawArea *area, int red, int green, int blue, int x, int y, int width, int height);
    /* Draws a frame of one pixel's width that looks raised, or sunken with `indent` not 0.
     * [interface thread; while drawing] */
    void (*border)(HostDrawArea *area, int indent, int x, int y, int width, int height);
    /* Gives the width of a text in pixels; 0 for null. [interface thread; while drawing] */
    int (*textWidth)(HostDrawArea *area, const char *text);
    /* Gives the height of a text in pixels. [interface thread; while drawing] */
    int (*textHeight)(HostDrawArea *area, const char *text);
    /* Draws a text in a numbered colour, with its upper left corner at a pixel. The stand-alone host has no font and
     * draws nothing. [interface thread; while drawing] */
    void (*text)(HostDrawArea *area, const char *text, int colour, int x, int y);
} HostDrawFuncs;

#ifdef __cplusplus
}
#endif

#endif

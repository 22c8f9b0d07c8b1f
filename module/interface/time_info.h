/*
 * "LW Time Info": the time of the frame being rendered. The lookup gives a HostTimeInfo, the same one as long as the
 * host runs. The host writes it between frames; modules read it on any thread.
 */
#ifndef VELM_MODULE_INTERFACE_TIME_INFO_H
#define VELM_MODULE_INTERFACE_TIME_INFO_H

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_TIME_INFO "LW Time Info"

typedef struct HostTimeInfo {
    double time; /* of the frame; seconds */
    int frame;   /* number of the frame */
} HostTimeInfo;

#ifdef __cplusplus
}
#endif

#endif

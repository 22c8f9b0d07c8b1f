/*
 * "LW Camera Evaluation Funcs 2": the rays of the scene's cameras. The lookup gives a HostCameraEvaluation. The
 * modelling application does not offer it.
 *
 * An evaluator is made and initialised when a render starts, reset and stepped for each frame, evaluated by the render
 * threads, and destroyed when the render has ended. A null evaluator has no rays, and gives a message where one can be
 * given.
 */
#ifndef VELM_MODULE_INTERFACE_CAMERA_EVALUATION_H
#define VELM_MODULE_INTERFACE_CAMERA_EVALUATION_H

#include "module/interface/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_CAMERA_EVALUATION "LW Camera Evaluation Funcs 2"

/* A ray that a camera sends out. */
typedef struct HostCameraRay {
    double origin[3];     /* world space; metres */
    double direction[3];  /* unit length, world space */
    double filmNormal[3]; /* towards what the camera sees, unit length, world space */
    double filter[3][3];  /* by row: the matrix that the ray's colour is multiplied with */
} HostCameraRay;

typedef struct HostCameraEvaluation {
    /* Makes an evaluator of a camera. Gives the evaluator, which the caller owns and destroys; null for what is no
     * camera, and when it cannot be made. [between frames] */
    HostCameraEvaluator *(*create)(HostItem *camera);
    /* Destroys an evaluator. Null is ignored. [between frames] */
    void (*destroy)(HostCameraEvaluator *evaluator);
    /* Prepares an evaluator for kInitPreview or kInitRender (handler.h); null, or a message. [between frames] */
    HostError (*init)(HostCameraEvaluator *evaluator, int mode);
    /* Ends what init began. [between frames] */
    void (*cleanup)(HostCameraEvaluator *evaluator);
    /* Moves an evaluator to a frame: its number, and its time in seconds; null, or a message. [between frames] */
    HostError (*newTime)(HostCameraEvaluator *evaluator, int frame, double time);
    /* Sets whether the evaluator serves a preview. No effect in the stand-alone host. [between frames] */
    void (*preview)(HostCameraEvaluator *evaluator, int mode);
    /* Forgets what the evaluator holds of the last frame, before newTime. [between frames] */
    void (*reset)(HostCameraEvaluator *evaluator);
    /* Stores the ray through a point of the film in *ray and gives 1; gives 0, with *ray unchanged, when there is none.
     * Film positions are metres from the film's centre to the picture's right and top; lens positions are from -1 to 1;
     * the time fraction is from 0 to 1 while the shutter is open. [render threads] */
    int (*evaluate)(HostCameraEvaluator *evaluator, double filmX, double filmY, double lensX, double lensY,
                    double timeFraction, HostCameraRay *ray);
} HostCameraEvaluation;

#ifdef __cplusplus
}
#endif

#endif

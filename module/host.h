/*
 * The plug-in interface between a module and its host: records, tables of functions and codes, as plain C11, which is
 * also C++20. A module is compiled against this file and the headers it includes, and against nothing else of the host;
 * the host is compiled against them and nothing else of the module. They declare no functions to link with.
 *
 * How a module runs
 *   1. The host loads the module, finds its descriptor and calls its startup function (module.h).
 *   2. For each class of nodes it activates a "NodeHandler" server, which looks up the services that it needs and gives
 *      the host its callbacks (module.h, handler.h).
 *   3. For each node that the user adds, create makes an instance: it adds inputs and outputs (node_inputs.h,
 *      node_outputs.h) and makes the animatable parameters (vparms.h).
 *   4. To show a node's settings, the host activates the "NodeInterface" server, which gives it a panel (panels.h).
 *   5. Rendering calls init, then newTime for each frame, in which parameters are read, and evaluate for each sample
 *      (shading_sample.h) and each output that somebody asks for, and at last cleanup.
 *   6. Settings are saved and loaded with the scene or the object that the node is part of (states.h).
 *
 * Rules that hold throughout
 *   - C calling convention, natural alignment with 8-byte aligned `double`, `int` of 32 bits. (On 32-bit Linux this
 *     needs -malign-double.) layout.h checks it while compiling.
 *   - Vectors are three doubles; colours are red, green, blue, 1.0 being full; matrices are nine doubles by row.
 *   - Lengths are metres, angles radians, times seconds, fractions 1.0 for 100 %. Axes are left-handed: +X right, +Y
 * up, +Z forward.
 *   - Texts are zero-terminated.
 *   - A handle points to a record that only the host can read. It is the host's unless a comment says otherwise.
 *   - A pointer that an operation or callback is given is valid during the call and not null, unless a comment says
 *     otherwise. "Gives" tells the result of a function, "leaves" what it writes through a pointer.
 *   - Nothing throws an exception across the interface. A `HostError` is null for success, else a message.
 *   - Operations are called by the module, callbacks by the host. The bracketed tag that ends the comment of each tells
 *     on which thread that is, and when:
 *       [interface thread; not while rendering]   on the one thread that runs the interface, while no render is running
 *       [interface thread; while drawing]         on the same thread, inside a draw callback of a panel
 *       [between frames]                          on the thread that controls a render, while no sample is being
 *                                                 evaluated; or on the interface thread, while no render is running
 *       [render threads]                          on up to sixteen threads at once; or on the interface thread, for the
 *                                                 samples of a preview
 *       [any thread]                              on any of these, at any time
 */
#ifndef VELM_MODULE_HOST_H
#define VELM_MODULE_HOST_H

/* What every module needs: its descriptor, its servers, and what they give to the host. */
#include "module/interface/handler.h"
#include "module/interface/module.h"
#include "module/interface/states.h"
#include "module/interface/types.h"

/* Nodes and networks: "NodeFuncs", "NodeInputFuncs", "NodeOutputFuncs", "NodeEditorFuncs", "NodeUtilityFuncs". */
#include "module/interface/connections.h"
#include "module/interface/node_editor.h"
#include "module/interface/node_inputs.h"
#include "module/interface/node_outputs.h"
#include "module/interface/node_utility.h"
#include "module/interface/nodes.h"
#include "module/interface/shading_sample.h"

/* Settings: "LWVParmFuncs 2", "Animation Envelopes", "LWXPanel", "Instance Update". */
#include "module/interface/envelopes.h"
#include "module/interface/instance_update.h"
#include "module/interface/panel_drawing.h"
#include "module/interface/panel_hints.h"
#include "module/interface/panels.h"
#include "module/interface/vparms.h"

/* The application and its files: "System ID", "LW Image List 5", "File Request 2". */
#include "module/interface/file_request.h"
#include "module/interface/images.h"
#include "module/interface/system_id.h"

/* The scene: "LW Backdrop Info 2", "LW Time Info", "LW Scene Info 5", "Scene Objects 6", "LW Item Info 4",
 * "LW Camera Evaluation Funcs 2", "LW Camera Info 5". */
#include "module/interface/backdrop.h"
#include "module/interface/camera_evaluation.h"
#include "module/interface/camera_info.h"
#include "module/interface/item_info.h"
#include "module/interface/scene_info.h"
#include "module/interface/scene_objects.h"
#include "module/interface/time_info.h"

/* The layout of all of it. */
#include "module/interface/layout.h"

#endif

// Node classes for the tests of the frame. `Everything` uses every feature of the frame except saving in blocks.
// `Blocks` saves its settings in tagged blocks, and `FullBlocks` in the largest number of them. `Bare` has no
// parameters, no group and no panel.
#pragma once

#include "module/node.h"
#include "module/panel.h"

namespace velm::plugin {

VELM_DECLARE_NODE(Everything);
VELM_DECLARE_PANEL(Everything);
VELM_DECLARE_NODE(Blocks);
VELM_DECLARE_PANEL(Blocks);
VELM_DECLARE_NODE(FullBlocks);
VELM_DECLARE_NODE(Bare);

struct Everything {
    int fresh[kMaxThreads];
    int kind, count, on, image, ray, serial;
    char name[260];
    ScalarParameter level, last;
    Vec3Parameter place, tint, normal;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *kindInput, *countInput, *levelInput, *placeInput, *tintInput, *lastInput,
        *normalInput; // in creation order
    HostInput *functionInput;
    HostOutput *colourOutput, *wordOutput;
};

struct Blocks {
    int mode, on;
    char name[260];
    ScalarParameter level;
    Vec3Parameter place;
    HostChannelGroup *group;
    HostPanel *panel;
    HostNode *node;
    HostInput *placeInput;
};

// The first row has no block. There is no panel.
struct FullBlocks {
    int unsaved, values[kMostBlocks];
    HostChannelGroup *group;
    HostNode *node;
    HostInput *input;
};
extern NodeServices fullBlocksServices;
inline constexpr unsigned int kFirstFullBlock = 0x42000000; // the identifiers of the others follow

struct Bare {
    HostLookup *lookup;
    HostNode *node;
    HostOutput *output;
};

// The services of `Everything`, which tests read and reset.
extern NodeServices everythingServices;
extern const HostImageList *everythingImages;
extern HostFileRequestFunc *everythingRequest;
extern const HostBackdropInfo *everythingBackdrop;
extern const HostTimeInfo *everythingTime;

// The results of the hooks of `Everything`. The hooks record their names in the host's log.
struct HookAnswers {
    const char *prepare = nullptr;
    HostError copied = nullptr, saveMore = nullptr, loadMore = nullptr, init = nullptr, newTime = nullptr;
    int setValue = kSetUnknown;
    int changed = 0;
};
extern HookAnswers hookAnswers;

// The texts and callbacks of the panel of `Everything`.
extern const char *const everythingKinds[3];
extern const int everythingRays[3];
int everythingImageCount(void *);
const char *everythingImageName(void *, int index);
void everythingButton(HostPanel *panel, int control);
void everythingDraw(HostPanel *panel, unsigned int control, HostDrawArea *area, int width, int height);

} // namespace velm::plugin

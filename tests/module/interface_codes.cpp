// Every number and every name of the plug-in interface, as literals. Module and host take them from the same headers: a
// wrong one would be wrong on both sides, and no running test would fail. Checked while compiling.
#include "module/host.h"

namespace {

constexpr bool same(const char *a, const char *b) {
    while (*a && *a == *b) ++a, ++b;
    return *a == *b;
}

} // namespace

// ---- Names ----

static_assert(same(HOST_MODULE_SYMBOL, "_mod_descrip"));
static_assert(same(HOST_CLASS_NODE_HANDLER, "NodeHandler"));
static_assert(same(HOST_CLASS_NODE_INTERFACE, "NodeInterface"));
static_assert(same(HOST_NODE_FUNCS, "NodeFuncs"));
static_assert(same(HOST_NODE_INPUT_FUNCS, "NodeInputFuncs"));
static_assert(same(HOST_NODE_OUTPUT_FUNCS, "NodeOutputFuncs"));
static_assert(same(HOST_NODE_EDITOR_FUNCS, "NodeEditorFuncs"));
static_assert(same(HOST_NODE_UTILITY_FUNCS, "NodeUtilityFuncs"));
static_assert(same(HOST_VPARM_FUNCS, "LWVParmFuncs 2"));
static_assert(same(HOST_ENVELOPE_FUNCS, "Animation Envelopes"));
static_assert(same(HOST_PANEL_FUNCS, "LWXPanel"));
static_assert(same(HOST_INSTANCE_UPDATE, "Instance Update"));
static_assert(same(HOST_SYSTEM_ID, "System ID"));
static_assert(same(HOST_IMAGE_LIST, "LW Image List 5"));
static_assert(same(HOST_FILE_REQUEST, "File Request 2"));
static_assert(same(HOST_BACKDROP_INFO, "LW Backdrop Info 2"));
static_assert(same(HOST_TIME_INFO, "LW Time Info"));
static_assert(same(HOST_SCENE_INFO, "LW Scene Info 5"));
static_assert(same(HOST_SCENE_OBJECTS, "Scene Objects 6"));
static_assert(same(HOST_ITEM_INFO, "LW Item Info 4"));
static_assert(same(HOST_CAMERA_EVALUATION, "LW Camera Evaluation Funcs 2"));
static_assert(same(HOST_CAMERA_INFO, "LW Camera Info 5"));

// ---- Modules and servers ----

static_assert(kModuleSyncWord == 0x04121994 && kModuleVersion == 3);
static_assert(kPlatformUnix == 0x200 && kPlatformWindows == 0x300 && kPlatformMacintosh == 0x400);
static_assert(kNodeHandlerVersion == 1 && kNodeInterfaceVersion == 4);
static_assert(kActivateOk == 0 && kActivateBadVersion == 1 && kActivateBadGlobal == 2 && kActivateBadLocal == 3);
static_assert(kActivateBadApplication == 4 && kActivateBadApplicationQuiet == 5);
static_assert(kUseTransient == 0);
static_assert(kTagUserName == 0 && kTagMenu == 0x70000);
static_assert(kMaxThreads == 16);
static_assert(kStateBinary == 0 && kStateText == 1);
static_assert(kInitPreview == 0 && kInitRender == 1);
static_assert(kSystemIdMask == 0xf0000000 && kSystemLayout == 0 && kSystemModelling == 0x10000000);
static_assert(kSystemRenderNode == 0x20000000);

// ---- Samples and rays ----

static_assert(kRayShadow == 1 && kRayPreview == 2 && kRayBackSide == 4 && kRaySampled == 8 && kRayPreprocess == 16);
static_assert(kRayToOutside == 32 && kRayDoubleSided == 64);
static_assert(kTraceDistance == 0 && kTraceReflection == 1 && kTraceRefraction == 2 && kTraceDissolve == 3);
static_assert(kTraceShadow == 4 && kTraceOcclusion == 5 && kTraceBackdrop == 6 && kTraceKindMask == 0xff);
static_assert(kTraceShadeBackSides == 0x08000000 && kTraceUseBackdropColour == 0x10000000);
static_assert(kTraceOwnObjectOnly == 0x20000000 && kTraceSampled == 0x40000000);
static_assert(kTraceMayHitOwnPolygon == 0x80000000);
static_assert(HOST_RAY_MISS == -1.0 && kRayHitReserve == 2048);

// ---- Nodes ----

static_assert(kPreviewRendered == 0 && kPreviewDrawnByNode == 1 && kPreviewOff == 2);
static_assert(kConnectColour == 1 && kConnectScalar == 2 && kConnectVector == 3 && kConnectInteger == 4);
static_assert(kConnectFunction == 5 && kConnectMaterial == 6);
static_assert(kInputConnected == 0 && kInputDisconnected == 1 && kInputSourceDestroyed == 2);
static_assert(kBlendNormal == 0 && kBlendAdditive == 1 && kBlendSubtractive == 2 && kBlendMultiply == 3);
static_assert(kBlendScreen == 4 && kBlendDarken == 5 && kBlendLighten == 6 && kBlendDifference == 7);
static_assert(kBlendNegative == 8 && kBlendColourDodge == 9 && kBlendColourBurn == 10 && kBlendRed == 11);
static_assert(kBlendGreen == 12 && kBlendBlue == 13);

// ---- Parameters and envelopes ----

static_assert(kParmPlainTriple == 1 && kParmFloat == 16 && kParmFloatTriple == 17 && kParmPercent == 32);
static_assert(kParmDistance == 48 && kParmDistanceTriple == 49 && kParmAngle == 64 && kParmAngleTriple == 65);
static_assert(kParmColour == 81);
static_assert(kParmHasEnvelope == 1 && kParmHasTexture == 2);
static_assert(kShapeTcb == 0 && kShapeHermite == 1 && kShapeBezier1 == 2 && kShapeLinear == 3);
static_assert(kShapeStepped == 4 && kShapeBezier2 == 5);
static_assert(kBehaveReset == 0 && kBehaveConstant == 1 && kBehaveRepeat == 2 && kBehaveOscillate == 3);
static_assert(kBehaveOffsetRepeat == 4 && kBehaveLinear == 5);
static_assert(kKeyValue == 1 && kKeyTime == 2 && kKeyShape == 3 && kKeyTension == 4 && kKeyContinuity == 5);
static_assert(kKeyBias == 6 && kKeyParameter0 == 7);
static_assert(kEnvelopePreBehaviour == 1 && kEnvelopePostBehaviour == 2);

// ---- Panels ----

static_assert(kPanelForm == 1 && kPanelOwn == 2);
static_assert(kSetUnknown == 0 && kSetDefault == 1 && kSetRedraw == 2 && kSetRebuild == 3);
static_assert(kEventChanging == 1 && kEventSet == 2 && kEventHit == 3 && kEventFocus == 4 && kEventFocusLost == 5);
static_assert(kHintEnd == 0);
static_assert(kHintLabel == 0x3D000B03);
static_assert(kHintAddControl == 0x3D000D03);
static_assert(kHintChangeNotify == 0x3D000F01);
static_assert(kHintDestroyNotify == 0x3D001302);
static_assert(kHintMinimum == 0x3D014002);
static_assert(kHintMaximum == 0x3D014102);
static_assert(kHintStep == 0x3D014202);
static_assert(kHintRange == 0x3D014304);
static_assert(kHintSensitivity == 0x3D014402);
static_assert(kHintStringList == 0x3D014503);
static_assert(kHintEnforceLimits == 0x3D014703);
static_assert(kHintButton == 0x3D015F02);
static_assert(kHintPopupFunctions == 0x3D016203);
static_assert(kHintValueTransform == 0x3D016303);
static_assert(kHintDraw == 0x3D016502);
static_assert(kHintVectorLabels == 0x3D017202);
static_assert(kHintControlOptions == 0x3D017403);
static_assert(kHintEnable == 0x3D01F984);
static_assert(kHintGroup == 0x3D01FE81);
static_assert(kHintStack == 0x3D020983);
static_assert(kHintTabs == 0x3D020A81);
static_assert(kHintLeftAlign == 0x3D021280);
static_assert(kHintNarrow == 0x3D021380);
static_assert(kHintDividerAfter == 0x3D021481);
static_assert(kHintNestedList == 0xDD002);
static_assert(kThumbSmall == 1 && kThumbMedium == 2 && kThumbLarge == 4 && kThumbExtraLarge == 8);
static_assert(kThumbSquare == 0x10000 && kThumb4To3 == 0x20000 && kThumbWide == 0x100000);

// ---- Files and scenes ----

static_assert(kFileRequestVersion == 3 && kFileRequestLoad == 1);
static_assert(kVertexMapTxuv == 0x54585556);
static_assert(kItemObject == 0 && kItemLight == 1 && kItemCamera == 2 && kItemBone == 3);
static_assert(kCameraInfoFilmSize == 22 && kCameraInfoFrameTiming == 23 && kCameraInfoReserved == 22);

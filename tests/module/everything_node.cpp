#include "tests/module/test_nodes.h"

#include "module/rows.h"
#include "tests/module/fake_host.h"

namespace velm::plugin {

NodeServices everythingServices;
const HostImageList *everythingImages;
HostFileRequestFunc *everythingRequest;
const HostBackdropInfo *everythingBackdrop;
const HostTimeInfo *everythingTime;
HookAnswers hookAnswers;

constexpr const char *const everythingKinds[3] = {"First", "Second", nullptr};
constexpr int everythingRays[3] = {4, 2, 9};
int everythingImageCount(void *) { return 1; }
const char *everythingImageName(void *, int) { return "(none)"; }
void everythingButton(HostPanel *, int) {}
void everythingDraw(HostPanel *, unsigned int, HostDrawArea *, int, int) {}

namespace {

constexpr int nodeColor[3] = {1, 2, 3};

void note(const char *hook) { FakeHost::current().note("hook ", hook); }

#define AT(field) offsetof(Everything, field)
constexpr Parameter everythingRows[] = {
    popup(AT(kind), "Kind", everythingKinds).input(),
    integer(AT(count), "Count").starting(12).input("Number"),
    checkBox(AT(on), "Switch").starting(1),
    text(AT(name), "Name", sizeof(Everything::name)),
    number(AT(level), "Level").named("Level Channel").starting(1.5).input("In"),
    percent(AT(last), "Last").starting(0.25).input().createdLast(),
    direction(AT(place), "Place").input(),
    colour(AT(tint), "Tint").starting(0.5).input(),
    popup(AT(image), "Image").entries(everythingImageCount, everythingImageName),
    popup(AT(ray), "Ray", everythingKinds).storing(everythingRays),
    button("Open", everythingButton),
    thumbnail(everythingDraw),
    hiddenInteger(AT(serial)).notCopied(),
    bareVec3(AT(normal), "Normal", kParmPlainTriple).starting(0, 1, 0).input().createdLast(),
    plainInput("Function", kConnectFunction, AT(functionInput)),
};

constexpr Output everythingOutputs[] = {
    {.name = "Color", .type = kConnectColour, .field = AT(colourOutput)},
    {.name = "Word", .type = kConnectInteger, .field = AT(wordOutput)},
};

constexpr FurtherService everythingFurther[] = {
    {.name = HOST_IMAGE_LIST, .store = storeIn<everythingImages>},
    {.name = HOST_FILE_REQUEST, .store = storeIn<everythingRequest>},
    {.name = HOST_SYSTEM_ID, .rule = FurtherService::Rule::systemWord},
    {.name = HOST_BACKDROP_INFO, .rule = FurtherService::Rule::unlessModelling, .store = storeIn<everythingBackdrop>},
    {.name = HOST_TIME_INFO, .rule = FurtherService::Rule::unlessModelling, .store = storeIn<everythingTime>},
};

constexpr NodeClass everything = {
    .name = "Everything",
    .groupName = "Everything's Channels",
    .colour = nodeColor,
    .previewType = kPreviewDrawnByNode,
    .services = &everythingServices,
    .furtherServices = everythingFurther,
    .parameters = everythingRows,
    .outputs = everythingOutputs,
    .record =
        {.size = sizeof(Everything), .node = AT(node), .panel = AT(panel), .group = AT(group), .inputs = AT(kindInput)},
    .freshFlags = AT(fresh),
    .activated = [] { note("activated"); },
    .prepare =
        [](void *instance, void *priv) {
            const auto &self = *static_cast<Everything *>(instance);
            const bool ready = self.node && self.count == 12 && self.fresh[kMaxThreads - 1] == 1 && !self.group;
            FakeHost::current().note("hook prepare", priv == reinterpret_cast<void *>(FakeHost::lookup) ? "" : " bare",
                                     ready ? "" : " too early or too late");
            return hookAnswers.prepare;
        },
    .created =
        [](void *instance) { note(static_cast<Everything *>(instance)->wordOutput ? "created" : "created too early"); },
    .destroying = [](void *) { note("destroying"); },
    .copied = [](void *, void *) { return note("copied"), hookAnswers.copied; },
    .saveMore =
        [](void *, const HostSaveState *state) {
            const short mark = 4242;
            state->writeI2(state->data, &mark, 1);
            return note("saveMore"), hookAnswers.saveMore;
        },
    .loadMore =
        [](void *, const HostLoadState *state) {
            short mark = 0;
            state->readI2(state->data, &mark, 1);
            FakeHost::current().note("hook loadMore ", mark);
            return hookAnswers.loadMore;
        },
    .loaded = [](void *) { note("loaded"); },
    .init =
        [](void *, int mode) {
            FakeHost::current().note("hook init ", mode);
            return hookAnswers.init;
        },
    .cleanup = [](void *) { note("cleanup"); },
    .newTime =
        [](void *, int frame, double time) {
            FakeHost::current().note("hook newTime ", frame, " ", time);
            return hookAnswers.newTime;
        },
    .setValue =
        [](void *, unsigned int id, void *) {
            FakeHost::current().note("hook setValue ", id - kFirstControl);
            return hookAnswers.setValue;
        },
    .changed =
        [](void *, HostPanel *, unsigned int control, int event) {
            FakeHost::current().note("hook changed ", control - kFirstControl, " ", event);
            return hookAnswers.changed;
        },
};
#undef AT

} // namespace

static void Everything_Evaluate(void *, ShadingSample *, HostOutput *, HostNodeValue *) {}

static constexpr auto layout =
    joinHints(minimumHint(controlOf(everythingRows, offsetof(Everything, count)), 1),
              listHint(kHintDividerAfter, controlOf(everythingRows, offsetof(Everything, tint))));

VELM_DEFINE_NODE(Everything, everything)
VELM_DEFINE_PANEL(Everything, everything, everythingRows, layout)

} // namespace velm::plugin

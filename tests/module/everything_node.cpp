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
    popup(0x8001, "Kind", everythingKinds).at(AT(kind)).input(AT(kindInput)),
    integer(0x8002, "Count").at(AT(count)).starting(12).input(AT(countInput), "Number"),
    checkBox(0x8003, "Switch").at(AT(on)).starting(1),
    text(0x8004, "Name", sizeof(Everything::name)).at(AT(name)),
    number(0x8005, "Level").named("Level Channel").at(AT(level)).starting(1.5).input(AT(levelInput), "In"),
    percent(0x8006, "Late").at(AT(late)).starting(0.25).input(AT(lateInput)).createdLast(),
    direction(0x8007, "Place").at(AT(place)).input(AT(placeInput)),
    colour(0x8008, "Tint").at(AT(tint)).starting(0.5).input(AT(tintInput)),
    popup(0x8009, "Image").at(AT(image)).entries(everythingImageCount, everythingImageName),
    popup(0x800a, "Ray", everythingKinds).storing(everythingRays).at(AT(ray)),
    button(0x800b, "Open", everythingButton),
    thumbnail(0x800c, everythingDraw),
    hiddenInteger(AT(serial)).notCopied(),
    bareVec3("Normal", kParmPlainTriple).at(AT(normal)).starting(0, 1, 0).input(AT(normalInput)).createdLast(),
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
    .size = sizeof(Everything),
    .colour = nodeColor,
    .previewType = kPreviewDrawnByNode,
    .services = &everythingServices,
    .furtherServices = everythingFurther,
    .parameters = everythingRows,
    .outputs = everythingOutputs,
    .node = AT(node),
    .panel = AT(panel),
    .group = AT(group),
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

static constexpr auto layout = joinHints(minimumHint(0x8002, 1), listHint(kHintDividerAfter, 0x8008u));

VELM_DEFINE_NODE(Everything, everything)
VELM_DEFINE_PANEL(Everything, everything, everythingRows, layout)

} // namespace velm::plugin

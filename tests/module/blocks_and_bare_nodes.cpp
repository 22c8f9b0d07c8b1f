#include "module/rows.h"
#include "tests/module/test_nodes.h"

#include <array>

namespace velm::plugin {

NodeServices fullBlocksServices;

namespace {

constexpr int nodeColor[3] = {4, 5, 6};
constexpr const char *kModes[] = {"First", "Second", nullptr};

// ---- Blocks ----

NodeServices blocksServices;

#define AT(field) offsetof(Blocks, field)
constexpr Parameter blocksRows[] = {
    position(0x8001, "Place").at(AT(place)).input(AT(placeInput)).inBlock(0x52504f53, "Position"),
    popup(0x8002, "Mode", kModes).at(AT(mode)).inBlock(0x4d4f4445, "Mode"),
    number(0x8003, "Level").at(AT(level)).starting(1).inBlock(0x4c45564c, "Level"),
    checkBox(0x8004, "Switch").at(AT(on)).inBlock(0x53574954, "Switch"),
    text(0x8005, "Name", sizeof(Blocks::name)).at(AT(name)).inBlock(0x4e414d45, "Name"),
};

constexpr NodeClass blocks = {
    .name = "Blocks",
    .size = sizeof(Blocks),
    .colour = nodeColor,
    .services = &blocksServices,
    .parameters = blocksRows,
    .node = AT(node),
    .panel = AT(panel),
    .group = AT(group),
    .savesBlocks = true,
};
#undef AT

// ---- FullBlocks ----

// Fetched in every application, though it stands behind the word that tells which one this is.
constexpr FurtherService fullBlocksFurther[] = {
    {.name = HOST_SYSTEM_ID, .rule = FurtherService::Rule::systemWord},
    {.name = HOST_FILE_REQUEST, .store = [](void *) {}},
};

#define AT(field) offsetof(FullBlocks, field)
constexpr auto fullBlocksRows = [] {
    std::array<Parameter, kMostBlocks + 1> rows = {checkBox(0x8001, "Unsaved").at(AT(unsaved)).input(AT(input))};
    for (unsigned int i = 0; i < kMostBlocks; ++i)
        rows[i + 1] =
            checkBox(0x8002 + i, "Value").at(AT(values) + i * sizeof(int)).inBlock(kFirstFullBlock + i, "Value");
    return rows;
}();

constexpr NodeClass fullBlocks = {
    .name = "Full Blocks",
    .size = sizeof(FullBlocks),
    .colour = nodeColor,
    .services = &fullBlocksServices,
    .furtherServices = fullBlocksFurther,
    .parameters = fullBlocksRows,
    .node = AT(node),
    .group = AT(group),
    .savesBlocks = true,
};
#undef AT

// ---- Bare ----

NodeServices bareServices;

#define AT(field) offsetof(Bare, field)
constexpr Output bareOutputs[] = {{.name = "Pixel", .type = kConnectInteger, .field = AT(output)}};

constexpr NodeClass bare = {
    .name = "Bare",
    .size = sizeof(Bare),
    .colour = nodeColor,
    .previewType = kPreviewOff,
    .fetchesParameterServices = false,
    .services = &bareServices,
    .outputs = bareOutputs,
    .node = AT(node),
    .prepare = [](void *instance, void *priv) -> const char * {
        static_cast<Bare *>(instance)->lookup = reinterpret_cast<HostLookup *>(priv);
        return nullptr;
    },
};
#undef AT

} // namespace

static void Blocks_Evaluate(void *, ShadingSample *, HostOutput *, HostNodeValue *) {}
static void FullBlocks_Evaluate(void *, ShadingSample *, HostOutput *, HostNodeValue *) {}
static void Bare_Evaluate(void *, ShadingSample *sample, HostOutput *, HostNodeValue *value) {
    bareServices.nodeOutputFunc->setValue(value, &sample->pixelX);
}

VELM_DEFINE_NODE(Blocks, blocks)
VELM_DEFINE_PANEL(Blocks, blocks, blocksRows, kPlainLayout)
VELM_DEFINE_NODE(FullBlocks, fullBlocks)
VELM_DEFINE_NODE(Bare, bare)

} // namespace velm::plugin

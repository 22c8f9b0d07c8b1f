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
    position(AT(place), "Place").input().inBlock(0x52504f53, "Position"),
    popup(AT(mode), "Mode", kModes).inBlock(0x4d4f4445, "Mode"),
    number(AT(level), "Level").starting(1).inBlock(0x4c45564c, "Level"),
    checkBox(AT(on), "Switch").inBlock(0x53574954, "Switch"),
    text(AT(name), "Name", sizeof(Blocks::name)).inBlock(0x4e414d45, "Name"),
};

constexpr NodeClass blocks = {
    .name = "Blocks",
    .colour = nodeColor,
    .services = &blocksServices,
    .parameters = blocksRows,
    .record =
        {.size = sizeof(Blocks), .node = AT(node), .panel = AT(panel), .group = AT(group), .inputs = AT(placeInput)},
    .savesBlocks = true,
};
#undef AT

// ---- FullBlocks ----

// A required service after the system word is looked up in every application.
constexpr FurtherService fullBlocksFurther[] = {
    {.name = HOST_SYSTEM_ID, .rule = FurtherService::Rule::systemWord},
    {.name = HOST_FILE_REQUEST, .store = [](void *) {}},
};

#define AT(field) offsetof(FullBlocks, field)
constexpr auto fullBlocksRows = [] {
    std::array<Parameter, kMostBlocks + 1> rows = {checkBox(AT(unsaved), "Unsaved").input()};
    for (unsigned int i = 0; i < kMostBlocks; ++i)
        rows[i + 1] = checkBox(AT(values) + i * sizeof(int), "Value").inBlock(kFirstFullBlock + i, "Value");
    return rows;
}();

constexpr NodeClass fullBlocks = {
    .name = "Full Blocks",
    .colour = nodeColor,
    .services = &fullBlocksServices,
    .furtherServices = fullBlocksFurther,
    .parameters = fullBlocksRows,
    .record = {.size = sizeof(FullBlocks), .node = AT(node), .group = AT(group), .inputs = AT(input)},
    .savesBlocks = true,
};
#undef AT

// ---- Bare ----

NodeServices bareServices;

#define AT(field) offsetof(Bare, field)
constexpr Output bareOutputs[] = {{.name = "Pixel", .type = kConnectInteger, .field = AT(output)}};

constexpr NodeClass bare = {
    .name = "Bare",
    .colour = nodeColor,
    .previewType = kPreviewOff,
    .fetchesParameterServices = false,
    .services = &bareServices,
    .outputs = bareOutputs,
    .record = {.size = sizeof(Bare), .node = AT(node)},
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

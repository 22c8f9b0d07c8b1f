#include "host/check/stage.h"

#include "host/base/error.h"
#include "host/check/blackboard.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

#include <sys/mman.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace velm::host {

namespace {

constexpr double kPoison = -7.25e77; // what a value holds before it is set

int placeOf(const WatchedServers &module, const std::string &server) {
    const std::vector<std::string> names = module.names();
    return static_cast<int>(std::find(names.begin(), names.end(), server) - names.begin());
}

} // namespace

void shiftAddresses(std::uint64_t seed) {
    Dice dice(seed);
    // Small pieces, so that the gaps between what is mapped are filled first.
    constexpr std::size_t kPiece = 1 << 14;
    for (int left = dice.between(1000, 2000); left > 0; --left)
        mmap(nullptr, kPiece, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    // Never given back, so that the heap goes on behind it.
    static std::array<void *, 3> kept;
    for (void *&each : kept) {
        each = std::malloc(static_cast<std::size_t>(dice.between(16, 100000)));
        if (each) *static_cast<volatile char *>(each) = 0;
    }
}

bool Result::operator==(const Result &other) const { return type == other.type && bytes() == other.bytes(); }

std::string_view Result::bytes() const {
    return {reinterpret_cast<const char *>(words.data()), static_cast<std::size_t>(valueSize(type))};
}

bool Result::isFinite() const {
    if (type == kConnectInteger) return true;
    const int count = valueSize(type) / static_cast<int>(sizeof(double));
    return std::all_of(words.begin(), words.begin() + count, [](double word) { return std::isfinite(word); });
}

Result evaluateOutput(HostOutput &output, const ShadingSample &sample) {
    Result result;
    result.type = output.type;
    result.words.fill(kPoison);
    HostNodeValue value{.target = result.words.data(), .askingType = output.type, .outputType = output.type};
    currentEvaluation() = {};
    // The wall's type is older than const; the module only reads.
    output.node->evaluate(output.node->instance, const_cast<ShadingSample *>(&sample), &output, &value);
    result.sets = currentEvaluation().sets;
    currentEvaluation() = {};
    return result;
}

std::string saveNode(HostNode &node, int mode) {
    if (!node.handler->instance->save) return {};
    StateWriter writer(mode);
    if (const HostError error = node.handler->instance->save(node.instance, writer.state()))
        failCheck("saving gives the error: " + std::string(error));
    return writer.finish();
}

HostError loadNode(HostNode &node, std::string_view bytes, int mode) {
    if (!node.handler->instance->load) return nullptr;
    StateReader reader(mode, bytes, "saved");
    return node.handler->instance->load(node.instance, reader.state());
}

HostError copyNode(HostNode &to, HostNode &from) {
    if (!to.handler->instance->copy) return nullptr;
    return to.handler->instance->copy(to.instance, from.instance);
}

void connectAtRandom(Network &editor, Dice &dice) {
    const auto &nodes = editor.nodes();
    if (nodes.empty()) return;
    const auto feedInputs = [&](const HostNode &node) {
        for (const auto &input : node.inputs) {
            const HostNode &from = *nodes[static_cast<std::size_t>(dice.below(nodes.size()))];
            if (from.outputs.empty() || !dice.chance(0.3)) continue;
            HostOutput &output = *from.outputs[static_cast<std::size_t>(dice.below(from.outputs.size()))];
            try {
                editor.connect(output, *input);
            } catch (const InputError &) { // it would have closed a circle
            }
        }
    };
    for (const auto &node : nodes) feedInputs(*node);
    feedInputs(editor.root());
}

Stage::Stage(const WatchedServers &module, const std::string &server)
    : editor_("Check", "Check", nullptr, nullptr), node_(&editor_.addNode(module.server(server))),
      server_(placeOf(module, server)) {}

Stage::~Stage() = default;

HostPanel *Stage::panel() { return panelOf(*node_); }

void Stage::start(int mode) { editor_.init(mode); }
void Stage::frame(int number, double time) { editor_.newTime(number, time); }
void Stage::end() { editor_.cleanup(); }

std::vector<Result> Stage::evaluate(const std::vector<ShadingSample> &samples) {
    std::vector<Result> results;
    results.reserve(samples.size() * node_->outputs.size());
    for (const ShadingSample &sample : samples)
        for (const auto &output : node_->outputs) results.push_back(evaluateOutput(*output, sample));
    return results;
}

void Stage::randomSettings(Dice &dice, bool keys) {
    velm::host::randomSettings(*node_, server_, dice, keys);
    if (panel()) frame(0, 0.0); // animated values are read when a frame starts
}

std::string difference(std::string_view one, std::string_view other) {
    const auto apart = std::mismatch(
        one.begin(), one.begin() + static_cast<std::ptrdiff_t>(std::min(one.size(), other.size())), other.begin());
    return "byte " + std::to_string(apart.first - one.begin()) + " of " + std::to_string(one.size()) + " and " +
           std::to_string(other.size());
}

} // namespace velm::host

#include "tests/platforms/whole_host.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <utility>

namespace velm::plugin {
namespace {

// ---- Activation: TestNode passes FakeHost's lookup function; these wrappers replace it by WholeHost's ----

constexpr size_t kMostRecords = 64;
std::array<HostActivate *, kMostRecords> moduleActivations;

template <size_t record>
int activateInWhole(int version, HostLookup *, void *local, void *serverData) {
    return moduleActivations[record](version, WholeHost::lookup, local, serverData);
}

template <size_t... records>
constexpr std::array<HostActivate *, kMostRecords> wholeActivations(std::index_sequence<records...>) {
    return {activateInWhole<records>...};
}
constexpr auto kWholeActivations = wholeActivations(std::make_index_sequence<kMostRecords>());

// ---- The scene that a sample's rays hit ----

double hitDistance(const double direction[3]) {
    const double along = 0.25 * direction[0] + 0.5 * direction[1] - 0.125 * direction[2];
    return along < -0.3 ? HOST_RAY_MISS : 0.5 + along * along;
}

void hitColour(const double position[3], const double direction[3], double colour[3]) {
    for (int i = 0; i < 3; ++i)
        colour[i] = 0.1 + std::fabs(direction[i]) * (0.3 + 0.2 * i) + 0.01 * std::fabs(position[i]);
}

double castRay(const double *, const double direction[3]) { return hitDistance(direction); }

double traceRay(const double position[3], const double direction[3], double colour[3], double eta, int mode) {
    const double distance = hitDistance(direction);
    if (distance < 0) return distance;
    hitColour(position, direction, colour);
    colour[0] += 0.125 * (mode & kTraceKindMask);
    colour[1] += 0.25 * eta;
    return distance;
}

double shadeRay(const double position[3], const double direction[3], HostRayHit *hit) {
    const double distance = hitDistance(direction);
    if (distance < 0) return distance;
    hitColour(position, direction, hit->colour);
    return distance;
}

unsigned int componentsOf(int connectionType) {
    if (connectionType == kConnectScalar) return 1;
    return connectionType == kConnectMaterial ? sizeof(HostMaterial) / sizeof(double) : 3;
}

// Combines the functions of the node utilities that the fakes provide into one table.
const HostNodeUtilityFuncs *utilities() {
    static HostNodeUtilityFuncs funcs;
    funcs = *static_cast<const HostNodeUtilityFuncs *>(FakeImages::lookup(HOST_NODE_UTILITY_FUNCS, kUseTransient));
    funcs.autosize =
        static_cast<const HostNodeUtilityFuncs *>(FakeEditors::lookup(HOST_NODE_UTILITY_FUNCS, kUseTransient))
            ->autosize;
    funcs.uvMapping =
        static_cast<const HostNodeUtilityFuncs *>(FakeScene::lookup(HOST_NODE_UTILITY_FUNCS, kUseTransient))->uvMapping;
    return &funcs;
}

} // namespace

WholeHost::WholeHost(const HostModuleDescriptor &module) {
    images.add(2);
    images.list[1]->hasAlpha = true;
    host.time = {.time = 0.5, .frame = 12};
    host.backdrop = [](double time, const double *direction, double *colour) {
        for (int i = 0; i < 3; ++i) colour[i] = 0.5 + 0.25 * direction[i] + 0.125 * time;
    };
    scene.info.firstFrame = 1;
    scene.info.lastFrame = 60;
    scene.info.recursionDepth = 16;
    size_t record = 0;
    for (const HostServer *row = module.servers; row->className; row += 2, record += 2) {
        if (record + 2 > kMostRecords) throw std::runtime_error("the table of servers does not end");
        if (row[0].className != std::string(HOST_CLASS_NODE_HANDLER) || !row[0].activate || !row[1].className ||
            row[1].className != std::string(HOST_CLASS_NODE_INTERFACE) || row[1].name != std::string(row[0].name))
            throw std::runtime_error(std::string("not a pair of servers: ") + row[0].name);
        moduleActivations[record] = row[0].activate;
        moduleActivations[record + 1] = row[1].activate;
        HostActivate *activate = kWholeActivations[record];
        HostActivate *interface = row[1].activate ? kWholeActivations[record + 1] : nullptr;
        servers.emplace_back(host, row->name, activate, interface);
        if (!servers.back().node.instance) throw std::runtime_error(std::string("no instance of ") + row->name);
    }
}

WholeHost::~WholeHost() = default;

void *WholeHost::lookup(const char *service, int use) {
    const std::string name = service;
    if (name == HOST_NODE_UTILITY_FUNCS) return const_cast<HostNodeUtilityFuncs *>(utilities());
    if (name == HOST_IMAGE_LIST || name == HOST_FILE_REQUEST) return FakeImages::lookup(service, use);
    if (name == HOST_NODE_EDITOR_FUNCS || name == HOST_NODE_OUTPUT_FUNCS || name == HOST_PANEL_FUNCS)
        return FakeEditors::lookup(service, use);
    return FakeScene::lookup(service, use);
}

double someNumber(unsigned int turn, unsigned int index) {
    uint32_t mixed = turn * 2654435761u + index * 40503u + 17u; // multiplicative hashing, twice
    mixed = (mixed ^ (mixed >> 15)) * 2246822519u;
    return static_cast<double>((mixed >> 8) % 4001) / 1000 - 1;
}

ShadingSample someSample(unsigned int turn) {
    ShadingSample sample = plainSample();
    const auto direction = [turn](unsigned int index, double vector[3]) {
        double square = 0;
        for (unsigned int i = 0; i < 3; ++i) {
            vector[i] = someNumber(turn, index + i) - 1;
            square += vector[i] * vector[i];
        }
        for (int i = 0; i < 3; ++i) vector[i] /= std::sqrt(square);
    };
    sample.pixelX = static_cast<int>(3 + turn);
    sample.pixelY = static_cast<int>(5 + 2 * turn);
    direction(100, sample.geometricNormal);
    std::copy_n(sample.geometricNormal, 3, sample.unbumpedNormal);
    std::copy_n(sample.geometricNormal, 3, sample.shadingNormal);
    sample.shadingNormal[turn % 3] += 0.125;
    for (unsigned int i = 0; i < 3; ++i) sample.position[i] = someNumber(turn, 200 + i);
    for (int i = 0; i < 3; ++i) sample.raySource[i] = sample.position[i] + 2 * sample.geometricNormal[i];
    sample.raySource[0] += 0.75;
    sample.spotSize = 0.01;
    sample.refractionIndex = turn % 2 ? 1.5 : 1.0;
    sample.rayDepth = static_cast<int>(turn % 3);
    sample.threadIndex = static_cast<int>(turn % kMaxThreads);
    sample.rayCast = castRay;
    sample.rayTraceMode = traceRay;
    sample.rayShade = shadeRay;
    return sample;
}

void feed(TestNode &node, unsigned int turn) {
    unsigned int index = 0;
    for (HostInput &input : node.host.inputs) {
        if (input.node != &node.node) continue;
        const int type = input.type;
        ++index;
        if (type == kConnectInteger && turn % 2 == 0) {
            input.source = {};
            continue;
        }
        input.source = [=, count = std::make_shared<unsigned int>(0)](ShadingSample *, void *value) {
            const unsigned int now = (*count)++;
            auto *numbers = static_cast<double *>(value);
            if (type == kConnectInteger)
                *static_cast<int *>(value) = static_cast<int>((turn + index + now / 7) % 6);
            else if (type == kConnectFunction)
                *numbers = 0.25 + *numbers * *numbers; // transforms what it finds
            else
                for (unsigned int i = 0; i < componentsOf(type); ++i)
                    numbers[i] = someNumber(turn, 20 * index + i) + 0.0625 * (now % 7);
        };
    }
}

} // namespace velm::plugin

#include "tests/platforms/report.h"

#include "tests/platforms/hex_float.h"

#include <bit>
#include <cstdint>
#include <stdexcept>

namespace velm::plugin {
namespace {

using Kind = RecordedState::Entry::Kind;

// Each turn has other settings and another sample. In the first, nothing is set or connected.
constexpr unsigned int kTurns = 20;

void put(std::string &bytes, uint64_t value, int count) {
    for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xff);
}

std::string inHexadecimal(const std::string &bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (i % 8 == 0) text += ' ';
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xf];
    }
    return text;
}

void callEvaluate(HostNodeHandler &handler, void *instance, ShadingSample *sample, HostOutput *output,
                  HostNodeValue *value) {
#ifdef __i386__
    // Calls with a stack that is aligned to 4 bytes only, as 32-bit hosts do.
    void *call[] = {reinterpret_cast<void *>(handler.evaluate), instance, sample, output, value};
    asm volatile("movl %%esp, %%esi\n\t"
                 "andl $-16, %%esp\n\t"
                 "subl $4, %%esp\n\t"
                 "pushl 16(%%edi)\n\t"
                 "pushl 12(%%edi)\n\t"
                 "pushl 8(%%edi)\n\t"
                 "pushl 4(%%edi)\n\t"
                 "call *(%%edi)\n\t"
                 "movl %%esi, %%esp"
                 :
                 : "D"(call)
                 : "eax", "ecx", "edx", "esi", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "memory",
                   "cc");
#else
    handler.evaluate(instance, sample, output, value);
#endif
}

std::string resultText(const HostNodeValue &value, const std::vector<HostMaterial> &materials) {
    std::string text;
    const int type = value.asked->type;
    if (value.timesSet == 0) return " unset";
    if (type == kConnectInteger) return " " + std::to_string(value.integer);
    if (type == kConnectMaterial) {
        const HostMaterial &material = materials.back();
        for (const auto &colour : {material.diffuse, material.specular, material.reflection, material.refraction})
            for (int i = 0; i < 3; ++i) text += " " + hexFloat(colour[i]);
        return text + " " + hexFloat(material.transparency);
    }
    for (int i = 0; i < (type == kConnectScalar ? 1 : 3); ++i) text += " " + hexFloat(value.numbers[i]);
    return text;
}

// Sets every popup, switch and count of the panel to a value that differs from turn to turn.
void choose(TestNode &node, unsigned int turn) {
    HostPanel *panel = node.panel();
    if (!panel) return;
    unsigned int index = 0;
    for (const HostPanelValue *value = panel->values; value->id != 0; ++value, ++index) {
        if (value->type != std::string("integer")) continue;
        int choice = static_cast<int>((turn + index) % 4);
        panel->set(node.instance, value->id, &choice);
    }
}

void disconnect(TestNode &node) {
    for (HostInput &input : node.host.inputs)
        if (input.node == &node.node) input.source = {};
}

// Checks that a node that loads this data saves the same data again.
void checkReloading(WholeHost &whole, WholeHost::Server &server, const RecordedState &saved) {
    RecordedState file, again;
    file.entries = saved.entries;
    TestNode other(whole.host, server.activate, server.interface, "other");
    if (other.ops.load(other.instance, file.load()) || other.ops.save(other.instance, again.save()))
        throw std::runtime_error(server.name + " does not load what it saved");
    if (savedBytes(again) != savedBytes(saved)) throw std::runtime_error(server.name + " loads other than it saved");
}

void save(WholeHost &whole, WholeHost::Server &server, Report &report) {
    RecordedState state;
    if (server.node.ops.save(server.node.instance, state.save()))
        throw std::runtime_error(server.name + " does not save");
    report.push_back("saved" + savedBytes(state));
    checkReloading(whole, server, state);
}

void evaluateTurn(WholeHost &whole, TestNode &node, unsigned int turn, Report &report) {
    ShadingSample sample = someSample(turn);
    for (HostOutput &output : whole.host.outputs) {
        if (output.node != &node.node) continue;
        HostNodeValue value = {.asked = &output};
        callEvaluate(node.handler, node.instance, &sample, &output, &value);
        report.push_back(std::to_string(turn) + " " + output.name + resultText(value, whole.editors.materials));
    }
}

} // namespace

std::string savedBytes(const RecordedState &state) {
    std::string bytes;
    std::vector<size_t> sizes; // offsets of the sizes of the open blocks
    for (const RecordedState::Entry &entry : state.entries) {
        switch (entry.kind) {
        case Kind::integer: put(bytes, static_cast<uint16_t>(entry.integer), 2); break;
        case Kind::text: bytes.append(entry.text).append(entry.text.size() % 2 ? 1 : 2, '\0'); break;
        case Kind::begin:
            put(bytes, entry.id, 4);
            sizes.push_back(bytes.size());
            put(bytes, 0, 2);
            break;
        case Kind::end: {
            std::string size;
            put(size, bytes.size() - sizes.back() - 2, 2);
            bytes.replace(sizes.back(), 2, size);
            sizes.pop_back();
            break;
        }
        case Kind::parm:
            for (const double value : entry.values) put(bytes, std::bit_cast<uint64_t>(value), 8);
            break;
        }
    }
    return inHexadecimal(bytes);
}

Report reportOf(WholeHost &whole) {
    Report report;
    for (WholeHost::Server &server : whole.servers)
        feed(server.node, 1); // so that what nodes share exists for all of them
    for (WholeHost::Server &server : whole.servers) {
        TestNode &node = server.node;
        report.push_back("node " + server.name);
        for (unsigned int turn = 0; turn < kTurns; ++turn) {
            if (turn == 0) {
                disconnect(node);
            } else {
                choose(node, turn);
                feed(node, turn);
            }
            if (node.render.init(node.instance, kInitRender) ||
                node.render.newTime(node.instance, static_cast<int>(turn), 0.25 * turn))
                throw std::runtime_error(server.name + " does not start to render");
            for (int times = 0; times < 2; ++times) evaluateTurn(whole, node, turn, report);
            node.render.cleanup(node.instance);
            if (turn < 2) save(whole, server, report);
            whole.host.takeLog();
        }
    }
    return report;
}

} // namespace velm::plugin

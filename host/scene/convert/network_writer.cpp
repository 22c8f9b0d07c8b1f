#include "host/scene/convert/network_writer.h"

#include "host/scene/convert/envelope_keys.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <utility>

namespace velm::host {

namespace {

constexpr int kWide = 240, kHigh = 200; // of a column and a row in an editor

float usable(float number) { return std::isfinite(number) ? number : 0; }

std::array<float, 3> usable(const std::array<float, 3> &numbers) {
    return {usable(numbers[0]), usable(numbers[1]), usable(numbers[2])};
}

} // namespace

void NetworkWriter::Node::set(const std::string &label, SettingValue value) {
    description().settings.push_back({label, std::move(value), writer_.surface_.location});
}

void NetworkWriter::Node::set(const std::string &label, float number, const ComponentEnvelopes &envelopes,
                              double factor, std::size_t component) {
    set(label, animatedNumber(component < envelopes.size() ? envelopes[component] : nullptr, usable(number), factor));
}

void NetworkWriter::Node::set(const std::string &label, const std::array<float, 3> &numbers,
                              const ComponentEnvelopes &envelopes) {
    if (const std::optional<SettingValue> value = animatedTriple(envelopes, usable(numbers), 1))
        return set(label, *value);
    connect(writer_.addComponents(fmt::format("{} {}", name(), label), false, numbers, envelopes), label.c_str());
}

void NetworkWriter::Node::connect(const NodeOutput &from, const char *input) { writer_.connect(from, name(), input); }

NetworkWriter::Node NetworkWriter::add(std::string name, const char *server, int column) {
    if (column == kLayerColumn) startRow();
    NodeDescription &node = network_.nodes.emplace_back();
    node.name = std::move(name);
    if (node.name == surface_.name) node.name += " (2)"; // a network's owner has its name in it
    node.server = server;
    node.location = surface_.location;
    node.look.at = {-column * kWide, kHigh * std::max(rows_ - 1, 0)};
    return {*this, network_.nodes.size() - 1};
}

NodeOutput NetworkWriter::addComponents(std::string name, bool isColour, const std::array<float, 3> &numbers,
                                        const ComponentEnvelopes &envelopes) {
    static constexpr std::array<const char *, 3> kVector = {"X", "Y", "Z"}, kColour = {"Red", "Green", "Blue"};
    Node node = add(std::move(name), isColour ? "Make Color" : "Make Vector", kValueColumn);
    for (std::size_t i = 0; i < 3; ++i) node.set(isColour ? kColour[i] : kVector[i], numbers[i], envelopes, 1, i);
    return {.node = node.name(), .output = isColour ? "Color" : "Vector"};
}

void NetworkWriter::connect(const NodeOutput &from, const std::string &toNode, const char *input) {
    network_.connections.push_back({.fromNode = from.node,
                                    .output = from.output,
                                    .toNode = toNode,
                                    .input = input,
                                    .location = surface_.location});
}

} // namespace velm::host

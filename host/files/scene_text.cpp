#include "host/files/scene_text.h"

#include "host/animation/channel.h"
#include "host/base/error.h"
#include "host/state/load_state.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <utility>

namespace velm::host {

namespace {

std::string_view trimmed(std::string_view line) {
    const auto first = line.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    return line.substr(first, line.find_last_not_of(" \t\r") - first + 1);
}

// Each item of a scene starts with a line that loads or adds it.
bool startsItem(std::string_view line) { return line.starts_with("Load") || line.starts_with("Add"); }

} // namespace

SceneText::SceneText(std::string_view bytes, std::string name) : name_(std::move(name)), bytes_(bytes) {
    readHead();
    readBlocks();
}

SceneText::SceneText(std::span<const std::byte> bytes, std::string name)
    : SceneText(std::string_view(reinterpret_cast<const char *>(bytes.data()), bytes.size()), std::move(name)) {}

void SceneText::fail(std::size_t line, const std::string &what) const {
    throw InputError(fmt::format("{}:{}: {}", name_, line, what));
}

// Gives the line at the offset `at`, without its end, and moves `at` past it. False at the end of the file.
bool SceneText::nextLine(std::size_t &at, std::string_view &line) const {
    if (at >= bytes_.size()) return false;
    const std::size_t end = std::min(bytes_.find('\n', at), bytes_.size());
    line = std::string_view(bytes_).substr(at, end - at);
    at = std::min(end + 1, bytes_.size());
    return true;
}

void SceneText::readHead() {
    std::string_view line;
    if (!nextLine(bodyAt_, line) || trimmed(line) != "LWSC")
        fail(1, "this is no scene file: its first line is not LWSC");
    carriageReturns_ = line.ends_with('\r');
    if (!nextLine(bodyAt_, line)) fail(2, "the version is missing");
    const std::string_view text = trimmed(line);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), version_);
    if (error != std::errc() || end != text.data() + text.size()) fail(2, "expected the version, a whole number");
}

void SceneText::readBlocks() {
    std::size_t at = bodyAt_, depth = 0;
    std::string_view line, before, owner;
    for (std::size_t number = 3, start = at; nextLine(at, line); ++number, start = at) {
        const std::string_view text = trimmed(line);
        if (text.starts_with('{')) {
            if (depth++ == 0)
                blocks_.push_back({.token = std::string(trimmed(text.substr(1))),
                                   .before = std::string(before),
                                   .owner = std::string(owner),
                                   .at = start,
                                   .size = 0,
                                   .line = number});
        } else if (text.starts_with('}')) {
            if (depth == 0) fail(number, "a \"}\" closes nothing");
            if (--depth == 0) blocks_.back().size = at - blocks_.back().at;
        } else if (depth == 0 && startsItem(text)) {
            owner = text;
        }
        if (depth == 0) before = text;
    }
    if (depth > 0) fail(blocks_.back().line, fmt::format("the block {} is not closed", blocks_.back().token));
}

std::vector<std::size_t> SceneText::find(std::string_view token) const {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < blocks_.size(); ++i)
        if (blocks_[i].token == token) found.push_back(i);
    return found;
}

void SceneText::setBlock(std::size_t block, std::string_view text) {
    std::string &own = set_[block];
    own.clear();
    for (const char character : text) {
        if (character == '\n' && carriageReturns_) own += '\r';
        own += character;
    }
    // The last line of the file may have had no line end.
    if (!this->text(blocks_[block]).ends_with('\n')) own.resize(own.find_last_not_of("\r\n") + 1);
}

std::string SceneText::write() const {
    std::string result;
    std::size_t copied = 0;
    for (const auto &[index, text] : set_) {
        const SceneBlock &block = blocks_[index];
        result.append(bytes_, copied, block.at - copied);
        result += text;
        copied = block.at + block.size;
    }
    result.append(bytes_, copied);
    return result;
}

std::unique_ptr<HostEnvelope> readEnvelope(const SceneText &scene, const SceneBlock &block) {
    StateReader reader(kStateText, scene.text(block), scene.name(), block.line - 1);
    auto envelope = std::make_unique<HostEnvelope>();
    const HostError error = loadEnvelope(*envelope, reader.state());
    if (reader.failed()) throw InputError(reader.error());
    if (error) throw InputError(fmt::format("{}:{}: {}", scene.name(), block.line, error));
    return envelope;
}

} // namespace velm::host

#include "host/help/help.h"

#include "host/base/names.h"
#include "host/help/help_files.h"

#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

namespace velm::host {

namespace {

using nlohmann::json;

std::runtime_error error(const std::string &file, const std::string &message) {
    return std::runtime_error(fmt::format("{}: {}", file, message));
}

// The parsed text. A key that occurs twice in an object is an error, since one of its values would be lost.
json parse(const std::string &file, std::string_view text) {
    std::vector<std::set<std::string>> openObjects;
    const auto checkKeys = [&](int, json::parse_event_t event, const json &parsed) {
        if (event == json::parse_event_t::object_start) openObjects.emplace_back();
        if (event == json::parse_event_t::object_end) openObjects.pop_back();
        if (event == json::parse_event_t::key && !openObjects.back().insert(parsed.get<std::string>()).second)
            throw error(file, fmt::format("{} occurs twice", inQuotes(parsed.get<std::string>())));
        return true;
    };
    try {
        return json::parse(text, checkKeys);
    } catch (const json::exception &problem) {
        throw error(file, problem.what());
    }
}

// `what` names the value in messages.
std::string readText(const std::string &file, const std::string &what, const json &value) {
    if (!value.is_string() || value.get<std::string>().empty()) throw error(file, what + " is not a text");
    return value.get<std::string>();
}

HelpSentences readSentences(const std::string &file, const std::string &key, const json &value) {
    if (!value.is_object()) throw error(file, inQuotes(key) + " is not an object");
    HelpSentences sentences;
    for (const auto &[label, sentence] : value.items())
        sentences.emplace(label, readText(file, fmt::format("{}: {}", inQuotes(key), inQuotes(label)), sentence));
    return sentences;
}

// "velm_exponential_decay_color.json" for "Velm Exponential Decay (Color)".
std::string fileName(const std::string &server) {
    std::string name;
    for (const char c : server) {
        const bool isUpper = c >= 'A' && c <= 'Z';
        if (isUpper || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
            name += static_cast<char>(isUpper ? c - 'A' + 'a' : c);
        else if (!name.empty() && name.back() != '_')
            name += '_';
    }
    if (!name.empty() && name.back() == '_') name.pop_back();
    return name + ".json";
}

std::vector<NodeHelp> readAll() {
    std::vector<NodeHelp> all;
    for (const EmbeddedText &file : helpFiles()) all.push_back(readHelp(std::string(file.name), file.text));
    return all;
}

} // namespace

NodeHelp readHelp(const std::string &file, std::string_view text) {
    const json root = parse(file, text);
    if (!root.is_object()) throw error(file, "the text is not an object");
    NodeHelp help;
    for (const auto &[key, value] : root.items()) {
        if (key == "server")
            help.server = readText(file, inQuotes(key), value);
        else if (key == "summary")
            help.summary = readText(file, inQuotes(key), value);
        else if (key == "settings")
            help.settings = readSentences(file, key, value);
        else if (key == "inputs")
            help.inputs = readSentences(file, key, value);
        else if (key == "outputs")
            help.outputs = readSentences(file, key, value);
        else
            throw error(file, "unknown key " + inQuotes(key));
    }
    if (help.server.empty()) throw error(file, "\"server\" is missing");
    if (help.summary.empty()) throw error(file, "\"summary\" is missing");
    if (file != fileName(help.server))
        throw error(file, fmt::format("help for {} belongs in {}", inQuotes(help.server), fileName(help.server)));
    return help;
}

const std::vector<NodeHelp> &allHelp() {
    static const std::vector<NodeHelp> all = readAll();
    return all;
}

const NodeHelp *findHelp(std::string_view server) {
    const std::vector<NodeHelp> &all = allHelp();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const NodeHelp &help) { return help.server == server; });
    return found == all.end() ? nullptr : &*found;
}

std::string_view findSentence(const HelpSentences &sentences, std::string_view label) {
    const auto found = sentences.find(label);
    return found == sentences.end() ? std::string_view() : std::string_view(found->second);
}

} // namespace velm::host

// Help for nodes: what each of their settings, inputs and outputs does, in one sentence. The plug-in interface has no
// place for such texts, so they belong to the host; docs/nodes/README.md describes the files.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velm::host {

using HelpSentences = std::map<std::string, std::string, std::less<>>; // by label

struct NodeHelp {
    std::string server;     // the server's name: "Velm Sqrt"
    std::string summary;    // what the node computes, in one sentence
    HelpSentences settings; // by the labels that settings go by, "Clamp 2" for the second of two; buttons as well
    HelpSentences inputs, outputs;
};

// The help for a server's nodes; null when there is none, as for other modules' nodes. It lives as long as the program.
// The first call reads the texts; std::runtime_error when one of them is wrong. [any thread]
const NodeHelp *findHelp(std::string_view server);

// The help for all servers, in no particular order. Throws as findHelp does. [any thread]
const std::vector<NodeHelp> &allHelp();

// The sentence for a label; empty when there is none. [any thread]
std::string_view findSentence(const HelpSentences &sentences, std::string_view label);

// Reads the text of one file. Throws std::runtime_error, starting with the file's name, when the text is not JSON of
// the described form or the file is not named after the server. [any thread]
NodeHelp readHelp(const std::string &file, std::string_view text);

} // namespace velm::host

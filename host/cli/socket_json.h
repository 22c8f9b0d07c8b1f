// Inputs and outputs of nodes as JSON.
#pragma once

#include "host/cli/json_output.h"
#include "host/graph/values.h"
#include "host/help/help.h"

namespace velm::host {

// A list with the name and the type of each, and the sentence that describes it, where there is one.
template <class Sockets>
Json jsonOfSockets(const Sockets &sockets, const HelpSentences &sentences = {}) {
    Json all = Json::array();
    for (const auto &socket : sockets) {
        Json one = {{"name", socket->name}, {"type", typeName(socket->type)}};
        if (const auto help = findSentence(sentences, socket->name); !help.empty()) one["help"] = help;
        all.push_back(std::move(one));
    }
    return all;
}

} // namespace velm::host

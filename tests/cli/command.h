// Calling the command line as a person would, and looking at what it says and does.
#pragma once

#include "host/cli/run.h"

#include <sstream>
#include <string>
#include <vector>

namespace velm::host::test {

struct Outcome {
    int status;
    std::string out, err;
};

// Runs "velm" with these words, and with the module of this build unless `ownModule` is false.
inline Outcome velm(std::vector<std::string> words, bool ownModule = true, std::ostream *errors = nullptr) {
    words.insert(words.begin(), "velm");
    if (ownModule) words.insert(words.end(), {"--module", VELM_MODULE_FILE});
    std::vector<const char *> arguments;
    for (const std::string &word : words) arguments.push_back(word.c_str());
    std::ostringstream out, err;
    const int status = run(static_cast<int>(arguments.size()), arguments.data(), out, errors ? *errors : err);
    return {status, out.str(), err.str()};
}

} // namespace velm::host::test

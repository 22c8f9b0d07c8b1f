// Runs command lines of velm within the test's process, and captures what they print.
#pragma once

#include "host/cli/run.h"

#include <sstream>
#include <string>
#include <vector>

namespace velm::host::test {

struct Outcome {
    int status; // the exit status; of a process that a signal ended, its number with a minus sign
    std::string out, err;
};

// Runs "velm" with these words, and with the module of this build unless `ownModule` is false. Standard error goes to
// `errors` instead of the outcome if that is not null.
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

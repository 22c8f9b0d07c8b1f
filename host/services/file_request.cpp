#include "host/services/file_request.h"

#include "host/base/thread_role.h"
#include "host/load/dialogs.h"

#include <cstddef>
#include <cstring>
#include <utility>

namespace velm::host {

namespace {

std::string prepared;

enum { kCancelled = 0, kChosen = 1, kFailed = -1 }; // results of a request

bool fits(const HostFileRequest &request, const std::string &text) {
    return request.bufferLength > 0 && text.size() < static_cast<std::size_t>(request.bufferLength);
}

void put(char *buffer, const std::string &text) {
    if (buffer) std::memcpy(buffer, text.c_str(), text.size() + 1);
}

std::string textOf(const char *text) { return text ? text : ""; }

// The prepared file, which is used up, or the person's choice; empty for none.
std::string chosenFile(const HostFileRequest &request) {
    if (!prepared.empty()) return std::exchange(prepared, {});
    return showDialog(
        [&](Dialogs &dialogs) { return dialogs.chooseFile(textOf(request.title), textOf(request.fileType)); });
}

int request(int version, HostFileRequest *request) {
    assertInterface();
    if (version != kFileRequestVersion) return 1;
    const std::string chosen = chosenFile(*request);
    request->result = kCancelled;
    if (chosen.empty()) return 0;
    const std::size_t slash = chosen.rfind('/');
    const std::size_t base = slash == std::string::npos ? 0 : slash + 1;
    if (!fits(*request, chosen)) {
        request->result = kFailed;
        return 0;
    }
    put(request->path, chosen.substr(0, base));
    put(request->baseName, chosen.substr(base));
    put(request->fullName, chosen);
    if (request->pick) request->pick(request);
    request->result = kChosen;
    return 0;
}

} // namespace

HostFileRequestFunc *fileRequest() { return request; }

void prepareFileChoice(std::string path) { prepared = std::move(path); }

} // namespace velm::host

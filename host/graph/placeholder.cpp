#include "host/graph/placeholder.h"

#include "host/graph/node.h"
#include "host/state/load_state.h"
#include "host/state/save_state.h"

#include <new>
#include <utility>

namespace velm::host {

namespace {

// The node's data, as they were read.
struct SavedData {
    int mode = kStateBinary; // or kStateText
    std::string data;
};

SavedData &self(void *instance) { return *static_cast<SavedData *>(instance); }

void *create(void *, void *, const char **error) {
    auto *saved = new (std::nothrow) SavedData;
    if (!saved) *error = "there is no memory for it";
    return saved;
}

void destroy(void *instance) { delete &self(instance); }

HostError copy(void *to, void *from) {
    self(to) = self(from);
    return nullptr;
}

HostError load(void *instance, const HostLoadState *state) {
    self(instance) = {.mode = state->mode, .data = unreadContents(*state)};
    return nullptr;
}

HostError save(void *instance, const HostSaveState *state) {
    const SavedData &saved = self(instance);
    if (saved.data.empty()) return nullptr;
    if (saved.mode != state->mode)
        return "its server is missing, and without it text cannot be converted to binary data, nor binary data to text";
    if (saved.mode == kStateText)
        writeLines(*state, saved.data);
    else
        state->write(state->data, saved.data.data(), static_cast<int>(saved.data.size()));
    return nullptr;
}

void evaluate(void *, ShadingSample *, HostOutput *, HostNodeValue *value) {
    if (value->askingType == kConnectColour || value->askingType == kConnectMaterial)
        convertValue(kConnectColour, kMagenta.data(), value->askingType, value->target);
}

int activate(int version, HostLookup *, void *local, void *) {
    if (version != kNodeHandlerVersion) return kActivateBadVersion;
    auto *handler = static_cast<HostNodeHandler *>(local);
    handler->instance->create = create;
    handler->instance->destroy = destroy;
    handler->instance->copy = copy;
    handler->instance->load = load;
    handler->instance->save = save;
    handler->evaluate = evaluate;
    return kActivateOk;
}

} // namespace

Placeholder::Placeholder(std::string server, std::string displayName)
    : server_(std::move(server)),
      displayName_(std::move(displayName)), tags_{{{.text = displayName_.c_str(), .code = kTagUserName},
                                                   {.text = nullptr, .code = 0}}},
      record_{
          .className = HOST_CLASS_NODE_HANDLER, .name = server_.c_str(), .activate = activate, .tags = tags_.data()},
      class_(record_, nullptr, "a module that is not loaded") {}

} // namespace velm::host

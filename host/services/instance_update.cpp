#include "host/services/instance_update.h"

#include <map>
#include <utility>
#include <vector>

namespace velm::host {

namespace {

long updates = 0;
int lastId = 0;

std::map<int, UpdateListener::Call> &calls() {
    static std::map<int, UpdateListener::Call> all;
    return all;
}

void update(const char *className, void *instance) noexcept {
    ++updates;
    const std::string name = className != nullptr ? className : "";
    std::vector<int> ids;
    for (const auto &[id, call] : calls()) ids.push_back(id);
    for (const int id : ids) {
        const auto found = calls().find(id);
        if (found == calls().end()) continue; // gone meanwhile
        const UpdateListener::Call call = found->second;
        call(name, instance);
    }
}

} // namespace

HostInstanceUpdate *instanceUpdate() { return update; }

long updateCount() { return updates; }

UpdateListener::UpdateListener(Call call) : id_(++lastId) { calls().emplace(id_, std::move(call)); }

UpdateListener::~UpdateListener() { calls().erase(id_); }

} // namespace velm::host

#include "tests/share/sharing_model.h"

#include <algorithm>

namespace velm::plugin {

int SharingModel::List::indexOf(int serial) const {
    const auto index = std::find(entries.begin(), entries.begin() + count, serial);
    return index == entries.begin() + count ? -1 : static_cast<int>(index - entries.begin());
}

bool SharingModel::List::add(int serial) {
    if (indexOf(serial) >= 0 || count == static_cast<int>(entries.size())) return false;
    entries.at(static_cast<size_t>(count++)) = serial;
    return true;
}

// The entries behind it move up, and the last one becomes empty. Removing the last entry lowers the count by one, any
// other by two.
void SharingModel::List::remove(int serial) {
    const int index = indexOf(serial);
    if (index < 0) return;
    std::move(entries.begin() + index + 1, entries.begin() + count, entries.begin() + index);
    entries.at(static_cast<size_t>(count - 1)) = kNobody;
    count -= index == count - 1 ? 1 : 2;
}

void SharingModel::list(int serial) {
    if (!storeList_.add(serial)) return;
    ModelStore &store = at(stores, serial);
    if (store.id == -1) store.id = lastID_ + 1;
    lastID_ = std::max(lastID_, store.id);
    for (int index = 0; index < getList_.count; ++index) {
        ModelGet &get = at(gets, getList_.entries.at(static_cast<size_t>(index)));
        if (get.alive && get.storeID == store.id) get.slot = storeList_.count;
    }
}

void SharingModel::createStore(const std::string &name) {
    stores.push_back({.id = -1, .name = name});
    list(static_cast<int>(stores.size()) - 1);
}

void SharingModel::createGet() {
    gets.emplace_back();
    getList_.add(static_cast<int>(gets.size()) - 1);
}

void SharingModel::copyStore(int to, int from) {
    at(stores, to).name = at(stores, from).name;
    storeList_.remove(to);
}

void SharingModel::copyGet(int to, int from) {
    at(gets, to).slot = at(gets, from).slot;
    at(gets, to).storeID = at(gets, from).storeID;
    getList_.remove(to);
}

void SharingModel::loadStore(int store, int id, const std::string &name) {
    at(stores, store).id = id;
    at(stores, store).name = name;
    list(store);
}

void SharingModel::loadGet(int get, int slot, int storeID) {
    at(gets, get).slot = slot;
    at(gets, get).storeID = storeID;
}

void SharingModel::startRender(int serial) {
    ModelGet &get = at(gets, serial);
    get.store = kNobody;
    for (int index = storeList_.count - 1; index >= 0; --index) { // the first one counts
        const int store = storeList_.entries.at(static_cast<size_t>(index));
        if (at(stores, store).id == get.storeID) get.store = store;
    }
}

void SharingModel::destroyStore(int store) {
    storeList_.remove(store);
    at(stores, store).alive = false;
    for (ModelGet &get : gets)
        if (get.store == store) get.store = kNobody;
}

void SharingModel::destroyGet(int get) { at(gets, get).alive = false; } // its index in the list stays taken

void SharingModel::choose(int serial, int slot) {
    ModelGet &get = at(gets, serial);
    get.slot = slot;
    const bool counted = slot >= 1 && slot <= storeList_.count;
    get.storeID = counted ? at(stores, storeList_.entries.at(static_cast<size_t>(slot) - 1)).id : 0;
}

// Up to the first empty entry, regardless of the count.
std::vector<std::string> SharingModel::popup() const {
    std::vector<std::string> items = {"(none)"};
    for (int index = 0; index < 64 && storeList_.entries.at(static_cast<size_t>(index)) != kNobody; ++index) {
        const int store = storeList_.entries.at(static_cast<size_t>(index));
        items.push_back(index < storeList_.count ? stores.at(static_cast<size_t>(store)).name : "(error)");
    }
    return items;
}

} // namespace velm::plugin

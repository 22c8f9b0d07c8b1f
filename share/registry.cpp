#include "share/registry.h"

#include <cstdlib>
#include <cstring>

namespace velm::plugin {

static ShareRegistry *shareInst;

namespace {

// The position of the first entry for which `matches` is true, or -1.
template <class Entry, class Matches>
int findEntry(Entry *const (&list)[kShareCapacity], int count, Matches matches) {
    for (int i = 0; i < count; ++i)
        if (list[i] && matches(*list[i])) return i;
    return -1;
}

template <class Entry>
int positionOf(Entry *const (&list)[kShareCapacity], int count, const Entry *wanted) {
    return findEntry(list, count, [wanted](const Entry &entry) { return &entry == wanted; });
}

// Compacts a list, with two quirks that saved popup indices depend on: a gap that is moved to the end is counted again
// when the loop reaches it, and the entry that moves into a gap is not checked for being a gap itself.
template <class Entry>
int compact(Entry *(&list)[kShareCapacity], int &count) {
    const int before = count;
    int removed = 0;
    for (int i = 0; i < before; ++i) {
        if (list[i]) continue;
        for (int j = i; j < before - 1; ++j) list[j] = list[j + 1];
        list[before - 1] = nullptr;
        ++removed;
    }
    count = before - removed;
    return count;
}

// Assigns an id to a store that has none. A loaded id raises the counter.
void assignId(ShareRegistry &registry, StoreMaterial &store) {
    if (store.id == kUnassignedStore) store.id = registry.lastID + 1;
    if (store.id > registry.lastID) registry.lastID = store.id;
}

template <class Entry>
int removeEntry(Entry *(&list)[kShareCapacity], int &count, const Entry *entry) {
    const int position = entry ? positionOf(list, count, entry) : -1;
    if (position >= 0) list[position] = nullptr;
    return compact(list, count);
}

} // namespace

ShareRegistry *getShareInst() {
    if (!shareInst) shareInst = static_cast<ShareRegistry *>(std::calloc(1, sizeof(ShareRegistry)));
    return shareInst;
}

void addStoreNodeForced(StoreMaterial *store) {
    ShareRegistry *registry = getShareInst();
    if (!store || !registry) return;
    if (positionOf(registry->storeNodes, registry->storeNodeCount, store) >= 0) return;
    if (registry->storeNodeCount >= kShareCapacity) return;
    registry->storeNodes[registry->storeNodeCount++] = store;
    assignId(*registry, *store);
    notifyGetNodes(store->id, registry->storeNodeCount);
}

int addStoreNode(const HostNodeFuncs *nodeFunc, StoreMaterial *store) {
    ShareRegistry *registry = getShareInst();
    if (!store || !registry || !nodeFunc) return registry ? registry->storeNodeCount : 0;
    if (containsStoreNode(nodeFunc, store) >= 0 || registry->storeNodeCount >= kShareCapacity)
        return registry->storeNodeCount;
    registry->storeNodes[registry->storeNodeCount++] = store;
    assignId(*registry, *store);
    return store->id;
}

void addGetNodeForced(GetMaterial *get) {
    ShareRegistry *registry = getShareInst();
    if (!get || !registry) return;
    if (positionOf(registry->getNodes, registry->getNodeCount, get) >= 0) return;
    if (registry->getNodeCount >= kShareCapacity) return;
    registry->getNodes[registry->getNodeCount++] = get;
}

int removeStoreNode(StoreMaterial *store) {
    ShareRegistry *registry = getShareInst();
    return registry ? removeEntry(registry->storeNodes, registry->storeNodeCount, store) : 0;
}

int removeGetNode(GetMaterial *get) {
    ShareRegistry *registry = getShareInst();
    return registry ? removeEntry(registry->getNodes, registry->getNodeCount, get) : 0;
}

int removeGarbageStoreNodes() {
    ShareRegistry *registry = getShareInst();
    return registry ? compact(registry->storeNodes, registry->storeNodeCount) : 0;
}

int removeGarbageGetNodes() {
    ShareRegistry *registry = getShareInst();
    return registry ? compact(registry->getNodes, registry->getNodeCount) : 0;
}

void holdStore(GetMaterial *get, StoreMaterial *store) {
    if (get->store) {
        GetMaterial **link = &get->store->firstHolder;
        while (*link != get) link = &(*link)->nextHolder;
        *link = get->nextHolder;
    }
    get->store = store;
    get->nextHolder = store ? store->firstHolder : nullptr;
    if (store) store->firstHolder = get;
}

void releaseHolders(StoreMaterial *store) {
    while (store->firstHolder) holdStore(store->firstHolder, nullptr);
}

void forgetGetNode(const GetMaterial *get) {
    static GetMaterial nobody; // the placeholder: its slot is written and never read
    ShareRegistry *registry = getShareInst();
    if (!registry) return;
    for (GetMaterial *&entry : registry->getNodes)
        if (entry == get) entry = &nobody;
}

void notifyGetNodes(int storeID, int popupIndex) {
    ShareRegistry *registry = getShareInst();
    if (!registry) return;
    for (int i = 0; i < registry->getNodeCount; ++i)
        if (GetMaterial *get = registry->getNodes[i]; get && get->storeID == storeID) get->slot = popupIndex;
}

// Counts the entries instead of using the count: an entry that compacting has left beyond the count still has an entry
// in the popup.
int getStoreNodeCount() {
    ShareRegistry *registry = getShareInst();
    if (!registry) return 1;
    removeGarbageStoreNodes();
    int listed = 0;
    while (listed < kShareCapacity && registry->storeNodes[listed]) ++listed;
    return listed + 1;
}

const char *getStoreNodeName(void *, int popupIndex) {
    if (popupIndex == 0) return "(none)";
    const StoreMaterial *store = getStoreNode(popupIndex - 1);
    return store ? store->name : "(error)";
}

StoreMaterial *getStoreNode(int position) {
    ShareRegistry *registry = getShareInst();
    if (!registry || position < 0 || position >= registry->storeNodeCount) return nullptr;
    return registry->storeNodes[position];
}

StoreMaterial *getStoreNodeByID(int id) { return getStoreNode(getStoreNodeIndexByID(id)); }

int containsStoreNode(const HostNodeFuncs *nodeFunc, const StoreMaterial *store) {
    ShareRegistry *registry = getShareInst();
    if (!registry || !nodeFunc || !store) return -1;
    return findEntry(registry->storeNodes, registry->storeNodeCount, [&](const StoreMaterial &listed) {
        return std::strcmp(nodeFunc->nodeName(listed.node), nodeFunc->nodeName(store->node)) == 0;
    });
}

int getStoreNodeIndex(const StoreMaterial *store) {
    ShareRegistry *registry = getShareInst();
    return registry && store ? positionOf(registry->storeNodes, registry->storeNodeCount, store) : -1;
}

int getGetNodeIndex(const GetMaterial *get) {
    ShareRegistry *registry = getShareInst();
    return registry && get ? positionOf(registry->getNodes, registry->getNodeCount, get) : -1;
}

int getStoreNodeIndexByID(int id) {
    ShareRegistry *registry = getShareInst();
    if (!registry) return -1;
    return findEntry(registry->storeNodes, registry->storeNodeCount,
                     [id](const StoreMaterial &store) { return store.id == id; });
}

} // namespace velm::plugin

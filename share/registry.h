// The table through which a Get Material node ("get") finds a Store Material node ("store"), which may belong to
// another surface. All stores and gets register themselves at creation. Gets refer to stores by numbers that the
// registry assigns, so that renaming a store breaks no link.
//
// The registry points to instances and owns none of them. It is created when first needed and lives as long as the
// module. A position counts from 0 in a list. A popup index is a position plus one; 0 is "(none)".
//
// Nodes look up their stores when rendering starts, so that no function here is called while rendering. If the registry
// cannot be allocated, each operation behaves as on an empty one and records nothing. [interface thread; not while
// rendering]
#pragma once

#include "module/host.h"

namespace velm::plugin {

constexpr int kShareCapacity = 64;   // of each list; a further registration is silently dropped
constexpr int kStoreNameSize = 260;  // bytes of a name, with its terminator
constexpr int kUnassignedStore = -1; // the id of a store to which none has been assigned

struct GetMaterial;

// An instance of Store Material.
struct StoreMaterial {
    int id;
    char name[kStoreNameSize];
    HostPanel *panel;
    HostNode *node;
    HostInput *colourInput, *scalarInput, *vectorInput, *integerInput;
    HostOutput *colourOutput, *scalarOutput, *vectorOutput, *integerOutput;
    GetMaterial *firstHolder; // the first of the gets that hold this store for a render, linked by nextHolder
};

// An instance of Get Material.
struct GetMaterial {
    int slot;             // the chosen popup index
    int storeID;          // the id of the chosen store; 0 for none
    StoreMaterial *store; // the store of that id when rendering started; null if there was none
    HostPanel *panel;
    HostNode *node;
    HostOutput *colourOutput, *scalarOutput, *vectorOutput, *integerOutput;
    GetMaterial *nextHolder;
};

struct ShareRegistry {
    GetMaterial *getNodes[kShareCapacity];
    StoreMaterial *storeNodes[kShareCapacity];
    int getNodeCount;
    int storeNodeCount;
    int lastID; // the highest id assigned or loaded; the first assigned one is 1
};

// The registry, created if necessary. Null if it cannot be allocated.
ShareRegistry *getShareInst();

// Lists a store, unless it is listed already (by its address) or the list is full. Assigns an id if it has none, and
// sets the slots of the gets that refer to this id.
void addStoreNodeForced(StoreMaterial *store);
// The same, except that a store is refused if its node has the name of a listed one, and that no slots are set. Returns
// the store's id, or the number of stores if none was added.
int addStoreNode(const HostNodeFuncs *nodeFunc, StoreMaterial *store);
void addGetNodeForced(GetMaterial *get);

// Removes an instance from its list and compacts the list. Returns the new count.
int removeStoreNode(StoreMaterial *store);
int removeGetNode(GetMaterial *get);

// Closes the gaps of a list and returns the new count. It works as it always has, since saved popup indices depend on
// it: moving entries into a gap leaves a gap at the end, which is counted again, so that removing any entry except the
// last lowers the count by two.
int removeGarbageStoreNodes();
int removeGarbageGetNodes();

// A get holds its store from the start of a render, so that evaluation follows the pointer without a lookup. Holding
// null releases the store. A store that is about to be freed must be released by all its holders, listed or not, so
// that no evaluation reads a freed store.
void holdStore(GetMaterial *get, StoreMaterial *store);
void releaseHolders(StoreMaterial *store);

// Replaces a get that is about to be freed by a placeholder that may be written to. Its entry is not removed, since the
// count determines which gets are notified of a store and when the list is full.
void forgetGetNode(const GetMaterial *get);

// Sets the slot of every get that refers to the store of an id.
void notifyGetNodes(int storeID, int popupIndex);

// The popup of stores: the number of its entries, and their texts: "(none)", the names, and "(error)" beyond the count.
// Counting compacts the list first.
int getStoreNodeCount();
const char *getStoreNodeName(void *userData, int popupIndex);

// Lookups. Null or -1 if there is none.
StoreMaterial *getStoreNode(int position);
StoreMaterial *getStoreNodeByID(int id);
int containsStoreNode(const HostNodeFuncs *nodeFunc, const StoreMaterial *store); // by the name of its node
int getStoreNodeIndex(const StoreMaterial *store);
int getGetNodeIndex(const GetMaterial *get);
int getStoreNodeIndexByID(int id);

} // namespace velm::plugin

// The one table through which a Get Material node finds a Store Material node, perhaps of another surface. Every store
// and every get registers itself at creation; gets refer to stores by small numbers that the registry hands out, so
// that renaming a store breaks no link.
//
// The registry points into instances and owns none of them. It is made when first needed, and lives as long as the
// module. A *position* counts from 0 in a list; a *popup index* is a position plus one, 0 being "(none)".
//
// For the interface thread, never while rendering: nodes resolve their stores when rendering starts. When the registry
// itself cannot be allocated, every operation behaves as on an empty one and records nothing.
#pragma once

#include "module/host.h"

namespace velm::plugin {

constexpr int kShareCapacity = 64;   // of each list; a further registration is dropped without a word
constexpr int kStoreNameSize = 260;  // bytes of a name's field
constexpr int kUnassignedStore = -1; // the id of a store that has not been given one

struct GetMaterial;

// An instance of Store Material.
struct StoreMaterial {
    int id;
    char name[kStoreNameSize];
    HostPanel *panel;
    HostNode *node;
    HostInput *colourInput, *scalarInput, *vectorInput, *integerInput;
    HostOutput *colourOutput, *scalarOutput, *vectorOutput, *integerOutput;
    GetMaterial *firstHolder; // the gets that hold this store for a render, linked by nextHolder
};

// An instance of Get Material.
struct GetMaterial {
    int slot;             // the popup index that was chosen
    int storeID;          // the id of the store that is meant; 0: none
    StoreMaterial *store; // what that was when rendering started
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
    int lastID; // the highest id handed out or seen; the first one handed out is 1
};

// The registry, made if need be; null when it cannot be allocated.
ShareRegistry *getShareInst();

// Lists a store unless it is listed already (by its address), or the list is full; gives it an id if it has none, and
// points the gets that wait for that id at it.
void addStoreNodeForced(StoreMaterial *store);
// The same, but declining a store whose node is named like a listed one's, and pointing no get. The store's id, or the
// number of stores when none was added.
int addStoreNode(const HostNodeFuncs *nodeFunc, StoreMaterial *store);
void addGetNodeForced(GetMaterial *get);

// Takes an instance off its list, and then compacts the list; the new count.
int removeStoreNode(StoreMaterial *store);
int removeGetNode(GetMaterial *get);

// Closes the gaps of a list. Kept as it has always been: the entry that a gap swallows leaves a gap at the end that is
// counted once more, so that removing any entry but the last shortens the count by two. The new count.
int removeGarbageStoreNodes();
int removeGarbageGetNodes();

// What a get holds from the start of a render: evaluation reaches straight through it. Holding null lets go. A store
// that is about to be freed is let go of by all that hold it, listed or not, so that evaluation never reaches a freed
// one.
void holdStore(GetMaterial *get, StoreMaterial *store);
void releaseHolders(StoreMaterial *store);

// A get that is about to be freed keeps its place in the list, since by the count goes which gets are told of a store
// and when the list is full; but what stands in its place from now on is nobody's instance, and may be written to.
void forgetGetNode(const GetMaterial *get);

// Sets the slot of every get that refers to a store.
void notifyGetNodes(int storeID, int popupIndex);

// The popup of stores: how many items, and their texts: "(none)", the names, and "(error)" for what is beyond the
// count. Counting compacts the list first.
int getStoreNodeCount();
const char *getStoreNodeName(void *userData, int popupIndex);

// Look-ups. Null, or -1, when there is none.
StoreMaterial *getStoreNode(int position);
StoreMaterial *getStoreNodeByID(int id);
int containsStoreNode(const HostNodeFuncs *nodeFunc, const StoreMaterial *store); // by the name of its node
int getStoreNodeIndex(const StoreMaterial *store);
int getGetNodeIndex(const GetMaterial *get);
int getStoreNodeIndexByID(int id);

} // namespace velm::plugin

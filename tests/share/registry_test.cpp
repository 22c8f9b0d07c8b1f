// All operations of the registry, on instances without nodes. The tests of the nodes and the random walk cover the
// rest.
#include "tests/module/allocation.h"
#include "tests/share/registry_fixture.h"

#include <cstdlib>

namespace velm::plugin {
namespace {

// ---- Adding ----

TEST_F(Registry, IsMadeOnceAndEmpty) {
    ASSERT_NE(getShareInst(), nullptr);
    EXPECT_EQ(getShareInst(), getShareInst());
    EXPECT_EQ(getStoreNodeCount(), 1);
}

TEST_F(Registry, NumbersStoresFromOneWhateverTheirNames) {
    EXPECT_EQ(listed("same")->id, 1);
    EXPECT_EQ(listed("same")->id, 2);
    EXPECT_EQ(listed("other")->id, 3);
    EXPECT_EQ(registry().lastID, 3);
    EXPECT_EQ(popup(), (Lines{"(none)", "same", "same", "other"}));
}

TEST_F(Registry, DoesNotHandANumberOutTwice) {
    StoreMaterial *first = listed();
    removeStoreNode(first);
    EXPECT_EQ(listed()->id, 2);
    first->id = kUnassignedStore;
    addStoreNodeForced(first);
    EXPECT_EQ(first->id, 3);
}

TEST_F(Registry, ALoadedNumberPushesTheCounterUpAndNeverDown) {
    EXPECT_EQ(listed("a", 40)->id, 40);
    EXPECT_EQ(registry().lastID, 40);
    EXPECT_EQ(listed("b", 7)->id, 7);
    EXPECT_EQ(listed("c", 0)->id, 0);
    EXPECT_EQ(listed("d", -2)->id, -2);
    EXPECT_EQ(registry().lastID, 40);
    EXPECT_EQ(listed("e")->id, 41);
}

TEST_F(Registry, KnowsAnInstanceByItsAddress) {
    StoreMaterial *a = listed();
    listed();
    const GetMaterial *waiting = listedGet(1);
    a->id = 50; // as loading does
    addStoreNodeForced(a);
    EXPECT_EQ(registry().storeNodeCount, 2);
    EXPECT_EQ(registry().lastID, 2) << "the number of one that is listed already is not looked at";
    EXPECT_EQ(a->id, 50);
    EXPECT_EQ(waiting->slot, -7) << "nobody is notified";
    GetMaterial *get = listedGet();
    addGetNodeForced(get);
    EXPECT_EQ(registry().getNodeCount, 2);
}

TEST_F(Registry, PointsWaitingGetsAtANewStore) {
    GetMaterial *waiting = listedGet(2), *alsoWaiting = listedGet(2), *other = listedGet(9), *none = listedGet(0);
    GetMaterial *unlisted = get(2);
    listed();
    EXPECT_EQ(waiting->slot, -7);
    listed();
    EXPECT_EQ(waiting->slot, 2) << "the popup index of the store";
    EXPECT_EQ(alsoWaiting->slot, 2);
    EXPECT_EQ(other->slot, -7);
    EXPECT_EQ(none->slot, -7);
    EXPECT_EQ(unlisted->slot, -7);
    EXPECT_EQ(waiting->storeID, 2);
    listed("loaded", 9);
    EXPECT_EQ(other->slot, 3);
    listed("odd", 0);
    EXPECT_EQ(none->slot, 4) << "a number like any other, where a file brings it";
}

TEST_F(Registry, IgnoresNothing) {
    addStoreNodeForced(nullptr);
    addGetNodeForced(nullptr);
    EXPECT_EQ(registry().storeNodeCount, 0);
    EXPECT_EQ(registry().getNodeCount, 0);
    EXPECT_EQ(addStoreNode(nodeFuncs, nullptr), 0);
    StoreMaterial *unlisted = store();
    addStoreNode(nullptr, unlisted);
    EXPECT_EQ(registry().storeNodeCount, 0);
    EXPECT_EQ(unlisted->id, kUnassignedStore);
}

TEST_F(Registry, DropsThe65thStore) {
    for (int i = 1; i <= 64; ++i) EXPECT_EQ(listed()->id, i);
    const GetMaterial *waiting = listedGet(65);
    StoreMaterial *late = listed("late");
    EXPECT_EQ(late->id, kUnassignedStore);
    EXPECT_EQ(registry().lastID, 64);
    EXPECT_EQ(registry().storeNodeCount, 64);
    EXPECT_EQ(waiting->slot, -7);
    EXPECT_EQ(getStoreNodeCount(), 65) << "the scan ends with the list";
    EXPECT_EQ(addStoreNode(nodeFuncs, late), 64);
    EXPECT_EQ(late->id, kUnassignedStore);
    removeStoreNode(&stores.back()); // it is not listed
    EXPECT_EQ(registry().storeNodeCount, 64);
    removeStoreNode(&stores[63]);
    addStoreNodeForced(late);
    EXPECT_EQ(late->id, 65);
    EXPECT_EQ(waiting->slot, 64);
}

TEST_F(Registry, DropsThe65thGet) {
    for (int i = 0; i < 65; ++i) listedGet(1);
    EXPECT_EQ(registry().getNodeCount, 64);
    listed();
    EXPECT_EQ(gets[63].slot, 1);
    EXPECT_EQ(gets[64].slot, -7);
}

// ---- Adding by name ----

TEST_F(Registry, ByNameDeclinesASecondNodeOfAName) {
    StoreMaterial *first = store("Store (1)"), *same = store("Store (1)"), *other = store("store (1)");
    GetMaterial *waiting = listedGet(1);
    EXPECT_EQ(addStoreNode(nodeFuncs, first), 1);
    EXPECT_EQ(waiting->slot, -7) << "this way of adding tells nobody";
    addStoreNode(nodeFuncs, same);
    EXPECT_EQ(same->id, kUnassignedStore);
    EXPECT_EQ(countedStores(), (Stores{first}));
    EXPECT_EQ(addStoreNode(nodeFuncs, other), 2) << "names differ by case";
    EXPECT_EQ(countedStores(), (Stores{first, other}));
    StoreMaterial *loaded = store("Loaded", 30), *older = store("Older", 12);
    EXPECT_EQ(addStoreNode(nodeFuncs, loaded), 30);
    EXPECT_EQ(addStoreNode(nodeFuncs, older), 12);
    EXPECT_EQ(registry().lastID, 30);
}

TEST_F(Registry, ByNameGoesByTheNodeAndNotByTheStore) {
    StoreMaterial *first = store("node a"), *second = store("node b");
    std::strcpy(second->name, first->name);
    addStoreNode(nodeFuncs, first);
    EXPECT_EQ(containsStoreNode(nodeFuncs, second), -1);
    EXPECT_EQ(addStoreNode(nodeFuncs, second), 2);
    EXPECT_EQ(containsStoreNode(nodeFuncs, second), 1);
}

TEST_F(Registry, ContainsAStoreWhenANodeOfItsNameIsListed) {
    StoreMaterial *a = store("a"), *alsoA = store("a");
    EXPECT_EQ(containsStoreNode(nodeFuncs, a), -1) << "an empty list";
    listed("z");
    addStoreNodeForced(a);
    addStoreNodeForced(alsoA);
    EXPECT_EQ(containsStoreNode(nodeFuncs, alsoA), 1) << "the first of them";
    EXPECT_EQ(containsStoreNode(nodeFuncs, store("A")), -1);
    EXPECT_EQ(containsStoreNode(nodeFuncs, nullptr), -1);
    EXPECT_EQ(containsStoreNode(nullptr, a), -1);
}

// ---- Looking up ----

TEST_F(Registry, LooksStoresUp) {
    StoreMaterial *a = listed("a"), *b = listed("b", 1), *unlisted = store("c", 8);
    EXPECT_EQ(getStoreNode(0), a);
    EXPECT_EQ(getStoreNode(1), b);
    EXPECT_EQ(getStoreNode(2), nullptr);
    EXPECT_EQ(getStoreNode(-1), nullptr);
    EXPECT_EQ(getStoreNodeByID(1), a) << "the first of a number";
    EXPECT_EQ(getStoreNodeByID(8), nullptr);
    EXPECT_EQ(getStoreNodeByID(0), nullptr);
    EXPECT_EQ(getStoreNodeIndexByID(1), 0);
    EXPECT_EQ(getStoreNodeIndexByID(8), -1);
    EXPECT_EQ(getStoreNodeIndex(b), 1);
    EXPECT_EQ(getStoreNodeIndex(unlisted), -1);
    EXPECT_EQ(getStoreNodeIndex(nullptr), -1);
    b->id = 6;
    EXPECT_EQ(getStoreNodeByID(6), b) << "numbers are the stores' own";
    EXPECT_EQ(getStoreNodeIndexByID(6), 1);
}

TEST_F(Registry, LooksPastGaps) {
    const StoreMaterial *gone = listed("a"), *b = listed("b");
    registry().storeNodes[0] = nullptr;
    EXPECT_EQ(getStoreNodeByID(b->id), b);
    EXPECT_EQ(getStoreNodeByID(gone->id), nullptr);
    EXPECT_EQ(getStoreNodeIndexByID(b->id), 1);
    EXPECT_EQ(getStoreNodeIndex(b), 1);
    EXPECT_EQ(getStoreNodeIndex(gone), -1);
    EXPECT_EQ(containsStoreNode(nodeFuncs, b), 1);
    EXPECT_EQ(containsStoreNode(nodeFuncs, gone), -1);
    const GetMaterial *gap = listedGet(), *told = listedGet(b->id);
    registry().getNodes[0] = nullptr;
    notifyGetNodes(b->id, 9);
    EXPECT_EQ(told->slot, 9);
    EXPECT_EQ(getGetNodeIndex(told), 1);
    EXPECT_EQ(getGetNodeIndex(gap), -1);
}

TEST_F(Registry, LooksGetsUp) {
    EXPECT_EQ(getGetNodeIndex(get()), -1);
    GetMaterial *a = listedGet(), *b = listedGet();
    EXPECT_EQ(getGetNodeIndex(a), 0);
    EXPECT_EQ(getGetNodeIndex(b), 1);
    EXPECT_EQ(getGetNodeIndex(get()), -1);
    EXPECT_EQ(getGetNodeIndex(nullptr), -1);
}

TEST_F(Registry, NamesItemsByTheStoresOwnText) {
    StoreMaterial *a = listed("before");
    EXPECT_STREQ(getStoreNodeName(nullptr, 0), "(none)");
    EXPECT_EQ(getStoreNodeName(this, 1), a->name) << "the live text";
    std::strcpy(a->name, "after");
    EXPECT_STREQ(getStoreNodeName(nullptr, 1), "after");
    EXPECT_STREQ(getStoreNodeName(nullptr, 2), "(error)");
    EXPECT_STREQ(getStoreNodeName(nullptr, -5), "(error)");
    registry().storeNodes[0] = nullptr;
    EXPECT_STREQ(getStoreNodeName(nullptr, 1), "(error)");
}

TEST_F(Registry, TellsTheGetsOfANumber) {
    const GetMaterial *a = listedGet(4), *b = listedGet(5), *c = listedGet(4);
    notifyGetNodes(4, 11);
    EXPECT_EQ(a->slot, 11);
    EXPECT_EQ(b->slot, -7);
    EXPECT_EQ(c->slot, 11);
}

// ---- Holding ----

TEST_F(Registry, AFreedStoreIsHeldByNobody) {
    StoreMaterial *a = store("a"), *b = store("b"); // listed or not
    GetMaterial *first = get(), *second = get(), *third = get();
    for (GetMaterial *one : {first, second, third}) holdStore(one, a);
    holdStore(second, b);
    EXPECT_EQ(second->store, b);
    holdStore(first, a); // again
    holdStore(third, nullptr);
    EXPECT_EQ(third->store, nullptr);
    releaseHolders(a);
    EXPECT_EQ(first->store, nullptr);
    EXPECT_EQ(second->store, b);
    EXPECT_EQ(a->firstHolder, nullptr);
    holdStore(second, nullptr);
    EXPECT_EQ(b->firstHolder, nullptr);
    releaseHolders(b);
}

TEST_F(Registry, AFreedGetKeepsItsPlaceAndIsNotWrittenTo) {
    GetMaterial *a = listedGet(1), *gone = listedGet(1), *c = listedGet(1);
    forgetGetNode(gone);
    EXPECT_EQ(registry().getNodeCount, 3) << "counts and places go by it";
    EXPECT_EQ(getGetNodeIndex(gone), -1);
    EXPECT_EQ(getGetNodeIndex(c), 2);
    listed();
    EXPECT_EQ(a->slot, 1);
    EXPECT_EQ(gone->slot, -7);
    EXPECT_EQ(c->slot, 1);
    removeGetNode(a); // the last entry is now beyond the count
    forgetGetNode(c);
    for (const GetMaterial *entry : registry().getNodes) EXPECT_NE(entry, c) << "there, too";
}

// ---- Without memory ----

// In a child process, since a registry exists for good once it is created.
void expectNothingWithoutMemory() {
    StoreMaterial store = {};
    GetMaterial get = {};
    store.id = kUnassignedStore;
    const HostNodeFuncs nodeFuncs = {};
    const auto fails = [](auto operation) {
        failNextAllocation();
        return operation();
    };
    EXPECT_EQ(fails([] { return getShareInst(); }), nullptr);
    EXPECT_EQ(fails([] { return getStoreNodeCount(); }), 1);
    EXPECT_STREQ(fails([] { return getStoreNodeName(nullptr, 0); }), "(none)");
    EXPECT_STREQ(fails([] { return getStoreNodeName(nullptr, 1); }), "(error)");
    EXPECT_EQ(fails([] { return getStoreNode(0); }), nullptr);
    EXPECT_EQ(fails([] { return getStoreNodeIndexByID(1); }), -1);
    EXPECT_EQ(fails([&] { return getStoreNodeIndex(&store); }), -1);
    EXPECT_EQ(fails([&] { return getGetNodeIndex(&get); }), -1);
    EXPECT_EQ(fails([&] { return containsStoreNode(&nodeFuncs, &store); }), -1);
    EXPECT_EQ(fails([&] { return addStoreNode(&nodeFuncs, &store); }), 0);
    EXPECT_EQ(fails([] { return removeGarbageStoreNodes(); }), 0);
    EXPECT_EQ(fails([] { return removeGarbageGetNodes(); }), 0);
    fails([&] { return removeStoreNode(&store); });
    fails([&] { return removeGetNode(&get); });
    fails([] { return notifyGetNodes(1, 1), 0; });
    fails([&] { return forgetGetNode(&get), 0; });
    fails([&] { return addGetNodeForced(&get), 0; });
    fails([&] { return addStoreNodeForced(&store), 0; });
    EXPECT_EQ(store.id, kUnassignedStore);

    addStoreNodeForced(&store); // now there is memory
    EXPECT_EQ(store.id, 1);
    EXPECT_EQ(getShareInst()->storeNodeCount, 1);
    EXPECT_EQ(getShareInst()->getNodeCount, 0) << "the get was not recorded";
    std::exit(testing::Test::HasFailure() ? 1 : 0);
}

TEST(RegistryWithoutMemoryDeathTest, RecordsNothing) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // runs in a process in which no test has run before
    EXPECT_EXIT(expectNothingWithoutMemory(), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace velm::plugin

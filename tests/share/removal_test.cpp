// Removing instances from the registry's lists, with the quirk that saved popup indices depend on.
#include "tests/share/registry_fixture.h"

namespace velm::plugin {
namespace {

TEST_F(Registry, RemovingTheLastShortensByOne) {
    StoreMaterial *a = listed("a"), *b = listed("b"), *c = listed("c");
    removeStoreNode(c);
    EXPECT_EQ(countedStores(), (Stores{a, b}));
    EXPECT_EQ(registry().storeNodes[2], nullptr);
    EXPECT_EQ(popup(), (Lines{"(none)", "a", "b"}));
}

TEST_F(Registry, RemovingAnyOtherShortensByTwo) {
    StoreMaterial *a = listed("a"), *b = listed("b"), *c = listed("c");
    removeStoreNode(b);
    EXPECT_EQ(registry().storeNodeCount, 1);
    EXPECT_EQ(registry().storeNodes[0], a);
    EXPECT_EQ(registry().storeNodes[1], c);
    EXPECT_EQ(registry().storeNodes[2], nullptr);
    EXPECT_EQ(popup(), (Lines{"(none)", "a", "(error)"}));
    EXPECT_EQ(getStoreNode(1), nullptr);
    EXPECT_EQ(getStoreNodeByID(c->id), nullptr);
    EXPECT_EQ(getStoreNodeIndex(c), -1);

    StoreMaterial *d = listed("d");
    EXPECT_EQ(countedStores(), (Stores{a, d})) << "the next one takes the place beyond the count";
    EXPECT_EQ(popup(), (Lines{"(none)", "a", "d"}));
    EXPECT_EQ(d->id, 4);
}

TEST_F(Registry, RemovingTheOnlyOneEmptiesThePopup) {
    removeStoreNode(listed());
    EXPECT_EQ(popup(), (Lines{"(none)"}));
    EXPECT_EQ(registry().storeNodeCount, 0);
}

TEST_F(Registry, RemovingTheFirstOfTwoLeavesNoneCounted) {
    StoreMaterial *a = listed("a"), *b = listed("b");
    removeStoreNode(a);
    EXPECT_EQ(registry().storeNodeCount, 0);
    EXPECT_EQ(registry().storeNodes[0], b);
    EXPECT_EQ(popup(), (Lines{"(none)", "(error)"}));
    addStoreNodeForced(b); // it is not counted, and so not listed
    EXPECT_EQ(popup(), (Lines{"(none)", "b"}));
    EXPECT_EQ(b->id, 2);
}

TEST_F(Registry, RemovingWhatIsNotThereChangesNothing) {
    StoreMaterial *a = listed("a"), *b = listed("b");
    removeStoreNode(nullptr);
    removeStoreNode(store());
    EXPECT_EQ(countedStores(), (Stores{a, b}));
    GetMaterial *get1 = listedGet(), *get2 = listedGet();
    removeGetNode(nullptr);
    removeGetNode(get());
    EXPECT_EQ(countedGets(), (Gets{get1, get2}));
}

TEST_F(Registry, RemovesGetsWithTheSameQuirk) {
    GetMaterial *a = listedGet(1), *b = listedGet(1), *c = listedGet(1), *d = listedGet(1);
    removeGetNode(b);
    EXPECT_EQ(countedGets(), (Gets{a, c}));
    EXPECT_EQ(registry().getNodes[2], d);
    listed();
    EXPECT_EQ(c->slot, 1);
    EXPECT_EQ(d->slot, -7) << "beyond the count: not told";
    EXPECT_EQ(b->slot, -7);
    addGetNodeForced(d); // it is not counted, and so not listed
    EXPECT_EQ(countedGets(), (Gets{a, c, d}));
    removeGetNode(d);
    removeGetNode(c);
    EXPECT_EQ(countedGets(), (Gets{a}));
}

// Gaps that no operation leaves, at each index of a list.
TEST_F(Registry, ClosesGapsAsItAlwaysHas) {
    struct Case {
        std::string before; // an entry or a gap for each index
        std::string after;  // the counted entries, a bar, and those beyond the count
    };
    const Case cases[] = {
        {"", "|"},         {"a", "a|"},       {".", "|."},       {"ab.", "ab|."},     {"a.c", "a|c."},
        {".bc", "b|c."},   {"..c", ".|c."},   {"a..", "a|.."},   {"abcd", "abcd|"},   {"a.cd", "ac|d."},
        {".b.d", "|bd.."}, {"a..d", "a.|d."}, {"..cd", ".c|d."}, {".bcde", "bcd|e."},
    };
    for (const Case &one : cases) {
        registry() = {};
        stores.clear();
        gets.clear();
        const int count = static_cast<int>(one.before.size());
        for (int i = 0; i < count; ++i) {
            const bool gap = one.before[static_cast<size_t>(i)] == '.';
            registry().storeNodes[i] = gap ? nullptr : store(one.before.substr(static_cast<size_t>(i), 1));
            registry().getNodes[i] = gap ? nullptr : get(one.before[static_cast<size_t>(i)]);
        }
        registry().storeNodeCount = registry().getNodeCount = count;
        const int storesLeft = removeGarbageStoreNodes(), getsLeft = removeGarbageGetNodes();
        EXPECT_EQ(storesLeft, registry().storeNodeCount);
        EXPECT_EQ(getsLeft, registry().getNodeCount);
        std::string storesAfter, getsAfter;
        for (int i = 0; i <= count; ++i) {
            if (i == storesLeft) storesAfter += '|';
            if (i == getsLeft) getsAfter += '|';
            if (i == count) break;
            storesAfter += registry().storeNodes[i] ? registry().storeNodes[i]->name : ".";
            getsAfter += registry().getNodes[i] ? static_cast<char>(registry().getNodes[i]->storeID) : '.';
        }
        EXPECT_EQ(storesAfter, one.after) << one.before;
        EXPECT_EQ(getsAfter, one.after) << one.before;
    }
}

TEST_F(Registry, CountingItemsClosesGapsFirst) {
    listed("a"), listed("b"), listed("c");
    registry().storeNodes[2] = nullptr;
    EXPECT_EQ(getStoreNodeCount(), 3);
    EXPECT_EQ(registry().storeNodeCount, 2);
}

TEST_F(Registry, LeavesACountBelowOneAlone) {
    registry().storeNodeCount = registry().getNodeCount = -3;
    EXPECT_EQ(removeGarbageStoreNodes(), -3);
    EXPECT_EQ(removeGarbageGetNodes(), -3);
}

} // namespace
} // namespace velm::plugin

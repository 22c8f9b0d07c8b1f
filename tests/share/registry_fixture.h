// A registry in the state in which the module is loaded, and instances to add to it, for tests.
#pragma once

#include "share/registry.h"

#include "tests/module/fake_host.h"

#include <cstring>
#include <gtest/gtest.h>

namespace velm::plugin {

using Stores = std::vector<StoreMaterial *>;
using Gets = std::vector<GetMaterial *>;
using Lines = std::vector<std::string>;

class Registry : public testing::Test {
  protected:
    FakeHost host;
    const HostNodeFuncs *nodeFuncs = static_cast<const HostNodeFuncs *>(FakeHost::lookup(HOST_NODE_FUNCS, 0));
    std::deque<StoreMaterial> stores;
    std::deque<GetMaterial> gets;

    Registry() { registry() = {}; }
    ~Registry() override { registry() = {}; }
    static ShareRegistry &registry() { return *getShareInst(); }

    StoreMaterial *store(const std::string &name = "store", int id = kUnassignedStore) {
        StoreMaterial &made = stores.emplace_back();
        made.id = id;
        std::strcpy(made.name, name.c_str());
        made.node = &host.addNode(name);
        return &made;
    }
    GetMaterial *get(int storeID = 0) {
        GetMaterial &made = gets.emplace_back();
        made.storeID = storeID;
        made.slot = -7; // a value that nothing sets
        return &made;
    }
    StoreMaterial *listed(const std::string &name = "store", int id = kUnassignedStore) {
        StoreMaterial *made = store(name, id);
        addStoreNodeForced(made);
        return made;
    }
    GetMaterial *listedGet(int storeID = 0) {
        GetMaterial *made = get(storeID);
        addGetNodeForced(made);
        return made;
    }
    static Stores countedStores() { return {registry().storeNodes, registry().storeNodes + registry().storeNodeCount}; }
    static Gets countedGets() { return {registry().getNodes, registry().getNodes + registry().getNodeCount}; }
    static Lines popup() {
        Lines items;
        const int count = getStoreNodeCount();
        for (int i = 0; i < count; ++i) items.emplace_back(getStoreNodeName(nullptr, i));
        return items;
    }
};

} // namespace velm::plugin

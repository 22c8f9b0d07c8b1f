// What Store Material, Get Material and the registry between them are to do, told once more in the plainest way: the
// lists hold serial numbers, and removal is told by what it leaves, not by how. The walk compares the nodes with it.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace velm::plugin {

inline constexpr int kNobody = -1; // no store, no get

struct ModelStore {
    int id = -1;
    std::string name;
    bool alive = true;
};

struct ModelGet {
    int slot = 0, storeID = 0;
    int store = kNobody; // held since the last start of a render
    bool alive = true;
};

// Instances go by their serial number: their place in `stores` or `gets`. All of them stay there; the dead are marked.
class SharingModel {
  public:
    std::vector<ModelStore> stores;
    std::vector<ModelGet> gets;

    void createStore(const std::string &name);
    void createGet();
    void copyStore(int to, int from);
    void copyGet(int to, int from);
    void loadStore(int store, int id, const std::string &name);
    void loadGet(int get, int slot, int storeID);
    void startRender(int get);
    void destroyStore(int store);
    void destroyGet(int get);
    void rename(int store, const std::string &name) { at(stores, store).name = name; }
    void choose(int get, int slot);

    std::vector<std::string> popup() const;
    int storeCount() const { return storeList_.count; }
    int getCount() const { return getList_.count; }
    int lastID() const { return lastID_; }

  private:
    struct List {
        std::array<int, 64> entries;
        int count = 0;
        List() { entries.fill(kNobody); }
        int placeOf(int serial) const; // among those counted; -1
        bool add(int serial);          // false: there already, or full
        void remove(int serial);
    };
    List storeList_, getList_;
    int lastID_ = 0;

    template <class Entry>
    static Entry &at(std::vector<Entry> &list, int serial) {
        return list.at(static_cast<size_t>(serial));
    }
    void list(int store);
};

} // namespace velm::plugin

// A simple reference model of Store Material, Get Material and the registry: its lists hold serial
// numbers instead of pointers. The random walk compares the nodes with this model.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace velm::plugin {

inline constexpr int kNobody = -1; // neither a store nor a get

struct ModelStore {
    int id = -1;
    std::string name;
    bool alive = true;
};

struct ModelGet {
    int slot = 0, storeID = 0;
    int store = kNobody; // the one held since the last start of a render
    bool alive = true;
};

// An instance is identified by its serial number, its index in `stores` or `gets`. Destroyed instances remain there,
// marked.
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
        int indexOf(int serial) const; // index among the counted entries, or -1
        bool add(int serial);          // false if it is listed already, or the list is full
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

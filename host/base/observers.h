// Observers: objects that are told when something that they watch changes. The watched object has an ObserverList, and
// an observer is registered with it for as long as an Observation lives. Debug builds assert the threads that the
// comments state.
#pragma once

#include "host/base/thread_role.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

namespace velm::host {

template <class Observer>
class Observation;

// The observers of one object. `Observer` is a class with a virtual function for each event. These functions must not
// throw. They may register and unregister observers (also themselves) and may change the watched object again; they
// must not destroy it.
template <class Observer>
class ObserverList {
  public:
    ObserverList() = default;
    ~ObserverList() = default; // observations that are still alive have no effect any more
    ObserverList(const ObserverList &) = delete;
    ObserverList &operator=(const ObserverList &) = delete;

    // Calls `tell(observer)` for each observer, in the order of registration. Observers that are unregistered during
    // the call are not called any more; those that are registered during it are not called yet.
    // [interface thread; not while rendering]
    template <class Tell>
    void notify(Tell tell) const {
        assertInterface();
        Entries &entries = *entries_;
        const std::size_t count = entries.all.size();
        ++entries.notifications;
        for (std::size_t i = 0; i < count; ++i)
            if (Observer *observer = entries.all[i].observer) tell(*observer);
        if (--entries.notifications == 0)
            std::erase_if(entries.all, [](const Entry &entry) { return !entry.observer; });
    }

  private:
    friend class Observation<Observer>;
    struct Entry {
        Observer *observer = nullptr; // null: unregistered during a notification
        const Observation<Observer> *observation = nullptr;
    };
    struct Entries {
        std::vector<Entry> all;
        int notifications = 0; // that are running, one inside the other
    };
    std::shared_ptr<Entries> entries_ = std::make_shared<Entries>();
};

// Registers an observer with a list until the end of the scope. The observer must outlive the observation; the list
// need not. [interface thread]
template <class Observer>
class Observation {
  public:
    Observation(ObserverList<Observer> &list, Observer &observer) : entries_(list.entries_) {
        assertInterfaceThread();
        list.entries_->all.push_back({.observer = &observer, .observation = this});
    }
    ~Observation() {
        assertInterfaceThread();
        const auto entries = entries_.lock();
        if (!entries) return;
        const auto found = std::ranges::find(entries->all, this, &ObserverList<Observer>::Entry::observation);
        if (entries->notifications > 0)
            *found = {}; // the notification relies on the indices, and removes the entry at its end
        else
            entries->all.erase(found);
    }
    Observation(const Observation &) = delete;
    Observation &operator=(const Observation &) = delete;

  private:
    std::weak_ptr<typename ObserverList<Observer>::Entries> entries_; // expired once the list is gone
};

} // namespace velm::host

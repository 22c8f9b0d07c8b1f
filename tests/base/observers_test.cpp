// Lists of observers: order, registration during a notification, lifetimes.
#include "host/base/observers.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>

namespace velm::host {
namespace {

struct Observer {
    std::function<void()> act;
};
using List = ObserverList<Observer>;
using Watching = std::optional<Observation<Observer>>;

void tellAll(const List &list) {
    list.notify([](Observer &observer) { observer.act(); });
}

TEST(Observers, AreCalledInTheOrderOfRegistration) {
    std::string called;
    Observer a{[&] { called += 'a'; }}, b{[&] { called += 'b'; }};
    List list;
    const Observation<Observer> first(list, b), second(list, a);
    {
        const Observation<Observer> again(list, b);
        tellAll(list);
        EXPECT_EQ(called, "bab");
    }
    tellAll(list);
    EXPECT_EQ(called, "babba") << "the scope has ended one of b's two registrations";
}

TEST(Observers, CanComeAndGoDuringANotification) {
    std::string called;
    List list;
    Watching first, second, third;
    Observer c{[&] { called += 'c'; }};
    Observer b{[&] { called += 'b'; }};
    Observer a{[&] {
        called += 'a';
        first.reset();
        second.reset();
        third.emplace(list, c);
    }};
    first.emplace(list, a);
    second.emplace(list, b);
    tellAll(list);
    EXPECT_EQ(called, "a") << "b was unregistered before its turn, and c is called from the next time on";
    tellAll(list);
    EXPECT_EQ(called, "ac");
}

TEST(Observers, NotificationsNest) {
    std::string called;
    List list;
    Watching first, second;
    int depth = 0;
    Observer a{[&] {
        called += 'a';
        if (++depth == 1) tellAll(list);
        second.reset();
    }};
    Observer b{[&] { called += 'b'; }};
    first.emplace(list, a);
    second.emplace(list, b);
    tellAll(list);
    EXPECT_EQ(called, "aa") << "the inner notification unregisters b before either reaches it";
}

TEST(Observers, OutliveTheList) {
    Observer observer{[] {}};
    std::optional<List> list(std::in_place);
    const Observation<Observer> watching(*list, observer);
    list.reset();
}

} // namespace
} // namespace velm::host

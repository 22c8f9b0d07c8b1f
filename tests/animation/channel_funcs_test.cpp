// Every function of the service "Animation Envelopes".

#include "host/animation/channel.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

using namespace velm::host;

namespace {

class EnvelopeTable : public ::testing::Test {
  protected:
    const HostEnvelopeFuncs &funcs_ = *envelopeFuncs();
    std::unique_ptr<HostChannelGroup> root_ = makeRootGroup("Scene");
    HostEnvelope *envelope_ = funcs_.create(root_.get(), "Size", kChannelFloat);
};

struct EventLog {
    std::vector<int> events;
    void *data = nullptr;
};

int logEvent(void *userData, HostEnvelope *, int event, void *data) {
    auto &log = *static_cast<EventLog *>(userData);
    log.events.push_back(event);
    log.data = data;
    return 1;
}

TEST_F(EnvelopeTable, CreatesAndDestroysEnvelopesAndGroups) {
    EXPECT_EQ(envelope_->name, "Size");
    EXPECT_EQ(envelope_->group, root_.get());
    EXPECT_EQ(funcs_.create(root_.get(), nullptr, kChannelAngle)->name, "");
    HostChannelGroup *group = funcs_.createGroup(root_.get(), "Counter");
    HostChannelGroup *inner = funcs_.createGroup(group, "Inner");
    funcs_.create(inner, "X", kChannelFloat);
    ASSERT_EQ(root_->groups.size(), 1U);
    funcs_.destroyGroup(group);
    EXPECT_TRUE(root_->groups.empty());
    funcs_.destroyGroup(root_.get()); // ignored: the root group belongs to the host
    funcs_.destroy(envelope_);
    EXPECT_EQ(root_->envelopes.size(), 1U);
}

TEST_F(EnvelopeTable, KeepsKeysInOrderOfTime) {
    HostKey *late = funcs_.createKey(envelope_, 2, 20);
    HostKey *early = funcs_.createKey(envelope_, 1, 10);
    HostKey *latest = funcs_.createKey(envelope_, 3, 30);
    EXPECT_EQ(funcs_.createKey(envelope_, 2, 25), late) << "there is one key at each time";
    EXPECT_EQ(late->value, 25);
    EXPECT_EQ(funcs_.nextKey(envelope_, nullptr), early);
    EXPECT_EQ(funcs_.nextKey(envelope_, early), late);
    EXPECT_EQ(funcs_.nextKey(envelope_, latest), nullptr);
    EXPECT_EQ(funcs_.previousKey(envelope_, nullptr), latest);
    EXPECT_EQ(funcs_.previousKey(envelope_, late), early);
    EXPECT_EQ(funcs_.previousKey(envelope_, early), nullptr);
    EXPECT_EQ(funcs_.findKey(envelope_, 2 + 1e-7), late);
    EXPECT_EQ(funcs_.findKey(envelope_, 2.1), nullptr);
    funcs_.destroyKey(envelope_, late);
    EXPECT_EQ(funcs_.nextKey(envelope_, early), latest);
    EXPECT_EQ(funcs_.evaluate(envelope_, 3), 30);
}

TEST_F(EnvelopeTable, SetsAndGetsEveryMemberOfAKey) {
    HostKey *key = funcs_.createKey(envelope_, 1, 10);
    for (int tag = kKeyValue; tag <= kKeyParameter0 + 3; ++tag) {
        if (tag == kKeyShape) continue;
        const double given = 0.5 * tag;
        EXPECT_EQ(funcs_.setKey(envelope_, key, tag, &given), 1) << tag;
        double got = 0;
        EXPECT_EQ(funcs_.getKey(envelope_, key, tag, &got), 1) << tag;
        EXPECT_EQ(got, given) << tag;
    }
    EXPECT_EQ(key->value, 0.5);
    EXPECT_EQ(key->time, 1);
    EXPECT_EQ(key->tension, 2);
    EXPECT_EQ(key->continuity, 2.5);
    EXPECT_EQ(key->bias, 3);
    EXPECT_EQ(key->parameters, (std::array<double, 4>{3.5, 4, 4.5, 5}));
    const int shape = kShapeStepped;
    int got = -1;
    EXPECT_EQ(funcs_.setKey(envelope_, key, kKeyShape, &shape), 1);
    EXPECT_EQ(funcs_.getKey(envelope_, key, kKeyShape, &got), 1);
    EXPECT_EQ(got, kShapeStepped);
}

TEST_F(EnvelopeTable, MovesKeysInTime) {
    HostKey *first = funcs_.createKey(envelope_, 1, 10);
    HostKey *second = funcs_.createKey(envelope_, 2, 20);
    double time = 5;
    EXPECT_EQ(funcs_.setKey(envelope_, first, kKeyTime, &time), 1);
    EXPECT_EQ(funcs_.nextKey(envelope_, nullptr), second);
    time = 2;
    EXPECT_EQ(funcs_.setKey(envelope_, first, kKeyTime, &time), 0) << "another key has this time";
    EXPECT_EQ(first->time, 5);
}

TEST_F(EnvelopeTable, RefusesWhatIsOutOfRange) {
    HostKey *key = funcs_.createKey(envelope_, 1, 10);
    const int shapes[] = {-1, kShapeBezier2 + 1};
    for (const int shape : shapes) EXPECT_EQ(funcs_.setKey(envelope_, key, kKeyShape, &shape), 0);
    const double infinite = std::numeric_limits<double>::infinity(), number = 1;
    EXPECT_EQ(funcs_.setKey(envelope_, key, kKeyValue, &infinite), 0);
    EXPECT_EQ(funcs_.setKey(envelope_, key, kKeyTime, &infinite), 0);
    EXPECT_EQ(funcs_.createKey(envelope_, infinite, 1), nullptr);
    for (const int tag : {0, 11, -1}) {
        double got = 0;
        EXPECT_EQ(funcs_.setKey(envelope_, key, tag, &number), 0);
        EXPECT_EQ(funcs_.getKey(envelope_, key, tag, &got), 0);
    }
    HostKey *foreign = funcs_.createKey(funcs_.create(root_.get(), "Other", kChannelFloat), 1, 1);
    EXPECT_EQ(funcs_.setKey(envelope_, foreign, kKeyValue, &number), 0) << "a key of another envelope";
    EXPECT_EQ(funcs_.nextKey(envelope_, foreign), nullptr);
    EXPECT_EQ(funcs_.previousKey(envelope_, foreign), nullptr);
    EXPECT_EQ(key->value, 10);
}

TEST_F(EnvelopeTable, SetsAndGetsBehaviours) {
    const int repeat = kBehaveRepeat, linear = kBehaveLinear, wrong = kBehaveLinear + 1;
    EXPECT_EQ(funcs_.set(envelope_, kEnvelopePreBehaviour, &repeat), 1);
    EXPECT_EQ(funcs_.set(envelope_, kEnvelopePostBehaviour, &linear), 1);
    EXPECT_EQ(funcs_.set(envelope_, kEnvelopePostBehaviour, &wrong), 0);
    EXPECT_EQ(funcs_.set(envelope_, 3, &repeat), 0);
    int before = -1, after = -1;
    EXPECT_EQ(funcs_.get(envelope_, kEnvelopePreBehaviour, &before), 1);
    EXPECT_EQ(funcs_.get(envelope_, kEnvelopePostBehaviour, &after), 1);
    EXPECT_EQ(funcs_.get(envelope_, 3, &after), 0);
    EXPECT_EQ(before, kBehaveRepeat);
    EXPECT_EQ(after, kBehaveLinear);
}

TEST_F(EnvelopeTable, CountsAndReportsChanges) {
    EventLog log;
    EXPECT_EQ(funcs_.setEvent(envelope_, logEvent, &log), 1);
    EXPECT_EQ(funcs_.setEvent(envelope_, logEvent, &log), 1);
    const int age = funcs_.age(envelope_);
    HostKey *key = funcs_.createKey(envelope_, 1, 10);
    EXPECT_EQ(log.data, key);
    const double value = 2;
    funcs_.setKey(envelope_, key, kKeyValue, &value);
    const int repeat = kBehaveRepeat;
    funcs_.set(envelope_, kEnvelopePreBehaviour, &repeat);
    HostEnvelope *other = funcs_.create(root_.get(), "Other", kChannelFloat);
    EXPECT_EQ(funcs_.copy(envelope_, other), nullptr);
    EXPECT_TRUE(envelope_->keys.empty());
    key = funcs_.createKey(envelope_, 1, 10);
    funcs_.destroyKey(envelope_, key);
    EXPECT_EQ(funcs_.age(envelope_), age + 6);
    funcs_.destroy(envelope_);
    EXPECT_EQ(log.events,
              (std::vector<int>{kEnvelopeKeyCreated, kEnvelopeKeyChanged, kEnvelopeBehaviourChanged, kEnvelopeReplaced,
                                kEnvelopeKeyCreated, kEnvelopeKeyDestroyed, kEnvelopeDestroyed}));
}

TEST_F(EnvelopeTable, CopiesKeysButNotNames) {
    HostEnvelope *other = funcs_.create(root_.get(), "Other", kChannelFloat);
    HostKey *key = funcs_.createKey(envelope_, 1, 10);
    key->shape = kShapeLinear;
    key->tension = 0.5;
    envelope_->after = kBehaveOscillate;
    funcs_.createKey(other, 9, 9);
    EXPECT_EQ(funcs_.copy(other, envelope_), nullptr);
    ASSERT_EQ(other->keys.size(), 1U);
    EXPECT_EQ(other->keys[0]->tension, 0.5);
    EXPECT_EQ(other->keys[0]->shape, kShapeLinear);
    EXPECT_EQ(other->after, kBehaveOscillate);
    EXPECT_EQ(other->name, "Other");
    EXPECT_EQ(funcs_.copy(other, other), nullptr);
    EXPECT_EQ(other->keys.size(), 1U);
}

TEST_F(EnvelopeTable, NullHandlesAreHarmless) {
    EXPECT_EQ(funcs_.create(nullptr, "x", 0), nullptr);
    EXPECT_EQ(funcs_.createGroup(nullptr, "x"), nullptr);
    funcs_.destroy(nullptr);
    funcs_.destroyGroup(nullptr);
    EXPECT_NE(funcs_.copy(nullptr, envelope_), nullptr);
    EXPECT_NE(funcs_.copy(envelope_, nullptr), nullptr);
    EXPECT_NE(funcs_.load(nullptr, nullptr), nullptr);
    EXPECT_NE(funcs_.save(envelope_, nullptr), nullptr);
    EXPECT_EQ(funcs_.evaluate(nullptr, 1), 0);
    EXPECT_EQ(funcs_.edit(envelope_), 0);
    EXPECT_EQ(funcs_.age(nullptr), 0);
    EXPECT_EQ(funcs_.createKey(nullptr, 1, 1), nullptr);
    funcs_.destroyKey(envelope_, nullptr);
    EXPECT_EQ(funcs_.findKey(nullptr, 1), nullptr);
    EXPECT_EQ(funcs_.nextKey(nullptr, nullptr), nullptr);
    EXPECT_EQ(funcs_.previousKey(nullptr, nullptr), nullptr);
    HostKey *key = funcs_.createKey(envelope_, 1, 1);
    EXPECT_EQ(funcs_.setKey(envelope_, nullptr, kKeyValue, nullptr), 0);
    EXPECT_EQ(funcs_.setKey(envelope_, key, kKeyValue, nullptr), 0);
    EXPECT_EQ(funcs_.getKey(nullptr, key, kKeyValue, nullptr), 0);
    EXPECT_EQ(funcs_.setEvent(envelope_, nullptr, nullptr), 0);
    EXPECT_EQ(funcs_.set(nullptr, kEnvelopePreBehaviour, nullptr), 0);
    EXPECT_EQ(funcs_.get(envelope_, kEnvelopePreBehaviour, nullptr), 0);
}

} // namespace

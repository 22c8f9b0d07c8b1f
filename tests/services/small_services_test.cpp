// The time, the system word and instance updates.

#include "host/services/instance_update.h"
#include "host/services/system.h"
#include "host/services/time.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace velm::host;

namespace {

TEST(TimeInfo, IsOneRecord) {
    const HostTimeInfo *info = timeInfo();
    setTime(12, 0.4);
    EXPECT_EQ(info->frame, 12);
    EXPECT_EQ(info->time, 0.4);
    setTime(0, 0);
    EXPECT_EQ(timeInfo(), info);
    EXPECT_EQ(info->frame, 0);
}

TEST(SystemId, ThePointerIsTheWord) {
    setSystemId(kSystemModelling | 7);
    EXPECT_EQ(reinterpret_cast<HostWord>(systemId()), kSystemModelling | 7);
    setSystemId(kSystemLayout);
    EXPECT_EQ(reinterpret_cast<HostWord>(systemId()) & kSystemIdMask, kSystemLayout);
}

TEST(InstanceUpdate, CountsAndTellsListeners) {
    const long before = updateCount();
    std::string heard;
    int instance = 0;
    {
        const UpdateListener listener([&](const std::string &className, void *changed) {
            heard += className + (changed == &instance ? "!" : "?");
        });
        instanceUpdate()(HOST_CLASS_NODE_HANDLER, &instance);
        instanceUpdate()(nullptr, nullptr);
    }
    instanceUpdate()(HOST_CLASS_NODE_HANDLER, &instance);
    EXPECT_EQ(heard, "NodeHandler!?");
    EXPECT_EQ(updateCount(), before + 3);
}

TEST(InstanceUpdate, ListenersMayComeAndGoMeanwhile) {
    int calls = 0;
    std::unique_ptr<UpdateListener> second, third;
    std::unique_ptr<UpdateListener> first;
    first = std::make_unique<UpdateListener>([&](const std::string &, void *) {
        ++calls;
        second.reset();
        if (!third) third = std::make_unique<UpdateListener>([&](const std::string &, void *) { calls += 100; });
        first.reset();
    });
    second = std::make_unique<UpdateListener>([&](const std::string &, void *) { calls += 10; });
    instanceUpdate()("", nullptr);
    EXPECT_EQ(calls, 1);
    instanceUpdate()("", nullptr);
    EXPECT_EQ(calls, 101);
}

} // namespace

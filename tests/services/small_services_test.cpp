// The time, the system word and instance updates.

#include "host/services/instance_update.h"
#include "host/services/system.h"
#include "host/services/time.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

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

TEST(SystemId, IsTheWordAsAPointer) {
    setSystemId(kSystemModelling | 7);
    EXPECT_EQ(reinterpret_cast<HostWord>(systemId()), kSystemModelling | 7);
    setSystemId(kSystemLayout);
    EXPECT_EQ(reinterpret_cast<HostWord>(systemId()) & kSystemIdMask, kSystemLayout);
}

struct Recorder final : InstanceObserver {
    void instanceUpdated(const std::string &className, void *instance) override {
        updates.push_back({className, instance});
    }
    std::vector<std::pair<std::string, void *>> updates;
};

TEST(InstanceUpdate, TellsObservers) {
    Recorder recorder;
    int instance = 0;
    {
        const Observation<InstanceObserver> watching(instanceObservers(), recorder);
        instanceUpdate()(HOST_CLASS_NODE_HANDLER, &instance);
        instanceUpdate()(nullptr, nullptr);
    }
    instanceUpdate()(HOST_CLASS_NODE_HANDLER, &instance);
    EXPECT_EQ(recorder.updates,
              (std::vector<std::pair<std::string, void *>>{{"NodeHandler", &instance}, {"", nullptr}}));
}

} // namespace

// Every function of the service "LWVParmFuncs 2", and the lifetime of parameters, their channels and their groups.

#include "host/animation/vparm.h"

#include <gtest/gtest.h>

#include <vector>

using namespace velm::host;

namespace {

class ParameterTable : public ::testing::Test {
  protected:
    HostVParm *make(int type, const char *name) {
        HostVParm *parm = funcs_.create(type, -1);
        funcs_.setUp(parm, name, group_, nullptr, nullptr, nullptr, nullptr);
        return parm;
    }
    std::vector<double> value(HostVParm *parm, double time = 0) {
        double read[3] = {-1, -1, -1};
        EXPECT_EQ(funcs_.getValue(parm, time, nullptr, read), read[0]);
        return {read[0], read[1], read[2]};
    }
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto &envelope : group_->envelopes) all.push_back(envelope->name);
        return all;
    }

    const HostVParmFuncs &funcs_ = *vparmFuncs();
    std::unique_ptr<HostChannelGroup> root_ = makeRootGroup("Scene");
    HostChannelGroup *group_ = &root_->addGroup("Counter");
};

TEST_F(ParameterTable, TypesHaveTheirComponentsAndChannels) {
    const struct {
        int type, components, channelType;
        std::vector<std::string> names;
    } rows[] = {
        {kParmPlainTriple, 3, kChannelFloat, {"A.X", "A.Y", "A.Z"}},
        {kParmFloat, 1, kChannelFloat, {"A"}},
        {kParmFloatTriple, 3, kChannelFloat, {"A.X", "A.Y", "A.Z"}},
        {kParmPercent, 1, kChannelPercent, {"A"}},
        {kParmDistance, 1, kChannelDistance, {"A"}},
        {kParmDistanceTriple, 3, kChannelDistance, {"A.X", "A.Y", "A.Z"}},
        {kParmAngle, 1, kChannelAngle, {"A"}},
        {kParmAngleTriple, 3, kChannelAngle, {"A.X", "A.Y", "A.Z"}},
        {kParmColour, 3, kChannelPercent, {"A.R", "A.G", "A.B"}},
    };
    const double given[] = {1, 2, 3};
    for (const auto &row : rows) {
        HostVParm *parm = make(row.type, "A");
        ASSERT_NE(parm, nullptr) << row.type;
        EXPECT_EQ(funcs_.setValue(parm, given), row.components) << row.type;
        EXPECT_EQ(value(parm), row.components == 3 ? (std::vector<double>{1, 2, 3}) : (std::vector<double>{1, -1, -1}));
        EXPECT_EQ(funcs_.state(parm), 0);
        funcs_.setState(parm, kParmHasEnvelope | kParmHasTexture);
        EXPECT_EQ(funcs_.state(parm), kParmHasEnvelope);
        EXPECT_EQ(names(), row.names) << row.type;
        HostEnvelope *handles[3];
        EXPECT_EQ(funcs_.envelopes(parm, handles), row.components);
        EXPECT_EQ(handles[0]->type, row.channelType) << row.type;
        EXPECT_EQ(handles[2] != nullptr, row.components == 3);
        EXPECT_EQ(funcs_.init(parm), nullptr);
        funcs_.destroy(parm);
        EXPECT_TRUE(names().empty()) << "destroying a parameter destroys its channels";
    }
    for (const int type : {0, -1, 2, 15, 18, 96, 97, 1000}) EXPECT_EQ(funcs_.create(type, -1), nullptr) << type;
}

TEST_F(ParameterTable, EnvelopesStartAtTheValueAndLeaveTheirValueAtTimeZero) {
    HostVParm *parm = make(kParmFloat, "Size");
    const double five = 5, six = 6;
    funcs_.setValue(parm, &five);
    funcs_.setState(parm, kParmHasEnvelope);
    EXPECT_EQ(funcs_.setValue(parm, &six), 0) << "an animated value cannot be set";
    EXPECT_EQ(value(parm, 3)[0], 5);
    HostEnvelope *handles[3];
    funcs_.envelopes(parm, handles);
    envelopeFuncs()->createKey(handles[0], 0, 7);
    envelopeFuncs()->createKey(handles[0], 2, 9)->shape = kShapeLinear;
    EXPECT_EQ(value(parm, 1)[0], 8);
    funcs_.setState(parm, kParmHasEnvelope);
    EXPECT_EQ(value(parm, 1)[0], 8) << "setting the same state again changes nothing";
    funcs_.setState(parm, 0);
    EXPECT_EQ(value(parm, 1)[0], 7) << "the value at time 0 stays";
    EXPECT_TRUE(names().empty());
    EXPECT_EQ(funcs_.envelopes(parm, handles), 0);
    EXPECT_EQ(handles[0], nullptr);
    EXPECT_EQ(funcs_.setValue(parm, &six), 1);
    funcs_.destroy(parm);
}

TEST_F(ParameterTable, NamesAreNumberedInTheirGroup) {
    HostVParm *first = make(kParmColour, "Color");
    HostVParm *second = make(kParmColour, "Color");
    funcs_.setState(first, kParmHasEnvelope);
    funcs_.setState(second, kParmHasEnvelope);
    EXPECT_EQ(names(),
              (std::vector<std::string>{"Color.R", "Color.G", "Color.B", "Color.R (2)", "Color.G (2)", "Color.B (2)"}));
    funcs_.destroy(first);
    funcs_.destroy(second);
}

TEST_F(ParameterTable, CopiesValuesAndKeysButNotNames) {
    HostVParm *from = make(kParmColour, "Srf Color");
    HostVParm *to = make(kParmColour, "Bg Color");
    const double given[] = {0.1, 0.2, 0.3}, other[] = {9, 9, 9};
    funcs_.setValue(from, given);
    EXPECT_EQ(funcs_.copy(to, from), nullptr);
    EXPECT_EQ(value(to), (std::vector<double>{0.1, 0.2, 0.3}));
    funcs_.setState(from, kParmHasEnvelope);
    HostEnvelope *handles[3];
    funcs_.envelopes(from, handles);
    envelopeFuncs()->createKey(handles[1], 1, 5);
    EXPECT_EQ(funcs_.copy(to, from), nullptr);
    funcs_.destroy(from);
    EXPECT_EQ(names(), (std::vector<std::string>{"Bg Color.R", "Bg Color.G", "Bg Color.B"}));
    EXPECT_EQ(value(to, 1), (std::vector<double>{0.1, 5, 0.3}));
    HostVParm *plain = make(kParmColour, "Plain");
    funcs_.setValue(plain, other);
    EXPECT_EQ(funcs_.copy(to, plain), nullptr);
    EXPECT_EQ(funcs_.state(to), 0) << "copying a plain value removes the keys";
    EXPECT_EQ(value(to), (std::vector<double>{9, 9, 9}));
    EXPECT_EQ(funcs_.copy(to, to), nullptr);
    HostVParm *single = make(kParmFloat, "Single");
    EXPECT_NE(funcs_.copy(to, single), nullptr);
    for (HostVParm *parm : {to, plain, single}) funcs_.destroy(parm);
}

TEST_F(ParameterTable, SettingUpAgainMovesTheChannels) {
    HostVParm *parm = make(kParmFloat, "Size");
    funcs_.setState(parm, kParmHasEnvelope);
    HostEnvelope *handles[3];
    funcs_.envelopes(parm, handles);
    envelopeFuncs()->createKey(handles[0], 0, 3);
    HostChannelGroup &other = root_->addGroup("Other");
    funcs_.setUp(parm, "Length", &other, nullptr, nullptr, nullptr, nullptr);
    EXPECT_TRUE(names().empty());
    ASSERT_NE(other.findEnvelope("Length"), nullptr);
    EXPECT_EQ(value(parm)[0], 3);
    funcs_.destroy(parm);
    EXPECT_TRUE(other.envelopes.empty());
}

TEST_F(ParameterTable, WorksWithoutAGroup) {
    HostVParm *parm = funcs_.create(kParmFloatTriple, -1);
    funcs_.setState(parm, kParmHasEnvelope);
    funcs_.setUp(parm, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    HostEnvelope *handles[3];
    EXPECT_EQ(funcs_.envelopes(parm, handles), 3);
    EXPECT_EQ(handles[0]->name, ".X");
    funcs_.destroy(parm);
}

TEST_F(ParameterTable, OutlivesItsChannelsAndItsGroup) {
    HostVParm *parm = make(kParmColour, "Color");
    const double given[] = {1, 2, 3};
    funcs_.setValue(parm, given);
    funcs_.setState(parm, kParmHasEnvelope);
    HostEnvelope *handles[3];
    funcs_.envelopes(parm, handles);
    envelopeFuncs()->destroy(handles[1]);
    EXPECT_EQ(funcs_.state(parm), 0);
    EXPECT_TRUE(names().empty());
    EXPECT_EQ(value(parm), (std::vector<double>{1, 2, 3}));
    funcs_.setState(parm, kParmHasEnvelope);
    envelopeFuncs()->destroyGroup(group_);
    EXPECT_EQ(funcs_.state(parm), 0);
    EXPECT_EQ(value(parm), (std::vector<double>{1, 2, 3}));
    funcs_.setState(parm, kParmHasEnvelope); // in a group that the parameter owns
    EXPECT_EQ(funcs_.state(parm), kParmHasEnvelope);
    funcs_.destroy(parm);
}

struct EventLog {
    std::vector<int> events;
    HostVParm *parm = nullptr;
};

int logEvent(void *userData, HostVParm *parm, int event) {
    auto &log = *static_cast<EventLog *>(userData);
    log.events.push_back(event);
    log.parm = parm;
    return 1;
}

TEST_F(ParameterTable, ReportsChanges) {
    EventLog log;
    HostVParm *parm = funcs_.create(kParmFloat, -1);
    funcs_.setUp(parm, "Size", group_, nullptr, logEvent, nullptr, &log);
    EXPECT_TRUE(log.events.empty());
    const double value = 1;
    funcs_.setValue(parm, &value);
    funcs_.setState(parm, kParmHasEnvelope);
    HostEnvelope *handles[3];
    funcs_.envelopes(parm, handles);
    envelopeFuncs()->createKey(handles[0], 1, 1);
    funcs_.setState(parm, 0);
    HostVParm *other = make(kParmFloat, "Other");
    funcs_.copy(parm, other);
    funcs_.destroy(other);
    EXPECT_EQ(log.parm, parm);
    EXPECT_EQ(log.events, (std::vector<int>{kParmEventValue, kParmEventEnvelope, kParmEventValue, kParmEventEnvelope,
                                            kParmEventReplaced}));
    funcs_.destroy(parm);
    EXPECT_EQ(log.events.size(), 5U);
}

TEST_F(ParameterTable, NullHandlesAreHarmless) {
    double read[3] = {4, 4, 4};
    const double given = 1;
    funcs_.destroy(nullptr);
    funcs_.setUp(nullptr, "x", group_, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(funcs_.getValue(nullptr, 0, nullptr, read), 0);
    EXPECT_EQ(read[0], 4);
    EXPECT_EQ(funcs_.setValue(nullptr, &given), 0);
    EXPECT_EQ(funcs_.state(nullptr), 0);
    funcs_.setState(nullptr, 1);
    HostEnvelope *handles[3];
    EXPECT_EQ(funcs_.envelopes(nullptr, handles), 0);
    EXPECT_EQ(handles[2], nullptr);
    HostVParm *parm = make(kParmFloat, "Size");
    EXPECT_EQ(funcs_.getValue(parm, 0, nullptr, nullptr), 0);
    EXPECT_EQ(funcs_.setValue(parm, nullptr), 0);
    EXPECT_EQ(funcs_.envelopes(parm, nullptr), 0);
    EXPECT_NE(funcs_.copy(parm, nullptr), nullptr);
    EXPECT_NE(funcs_.copy(nullptr, parm), nullptr);
    EXPECT_NE(funcs_.load(nullptr, nullptr), nullptr);
    EXPECT_NE(funcs_.load(parm, nullptr), nullptr);
    EXPECT_NE(funcs_.save(parm, nullptr), nullptr);
    EXPECT_NE(funcs_.init(nullptr), nullptr);
    EXPECT_EQ(funcs_.editEnvelope(parm), 0);
    EXPECT_EQ(funcs_.editTexture(parm), 0);
    EXPECT_EQ(funcs_.texture(parm), nullptr);
    funcs_.destroy(parm);
}

} // namespace

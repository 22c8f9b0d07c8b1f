// The call record: numbers of servers, nested calls, the slots of threads, and errors that name a call.
#include "host/base/error.h"
#include "host/guard/module_call.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

namespace velm::host {
namespace {

const char *callNow() { return callRecord().slots[0].call.load(); }

TEST(CallRecord, NumbersServersByName) {
    const int first = numberOfServer("First Server"), second = numberOfServer("Second Server");
    EXPECT_NE(first, second);
    EXPECT_EQ(numberOfServer("First Server"), first);
    ServerSet both{};
    both.add(first);
    EXPECT_EQ(serversText(callRecord(), both), "server \"First Server\"");
    both.add(second);
    EXPECT_EQ(serversText(callRecord(), both), "one of the servers \"First Server\", \"Second Server\"");
    EXPECT_EQ(serversText(callRecord(), {}), "the module");
}

TEST(CallRecord, CutsLongNames) {
    const std::string name(3 * kLongestServer, 'n');
    const int number = numberOfServer(name.c_str());
    EXPECT_EQ(numberOfServer(name.c_str()), number);
    EXPECT_EQ(callRecord().servers[number], name.substr(0, kLongestServer - 1));
}

TEST(CallScope, RestoresTheOuterCall) {
    EXPECT_EQ(serverInCall(), kHostServer);
    const int number = numberOfServer("Nested");
    {
        const CallScope outer(number, "create");
        const std::uint64_t steps = callRecord().slots[0].steps;
        {
            const CallScope inner(kModuleItself, "startup"), unnoted(kHostServer, "destroy");
            EXPECT_STREQ(callNow(), "startup");
            EXPECT_EQ(serverInCall(), kModuleItself);
        }
        EXPECT_STREQ(callNow(), "create");
        EXPECT_EQ(serverInCall(), number);
        EXPECT_EQ(callRecord().slots[0].steps, steps + 2);
    }
    EXPECT_EQ(callNow(), nullptr);
    EXPECT_TRUE(callRecord().used.has(number));
}

TEST(DialogScope, TakesTheThreadOutOfItsCall) {
    const int number = numberOfServer("Asker"), inner = numberOfServer("Answerer");
    const CallScope call(number, "panel button");
    const CallSlot &slot = callRecord().slots[0];
    {
        const std::uint64_t steps = slot.steps;
        const DialogScope outer;
        EXPECT_TRUE(slot.inDialog);
        EXPECT_EQ(callNow(), nullptr);
        EXPECT_EQ(serverInCall(), kHostServer);
        EXPECT_EQ(slot.steps, steps + 1);
        {
            const CallScope called(inner, "panel getter");
            const DialogScope nested;
            EXPECT_EQ(callNow(), nullptr);
        }
        EXPECT_EQ(callNow(), nullptr);
        EXPECT_TRUE(slot.inDialog);
    }
    EXPECT_FALSE(slot.inDialog);
    EXPECT_STREQ(callNow(), "panel button");
    EXPECT_EQ(serverInCall(), number);
}

TEST(SlotScope, GivesTheThreadItsSlot) {
    EXPECT_EQ(ownSlot(), 0);
    std::thread([] {
        EXPECT_EQ(ownSlot(), -1);
        SlotScope slot(3);
        EXPECT_EQ(ownSlot(), 4);
        slot.step();
        EXPECT_NE(callRecord().slots[4].thread, 0);
    }).join();
    EXPECT_EQ(callRecord().slots[4].thread, 0);
    EXPECT_EQ(callRecord().slots[4].steps, 1U);
}

std::string messageOf(int server, const std::function<void()> &act) {
    try {
        callModule(server, "create", act);
    } catch (const ModuleError &error) {
        return error.what();
    }
    return {};
}

TEST(CallModule, NamesTheServerTheExceptionAndTheCall) {
    nameModule("some.p");
    const int number = numberOfServer("Thrower");
    EXPECT_EQ(messageOf(number, [] { throw std::runtime_error("oh"); }),
              "some.p: server \"Thrower\" threw std::runtime_error: oh in create");
    EXPECT_EQ(messageOf(kModuleItself, [] { throw 7; }), "some.p: the module threw int in create");
    const auto nested = [&] { callModule(kModuleItself, "startup", [] { throw 7; }); };
    EXPECT_EQ(messageOf(number, nested), "some.p: the module threw int in startup");
    EXPECT_THROW(messageOf(kHostServer, [] { throw std::logic_error("the host's"); }), std::logic_error);
    EXPECT_EQ(callNow(), nullptr);
    EXPECT_EQ(callModule(number, "create", [] { return 5; }), 5);
}

TEST(CallModule, CutsLongTexts) {
    const std::string megabyte(1 << 20, 'x'), cut(kLongestModuleText, 'x');
    EXPECT_EQ(moduleText(megabyte.c_str()), cut + "...");
    EXPECT_EQ(moduleText(cut.c_str()), cut);
    EXPECT_EQ(moduleText(nullptr), "");
    const int number = numberOfServer("Talker");
    EXPECT_LT(messageOf(number, [&] { throw std::runtime_error(megabyte); }).size(), 2 * kLongestModuleText);
    EXPECT_EQ(callForError(number, "load", [&] { return megabyte.c_str(); }), cut + "...");
    EXPECT_EQ(callForError(number, "load", []() -> const char * { return nullptr; }), std::nullopt);
}

} // namespace
} // namespace velm::host

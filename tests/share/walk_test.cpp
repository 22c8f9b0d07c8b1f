// Random walks over Store Material and Get Material nodes, as in a user's session, compared with a reference model. A
// failing walk is reduced to the steps that matter, and reported with its seed.
//
// Under the address sanitizer the walks also show that no evaluation reads a destroyed store, and that nothing is
// written to a destroyed get.
#include "module/servers.h"
#include "share/registry.h"
#include "tests/module/fake_controls.h"
#include "tests/module/recorded_state.h"
#include "tests/module/test_node.h"
#include "tests/share/sharing_model.h"

#include <gtest/gtest.h>
#include <memory>
#include <random>

namespace velm::plugin {
namespace {

enum class Act {
    createStore,
    createGet,
    copyStore,
    copyGet,
    loadStore,
    loadGet,
    start,
    endStore,
    endGet,
    rename,
    choose
};
constexpr const char *kActs[] = {"create store", "create get",    "copy store",  "copy get", "load store", "load get",
                                 "start render", "destroy store", "destroy get", "rename",   "choose"};

// `which` and `other` choose among the instances that exist at this step, so that leaving out steps gives a valid walk.
struct Step {
    Act act;
    unsigned int which, other;
    int number;
};

std::ostream &operator<<(std::ostream &out, const Step &step) {
    return out << kActs[static_cast<size_t>(step.act)] << " #" << step.which << " #" << step.other << " "
               << step.number;
}

constexpr unsigned int kControl = 0x8001; // the only control of either panel

// The instances, their model, and a registry that starts empty.
class Session {
  public:
    Session() { *getShareInst() = {}; }
    ~Session() {
        stores_.clear();
        gets_.clear();
        *getShareInst() = {};
    }

    void take(const Step &step);
    std::string difference(); // between the nodes and the model; empty if there is none

  private:
    FakeHost host_;
    FakeControls controls_;
    SharingModel model_;
    std::vector<std::unique_ptr<TestNode>> stores_, gets_; // by serial number; null once destroyed

    static StoreMaterial &store(const TestNode &node) { return *static_cast<StoreMaterial *>(node.instance); }
    static GetMaterial &get(const TestNode &node) { return *static_cast<GetMaterial *>(node.instance); }
    // The serial number of an existing instance; kNobody if there is none.
    static int pick(const std::vector<std::unique_ptr<TestNode>> &nodes, unsigned int which);

    void create(bool isStore, int number);
    void takeOfStore(const Step &step, int serial, int other);
    void takeOfGet(const Step &step, int serial, int other);
    std::string differenceOfGet(size_t serial);
    std::string differenceOfPopup();
};

int Session::pick(const std::vector<std::unique_ptr<TestNode>> &nodes, unsigned int which) {
    std::vector<int> living;
    for (size_t i = 0; i < nodes.size(); ++i)
        if (nodes[i]) living.push_back(static_cast<int>(i));
    return living.empty() ? kNobody : living[which % living.size()];
}

void Session::create(bool isStore, int number) {
    if (!isStore) {
        gets_.push_back(std::make_unique<TestNode>(host_, activatedWith<FakeControls::lookup, GetMaterial_Activate>,
                                                   activatedWith<FakeControls::lookup, GetMaterial_Interface>, "get"));
        model_.createGet();
        return;
    }
    const std::string name = "store" + std::to_string(number);
    stores_.push_back(std::make_unique<TestNode>(host_, activatedWith<FakeControls::lookup, StoreMaterial_Activate>,
                                                 activatedWith<FakeControls::lookup, StoreMaterial_Interface>, name));
    const int serial = static_cast<int>(model_.stores.size());
    store(*stores_.back()).integerInput->source = [serial](ShadingSample *, void *value) {
        *static_cast<int *>(value) = 1000 + serial;
    };
    model_.createStore(name);
}

void Session::takeOfStore(const Step &step, int serial, int other) {
    auto &slot = stores_[static_cast<size_t>(serial)];
    TestNode &node = *slot;
    const std::string name = "name" + std::to_string(step.number);
    if (step.act == Act::copyStore) {
        node.ops.copy(node.instance, stores_[static_cast<size_t>(other)]->instance);
        model_.copyStore(serial, other);
    } else if (step.act == Act::loadStore) {
        RecordedState state;
        state.integer(step.number).text(name);
        node.ops.load(node.instance, state.load());
        model_.loadStore(serial, step.number, name);
    } else if (step.act == Act::rename) {
        controls_.texts[kControl] = name;
        HostPanel *panel = node.panel();
        panel->set(node.instance, kControl, controls_.texts[kControl].data());
        model_.rename(serial, name);
    } else if (step.act == Act::endStore) {
        slot.reset();
        model_.destroyStore(serial);
    }
}

void Session::takeOfGet(const Step &step, int serial, int other) {
    auto &slot = gets_[static_cast<size_t>(serial)];
    TestNode &node = *slot;
    if (step.act == Act::copyGet) {
        node.ops.copy(node.instance, gets_[static_cast<size_t>(other)]->instance);
        model_.copyGet(serial, other);
    } else if (step.act == Act::loadGet) {
        RecordedState state;
        state.integer(step.number / 2).integer(step.number);
        node.ops.load(node.instance, state.load());
        model_.loadGet(serial, step.number / 2, step.number);
    } else if (step.act == Act::start) {
        node.render.init(node.instance, kInitRender);
        model_.startRender(serial);
    } else if (step.act == Act::choose) {
        FakeControls::choose(node.panel(), kControl, step.number);
        model_.choose(serial, step.number);
    } else if (step.act == Act::endGet) {
        slot.reset();
        model_.destroyGet(serial);
    }
}

void Session::take(const Step &step) {
    const bool isStore = step.act == Act::createStore || step.act == Act::copyStore || step.act == Act::loadStore ||
                         step.act == Act::rename || step.act == Act::endStore;
    if (step.act == Act::createStore || step.act == Act::createGet) {
        create(isStore, step.number);
    } else {
        const auto &nodes = isStore ? stores_ : gets_;
        const int serial = pick(nodes, step.which), other = pick(nodes, step.other);
        if (serial == kNobody) return;
        if (isStore)
            takeOfStore(step, serial, other);
        else
            takeOfGet(step, serial, other);
    }
    host_.takeLog();
}

template <class... Parts>
std::string told(const Parts &...parts) {
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

std::string Session::differenceOfGet(size_t serial) {
    const ModelGet &wanted = model_.gets[serial];
    TestNode &node = *gets_[serial];
    const GetMaterial &have = get(node);
    if (have.slot != wanted.slot || have.storeID != wanted.storeID)
        return told("get ", serial, " has slot ", have.slot, " and store ", have.storeID, ", not ", wanted.slot,
                    " and ", wanted.storeID);
    ShadingSample sample = plainSample();
    HostNodeValue value = {.asked = have.integerOutput};
    node.handler.evaluate(node.instance, &sample, value.asked, &value);
    const int number = value.timesSet ? value.integer - 1000 : kNobody;
    return number == wanted.store ? "" : told("get ", serial, " evaluates store ", number, ", not ", wanted.store);
}

std::string Session::differenceOfPopup() {
    const auto wanted = model_.popup();
    const int count = getStoreNodeCount();
    if (count != static_cast<int>(wanted.size())) return told("the popup has ", count, " items, not ", wanted.size());
    for (int i = 0; i < count; ++i)
        if (const std::string name = getStoreNodeName(nullptr, i); name != wanted[static_cast<size_t>(i)])
            return told("item ", i, " reads ", name, ", not ", wanted[static_cast<size_t>(i)]);
    return "";
}

std::string Session::difference() {
    for (size_t i = 0; i < stores_.size(); ++i) {
        if (!stores_[i]) continue;
        const StoreMaterial &have = store(*stores_[i]);
        const ModelStore &wanted = model_.stores[i];
        if (have.id != wanted.id || have.name != wanted.name)
            return told("store ", i, " is ", have.id, " ", have.name, ", not ", wanted.id, " ", wanted.name);
    }
    for (size_t i = 0; i < gets_.size(); ++i)
        if (gets_[i])
            if (std::string found = differenceOfGet(i); !found.empty()) return found;
    const ShareRegistry &registry = *getShareInst();
    if (registry.storeNodeCount != model_.storeCount() || registry.getNodeCount != model_.getCount())
        return told("there are ", registry.storeNodeCount, " stores and ", registry.getNodeCount, " gets, not ",
                    model_.storeCount(), " and ", model_.getCount());
    if (registry.lastID != model_.lastID()) return told("the last id is ", registry.lastID);
    return differenceOfPopup();
}

// The first difference, or an empty text.
std::string walk(const std::vector<Step> &steps) {
    Session session;
    for (size_t i = 0; i < steps.size(); ++i) {
        session.take(steps[i]);
        if (const std::string found = session.difference(); !found.empty())
            return told("after step ", i + 1, ": ", found);
    }
    return "";
}

// Removes the steps without which the walk still fails.
std::vector<Step> shrunk(std::vector<Step> steps) {
    for (size_t length = steps.size() / 2; length > 0; length /= 2)
        for (size_t from = 0; from + length <= steps.size();) {
            std::vector<Step> fewer = steps;
            const auto cut = fewer.begin() + static_cast<std::ptrdiff_t>(from);
            fewer.erase(cut, cut + static_cast<std::ptrdiff_t>(length));
            if (walk(fewer).empty())
                from += length;
            else
                steps = fewer;
        }
    return steps;
}

// The frequency of each act, in per cent.
struct Mood {
    const char *name;
    std::vector<unsigned int> weights; // in the order of Act
    int steps;
};

const Mood kMoods[] = {
    {.name = "Mixed", .weights = {14, 10, 6, 6, 8, 10, 14, 8, 6, 6, 12}, .steps = 250},
    {.name = "Crowded", .weights = {40, 20, 2, 2, 4, 6, 8, 3, 3, 2, 10}, .steps = 260},
    {.name = "Sparse", .weights = {12, 10, 3, 3, 5, 8, 22, 12, 9, 2, 14}, .steps = 250},
};

std::vector<Step> stepsOf(const Mood &mood, unsigned int seed) {
    std::mt19937 random(seed); // gives the same numbers on every platform, unlike the distributions
    std::vector<Step> steps;
    for (int i = 0; i < mood.steps; ++i) {
        auto left = static_cast<unsigned int>(random() % 100);
        size_t act = 0;
        while (act + 1 < mood.weights.size() && left >= mood.weights[act]) left -= mood.weights[act++];
        const auto which = static_cast<unsigned int>(random() % 1000),
                   other = static_cast<unsigned int>(random() % 1000);
        // Mostly small numbers, which stores are likely to have; sometimes a large or a negative one.
        const int number = random() % 10 ? static_cast<int>(random() % 12) : static_cast<int>(random() % 200) - 40;
        steps.push_back({.act = static_cast<Act>(act), .which = which, .other = other, .number = number});
    }
    return steps;
}

class SharingWalk : public testing::TestWithParam<Mood> {};

INSTANTIATE_TEST_SUITE_P(Moods, SharingWalk, testing::ValuesIn(kMoods),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_P(SharingWalk, GoesAsTheModel) {
    for (unsigned int seed = 1; seed <= 25; ++seed) {
        const std::vector<Step> steps = stepsOf(GetParam(), seed);
        if (walk(steps).empty()) continue;
        const std::vector<Step> few = shrunk(steps);
        std::ostringstream text;
        for (const Step &step : few) text << "\n  " << step;
        FAIL() << "seed " << seed << ", " << walk(few) << "\nsteps:" << text.str();
    }
}

} // namespace
} // namespace velm::plugin

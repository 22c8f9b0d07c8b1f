#include "host/check/random_walk/random_walk.h"

#include "host/base/error.h"
#include "host/check/fixture/fixture.h"
#include "host/check/process/check_record.h"
#include "host/check/random_walk/networks.h"
#include "host/check/random_walk/picture.h"

#include <algorithm>
#include <deque>
#include <optional>

namespace velm::host {

namespace {

constexpr std::size_t kMostInstances[] = {4, 16, 64}; // few are chosen often, many interact
constexpr std::size_t kMostNetworks = 8, kMostSavedData = 16;
constexpr int kConfirmations = 12, kMostAtOnce = 4;
constexpr int kModes[] = {kStateBinary, kStateText};

// Data that a node or a whole network has saved.
struct SavedData {
    const ServerClass *server; // null: a network
    int mode;
    std::string bytes;
    std::size_t instances; // those nested in them included
};

class RandomWalk {
  public:
    RandomWalk(const NodeSet &candidates, const std::string &script, const WalkOptions &options)
        : script_(script), options_(options), mostInstances_(kMostInstances[script_.below(std::size(kMostInstances))]),
          startsAsSaved_(script_.below(4) > 0), nodeSet_(choose(candidates)) {}

    void run() {
        for (std::uint64_t step = 1; !script_.isOver(); ++step) {
            noteRound(step);
            (this->*chooseStep())();
        }
        while (!networks_.empty()) destroyNetwork();
    }

  private:
    using Step = void (RandomWalk::*)();
    struct Choice {
        Step step;
        int weight;
    };

    Step chooseStep();

    // ---- The current nodes and networks ----

    // In half of the walks only independent nodes take part, if there are any: only their networks can be compared with
    // rebuilt ones.
    NodeSet choose(const NodeSet &candidates) {
        NodeSet some = candidates;
        if (script_.flag()) std::erase_if(some, [](const NodeSetEntry &one) { return !one.isIndependent; });
        return some.empty() ? candidates : some;
    }

    template <class Item>
    Item &pick(std::vector<Item> &items) {
        return items[static_cast<std::size_t>(script_.below(items.size()))];
    }

    std::vector<HostNode *> nodes() const {
        std::vector<HostNode *> all;
        for (const auto &network : networks_) {
            const std::vector<HostNode *> some = nodesIn(*network);
            all.insert(all.end(), some.begin(), some.end());
        }
        return all;
    }

    // The top-level networks, and those nested in nodes.
    std::vector<Network *> allNetworks() const {
        std::vector<Network *> all;
        for (const auto &network : networks_) all.push_back(network.get());
        for (const HostNode *node : nodes())
            all.insert(all.end(), node->nestedNetworks.begin(), node->nestedNetworks.end());
        return all;
    }

    // A node, or a network at any depth; null if there is none.
    HostNode *anyNode() {
        std::vector<HostNode *> all = nodes();
        return all.empty() ? nullptr : pick(all);
    }
    Network *anyNetwork() {
        std::vector<Network *> all = allNetworks();
        return all.empty() ? nullptr : pick(all);
    }

    const NodeSetEntry *entryOf(const HostNode &node) const {
        const auto found = std::find_if(nodeSet_.begin(), nodeSet_.end(),
                                        [&](const NodeSetEntry &one) { return one.server == node.server; });
        return found == nodeSet_.end() ? nullptr : &*found;
    }
    bool haveAll(const std::vector<HostNode *> &some, bool NodeSetEntry::*property) const {
        return std::all_of(some.begin(), some.end(), [&](const HostNode *node) {
            const NodeSetEntry *known = entryOf(*node);
            return known && known->*property;
        });
    }
    int indexOf(const HostNode &node) const { return entryOf(node) ? entryOf(node)->index : -1; }

    // Whether so many instances may be added when so many others are removed.
    bool hasRoom(std::size_t instances, std::size_t removed = 0) const {
        return nodes().size() + instances - removed <= mostInstances_;
    }

    void store(SavedData one) {
        if (savedData_.size() == kMostSavedData) savedData_.pop_front();
        savedData_.push_back(std::move(one));
    }

    // Saved data for a node of that server, or for a network if it is null; null if there is none.
    const SavedData *anySavedData(const ServerClass *server) {
        std::vector<const SavedData *> fitting;
        for (const SavedData &one : savedData_)
            if (one.server == server) fitting.push_back(&one);
        return fitting.empty() ? nullptr : pick(fitting);
    }

    // ---- Instances ----

    HostNode *addNode(Network &network, ServerClass &server) {
        if (!hasRoom(1)) return nullptr;
        try {
            HostNode &added = network.addNode(server);
            if (startsAsSaved_) loadNode(added, saveNode(added, kStateBinary), kStateBinary);
            return &added;
        } catch (const InputError &) { // the networks are nested too deeply
            return nullptr;
        }
    }

    void create() {
        if (networks_.size() < kMostNetworks && script_.below(3) == 0) networks_.push_back(makeNetwork());
        if (networks_.empty()) return;
        Network &network = *anyNetwork();
        for (int left = 1 + script_.below(kMostAtOnce); left > 0; --left)
            addNode(network, *nodeSet_[static_cast<std::size_t>(script_.below(nodeSet_.size()))].server);
    }

    void destroy() {
        if (HostNode *node = anyNode()) node->network->destroyNode(*node);
    }

    void destroyNetwork() {
        if (networks_.empty()) return;
        networks_.erase(networks_.begin() + script_.below(networks_.size()));
    }

    void copy() {
        HostNode *from = anyNode();
        if (!from) return;
        std::vector<HostNode *> others = nodes();
        std::erase_if(others, [&](const HostNode *one) {
            return one == from || one->server != from->server || isInside(*one, *from) || isInside(*from, *one);
        });
        const std::size_t inside = instancesIn(*from);
        HostNode *to = nullptr;
        if (!others.empty() && !script_.flag())
            to = pick(others);
        else if (hasRoom(inside))
            to = addNode(*from->network, *from->server);
        if (!to || !hasRoom(inside, instancesIn(*to))) return;
        copyNode(*to, *from);
        if (script_.flag()) from->network->destroyNode(*from);
    }

    void copyNetwork() {
        if (networks_.size() < 2) return;
        Network &from = *pick(networks_), &to = *pick(networks_);
        if (&from != &to && hasRoom(nodesIn(from).size(), nodesIn(to).size())) to.copyFrom(from);
    }

    // ---- Settings ----

    void set() {
        HostNode *node = anyNode();
        HostPanel *panel = node ? panelOf(*node) : nullptr;
        if (!panel || panel->controls().empty()) return;
        const unsigned int id = panel->controls()[static_cast<std::size_t>(script_.below(panel->controls().size()))];
        const CallScope scope(indexOf(*node), "a change on the panel");
        Generator random = script_.generator();
        randomSetting(*panel, *panel->find(id), random, true);
        panel->press(*panel->find(id));
    }

    void setAll() {
        Generator random = script_.generator();
        if (HostNode *node = anyNode()) randomSettings(*node, indexOf(*node), random, true);
    }

    void read() {
        if (HostNode *node = anyNode()) readPanel(*node, indexOf(*node));
    }

    void save() {
        HostNode *node = anyNode();
        if (!node) return;
        for (const int mode : kModes) {
            std::string saved = saveNode(*node, mode);
            compareSaved(saved);
            store({node->server, mode, std::move(saved), instancesIn(*node)});
        }
    }

    void load() {
        HostNode *node = anyNode();
        const SavedData *saved = node ? anySavedData(node->server) : nullptr;
        if (saved && hasRoom(saved->instances, instancesIn(*node))) loadNode(*node, saved->bytes, saved->mode);
    }

    void saveWholeNetwork() {
        if (networks_.empty()) return;
        Network &network = *pick(networks_);
        const int mode = kModes[script_.below(std::size(kModes))];
        std::optional<std::string> saved = saveNetwork(network, mode);
        compareSaved(saved.value_or(""));
        if (saved) store({nullptr, mode, std::move(*saved), nodesIn(network).size()});
    }

    void loadWholeNetwork() {
        const SavedData *saved = anySavedData(nullptr);
        if (!saved || networks_.empty()) return;
        Network &network = *pick(networks_);
        if (hasRoom(saved->instances, nodesIn(network).size())) loadNetwork(network, saved->bytes, saved->mode);
    }

    void compareSaved(const std::string &saved) {
        if (options_.journal && !options_.journal->agrees(saved, true))
            failCheck("after the same calls with one thread, in another process, it saves something else");
    }

    // ---- Connections ----

    void connect() {
        Network *network = anyNetwork();
        if (!network || network->nodes().empty()) return;
        const auto &some = network->nodes();
        const HostNode &from = *some[static_cast<std::size_t>(script_.below(some.size()))];
        const int index = script_.below(some.size() + 1);
        const HostNode &to = index == 0 ? network->root() : *some[static_cast<std::size_t>(index - 1)];
        if (from.outputs.empty() || to.inputs.empty()) return;
        try {
            network->connect(*from.outputs[static_cast<std::size_t>(script_.below(from.outputs.size()))],
                             *to.inputs[static_cast<std::size_t>(script_.below(to.inputs.size()))]);
        } catch (const InputError &) { // it would close a cycle
        }
    }

    void disconnect() {
        HostNode *node = anyNode();
        if (!node || node->inputs.empty()) return;
        node->network->disconnect(*node->inputs[static_cast<std::size_t>(script_.below(node->inputs.size()))]);
    }

    void rewire() {
        Generator random = script_.generator();
        if (Network *network = anyNetwork()) connectAtRandom(*network, random);
    }

    // ---- Pictures ----

    void renderPicture();
    void comparePicture(const RandomPicture &picture, const std::vector<Network *> &networks,
                        const std::vector<std::vector<std::string>> &results);
    void compareWithRebuilt(const RandomPicture &picture, std::size_t index, Network &network,
                            const std::string &results, int mode);

    CallScript script_;
    WalkOptions options_;
    const std::size_t mostInstances_;
    // A default such as 0.1 changes when it is saved and loaded. In most walks every instance therefore loads its own
    // saved data first, so that it can be compared with a rebuilt one. In the others it starts as it is created.
    const bool startsAsSaved_;
    const NodeSet nodeSet_;
    std::vector<std::unique_ptr<Network>> networks_;
    std::deque<SavedData> savedData_;
};

RandomWalk::Step RandomWalk::chooseStep() {
    static constexpr Choice kChoices[] = {
        {&RandomWalk::create, 9},
        {&RandomWalk::destroy, 3},
        {&RandomWalk::destroyNetwork, 1},
        {&RandomWalk::copy, 5},
        {&RandomWalk::copyNetwork, 1},
        {&RandomWalk::set, 4},
        {&RandomWalk::setAll, 4},
        {&RandomWalk::read, 2},
        {&RandomWalk::save, 4},
        {&RandomWalk::load, 4},
        {&RandomWalk::saveWholeNetwork, 1},
        {&RandomWalk::loadWholeNetwork, 1},
        {&RandomWalk::connect, 5},
        {&RandomWalk::disconnect, 2},
        {&RandomWalk::rewire, 2},
        {&RandomWalk::renderPicture, 9},
    };
    static constexpr int kWeights = [] {
        int sum = 0;
        for (const Choice &one : kChoices) sum += one.weight;
        return sum;
    }();
    int left = script_.below(kWeights);
    const Choice *chosen = kChoices;
    while (left >= chosen->weight) left -= (chosen++)->weight;
    return chosen->step;
}

// Renders repeatedly. Returns the result if it is the same each time, else nothing.
template <class Render>
std::optional<std::string> deterministicResult(Render renderOnce) {
    const std::string first = renderOnce();
    for (int i = 1; i < kConfirmations; ++i)
        if (renderOnce() != first) return {};
    return first;
}

void RandomWalk::renderPicture() {
    std::vector<Network *> networks;
    for (const auto &network : networks_)
        if (!script_.flag() || networks_.size() == 1) networks.push_back(network.get());
    if (networks.empty()) return;
    const RandomPicture picture = makePicture(script_, networks);
    std::vector<std::vector<std::string>> results;
    for (int i = 0; i < options_.renders; ++i) results.push_back(render(picture, networks, options_.threads));
    if (options_.journal) comparePicture(picture, networks, results);
    // Done whether or not there is a journal, so that all walks of a script make the same calls.
    const int mode = kModes[script_.below(std::size(kModes))];
    for (std::size_t i = 0; startsAsSaved_ && i < networks.size(); ++i)
        if (const auto inside = nodesIn(*networks[i]); !inside.empty() && haveAll(inside, &NodeSetEntry::isIndependent))
            compareWithRebuilt(picture, i, *networks[i], results[0][i], mode);
}

void RandomWalk::comparePicture(const RandomPicture &picture, const std::vector<Network *> &networks,
                                const std::vector<std::vector<std::string>> &results) {
    for (std::size_t i = 0; i < networks.size(); ++i) {
        bool isDeterministic = haveAll(nodesIn(*networks[i]), &NodeSetEntry::isDeterministic);
        for (const auto &again : results) isDeterministic = isDeterministic && again[i] == results[0][i];
        if (options_.journal->agrees(results[0][i], isDeterministic)) continue;
        if (deterministicResult([&] { return render(picture, networks, nullptr)[i]; }))
            failCheck("with several threads " + namesOf(*networks[i]) + " gives other results than with one");
    }
}

// The results of a network may depend only on its saved data: not on its past, on other networks or on the number of
// threads.
void RandomWalk::compareWithRebuilt(const RandomPicture &picture, std::size_t index, Network &network,
                                    const std::string &results, int mode) {
    const std::optional<std::string> saved = saveNetwork(network, mode);
    if (!saved) return;
    const std::unique_ptr<Network> rebuilt = makeNetwork();
    loadNetwork(*rebuilt, *saved, mode);
    if (nodesIn(*rebuilt).size() != nodesIn(network).size())
        failCheck(namesOf(network) + " has other nodes after it was saved and loaded");
    if (renderAlone(picture, index, *rebuilt) == results) return;
    if (deterministicResult([&] { return renderAlone(picture, index, *rebuilt); }) &&
        deterministicResult([&] { return renderAlone(picture, index, network); }))
        failCheck(namesOf(network) + " gives other results than one that is rebuilt from its saved data");
}

} // namespace

void randomWalk(const NodeSet &nodes, const std::string &script, const WalkOptions &options) {
    if (!nodes.empty()) RandomWalk(nodes, script, options).run();
}

} // namespace velm::host

#include "host/check/walk.h"

#include "host/base/error.h"
#include "host/check/blackboard.h"
#include "host/check/networks.h"
#include "host/check/stage.h"
#include "host/check/walk_picture.h"

#include <algorithm>
#include <deque>
#include <optional>

namespace velm::host {

namespace {

constexpr std::size_t kMostInstances[] = {4, 16, 64}; // few are met often, many by many others
constexpr std::size_t kMostNetworks = 8, kMostKept = 16;
constexpr int kConfirmations = 12, kMostAtOnce = 4;
constexpr int kModes[] = {kStateBinary, kStateText};

// Data that a node or a whole network saved.
struct Kept {
    const ServerClass *server; // null: a network
    int mode;
    std::string bytes;
    std::size_t instances; // with those inside
};

class Walk {
  public:
    Walk(const Cast &cast, const std::string &script, const WalkManner &manner)
        : script_(script), manner_(manner), most_(kMostInstances[script_.below(std::size(kMostInstances))]),
          isAsSaved_(script_.below(4) > 0), cast_(choose(cast)) {}

    void run() {
        for (std::uint64_t step = 1; !script_.isOver(); ++step) {
            noteRound(step);
            (this->*chooseStep())();
        }
        while (!networks_.empty()) destroyNetwork();
    }

  private:
    using Step = void (Walk::*)();
    struct Choice {
        Step step;
        int weight;
    };

    Step chooseStep();

    // ---- What there is ----

    // In half of the walks, only nodes whose networks can be held to everything take part, where there are any.
    Cast choose(const Cast &cast) {
        Cast some = cast;
        if (script_.flag()) std::erase_if(some, [](const CastNode &one) { return !one.isSelfContained; });
        return some.empty() ? cast : some;
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

    // Networks of their own, and those inside nodes.
    std::vector<Network *> editors() const {
        std::vector<Network *> all;
        for (const auto &network : networks_) all.push_back(network.get());
        for (const HostNode *node : nodes())
            all.insert(all.end(), node->nestedNetworks.begin(), node->nestedNetworks.end());
        return all;
    }

    // Null when there is none.
    HostNode *anyNode() {
        std::vector<HostNode *> all = nodes();
        return all.empty() ? nullptr : pick(all);
    }
    Network *anyEditor() {
        std::vector<Network *> all = editors();
        return all.empty() ? nullptr : pick(all);
    }

    const CastNode *castOf(const HostNode &node) const {
        const auto found =
            std::find_if(cast_.begin(), cast_.end(), [&](const CastNode &one) { return one.server == node.server; });
        return found == cast_.end() ? nullptr : &*found;
    }
    bool haveAll(const std::vector<HostNode *> &some, bool CastNode::*quality) const {
        return std::all_of(some.begin(), some.end(), [&](const HostNode *node) {
            const CastNode *known = castOf(*node);
            return known && known->*quality;
        });
    }
    int placeOf(const HostNode &node) const { return castOf(node) ? castOf(node)->place : -1; }

    // Whether there is room for so many instances in the place of others.
    bool hasRoom(std::size_t instances, std::size_t insteadOf = 0) const {
        return nodes().size() + instances - insteadOf <= most_;
    }

    void keep(Kept one) {
        if (kept_.size() == kMostKept) kept_.pop_front();
        kept_.push_back(std::move(one));
    }

    // Any that fits what it is to be loaded into; null when there is none.
    const Kept *anyKept(const ServerClass *server) {
        std::vector<const Kept *> fitting;
        for (const Kept &one : kept_)
            if (one.server == server) fitting.push_back(&one);
        return fitting.empty() ? nullptr : pick(fitting);
    }

    // ---- Instances ----

    HostNode *addNode(Network &editor, ServerClass &server) {
        if (!hasRoom(1)) return nullptr;
        try {
            HostNode &added = editor.addNode(server);
            if (isAsSaved_) loadNode(added, saveNode(added, kStateBinary), kStateBinary);
            return &added;
        } catch (const InputError &) { // networks are nested too deeply
            return nullptr;
        }
    }

    void create() {
        if (networks_.size() < kMostNetworks && script_.below(3) == 0) networks_.push_back(makeNetwork());
        if (networks_.empty()) return;
        Network &editor = *anyEditor();
        for (int left = 1 + script_.below(kMostAtOnce); left > 0; --left)
            addNode(editor, *cast_[static_cast<std::size_t>(script_.below(cast_.size()))].server);
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
        const CallScope noted(placeOf(*node), "a change on the panel");
        Dice dice = script_.dice();
        randomSetting(*panel, *panel->find(id), dice, true);
        panel->press(*panel->find(id));
    }

    void setAll() {
        Dice dice = script_.dice();
        if (HostNode *node = anyNode()) randomSettings(*node, placeOf(*node), dice, true);
    }

    void read() {
        if (HostNode *node = anyNode()) readPanel(*node, placeOf(*node));
    }

    void save() {
        HostNode *node = anyNode();
        if (!node) return;
        for (const int mode : kModes) {
            std::string saved = saveNode(*node, mode);
            compareSaved(saved);
            keep({node->server, mode, std::move(saved), instancesIn(*node)});
        }
    }

    void load() {
        HostNode *node = anyNode();
        const Kept *kept = node ? anyKept(node->server) : nullptr;
        if (kept && hasRoom(kept->instances, instancesIn(*node))) loadNode(*node, kept->bytes, kept->mode);
    }

    void saveWhole() {
        if (networks_.empty()) return;
        Network &network = *pick(networks_);
        const int mode = kModes[script_.below(std::size(kModes))];
        std::optional<std::string> saved = saveNetwork(network, mode);
        compareSaved(saved.value_or(""));
        if (saved) keep({nullptr, mode, std::move(*saved), nodesIn(network).size()});
    }

    void loadWhole() {
        const Kept *kept = anyKept(nullptr);
        if (!kept || networks_.empty()) return;
        Network &network = *pick(networks_);
        if (hasRoom(kept->instances, nodesIn(network).size())) loadNetwork(network, kept->bytes, kept->mode);
    }

    void compareSaved(const std::string &saved) {
        if (manner_.record && !manner_.record->agrees(saved, true))
            failCheck("after the same calls with one thread, in another process, it saves something else");
    }

    // ---- Wires ----

    void connect() {
        Network *editor = anyEditor();
        if (!editor || editor->nodes().empty()) return;
        const auto &some = editor->nodes();
        const HostNode &from = *some[static_cast<std::size_t>(script_.below(some.size()))];
        const int place = script_.below(some.size() + 1);
        const HostNode &to = place == 0 ? editor->root() : *some[static_cast<std::size_t>(place - 1)];
        if (from.outputs.empty() || to.inputs.empty()) return;
        try {
            editor->connect(*from.outputs[static_cast<std::size_t>(script_.below(from.outputs.size()))],
                            *to.inputs[static_cast<std::size_t>(script_.below(to.inputs.size()))]);
        } catch (const InputError &) { // it would have closed a circle
        }
    }

    void disconnect() {
        HostNode *node = anyNode();
        if (!node || node->inputs.empty()) return;
        node->network->disconnect(*node->inputs[static_cast<std::size_t>(script_.below(node->inputs.size()))]);
    }

    void rewire() {
        Dice dice = script_.dice();
        if (Network *editor = anyEditor()) connectAtRandom(*editor, dice);
    }

    // ---- Pictures ----

    void renderPicture();
    void comparePicture(const Picture &picture, const std::vector<Network *> &networks,
                        const std::vector<std::vector<std::string>> &given);
    void compareWithNew(const Picture &picture, std::size_t place, Network &network, const std::string &given,
                        int mode);

    Script script_;
    WalkManner manner_;
    const std::size_t most_;
    // Defaults may be no numbers that files keep to the last digit. In most walks every instance therefore begins by
    // loading what it saves, and can be compared with one that is built anew; in the others it begins as it is made.
    const bool isAsSaved_;
    const Cast cast_;
    std::vector<std::unique_ptr<Network>> networks_;
    std::deque<Kept> kept_;
};

Walk::Step Walk::chooseStep() {
    static constexpr Choice kChoices[] = {
        {&Walk::create, 9},      {&Walk::destroy, 3},    {&Walk::destroyNetwork, 1}, {&Walk::copy, 5},
        {&Walk::copyNetwork, 1}, {&Walk::set, 4},        {&Walk::setAll, 4},         {&Walk::read, 2},
        {&Walk::save, 4},        {&Walk::load, 4},       {&Walk::saveWhole, 1},      {&Walk::loadWhole, 1},
        {&Walk::connect, 5},     {&Walk::disconnect, 2}, {&Walk::rewire, 2},         {&Walk::renderPicture, 9},
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

// The same result each time, with one thread and nothing else done; nothing when it is not the same.
template <class Render>
std::optional<std::string> steadily(Render renderOnce) {
    const std::string first = renderOnce();
    for (int i = 1; i < kConfirmations; ++i)
        if (renderOnce() != first) return {};
    return first;
}

void Walk::renderPicture() {
    std::vector<Network *> networks;
    for (const auto &network : networks_)
        if (!script_.flag() || networks_.size() == 1) networks.push_back(network.get());
    if (networks.empty()) return;
    const Picture picture = makePicture(script_, networks);
    std::vector<std::vector<std::string>> given;
    for (int i = 0; i < manner_.renders; ++i) given.push_back(render(picture, networks, manner_.threads));
    if (manner_.record) comparePicture(picture, networks, given);
    // What is built anew here is built in all walks by this script.
    const int mode = kModes[script_.below(std::size(kModes))];
    for (std::size_t i = 0; isAsSaved_ && i < networks.size(); ++i)
        if (const auto inside = nodesIn(*networks[i]); !inside.empty() && haveAll(inside, &CastNode::isSelfContained))
            compareWithNew(picture, i, *networks[i], given[0][i], mode);
}

void Walk::comparePicture(const Picture &picture, const std::vector<Network *> &networks,
                          const std::vector<std::vector<std::string>> &given) {
    for (std::size_t i = 0; i < networks.size(); ++i) {
        bool isSteady = haveAll(nodesIn(*networks[i]), &CastNode::isSteady);
        for (const auto &again : given) isSteady = isSteady && again[i] == given[0][i];
        if (manner_.record->agrees(given[0][i], isSteady)) continue;
        if (steadily([&] { return render(picture, networks, nullptr)[i]; }))
            failCheck("with several threads " + namesOf(*networks[i]) + " gives other results than with one");
    }
}

// What a network gives depends on nothing but what it saves: not on its past, on others or on the number of threads.
void Walk::compareWithNew(const Picture &picture, std::size_t place, Network &network, const std::string &given,
                          int mode) {
    const std::optional<std::string> saved = saveNetwork(network, mode);
    if (!saved) return;
    const std::unique_ptr<Network> made = makeNetwork();
    loadNetwork(*made, *saved, mode);
    if (nodesIn(*made).size() != nodesIn(network).size())
        failCheck(namesOf(network) + " has other nodes once it was saved and loaded");
    if (renderAlone(picture, place, *made) == given) return;
    if (steadily([&] { return renderAlone(picture, place, *made); }) &&
        steadily([&] { return renderAlone(picture, place, network); }))
        failCheck(namesOf(network) + " gives other results than one that is built anew from what it saves");
}

} // namespace

void walk(const Cast &cast, const std::string &script, const WalkManner &manner) {
    if (!cast.empty()) Walk(cast, script, manner).run();
}

} // namespace velm::host

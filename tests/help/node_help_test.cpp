// Help and the nodes: each setting, input and output has its sentence, and each sentence its setting, input or output.
#include "host/graph/network.h"
#include "host/help/help.h"
#include "host/panel/layout.h"
#include "tests/graph/listed_module.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velm::host::test {
namespace {

constexpr std::size_t kLongestSentence = 240;

using Labels = std::vector<std::string>;

template <class Sockets>
Labels namesOf(const Sockets &sockets) {
    Labels names;
    for (const auto &socket : sockets) names.push_back(socket->name);
    return names;
}

// The labels of all that a person can set or press.
Labels settingsOf(HostNode &node) {
    Labels labels;
    HostPanel *panel = panelOf(node);
    if (!panel) return labels;
    for (const ControlInfo &control : describeControls(*panel)) {
        const ControlType *type = findControlType(control.type);
        if (!control.name.empty() && type && type->kind != ControlKind::drawing) labels.push_back(control.name);
    }
    return labels;
}

// What is wrong first; empty when each label has a sentence and each sentence a label.
std::string firstMismatch(const std::string &what, const Labels &labels, const HelpSentences &sentences) {
    for (const std::string &label : labels)
        if (!sentences.contains(label)) return "no sentence for the " + what + " \"" + label + "\"";
    for (const auto &[label, sentence] : sentences)
        if (std::find(labels.begin(), labels.end(), label) == labels.end())
            return "a sentence for the " + what + " \"" + label + "\", which the node does not have";
    return {};
}

class NodeHelpTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { listModule(); }
};

TEST_F(NodeHelpTest, EachSettingInputAndOutputHasASentenceAndNothingElseHas) {
    for (const auto &server : serverList().all()) {
        SCOPED_TRACE(server->name());
        Network editor("help", "help", nullptr, nullptr);
        HostNode &node = editor.addNode(*server);
        const NodeHelp *help = findHelp(server->name());
        ASSERT_TRUE(help) << "no file";
        ASSERT_EQ(firstMismatch("setting", settingsOf(node), help->settings), "");
        ASSERT_EQ(firstMismatch("input", namesOf(node.inputs), help->inputs), "");
        ASSERT_EQ(firstMismatch("output", namesOf(node.outputs), help->outputs), "");
    }
}

TEST_F(NodeHelpTest, EachFileHasItsNode) {
    for (const NodeHelp &help : allHelp()) EXPECT_TRUE(serverList().find(help.server)) << help.server;
}

// A sentence ends with its only full stop; those inside numbers have no blank after them.
void expectSentence(const std::string &text) {
    EXPECT_LE(text.size(), kLongestSentence) << text;
    EXPECT_EQ(text.find_first_not_of(' '), 0U) << text;
    EXPECT_TRUE(text.ends_with('.')) << text;
    EXPECT_EQ(text.find(". "), std::string::npos) << text;
    EXPECT_EQ(text.find_first_of("\n\t"), std::string::npos) << text;
}

TEST(HelpSentencesTest, AreSingleSentencesOfOneToTwoLines) {
    for (const NodeHelp &help : allHelp()) {
        SCOPED_TRACE(help.server);
        expectSentence(help.summary);
        for (const HelpSentences *part : {&help.settings, &help.inputs, &help.outputs})
            for (const auto &[label, sentence] : *part) expectSentence(sentence);
    }
}

} // namespace
} // namespace velm::host::test

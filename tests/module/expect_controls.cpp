#include "tests/module/fake_host.h"
#include "tests/module/hint_list.h"

#include <gtest/gtest.h>

namespace velm::plugin {

void expectControls(const HostPanel &panel, std::span<const Control> expected) {
    const HostPanelValue *value = panel.values;
    const std::vector<Hint> added = hintsWith(kHintAddControl, panel.hints);
    std::vector<Hint> labels = hintsWith(kHintLabel, panel.hints);
    std::erase_if(labels, [](const Hint &hint) { return hint.arguments[0].word >= 0x9000; });
    ASSERT_EQ(added.size(), expected.size());
    size_t label = 0;
    for (size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(expected[i].id);
        EXPECT_EQ(added[i].arguments[0].word, expected[i].id);
        EXPECT_STREQ(added[i].arguments[1].text, expected[i].control);
        EXPECT_EQ(added[i].arguments[2].word, expected[i].value ? expected[i].id : 0);
        if (expected[i].label) {
            ASSERT_LT(label, labels.size());
            EXPECT_EQ(labels[label].arguments[0].word, expected[i].id);
            EXPECT_STREQ(labels[label++].arguments[1].text, expected[i].label);
        }
        if (!expected[i].value) continue;
        EXPECT_EQ(value->id, expected[i].id);
        EXPECT_STREQ(value->label, expected[i].label);
        EXPECT_STREQ((value++)->type, expected[i].value);
    }
    EXPECT_EQ(label, labels.size());
    EXPECT_EQ(value->id, 0u);
    EXPECT_EQ(value->label, nullptr);
    EXPECT_EQ(value->type, nullptr);
}

} // namespace velm::plugin

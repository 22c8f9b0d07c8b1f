#include "host/scene/format/json.h"

#include <gtest/gtest.h>

namespace velm::host {
namespace {

TEST(Json, RemembersTheLineOfEveryKeyAndValue) {
    const JsonValue root = parseJson("{\n"
                                     "  \"a\": 1,\n"
                                     "  \"b\": [\n"
                                     "    2\n"
                                     "    ,\n"
                                     "    true],\r\n"
                                     "  \"c\":\n"
                                     "    {\"d\": null}\n"
                                     "}\n",
                                     "f.json");
    EXPECT_EQ(root.line, 1);
    EXPECT_EQ(root.find("a")->line, 2);
    EXPECT_EQ(root.find("b")->line, 3);
    EXPECT_EQ(root.find("b")->list[0].line, 4) << "a number that ends its line";
    EXPECT_EQ(root.find("b")->list[1].line, 6);
    EXPECT_EQ(root.members[2].line, 7);
    EXPECT_EQ(root.find("c")->line, 8);
    EXPECT_EQ(root.find("c")->find("d")->line, 8);
    EXPECT_EQ(root.find("z"), nullptr);
}

TEST(Json, KeepsValuesOfEveryKind) {
    const JsonValue root = parseJson(R"([null, true, -3, 2.5e2, "caf\u00e9", [], {}])", "f.json");
    ASSERT_EQ(root.list.size(), 7u);
    EXPECT_EQ(root.list[0].kind, JsonValue::Kind::null);
    EXPECT_TRUE(root.list[1].boolean);
    EXPECT_EQ(root.list[2].number, -3);
    EXPECT_EQ(root.list[3].number, 250);
    EXPECT_EQ(root.list[4].text, "café");
    EXPECT_EQ(root.list[5].kind, JsonValue::Kind::list);
    EXPECT_EQ(root.list[6].kind, JsonValue::Kind::object);
}

struct BadText {
    const char *name;
    std::string text;
    const char *start; // of the message
    const char *part;  // that is in it
};

class BadJson : public testing::TestWithParam<BadText> {};

TEST_P(BadJson, IsRefusedWithItsLine) {
    try {
        parseJson(GetParam().text, "f.json");
        FAIL() << "not refused";
    } catch (const InputError &error) {
        const std::string message = error.what();
        EXPECT_TRUE(message.starts_with(GetParam().start)) << message;
        EXPECT_NE(message.find(GetParam().part), std::string::npos) << message;
        EXPECT_EQ(message.find("json.exception"), std::string::npos) << message;
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, BadJson,
    testing::Values(
        BadText{"Empty", "", "f.json:1: ", "unexpected end of input"},
        BadText{"CutShort", "{\n\"a\": 1,\n", "f.json:2: ", "unexpected end of input; expected string literal"},
        BadText{"CommaBeforeBrace", "{\n\"a\": 1,\n}", "f.json:3: ", "unexpected '}'; expected string literal"},
        BadText{"NoComma", "{\"a\": 1\n\"b\": 2}", "f.json:2: ", "unexpected string literal; expected '}'"},
        BadText{"NoColon", "{\n\"a\" 1}", "f.json:2: ", "expected ':'"},
        BadText{"TwoRoots", "{}\n\n{}", "f.json:3: ", "unexpected '{'; expected end of input"},
        BadText{"OpenString", "[\n\"abc\n]", "f.json:2: ", "invalid string"},
        BadText{"Comment", "{\n// no\n}", "f.json:2: ", "invalid literal"},
        BadText{"HugeNumber", "[1,\n1e999]", "f.json:2: ", "number overflow parsing '1e999'"},
        BadText{"RepeatedKey", "{\"a\": 1,\n\"b\": 2,\n\"a\": 3}", "f.json:3: ", "\"a\" occurs twice; first on line 1"},
        BadText{"TooDeep", "[\n" + std::string(70, '['), "f.json:2: ", "nested deeper than 64"},
        BadText{"NotUtf8", "[\"\xff\"]", "f.json:1: ", "ill-formed UTF-8"}),
    [](const auto &row) { return row.param.name; });

} // namespace
} // namespace velm::host
